#include <Pegasus/Repository/ObjectPathNormalizer.h>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Schema/SchemaManager.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace Pegasus {

namespace {

// Reference keys nest paths; a path nested deeper than this is refused rather
// than recursing without bound on hostile input.
const int MAX_DEPTH = 16;

void appendQuoted(std::string& out, const std::string& text)
{
    out.push_back('"');
    for (char c : text) {
        if (c == '"' || c == '\\')
            out.push_back('\\');
        out.push_back(c);
    }
    out.push_back('"');
}

} // namespace

std::string ObjectPathNormalizer::lower(const std::string& text)
{
    std::string out(text);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
    return out;
}

std::string ObjectPathNormalizer::targetNamespace(const CIMObjectPath& path,
    const std::string& contextNs)
{
    if (path.getNameSpace().isNull())
        return lower(contextNs);
    return lower(path.getNameSpace().getString().toUtf8());
}

std::string ObjectPathNormalizer::normaliseNumber(const std::string& text)
{
    std::string t;
    for (char c : text)
        if (c != ' ' && c != '\t')
            t.push_back(c);
    if (t.empty())
        return text;
    const char* s = t.c_str();
    bool negative = false;
    const char* digits = s;
    if (*digits == '+' || *digits == '-') {
        negative = *digits == '-';
        ++digits;
    }
    int base = 10;
    if (digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
        base = 16;
        digits += 2;
    }
    if (*digits) {
        errno = 0;
        char* end = nullptr;
        unsigned long long magnitude = std::strtoull(digits, &end, base);
        if (*end == '\0' && errno == 0 && digits[0] != '-' && digits[0] != '+') {
            if (magnitude == 0)
                return "0";
            return (negative ? "-" : "") + std::to_string(magnitude);
        }
    }
    errno = 0;
    char* end = nullptr;
    double real = std::strtod(s, &end);
    if (*end == '\0' && errno == 0 && std::isfinite(real)) {
        char buffer[40];
        std::snprintf(buffer, sizeof(buffer), "%.17g", real == 0 ? 0.0 : real);
        return buffer;
    }
    return text;
}

int64_t ObjectPathNormalizer::hash(const std::string& canonicalText)
{
    // FNV-1a, then a final mix so that texts differing only at their end
    // still spread over the whole number.
    uint64_t h = 1469598103934665603ull;
    for (unsigned char c : canonicalText) {
        h ^= c;
        h *= 1099511628211ull;
    }
    h ^= h >> 33;
    h *= 0xff51afd7ed558ccdull;
    h ^= h >> 33;
    h *= 0xc4ceb9fe1a85ec53ull;
    h ^= h >> 33;
    // 48 bits: SQLite keeps such a number in 6 bytes instead of 8.
    return int64_t(h >> 16);
}

std::string ObjectPathNormalizer::canonical(const CIMObjectPath& path,
    const std::string& contextNs) const
{
    std::string out;
    out.reserve(96);
    append(out, path, contextNs, 0);
    return out;
}

std::string ObjectPathNormalizer::canonical(const std::string& className,
    std::vector<KeyValue> keys, const std::string& contextNs) const
{
    std::string out;
    out.reserve(96);
    out += className;
    std::sort(keys.begin(), keys.end(), [](const KeyValue& a, const KeyValue& b) {
        return lower(*a.name) < lower(*b.name);
    });
    char separator = '.';
    for (const KeyValue& key : keys) {
        out.push_back(separator);
        separator = ',';
        out += *key.name;
        out.push_back('=');
        const CIMValue& v = *key.value;
        switch (key.type) {
        case CIMTYPE_BOOLEAN: {
            Boolean b = false;
            v.get(b);
            out += b ? "true" : "false";
            break;
        }
        case CIMTYPE_STRING: case CIMTYPE_CHAR16: case CIMTYPE_DATETIME:
        case CIMTYPE_OBJECT: case CIMTYPE_INSTANCE:
            appendQuoted(out, v.toString().toUtf8());
            break;
        case CIMTYPE_REFERENCE: {
            CIMObjectPath inner;
            v.get(inner);
            out.push_back('{');
            append(out, inner, contextNs, 1);
            out.push_back('}');
            break;
        }
        default:
            out += normaliseNumber(v.toString().toUtf8());
            break;
        }
    }
    return out;
}

void ObjectPathNormalizer::append(std::string& out, const CIMObjectPath& path,
    const std::string& contextNs, int depth) const
{
    if (depth > MAX_DEPTH)
        throw CIMException(CIM_ERR_INVALID_PARAMETER,
            "object path nests references too deeply: " + path.toString());
    std::string ns = targetNamespace(path, contextNs);
    if (ns != lower(contextNs)) {
        out += ns;
        out.push_back(':');
    }
    std::string className = path.getClassName().getString().toUtf8();
    const ClassDecl* cls = _schema.findClass(ns, className);
    if (cls)
        className = cls->name;
    out += className;

    struct Key {
        std::string sortName;
        std::string name;
        const CIMKeyBinding* binding;
        const PropertyDecl* decl;
    };
    std::vector<Key> keys;
    keys.reserve(path.getKeyBindings().size());
    for (const CIMKeyBinding& kb : path.getKeyBindings()) {
        Key key;
        key.name = kb.getName().getString().toUtf8();
        key.sortName = lower(key.name);
        key.binding = &kb;
        key.decl = cls ? cls->findProperty(key.name) : nullptr;
        key.name = key.decl ? key.decl->name : key.sortName;
        keys.push_back(std::move(key));
    }
    std::sort(keys.begin(), keys.end(),
        [](const Key& a, const Key& b) { return a.sortName < b.sortName; });

    char separator = '.';
    for (const Key& key : keys) {
        out.push_back(separator);
        separator = ',';
        out += key.name;
        out.push_back('=');
        std::string value = key.binding->getValue().toUtf8();
        CIMKeyBinding::Type type = key.binding->getType();
        if (key.decl) {
            switch (key.decl->type) {
            case CIMTYPE_BOOLEAN: type = CIMKeyBinding::BOOLEAN; break;
            case CIMTYPE_STRING: case CIMTYPE_CHAR16: case CIMTYPE_DATETIME:
                type = CIMKeyBinding::STRING; break;
            case CIMTYPE_REFERENCE: type = CIMKeyBinding::REFERENCE; break;
            case CIMTYPE_OBJECT: case CIMTYPE_INSTANCE: type = CIMKeyBinding::STRING; break;
            default: type = CIMKeyBinding::NUMERIC; break;
            }
        }
        switch (type) {
        case CIMKeyBinding::BOOLEAN:
            out += lower(value);
            break;
        case CIMKeyBinding::NUMERIC:
            out += normaliseNumber(value);
            break;
        case CIMKeyBinding::STRING:
            appendQuoted(out, value);
            break;
        case CIMKeyBinding::REFERENCE: {
            CIMObjectPath inner;
            try {
                inner.set(key.binding->getValue());
            } catch (const Exception&) {
                // Not a parsable path: kept as text so that the same text still matches.
                appendQuoted(out, value);
                break;
            }
            out.push_back('{');
            append(out, inner, ns, depth + 1);
            out.push_back('}');
            break;
        }
        }
    }
}

} // namespace Pegasus
