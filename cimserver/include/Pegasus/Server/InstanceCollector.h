#ifndef Pegasus_Server_InstanceCollector_h
#define Pegasus_Server_InstanceCollector_h

#include <Pegasus/Common/ResponseHandler.h>

#include <mutex>
#include <vector>

namespace Pegasus {

// Gathers what a provider delivers for one request. Delivering an
// uninitialized object is refused with CIM_ERR_FAILED; delivering after
// complete() is refused too. Thread-safe: a provider may deliver from
// threads of its own.
class InstanceCollector : public InstanceResponseHandler {
public:
    InstanceCollector() = default;

    void processing() override {}
    void complete() override;
    void deliver(const CIMInstance& item) override;
    using InstanceResponseHandler::deliver;

    bool completed() const;
    std::vector<CIMInstance> take();

private:
    mutable std::mutex _mutex;
    std::vector<CIMInstance> _instances;
    bool _complete = false;
};

} // namespace Pegasus

#endif
