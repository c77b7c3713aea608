#include <Pegasus/Server/InstanceCollector.h>
#include <Pegasus/Common/Exception.h>

namespace Pegasus {

void InstanceCollector::complete() {
    std::lock_guard<std::mutex> lock(_mutex);
    _complete = true;
}

void InstanceCollector::deliver(const CIMInstance& item) {
    if (item.isUninitialized())
        throw CIMException(CIM_ERR_FAILED, "The provider delivered an uninitialized instance");
    std::lock_guard<std::mutex> lock(_mutex);
    if (_complete) throw CIMException(CIM_ERR_FAILED, "The provider delivered an instance after complete()");
    _instances.push_back(item);
}

bool InstanceCollector::completed() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _complete;
}

std::vector<CIMInstance> InstanceCollector::take() {
    std::lock_guard<std::mutex> lock(_mutex);
    return std::move(_instances);
}

} // namespace Pegasus
