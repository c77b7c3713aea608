#ifndef Pegasus_Server_ObjectPathCollector_h
#define Pegasus_Server_ObjectPathCollector_h

#include <Pegasus/Common/ResponseHandler.h>

#include <mutex>
#include <vector>

namespace Pegasus {

// Gathers what a provider delivers for one request. Delivering an
// uninitialized object is refused with CIM_ERR_FAILED; delivering after
// complete() is refused too. Thread-safe: a provider may deliver from
// threads of its own.
class ObjectPathCollector : public ObjectPathResponseHandler {
public:
    ObjectPathCollector() = default;

    void processing() override {}
    void complete() override;
    void deliver(const CIMObjectPath& item) override;
    using ObjectPathResponseHandler::deliver;

    bool completed() const;
    std::vector<CIMObjectPath> take();

private:
    mutable std::mutex _mutex;
    std::vector<CIMObjectPath> _paths;
    bool _complete = false;
};

} // namespace Pegasus

#endif
