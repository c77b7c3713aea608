#ifndef Pegasus_Server_MethodResultCollector_h
#define Pegasus_Server_MethodResultCollector_h

#include <Pegasus/Common/ResponseHandler.h>

#include <mutex>
#include <vector>

namespace Pegasus {

// Gathers a method provider's out parameters and return value. A null return
// value, a second return value and a nameless parameter are refused with
// CIM_ERR_FAILED.
class MethodResultCollector : public MethodResultResponseHandler {
public:
    MethodResultCollector() = default;

    void processing() override {}
    void complete() override;
    void deliverParamValue(const CIMParamValue& outParamValue) override;
    using MethodResultResponseHandler::deliverParamValue;
    void deliver(const CIMValue& returnValue) override;

    bool completed() const;
    bool hasReturnValue() const;
    CIMValue returnValue() const;
    std::vector<CIMParamValue> outParameters() const;

private:
    mutable std::mutex _mutex;
    std::vector<CIMParamValue> _out;
    CIMValue _return;
    bool _hasReturn = false;
    bool _complete = false;
};

} // namespace Pegasus

#endif
