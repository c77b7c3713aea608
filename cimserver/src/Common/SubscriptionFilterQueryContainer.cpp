#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

const String SubscriptionFilterQueryContainer::NAME = "SubscriptionFilterQueryContainer";

SubscriptionFilterQueryContainer::SubscriptionFilterQueryContainer(const OperationContext::Container& container) {
    const SubscriptionFilterQueryContainer* source = dynamic_cast<const SubscriptionFilterQueryContainer*>(&container);
    if (!source) throw DynamicCastFailedException();
    *this = *source;
}

SubscriptionFilterQueryContainer::SubscriptionFilterQueryContainer(const String& filterQuery, const String& queryLanguage, const CIMNamespaceName& sourceNameSpace) : _filterQuery(filterQuery), _queryLanguage(queryLanguage), _sourceNameSpace(sourceNameSpace) {}

SubscriptionFilterQueryContainer::SubscriptionFilterQueryContainer(const SubscriptionFilterQueryContainer& container) : OperationContext::Container(), _filterQuery(container._filterQuery), _queryLanguage(container._queryLanguage), _sourceNameSpace(container._sourceNameSpace) {}

SubscriptionFilterQueryContainer::~SubscriptionFilterQueryContainer() {}

SubscriptionFilterQueryContainer& SubscriptionFilterQueryContainer::operator=(const SubscriptionFilterQueryContainer& container) {
    _filterQuery = container._filterQuery;
    _queryLanguage = container._queryLanguage;
    _sourceNameSpace = container._sourceNameSpace;
    return *this;
}

String SubscriptionFilterQueryContainer::getName() const { return NAME; }

OperationContext::Container* SubscriptionFilterQueryContainer::clone() const { return new SubscriptionFilterQueryContainer(*this); }

void SubscriptionFilterQueryContainer::destroy() { delete this; }

String SubscriptionFilterQueryContainer::getFilterQuery() const { return _filterQuery; }
String SubscriptionFilterQueryContainer::getQueryLanguage() const { return _queryLanguage; }
CIMNamespaceName SubscriptionFilterQueryContainer::getSourceNameSpace() const { return _sourceNameSpace; }

PEGASUS_NAMESPACE_END
