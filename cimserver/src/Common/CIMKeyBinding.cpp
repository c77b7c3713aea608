#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <cerrno>
#include <cstdlib>

PEGASUS_NAMESPACE_BEGIN

namespace {

// Numeric key text as a number: decimal or 0x hexadecimal integers, else a
// real. False when the text is no number.
bool parseNumber(const String& text, bool& isInteger, Sint64& signedValue, Uint64& unsignedValue,
                 bool& negative, double& real) {
    const std::string s = text.toUtf8();
    if (s.empty()) return false;
    const char* begin = s.c_str();
    char* end = nullptr;
    negative = s[0] == '-';
    const bool hex = (s.size() > 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X')) ||
                     (s.size() > 3 && (s[0] == '-' || s[0] == '+') && s[1] == '0' && (s[2] == 'x' || s[2] == 'X'));
    errno = 0;
    if (negative) {
        signedValue = std::strtoll(begin, &end, hex ? 16 : 10);
        if (errno == 0 && end && *end == '\0') {
            isInteger = true;
            return true;
        }
    } else {
        unsignedValue = std::strtoull(begin, &end, hex ? 16 : 10);
        if (errno == 0 && end && *end == '\0') {
            isInteger = true;
            return true;
        }
    }
    if (hex) return false;
    errno = 0;
    real = std::strtod(begin, &end);
    if (errno != 0 || !end || *end != '\0') return false;
    isInteger = false;
    return true;
}

bool sameNumber(const String& a, const String& b) {
    bool ia = false, ib = false, na = false, nb = false;
    Sint64 sa = 0, sb = 0;
    Uint64 ua = 0, ub = 0;
    double ra = 0, rb = 0;
    const bool pa = parseNumber(a, ia, sa, ua, na, ra);
    const bool pb = parseNumber(b, ib, sb, ub, nb, rb);
    if (!pa || !pb) return String::equal(a, b);
    if (ia && ib) {
        if (na != nb) return (na ? sa == 0 : ua == 0) && (nb ? sb == 0 : ub == 0);  // only -0 and 0
        return na ? sa == sb : ua == ub;
    }
    const double x = ia ? (na ? double(sa) : double(ua)) : ra;
    const double y = ib ? (nb ? double(sb) : double(ub)) : rb;
    return x == y;
}

}  // namespace

CIMKeyBinding::CIMKeyBinding() {}

CIMKeyBinding::CIMKeyBinding(const CIMName& name, const String& value, Type type)
    : _name(name), _value(value), _type(type) {
    if (type == REFERENCE) {
        // Kept in canonical form (keys sorted) when the text is a path.
        try {
            _value = CIMObjectPath(value).toString();
        } catch (const Exception&) {
        }
    }
}

CIMKeyBinding::CIMKeyBinding(const CIMName& name, const CIMValue& value) : _name(name) {
    if (value.isArray()) throw TypeMismatchException("an array cannot be a key");
    switch (value.getType()) {
    case CIMTYPE_BOOLEAN: _type = BOOLEAN; break;
    case CIMTYPE_CHAR16:
    case CIMTYPE_STRING:
    case CIMTYPE_DATETIME: _type = STRING; break;
    case CIMTYPE_REFERENCE: _type = REFERENCE; break;
    case CIMTYPE_OBJECT:
    case CIMTYPE_INSTANCE: throw TypeMismatchException("an embedded object cannot be a key");
    default: _type = NUMERIC; break;
    }
    _value = value.toString();
}

Boolean CIMKeyBinding::equal(CIMValue value) {
    try {
        return *this == CIMKeyBinding(_name, value);
    } catch (const TypeMismatchException&) {
        return false;
    }
}

Boolean operator==(const CIMKeyBinding& x, const CIMKeyBinding& y) {
    if (!x.getName().equal(y.getName()) || x.getType() != y.getType()) return false;
    switch (x.getType()) {
    case CIMKeyBinding::STRING: return String::equal(x.getValue(), y.getValue());
    case CIMKeyBinding::BOOLEAN: return String::equalNoCase(x.getValue(), y.getValue());
    case CIMKeyBinding::NUMERIC: return sameNumber(x.getValue(), y.getValue());
    case CIMKeyBinding::REFERENCE:
        try {
            return CIMObjectPath(x.getValue()) == CIMObjectPath(y.getValue());
        } catch (const Exception&) {
            return String::equal(x.getValue(), y.getValue());
        }
    }
    return false;
}

PEGASUS_NAMESPACE_END
