#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

OperationContext::Container::~Container() {}

OperationContext::OperationContext() {}

OperationContext::OperationContext(const OperationContext& context) { *this = context; }

OperationContext::~OperationContext() {}

OperationContext& OperationContext::operator=(const OperationContext& context) {
    if (this == &context) return *this;
    std::vector<std::unique_ptr<Container, Destroyer>> copy;
    copy.reserve(context._containers.size());
    for (const auto& c : context._containers) copy.emplace_back(c->clone());
    _containers.swap(copy);
    return *this;
}

void OperationContext::clear() { _containers.clear(); }

const OperationContext::Container& OperationContext::get(const String& containerName) const {
    for (const auto& c : _containers) {
        if (String::equal(c->getName(), containerName)) return *c;
    }
    throw Exception(String("operation context has no ") + containerName);
}

Boolean OperationContext::contains(const String& containerName) const {
    for (const auto& c : _containers) {
        if (String::equal(c->getName(), containerName)) return true;
    }
    return false;
}

void OperationContext::set(const Container& container) {
    std::unique_ptr<Container, Destroyer> copy(container.clone());
    for (auto& c : _containers) {
        if (String::equal(c->getName(), container.getName())) {
            c = std::move(copy);
            return;
        }
    }
    _containers.push_back(std::move(copy));
}

void OperationContext::insert(const Container& container) {
    if (contains(container.getName())) throw AlreadyExistsException(container.getName());
    _containers.emplace_back(container.clone());
}

void OperationContext::remove(const String& containerName) {
    for (auto it = _containers.begin(); it != _containers.end(); ++it) {
        if (String::equal((*it)->getName(), containerName)) {
            _containers.erase(it);
            return;
        }
    }
    throw Exception(String("operation context has no ") + containerName);
}

PEGASUS_NAMESPACE_END
