#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

namespace {
String stripLeadingSlash(const String& name) {
    if (name.size() > 0 && name[0] == '/') return name.subString(1);
    return name;
}
}  // namespace

CIMNamespaceName::CIMNamespaceName(const String& name) {
    String text = stripLeadingSlash(name);
    if (!legal(text)) throw InvalidNamespaceNameException(name);
    cimNamespaceName = text;
}

CIMNamespaceName::CIMNamespaceName(const char* name) {
    if (!name) throw NullPointer();
    *this = CIMNamespaceName(String(name));
}

CIMNamespaceName& CIMNamespaceName::operator=(const String& name) {
    *this = CIMNamespaceName(name);
    return *this;
}

Boolean CIMNamespaceName::equal(const CIMNamespaceName& name) const {
    return String::equalNoCase(cimNamespaceName, name.cimNamespaceName);
}

// Identifiers separated by single '/'; no leading, trailing or doubled '/'.
Boolean CIMNamespaceName::legal(const String& name) {
    String text = stripLeadingSlash(name);
    if (text.size() == 0) return false;
    Uint32 start = 0;
    while (start <= text.size()) {
        Uint32 slash = text.find(start, Char16('/'));
        Uint32 end = slash == PEG_NOT_FOUND ? text.size() : slash;
        if (!CIMName::legal(text.subString(start, end - start))) return false;
        if (slash == PEG_NOT_FOUND) break;
        start = slash + 1;
    }
    return true;
}

#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
Boolean CIMNamespaceName::equal(const char* name) const { return equal(CIMNamespaceName(name)); }
CIMNamespaceName& CIMNamespaceName::operator=(const char* name) { return *this = String(name); }
#endif

Boolean operator==(const CIMNamespaceName& name1, const CIMNamespaceName& name2) { return name1.equal(name2); }
Boolean operator!=(const CIMNamespaceName& name1, const CIMNamespaceName& name2) { return !name1.equal(name2); }

PEGASUS_NAMESPACE_END
