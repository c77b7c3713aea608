#include <Pegasus/Server/MethodResultCollector.h>
#include <Pegasus/Common/Exception.h>

namespace Pegasus {

void MethodResultCollector::complete() {
    std::lock_guard<std::mutex> lock(_mutex);
    _complete = true;
}

void MethodResultCollector::deliverParamValue(const CIMParamValue& outParamValue) {
    if (outParamValue.getParameterName().size() == 0)
        throw CIMException(CIM_ERR_FAILED, "The provider delivered an out parameter without a name");
    std::lock_guard<std::mutex> lock(_mutex);
    if (_complete) throw CIMException(CIM_ERR_FAILED, "The provider delivered a parameter after complete()");
    _out.push_back(outParamValue);
}

void MethodResultCollector::deliver(const CIMValue& returnValue) {
    if (returnValue.isNull())
        throw CIMException(CIM_ERR_FAILED, "The provider delivered a null return value");
    std::lock_guard<std::mutex> lock(_mutex);
    if (_hasReturn) throw CIMException(CIM_ERR_FAILED, "The provider delivered a second return value");
    _return = returnValue;
    _hasReturn = true;
}

bool MethodResultCollector::completed() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _complete;
}

bool MethodResultCollector::hasReturnValue() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _hasReturn;
}

CIMValue MethodResultCollector::returnValue() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _return;
}

std::vector<CIMParamValue> MethodResultCollector::outParameters() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _out;
}

} // namespace Pegasus
