#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

const String AcceptLanguageListContainer::NAME = "AcceptLanguageListContainer";

AcceptLanguageListContainer::AcceptLanguageListContainer(const OperationContext::Container& container) {
    const AcceptLanguageListContainer* source = dynamic_cast<const AcceptLanguageListContainer*>(&container);
    if (!source) throw DynamicCastFailedException();
    *this = *source;
}

AcceptLanguageListContainer::AcceptLanguageListContainer(const String& languages) : _languages(languages) {}

String AcceptLanguageListContainer::getName() const { return NAME; }

OperationContext::Container* AcceptLanguageListContainer::clone() const { return new AcceptLanguageListContainer(*this); }

void AcceptLanguageListContainer::destroy() { delete this; }

String AcceptLanguageListContainer::getLanguages() const { return _languages; }

PEGASUS_NAMESPACE_END
