#ifndef Pegasus_Server_ObjectCollector_h
#define Pegasus_Server_ObjectCollector_h

#include <Pegasus/Common/ResponseHandler.h>

#include <mutex>
#include <vector>

namespace Pegasus {

// Gathers what a provider delivers for one request. Delivering an
// uninitialized object is refused with CIM_ERR_FAILED; delivering after
// complete() is refused too. Thread-safe: a provider may deliver from
// threads of its own.
class ObjectCollector : public ObjectResponseHandler {
public:
    ObjectCollector() = default;

    void processing() override {}
    void complete() override;
    void deliver(const CIMObject& item) override;
    using ObjectResponseHandler::deliver;

    bool completed() const;
    std::vector<CIMObject> take();

private:
    mutable std::mutex _mutex;
    std::vector<CIMObject> _objects;
    bool _complete = false;
};

} // namespace Pegasus

#endif
