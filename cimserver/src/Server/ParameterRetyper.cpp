#include <Pegasus/Server/ParameterRetyper.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Exception.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <strings.h>

namespace Pegasus {

namespace {

[[noreturn]] void invalid(const std::string& what, const std::string& text, const char* type) {
    throw CIMException(CIM_ERR_INVALID_PARAMETER,
        String::fromUtf8(what + ": \"" + text + "\" is not a valid " + type));
}

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string trimmed(const std::string& s) {
    std::size_t b = 0, e = s.size();
    while (b < e && isSpace(s[b])) ++b;
    while (e > b && isSpace(s[e - 1])) --e;
    return s.substr(b, e - b);
}

// Decimal, or hexadecimal with 0x; an optional sign.
bool parseInteger(const std::string& text, bool& negative, unsigned long long& magnitude) {
    std::string s = text;
    negative = false;
    if (!s.empty() && (s[0] == '+' || s[0] == '-')) {
        negative = s[0] == '-';
        s = s.substr(1);
    }
    if (s.empty()) return false;
    int base = 10;
    if (s.size() > 2 && s[0] == '0' && (s[1] == 'x' || s[1] == 'X')) {
        base = 16;
        s = s.substr(2);
    }
    for (char c : s) {
        const bool ok = base == 16 ? std::isxdigit(static_cast<unsigned char>(c)) != 0
                                   : std::isdigit(static_cast<unsigned char>(c)) != 0;
        if (!ok) return false;
    }
    errno = 0;
    magnitude = std::strtoull(s.c_str(), nullptr, base);
    return errno == 0;
}

template <typename T>
CIMValue unsignedValue(const std::string& text, const std::string& what, const char* name) {
    bool negative;
    unsigned long long magnitude;
    if (!parseInteger(text, negative, magnitude) || (negative && magnitude != 0) ||
        magnitude > std::numeric_limits<T>::max())
        invalid(what, text, name);
    return CIMValue(static_cast<T>(magnitude));
}

template <typename T>
CIMValue signedValue(const std::string& text, const std::string& what, const char* name) {
    bool negative;
    unsigned long long magnitude;
    if (!parseInteger(text, negative, magnitude)) invalid(what, text, name);
    const unsigned long long limit = negative
        ? static_cast<unsigned long long>(std::numeric_limits<T>::max()) + 1
        : static_cast<unsigned long long>(std::numeric_limits<T>::max());
    if (magnitude > limit) invalid(what, text, name);
    const long long v = negative ? static_cast<long long>(0 - magnitude) : static_cast<long long>(magnitude);
    return CIMValue(static_cast<T>(v));
}

double realValue(const std::string& text, const std::string& what, const char* name) {
    if (text.empty()) invalid(what, text, name);
    char* end = nullptr;
    errno = 0;
    const double v = std::strtod(text.c_str(), &end);
    if (end == nullptr || *end != '\0' || errno == ERANGE || std::isnan(v)) invalid(what, text, name);
    return v;
}

template <typename T>
CIMValue arrayOf(const Array<String>& items, CIMType type, const std::string& what) {
    Array<T> out;
    for (Uint32 i = 0; i < items.size(); ++i) {
        const CIMValue one = ParameterRetyper::parseScalar(items[i], type, what);
        T v;
        one.get(v);
        out.append(v);
    }
    return CIMValue(out);
}

CIMValue parseArray(const Array<String>& items, CIMType type, const std::string& what) {
    switch (type) {
    case CIMTYPE_BOOLEAN: return arrayOf<Boolean>(items, type, what);
    case CIMTYPE_UINT8: return arrayOf<Uint8>(items, type, what);
    case CIMTYPE_SINT8: return arrayOf<Sint8>(items, type, what);
    case CIMTYPE_UINT16: return arrayOf<Uint16>(items, type, what);
    case CIMTYPE_SINT16: return arrayOf<Sint16>(items, type, what);
    case CIMTYPE_UINT32: return arrayOf<Uint32>(items, type, what);
    case CIMTYPE_SINT32: return arrayOf<Sint32>(items, type, what);
    case CIMTYPE_UINT64: return arrayOf<Uint64>(items, type, what);
    case CIMTYPE_SINT64: return arrayOf<Sint64>(items, type, what);
    case CIMTYPE_REAL32: return arrayOf<Real32>(items, type, what);
    case CIMTYPE_REAL64: return arrayOf<Real64>(items, type, what);
    case CIMTYPE_CHAR16: return arrayOf<Char16>(items, type, what);
    case CIMTYPE_STRING: return CIMValue(items);
    case CIMTYPE_DATETIME: return arrayOf<CIMDateTime>(items, type, what);
    case CIMTYPE_REFERENCE: return arrayOf<CIMObjectPath>(items, type, what);
    default:
        throw CIMException(CIM_ERR_TYPE_MISMATCH,
            String::fromUtf8(what + ": embedded objects must be sent typed"));
    }
}

} // namespace

CIMValue ParameterRetyper::parseScalar(const String& value, CIMType type, const std::string& what) {
    const std::string raw = value.toUtf8();
    const std::string text = type == CIMTYPE_STRING ? raw : trimmed(raw);
    switch (type) {
    case CIMTYPE_BOOLEAN:
        if (::strcasecmp(text.c_str(), "true") == 0) return CIMValue(Boolean(true));
        if (::strcasecmp(text.c_str(), "false") == 0) return CIMValue(Boolean(false));
        invalid(what, text, "boolean");
    case CIMTYPE_UINT8: return unsignedValue<Uint8>(text, what, "uint8");
    case CIMTYPE_SINT8: return signedValue<Sint8>(text, what, "sint8");
    case CIMTYPE_UINT16: return unsignedValue<Uint16>(text, what, "uint16");
    case CIMTYPE_SINT16: return signedValue<Sint16>(text, what, "sint16");
    case CIMTYPE_UINT32: return unsignedValue<Uint32>(text, what, "uint32");
    case CIMTYPE_SINT32: return signedValue<Sint32>(text, what, "sint32");
    case CIMTYPE_UINT64: return unsignedValue<Uint64>(text, what, "uint64");
    case CIMTYPE_SINT64: return signedValue<Sint64>(text, what, "sint64");
    case CIMTYPE_REAL32: {
        const double v = realValue(text, what, "real32");
        if (std::fabs(v) > std::numeric_limits<float>::max()) invalid(what, text, "real32");
        return CIMValue(static_cast<Real32>(v));
    }
    case CIMTYPE_REAL64: return CIMValue(static_cast<Real64>(realValue(text, what, "real64")));
    case CIMTYPE_CHAR16: {
        if (value.size() != 1) invalid(what, raw, "char16");
        return CIMValue(value[0]);
    }
    case CIMTYPE_STRING: return CIMValue(value);
    case CIMTYPE_DATETIME:
        try {
            return CIMValue(CIMDateTime(String::fromUtf8(text)));
        } catch (const Exception&) {
            invalid(what, text, "datetime");
        }
    case CIMTYPE_REFERENCE:
        try {
            return CIMValue(CIMObjectPath(String::fromUtf8(text)));
        } catch (const Exception&) {
            invalid(what, text, "reference");
        }
    default:
        throw CIMException(CIM_ERR_TYPE_MISMATCH,
            String::fromUtf8(what + ": embedded objects must be sent typed"));
    }
}

Array<CIMParamValue> ParameterRetyper::retype(const MethodDecl& method, const Array<CIMParamValue>& in) {
    Array<CIMParamValue> out;
    for (Uint32 i = 0; i < in.size(); ++i) {
        const std::string name = in[i].getParameterName().toUtf8();
        const ParameterDecl* decl = method.findParameter(name);
        const std::string what = "parameter " + name + " of " + method.name;
        if (decl == nullptr || !decl->isIn)
            throw CIMException(CIM_ERR_INVALID_PARAMETER,
                String::fromUtf8(method.name + " has no input parameter " + name));
        for (Uint32 j = 0; j < i; ++j)
            if (String::equalNoCase(in[j].getParameterName(), in[i].getParameterName()))
                throw CIMException(CIM_ERR_INVALID_PARAMETER, String::fromUtf8(what + " is given twice"));
        const CIMValue value = in[i].getValue();
        // The declared type; embedded instances and objects are strings in the class.
        CIMType declared = decl->type;
        if (!decl->embeddedInstanceClass.empty()) declared = CIMTYPE_INSTANCE;
        else if (decl->embeddedObject) declared = CIMTYPE_OBJECT;
        String realName = String::fromUtf8(decl->name);
        if (value.isNull()) {
            if (value.isArray() != decl->isArray && in[i].isTyped())
                throw CIMException(CIM_ERR_TYPE_MISMATCH, String::fromUtf8(what + ": array and scalar differ"));
            CIMValue null;
            null.setNullValue(declared, decl->isArray);
            out.append(CIMParamValue(realName, null, true));
            continue;
        }
        if (value.isArray() != decl->isArray)
            throw CIMException(CIM_ERR_TYPE_MISMATCH,
                String::fromUtf8(what + (decl->isArray ? " must be an array" : " must not be an array")));
        if (in[i].isTyped() || value.getType() != CIMTYPE_STRING) {
            const CIMType got = value.getType();
            const bool embedded = declared == CIMTYPE_INSTANCE || declared == CIMTYPE_OBJECT;
            const bool ok = got == declared ||
                (embedded && (got == CIMTYPE_INSTANCE || got == CIMTYPE_OBJECT));
            if (!ok)
                throw CIMException(CIM_ERR_TYPE_MISMATCH,
                    String::fromUtf8(what + " is declared " + std::string(cimTypeToString(declared)) +
                                     ", given " + std::string(cimTypeToString(got))));
            out.append(CIMParamValue(realName, value, true));
            continue;
        }
        CIMValue typed;
        if (decl->isArray) {
            Array<String> items;
            value.get(items);
            typed = parseArray(items, declared, what);
        } else {
            String text;
            value.get(text);
            typed = parseScalar(text, declared, what);
        }
        out.append(CIMParamValue(realName, typed, true));
    }
    return out;
}

} // namespace Pegasus
