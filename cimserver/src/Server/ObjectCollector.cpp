#include <Pegasus/Server/ObjectCollector.h>
#include <Pegasus/Common/Exception.h>

namespace Pegasus {

void ObjectCollector::complete() {
    std::lock_guard<std::mutex> lock(_mutex);
    _complete = true;
}

void ObjectCollector::deliver(const CIMObject& item) {
    if (item.isUninitialized())
        throw CIMException(CIM_ERR_FAILED, "The provider delivered an uninitialized object");
    std::lock_guard<std::mutex> lock(_mutex);
    if (_complete) throw CIMException(CIM_ERR_FAILED, "The provider delivered an object after complete()");
    _objects.push_back(item);
}

bool ObjectCollector::completed() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _complete;
}

std::vector<CIMObject> ObjectCollector::take() {
    std::lock_guard<std::mutex> lock(_mutex);
    return std::move(_objects);
}

} // namespace Pegasus
