#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

namespace {
bool startChar(Uint16 c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || (c >= 0x80 && c <= 0xFFEF);
}
bool nameChar(Uint16 c) { return startChar(c) || (c >= '0' && c <= '9'); }
}  // namespace

CIMName::CIMName(const String& name) : cimName(name) {
    if (!legal(name)) throw InvalidNameException(name);
}

CIMName::CIMName(const char* name) {
    if (!name) throw NullPointer();
    String text(name);
    if (!legal(text)) throw InvalidNameException(text);
    cimName = text;
}

CIMName& CIMName::operator=(const String& name) {
    if (!legal(name)) throw InvalidNameException(name);
    cimName = name;
    return *this;
}

Boolean CIMName::equal(const CIMName& name) const { return String::equalNoCase(cimName, name.cimName); }

Boolean CIMName::legal(const String& name) {
    const Uint32 n = name.size();
    if (n == 0) return false;
    const Char16* p = name.getChar16Data();
    if (!startChar(p[0])) return false;
    for (Uint32 i = 1; i < n; ++i) {
        if (!nameChar(p[i])) return false;
    }
    return true;
}

#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
Boolean CIMName::equal(const char* name) const { return String::equalNoCase(cimName, String(name)); }
CIMName& CIMName::operator=(const char* name) { return *this = String(name); }
#endif

Boolean operator==(const CIMName& name1, const CIMName& name2) { return name1.equal(name2); }
Boolean operator!=(const CIMName& name1, const CIMName& name2) { return !name1.equal(name2); }

PEGASUS_NAMESPACE_END
