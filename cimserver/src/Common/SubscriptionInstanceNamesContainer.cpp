#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

const String SubscriptionInstanceNamesContainer::NAME = "SubscriptionInstanceNamesContainer";

SubscriptionInstanceNamesContainer::SubscriptionInstanceNamesContainer(const OperationContext::Container& container) {
    const SubscriptionInstanceNamesContainer* source = dynamic_cast<const SubscriptionInstanceNamesContainer*>(&container);
    if (!source) throw DynamicCastFailedException();
    *this = *source;
}

SubscriptionInstanceNamesContainer::SubscriptionInstanceNamesContainer(const Array<CIMObjectPath>& subscriptionInstanceNames) : _names(subscriptionInstanceNames) {}

SubscriptionInstanceNamesContainer::SubscriptionInstanceNamesContainer(const SubscriptionInstanceNamesContainer& container) : OperationContext::Container(), _names(container._names) {}

SubscriptionInstanceNamesContainer::~SubscriptionInstanceNamesContainer() {}

SubscriptionInstanceNamesContainer& SubscriptionInstanceNamesContainer::operator=(const SubscriptionInstanceNamesContainer& container) {
    _names = container._names;
    return *this;
}

String SubscriptionInstanceNamesContainer::getName() const { return NAME; }

OperationContext::Container* SubscriptionInstanceNamesContainer::clone() const { return new SubscriptionInstanceNamesContainer(*this); }

void SubscriptionInstanceNamesContainer::destroy() { delete this; }

Array<CIMObjectPath> SubscriptionInstanceNamesContainer::getInstanceNames() const { return _names; }

PEGASUS_NAMESPACE_END
