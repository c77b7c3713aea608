#include <Pegasus/Common/XmlWriter.h>
#include <Pegasus/Common/Array.h>

PEGASUS_NAMESPACE_BEGIN

namespace {

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

// The text of one scalar of an array value, by position.
template <class T>
void appendArrayValues(std::string& out, const CIMValue& value) {
    Array<T> items;
    value.get(items);
    out += "<VALUE.ARRAY>";
    for (Uint32 i = 0; i < items.size(); ++i) XmlWriter::appendValueElement(out, CIMValue(items[i]));
    out += "</VALUE.ARRAY>";
}

}  // namespace

void XmlWriter::appendEscaped(std::string& out, const String& text) { appendEscaped(out, text.toUtf8()); }

void XmlWriter::appendEscaped(std::string& out, const std::string& utf8) {
    for (unsigned char c : utf8) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        case '\'': out += "&apos;"; break;
        default:
            if (c < 0x20 && c != '\t' && c != '\n' && c != '\r') out += "\xEF\xBF\xBD";
            else out += char(c);
        }
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
    if (value.getType() == CIMTYPE_REFERENCE) {
        CIMObjectPath path;
        value.get(path);
        appendValueReferenceElement(out, path);
        return;
    }
    // Embedded objects travel as escaped CIM-XML text; the rest as their text form.
    appendElementText(out, "VALUE", value.toString().toUtf8());
}

void XmlWriter::appendPropertyElement(std::string& out, const CIMConstProperty& property) {
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
        appendAttribute(out, "TYPE", String(typeName(type)));
        if (type == CIMTYPE_OBJECT) appendAttribute(out, "EmbeddedObject", String("object"));
        if (type == CIMTYPE_INSTANCE) appendAttribute(out, "EmbeddedObject", String("instance"));
    }
    if (!property.getClassOrigin().isNull())
        appendAttribute(out, "CLASSORIGIN", property.getClassOrigin().getString());
    if (property.getPropagated()) out += " PROPAGATED=\"true\"";
    out += '>';
    appendValueElement(out, value);
    out += "</";
    out += tag;
    out += '>';
}

void XmlWriter::appendInstanceElement(std::string& out, const CIMConstInstance& instance) {
    out += "<INSTANCE";
    appendAttribute(out, "CLASSNAME", instance.getClassName().getString());
    out += '>';
    for (Uint32 i = 0; i < instance.getPropertyCount(); ++i)
        appendPropertyElement(out, instance.getProperty(i));
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

void XmlWriter::appendValueReferenceElement(std::string& out, const CIMObjectPath& path) {
    const bool instance = path.getKeyBindings().size() > 0;
    const bool withHost = path.getHost().size() > 0 && !path.getNameSpace().isNull();
    const bool withNamespace = !path.getNameSpace().isNull();
    out += "<VALUE.REFERENCE>";
    if (withHost) {
        out += instance ? "<INSTANCEPATH>" : "<CLASSPATH>";
        out += "<NAMESPACEPATH>";
        appendElementText(out, "HOST", path.getHost().toUtf8());
        appendLocalNamespacePathElement(out, path.getNameSpace());
        out += "</NAMESPACEPATH>";
    } else if (withNamespace) {
        out += instance ? "<LOCALINSTANCEPATH>" : "<LOCALCLASSPATH>";
        appendLocalNamespacePathElement(out, path.getNameSpace());
    }
    if (instance) appendInstanceNameElement(out, path);
    else appendClassNameElement(out, path.getClassName());
    if (withHost) out += instance ? "</INSTANCEPATH>" : "</CLASSPATH>";
    else if (withNamespace) out += instance ? "</LOCALINSTANCEPATH>" : "</LOCALCLASSPATH>";
    out += "</VALUE.REFERENCE>";
}

void XmlWriter::appendValueNamedInstanceElement(std::string& out, const CIMConstInstance& instance) {
    out += "<VALUE.NAMEDINSTANCE>";
    appendInstanceNameElement(out, instance.getPath());
    appendInstanceElement(out, instance);
    out += "</VALUE.NAMEDINSTANCE>";
}

PEGASUS_NAMESPACE_END
