#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

const String SubscriptionInstanceContainer::NAME = "SubscriptionInstanceContainer";

SubscriptionInstanceContainer::SubscriptionInstanceContainer(const OperationContext::Container& container) {
    const SubscriptionInstanceContainer* source = dynamic_cast<const SubscriptionInstanceContainer*>(&container);
    if (!source) throw DynamicCastFailedException();
    *this = *source;
}

SubscriptionInstanceContainer::SubscriptionInstanceContainer(const CIMInstance& subscriptionInstance) : _instance(subscriptionInstance) {}

SubscriptionInstanceContainer::SubscriptionInstanceContainer(const SubscriptionInstanceContainer& container) : OperationContext::Container(), _instance(container._instance) {}

SubscriptionInstanceContainer::~SubscriptionInstanceContainer() {}

SubscriptionInstanceContainer& SubscriptionInstanceContainer::operator=(const SubscriptionInstanceContainer& container) {
    _instance = container._instance;
    return *this;
}

String SubscriptionInstanceContainer::getName() const { return NAME; }

OperationContext::Container* SubscriptionInstanceContainer::clone() const { return new SubscriptionInstanceContainer(*this); }

void SubscriptionInstanceContainer::destroy() { delete this; }

CIMInstance SubscriptionInstanceContainer::getInstance() const { return _instance; }

PEGASUS_NAMESPACE_END
