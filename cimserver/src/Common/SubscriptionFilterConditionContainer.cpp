#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

const String SubscriptionFilterConditionContainer::NAME = "SubscriptionFilterConditionContainer";

SubscriptionFilterConditionContainer::SubscriptionFilterConditionContainer(const OperationContext::Container& container) {
    const SubscriptionFilterConditionContainer* source = dynamic_cast<const SubscriptionFilterConditionContainer*>(&container);
    if (!source) throw DynamicCastFailedException();
    *this = *source;
}

SubscriptionFilterConditionContainer::SubscriptionFilterConditionContainer(const String& filterCondition, const String& queryLanguage) : _filterCondition(filterCondition), _queryLanguage(queryLanguage) {}

SubscriptionFilterConditionContainer::SubscriptionFilterConditionContainer(const SubscriptionFilterConditionContainer& container) : OperationContext::Container(), _filterCondition(container._filterCondition), _queryLanguage(container._queryLanguage) {}

SubscriptionFilterConditionContainer::~SubscriptionFilterConditionContainer() {}

SubscriptionFilterConditionContainer& SubscriptionFilterConditionContainer::operator=(const SubscriptionFilterConditionContainer& container) {
    _filterCondition = container._filterCondition;
    _queryLanguage = container._queryLanguage;
    return *this;
}

String SubscriptionFilterConditionContainer::getName() const { return NAME; }

OperationContext::Container* SubscriptionFilterConditionContainer::clone() const { return new SubscriptionFilterConditionContainer(*this); }

void SubscriptionFilterConditionContainer::destroy() { delete this; }

String SubscriptionFilterConditionContainer::getFilterCondition() const { return _filterCondition; }
String SubscriptionFilterConditionContainer::getQueryLanguage() const { return _queryLanguage; }

PEGASUS_NAMESPACE_END
