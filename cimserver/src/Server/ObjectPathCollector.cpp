#include <Pegasus/Server/ObjectPathCollector.h>
#include <Pegasus/Common/Exception.h>

namespace Pegasus {

void ObjectPathCollector::complete() {
    std::lock_guard<std::mutex> lock(_mutex);
    _complete = true;
}

void ObjectPathCollector::deliver(const CIMObjectPath& item) {
    if (item.getClassName().isNull())
        throw CIMException(CIM_ERR_FAILED, "The provider delivered an object path without a class");
    std::lock_guard<std::mutex> lock(_mutex);
    if (_complete) throw CIMException(CIM_ERR_FAILED, "The provider delivered an object path after complete()");
    _paths.push_back(item);
}

bool ObjectPathCollector::completed() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _complete;
}

std::vector<CIMObjectPath> ObjectPathCollector::take() {
    std::lock_guard<std::mutex> lock(_mutex);
    return std::move(_paths);
}

} // namespace Pegasus
