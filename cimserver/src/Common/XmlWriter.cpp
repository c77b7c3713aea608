#include <Pegasus/Common/XmlWriter.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/Char16.h>

#include <cmath>
#include <cstdio>

PEGASUS_NAMESPACE_BEGIN

namespace {

const char kReplacement[] = "\xEF\xBF\xBD";

void appendAttribute(std::string& out, const char* name, const String& value) {
    out += ' ';
    out += name;
    out += "=\"";
    XmlWriter::appendEscaped(out, value);
    out += '"';
}

void appendElementText(std::string& out, const char* tag, const std::string& text) {
    out += '<';
    out += tag;
    out += '>';
    XmlWriter::appendEscaped(out, text);
    out += "</";
    out += tag;
    out += '>';
}

// Length of the valid UTF-8 sequence at s[i], or 0 when the bytes there are
// not one (overlong forms, surrogates and values above U+10FFFF included).
// `cp` receives the code point.
size_t utf8Sequence(const unsigned char* s, size_t n, size_t i, char32_t& cp) {
    const unsigned char c = s[i];
    size_t len;
    char32_t min;
    if ((c & 0xE0) == 0xC0) { len = 2; cp = c & 0x1F; min = 0x80; }
    else if ((c & 0xF0) == 0xE0) { len = 3; cp = c & 0x0F; min = 0x800; }
    else if ((c & 0xF8) == 0xF0) { len = 4; cp = c & 0x07; min = 0x10000; }
    else return 0;
    if (i + len > n) return 0;
    for (size_t k = 1; k < len; ++k) {
        if ((s[i + k] & 0xC0) != 0x80) return 0;
        cp = (cp << 6) | (s[i + k] & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
    return len;
}

void appendNumber(std::string& out, const char* format, unsigned long long x) {
    char buffer[32];
    int n = std::snprintf(buffer, sizeof buffer, format, x);
    out.append(buffer, size_t(n));
}

void appendSigned(std::string& out, long long x) {
    char buffer[32];
    int n = std::snprintf(buffer, sizeof buffer, "%lld", x);
    out.append(buffer, size_t(n));
}

void appendReal(std::string& out, double x, bool single) {
    if (std::isnan(x)) { out += "NaN"; return; }
    if (std::isinf(x)) { out += x < 0 ? "-INF" : "INF"; return; }
    char buffer[40];
    int n = std::snprintf(buffer, sizeof buffer, single ? "%.7e" : "%.16e", x);
    out.append(buffer, size_t(n));
}

// The text of one scalar, escaped, inside VALUE.
void appendScalarText(std::string& out, Boolean x) { out += x ? "TRUE" : "FALSE"; }
void appendScalarText(std::string& out, Uint8 x) { appendNumber(out, "%llu", x); }
void appendScalarText(std::string& out, Uint16 x) { appendNumber(out, "%llu", x); }
void appendScalarText(std::string& out, Uint32 x) { appendNumber(out, "%llu", x); }
void appendScalarText(std::string& out, Uint64 x) { appendNumber(out, "%llu", x); }
void appendScalarText(std::string& out, Sint8 x) { appendSigned(out, x); }
void appendScalarText(std::string& out, Sint16 x) { appendSigned(out, x); }
void appendScalarText(std::string& out, Sint32 x) { appendSigned(out, x); }
void appendScalarText(std::string& out, Sint64 x) { appendSigned(out, x); }
void appendScalarText(std::string& out, Real32 x) { appendReal(out, x, true); }
void appendScalarText(std::string& out, Real64 x) { appendReal(out, x, false); }
void appendScalarText(std::string& out, const Char16& x) {
    Char16 text[1] = {x};
    XmlWriter::appendEscaped(out, String(text, 1));
}
void appendScalarText(std::string& out, const String& x) { XmlWriter::appendEscaped(out, x); }
void appendScalarText(std::string& out, const CIMDateTime& x) { XmlWriter::appendEscaped(out, x.toString()); }
// Embedded objects travel as escaped CIM-XML text.
void appendScalarText(std::string& out, const CIMObject& x) {
    std::string inner;
    XmlWriter::appendObjectElement(inner, x);
    XmlWriter::appendEscaped(out, inner);
}
void appendScalarText(std::string& out, const CIMInstance& x) {
    std::string inner;
    XmlWriter::appendInstanceElement(inner, x);
    XmlWriter::appendEscaped(out, inner);
}

template <class T>
void appendScalarValue(std::string& out, const CIMValue& value) {
    T x;
    value.get(x);
    out += "<VALUE>";
    appendScalarText(out, x);
    out += "</VALUE>";
}

template <class T>
void appendArrayValues(std::string& out, const CIMValue& value) {
    Array<T> items;
    value.get(items);
    out += "<VALUE.ARRAY>";
    for (Uint32 i = 0; i < items.size(); ++i) {
        out += "<VALUE>";
        appendScalarText(out, items[i]);
        out += "</VALUE>";
    }
    out += "</VALUE.ARRAY>";
}

}  // namespace

void XmlWriter::appendEscaped(std::string& out, const String& text) { appendEscaped(out, text.toUtf8()); }

void XmlWriter::appendEscaped(std::string& out, const std::string& utf8) {
    const unsigned char* s = reinterpret_cast<const unsigned char*>(utf8.data());
    const size_t n = utf8.size();
    out.reserve(out.size() + n);
    for (size_t i = 0; i < n;) {
        const unsigned char c = s[i];
        if (c >= 0x80) {
            char32_t cp = 0;
            size_t len = utf8Sequence(s, n, i, cp);
            if (len == 0 || cp == 0xFFFE || cp == 0xFFFF) {
                out += kReplacement;
                i += len == 0 ? 1 : len;
            } else {
                out.append(utf8, i, len);
                i += len;
            }
            continue;
        }
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        case '\'': out += "&apos;"; break;
        case '\t': out += "&#9;"; break;
        case '\n': out += "&#10;"; break;
        case '\r': out += "&#13;"; break;
        case ' ':
            // A blank at either end, or after another blank, would be lost by
            // readers that trim or collapse white space.
            if (i == 0 || i + 1 == n || s[i - 1] == ' ') out += "&#32;";
            else out += ' ';
            break;
        default:
            if (c < 0x20) out += kReplacement;
            else out += char(c);
        }
        ++i;
    }
}

const char* XmlWriter::typeName(CIMType type) {
    return type == CIMTYPE_OBJECT || type == CIMTYPE_INSTANCE ? "string" : cimTypeToString(type);
}

void XmlWriter::appendValueElement(std::string& out, const CIMValue& value) {
    if (value.isNull()) return;
    if (value.isArray()) {
        switch (value.getType()) {
        case CIMTYPE_BOOLEAN: appendArrayValues<Boolean>(out, value); break;
        case CIMTYPE_UINT8: appendArrayValues<Uint8>(out, value); break;
        case CIMTYPE_SINT8: appendArrayValues<Sint8>(out, value); break;
        case CIMTYPE_UINT16: appendArrayValues<Uint16>(out, value); break;
        case CIMTYPE_SINT16: appendArrayValues<Sint16>(out, value); break;
        case CIMTYPE_UINT32: appendArrayValues<Uint32>(out, value); break;
        case CIMTYPE_SINT32: appendArrayValues<Sint32>(out, value); break;
        case CIMTYPE_UINT64: appendArrayValues<Uint64>(out, value); break;
        case CIMTYPE_SINT64: appendArrayValues<Sint64>(out, value); break;
        case CIMTYPE_REAL32: appendArrayValues<Real32>(out, value); break;
        case CIMTYPE_REAL64: appendArrayValues<Real64>(out, value); break;
        case CIMTYPE_CHAR16: appendArrayValues<Char16>(out, value); break;
        case CIMTYPE_STRING: appendArrayValues<String>(out, value); break;
        case CIMTYPE_DATETIME: appendArrayValues<CIMDateTime>(out, value); break;
        case CIMTYPE_OBJECT: appendArrayValues<CIMObject>(out, value); break;
        case CIMTYPE_INSTANCE: appendArrayValues<CIMInstance>(out, value); break;
        case CIMTYPE_REFERENCE: {
            Array<CIMObjectPath> paths;
            value.get(paths);
            out += "<VALUE.REFARRAY>";
            for (Uint32 i = 0; i < paths.size(); ++i) appendValueReferenceElement(out, paths[i]);
            out += "</VALUE.REFARRAY>";
            break;
        }
        }
        return;
    }
    switch (value.getType()) {
    case CIMTYPE_BOOLEAN: appendScalarValue<Boolean>(out, value); break;
    case CIMTYPE_UINT8: appendScalarValue<Uint8>(out, value); break;
    case CIMTYPE_SINT8: appendScalarValue<Sint8>(out, value); break;
    case CIMTYPE_UINT16: appendScalarValue<Uint16>(out, value); break;
    case CIMTYPE_SINT16: appendScalarValue<Sint16>(out, value); break;
    case CIMTYPE_UINT32: appendScalarValue<Uint32>(out, value); break;
    case CIMTYPE_SINT32: appendScalarValue<Sint32>(out, value); break;
    case CIMTYPE_UINT64: appendScalarValue<Uint64>(out, value); break;
    case CIMTYPE_SINT64: appendScalarValue<Sint64>(out, value); break;
    case CIMTYPE_REAL32: appendScalarValue<Real32>(out, value); break;
    case CIMTYPE_REAL64: appendScalarValue<Real64>(out, value); break;
    case CIMTYPE_CHAR16: appendScalarValue<Char16>(out, value); break;
    case CIMTYPE_STRING: appendScalarValue<String>(out, value); break;
    case CIMTYPE_DATETIME: appendScalarValue<CIMDateTime>(out, value); break;
    case CIMTYPE_OBJECT: appendScalarValue<CIMObject>(out, value); break;
    case CIMTYPE_INSTANCE: appendScalarValue<CIMInstance>(out, value); break;
    case CIMTYPE_REFERENCE: {
        CIMObjectPath path;
        value.get(path);
        appendValueReferenceElement(out, path);
        break;
    }
    }
}

void XmlWriter::appendPropertyElement(std::string& out, const CIMConstProperty& property) {
    appendPropertyElement(out, property, true);
}

void XmlWriter::appendPropertyElement(std::string& out, const CIMConstProperty& property,
                                      Boolean includeClassOrigin) {
    const CIMValue& value = property.getValue();
    const CIMType type = value.getType();
    const char* tag = type == CIMTYPE_REFERENCE ? "PROPERTY.REFERENCE"
                      : value.isArray()          ? "PROPERTY.ARRAY"
                                                 : "PROPERTY";
    out += '<';
    out += tag;
    appendAttribute(out, "NAME", property.getName().getString());
    if (type == CIMTYPE_REFERENCE) {
        if (!property.getReferenceClassName().isNull())
            appendAttribute(out, "REFERENCECLASS", property.getReferenceClassName().getString());
    } else {
        out += " TYPE=\"";
        out += typeName(type);
        out += '"';
        if (type == CIMTYPE_OBJECT) out += " EmbeddedObject=\"object\"";
        if (type == CIMTYPE_INSTANCE) out += " EmbeddedObject=\"instance\"";
    }
    if (includeClassOrigin && !property.getClassOrigin().isNull())
        appendAttribute(out, "CLASSORIGIN", property.getClassOrigin().getString());
    if (property.getPropagated()) out += " PROPAGATED=\"true\"";
    out += '>';
    appendValueElement(out, value);
    out += "</";
    out += tag;
    out += '>';
}

void XmlWriter::appendInstanceElement(std::string& out, const CIMConstInstance& instance) {
    appendInstanceElement(out, instance, CIMPropertyList(), true);
}

void XmlWriter::appendInstanceElement(std::string& out, const CIMConstInstance& instance,
                                      const CIMPropertyList& propertyList,
                                      Boolean includeClassOrigin) {
    out += "<INSTANCE";
    appendAttribute(out, "CLASSNAME", instance.getClassName().getString());
    out += '>';
    for (Uint32 i = 0; i < instance.getPropertyCount(); ++i) {
        CIMConstProperty property = instance.getProperty(i);
        if (!propertyList.isNull() && !propertyList.contains(property.getName())) continue;
        appendPropertyElement(out, property, includeClassOrigin);
    }
    out += "</INSTANCE>";
}

void XmlWriter::appendObjectElement(std::string& out, const CIMConstObject& object) {
    appendInstanceElement(out, CIMConstInstance(object));
}

void XmlWriter::appendClassNameElement(std::string& out, const CIMName& className) {
    out += "<CLASSNAME";
    appendAttribute(out, "NAME", className.getString());
    out += "/>";
}

void XmlWriter::appendInstanceNameElement(std::string& out, const CIMObjectPath& path) {
    out += "<INSTANCENAME";
    appendAttribute(out, "CLASSNAME", path.getClassName().getString());
    out += '>';
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i) {
        out += "<KEYBINDING";
        appendAttribute(out, "NAME", keys[i].getName().getString());
        out += '>';
        if (keys[i].getType() == CIMKeyBinding::REFERENCE) {
            appendValueReferenceElement(out, CIMObjectPath(keys[i].getValue()));
        } else {
            const char* kind = keys[i].getType() == CIMKeyBinding::BOOLEAN   ? "boolean"
                               : keys[i].getType() == CIMKeyBinding::NUMERIC ? "numeric"
                                                                              : "string";
            out += "<KEYVALUE VALUETYPE=\"";
            out += kind;
            out += "\">";
            appendEscaped(out, keys[i].getValue());
            out += "</KEYVALUE>";
        }
        out += "</KEYBINDING>";
    }
    out += "</INSTANCENAME>";
}

void XmlWriter::appendLocalNamespacePathElement(std::string& out, const CIMNamespaceName& ns) {
    out += "<LOCALNAMESPACEPATH>";
    const String& text = ns.getString();
    Uint32 start = 0;
    while (start < text.size()) {
        Uint32 slash = text.find(start, Char16('/'));
        Uint32 end = slash == PEG_NOT_FOUND ? text.size() : slash;
        out += "<NAMESPACE";
        appendAttribute(out, "NAME", text.subString(start, end - start));
        out += "/>";
        if (slash == PEG_NOT_FOUND) break;
        start = slash + 1;
    }
    out += "</LOCALNAMESPACEPATH>";
}

void XmlWriter::appendNamespacePathElement(std::string& out, const String& host,
                                           const CIMNamespaceName& ns) {
    out += "<NAMESPACEPATH>";
    appendElementText(out, "HOST", host.toUtf8());
    appendLocalNamespacePathElement(out, ns);
    out += "</NAMESPACEPATH>";
}

void XmlWriter::appendPathElement(std::string& out, const CIMObjectPath& path) {
    const bool instance = path.getKeyBindings().size() > 0;
    const bool withNamespace = !path.getNameSpace().isNull();
    const bool withHost = withNamespace && path.getHost().size() > 0;
    if (withHost) {
        out += instance ? "<INSTANCEPATH>" : "<CLASSPATH>";
        appendNamespacePathElement(out, path.getHost(), path.getNameSpace());
    } else if (withNamespace) {
        out += instance ? "<LOCALINSTANCEPATH>" : "<LOCALCLASSPATH>";
        appendLocalNamespacePathElement(out, path.getNameSpace());
    }
    if (instance) appendInstanceNameElement(out, path);
    else appendClassNameElement(out, path.getClassName());
    if (withHost) out += instance ? "</INSTANCEPATH>" : "</CLASSPATH>";
    else if (withNamespace) out += instance ? "</LOCALINSTANCEPATH>" : "</LOCALCLASSPATH>";
}

void XmlWriter::appendValueReferenceElement(std::string& out, const CIMObjectPath& path) {
    out += "<VALUE.REFERENCE>";
    appendPathElement(out, path);
    out += "</VALUE.REFERENCE>";
}

void XmlWriter::appendValueNamedInstanceElement(std::string& out, const CIMConstInstance& instance) {
    out += "<VALUE.NAMEDINSTANCE>";
    appendInstanceNameElement(out, instance.getPath());
    appendInstanceElement(out, instance);
    out += "</VALUE.NAMEDINSTANCE>";
}

PEGASUS_NAMESPACE_END
