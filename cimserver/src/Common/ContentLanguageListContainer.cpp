#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

const String ContentLanguageListContainer::NAME = "ContentLanguageListContainer";

ContentLanguageListContainer::ContentLanguageListContainer(const OperationContext::Container& container) {
    const ContentLanguageListContainer* source = dynamic_cast<const ContentLanguageListContainer*>(&container);
    if (!source) throw DynamicCastFailedException();
    *this = *source;
}

ContentLanguageListContainer::ContentLanguageListContainer(const String& languages) : _languages(languages) {}

String ContentLanguageListContainer::getName() const { return NAME; }

OperationContext::Container* ContentLanguageListContainer::clone() const { return new ContentLanguageListContainer(*this); }

void ContentLanguageListContainer::destroy() { delete this; }

String ContentLanguageListContainer::getLanguages() const { return _languages; }

PEGASUS_NAMESPACE_END
