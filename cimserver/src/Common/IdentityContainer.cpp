#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

const String IdentityContainer::NAME = "IdentityContainer";

IdentityContainer::IdentityContainer(const OperationContext::Container& container) {
    const IdentityContainer* source = dynamic_cast<const IdentityContainer*>(&container);
    if (!source) throw DynamicCastFailedException();
    *this = *source;
}

IdentityContainer::IdentityContainer(const String& userName) : _userName(userName) {}

IdentityContainer::IdentityContainer(const IdentityContainer& container) : OperationContext::Container(), _userName(container._userName) {}

IdentityContainer::~IdentityContainer() {}

IdentityContainer& IdentityContainer::operator=(const IdentityContainer& container) {
    _userName = container._userName;
    return *this;
}

String IdentityContainer::getName() const { return NAME; }

OperationContext::Container* IdentityContainer::clone() const { return new IdentityContainer(*this); }

void IdentityContainer::destroy() { delete this; }

String IdentityContainer::getUserName() const { return _userName; }

PEGASUS_NAMESPACE_END
