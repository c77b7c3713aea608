#include <Pegasus/CIMXml/CIMXmlWriter.h>

#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/XmlWriter.h>
#include <Pegasus/Schema/ClassDecl.h>

#include <cmath>
#include <cstdio>
#include <strings.h>

namespace Pegasus {

namespace {

void appendAttribute(std::string& out, const char* name, const std::string& value)
{
    out += ' ';
    out += name;
    out += "=\"";
    XmlWriter::appendEscaped(out, value);
    out += '"';
}

bool sameName(const std::string& a, const std::string& b)
{
    return a.size() == b.size() && strcasecmp(a.c_str(), b.c_str()) == 0;
}

bool hasFlavor(const QualifierDecl& q, const char* flavor)
{
    for (const std::string& f : q.flavors)
        if (strcasecmp(f.c_str(), flavor) == 0)
            return true;
    return false;
}

// The CIM type a MOF literal is written as when nothing declares it.
const char* literalTypeName(const MofValue& v)
{
    switch (v.kind)
    {
    case MofValue::BOOLEAN: return "boolean";
    case MofValue::INTEGER:
        if (v.negative)
            return v.fitsSigned(32) ? "sint32" : "sint64";
        return v.fitsUnsigned(32) ? "uint32" : "uint64";
    case MofValue::REAL: return "real64";
    case MofValue::CHAR16: return "char16";
    case MofValue::ARRAY:
        for (const MofValue& e : v.elements)
            if (!e.isNull())
                return literalTypeName(e);
        return "string";
    default: return "string";
    }
}

// The text of one MOF literal, escaped; false when it has no CIM-XML form
// (NULL, or an alias that only means something inside the MOF).
bool appendLiteralText(std::string& out, const MofValue& v)
{
    char buffer[48];
    switch (v.kind)
    {
    case MofValue::STRING: XmlWriter::appendEscaped(out, v.text); return true;
    case MofValue::BOOLEAN: out += v.boolValue ? "TRUE" : "FALSE"; return true;
    case MofValue::INTEGER:
        std::snprintf(buffer, sizeof buffer, v.negative ? "-%llu" : "%llu",
                      static_cast<unsigned long long>(v.magnitude));
        out += buffer;
        return true;
    case MofValue::REAL:
        if (std::isnan(v.realValue)) out += "NaN";
        else if (std::isinf(v.realValue)) out += v.realValue < 0 ? "-INF" : "INF";
        else
        {
            std::snprintf(buffer, sizeof buffer, "%.16e", v.realValue);
            out += buffer;
        }
        return true;
    case MofValue::CHAR16:
    {
        Char16 c[1] = {Char16(v.charValue)};
        XmlWriter::appendEscaped(out, String(c, 1));
        return true;
    }
    default: return false;
    }
}

// VALUE or VALUE.ARRAY for a MOF literal; nothing for NULL.
void appendLiteral(std::string& out, const MofValue& v)
{
    if (v.isArray())
    {
        out += "<VALUE.ARRAY>";
        for (const MofValue& e : v.elements)
        {
            std::string text;
            if (appendLiteralText(text, e))
            {
                out += "<VALUE>";
                out += text;
                out += "</VALUE>";
            }
        }
        out += "</VALUE.ARRAY>";
        return;
    }
    std::string text;
    if (appendLiteralText(text, v))
    {
        out += "<VALUE>";
        out += text;
        out += "</VALUE>";
    }
}

void appendQualifiers(std::string& out, const QualifierList& qualifiers)
{
    for (const QualifierDecl& q : qualifiers.all())
    {
        out += "<QUALIFIER";
        appendAttribute(out, "NAME", q.name);
        out += " TYPE=\"";
        out += literalTypeName(q.value);
        out += '"';
        if (hasFlavor(q, "DisableOverride")) out += " OVERRIDABLE=\"false\"";
        if (hasFlavor(q, "Restricted")) out += " TOSUBCLASS=\"false\"";
        if (hasFlavor(q, "Translatable")) out += " TRANSLATABLE=\"true\"";
        out += '>';
        appendLiteral(out, q.value);
        out += "</QUALIFIER>";
    }
}

void appendArraySize(std::string& out, bool isArray, std::uint32_t size)
{
    if (isArray && size > 0)
    {
        out += " ARRAYSIZE=\"";
        out += std::to_string(size);
        out += '"';
    }
}

void appendClassProperty(std::string& out, const PropertyDecl& p,
                         const CIMXmlWriter::ClassOptions& options)
{
    const char* tag = p.isReference() ? "PROPERTY.REFERENCE"
                      : p.isArray     ? "PROPERTY.ARRAY"
                                      : "PROPERTY";
    out += '<';
    out += tag;
    appendAttribute(out, "NAME", p.name);
    if (p.isReference())
    {
        if (!p.referenceClass.empty())
            appendAttribute(out, "REFERENCECLASS", p.referenceClass);
    }
    else
    {
        out += " TYPE=\"";
        out += XmlWriter::typeName(p.type);
        out += '"';
        if (!p.embeddedInstanceClass.empty())
            out += " EmbeddedObject=\"instance\"";
        else if (p.embeddedObject)
            out += " EmbeddedObject=\"object\"";
        appendArraySize(out, p.isArray, p.arraySize);
    }
    if (options.includeClassOrigin && !p.classOrigin.empty())
        appendAttribute(out, "CLASSORIGIN", p.classOrigin);
    if (p.propagated)
        out += " PROPAGATED=\"true\"";
    out += '>';
    if (options.includeQualifiers)
        appendQualifiers(out, p.qualifiers);
    if (p.defaultValue && !p.isReference())
        appendLiteral(out, *p.defaultValue);
    out += "</";
    out += tag;
    out += '>';
}

void appendParameter(std::string& out, const ParameterDecl& p, bool includeQualifiers)
{
    const char* tag = p.isReference() ? (p.isArray ? "PARAMETER.REFARRAY" : "PARAMETER.REFERENCE")
                      : p.isArray     ? "PARAMETER.ARRAY"
                                      : "PARAMETER";
    out += '<';
    out += tag;
    appendAttribute(out, "NAME", p.name);
    if (p.isReference())
    {
        if (!p.referenceClass.empty())
            appendAttribute(out, "REFERENCECLASS", p.referenceClass);
    }
    else
    {
        out += " TYPE=\"";
        out += XmlWriter::typeName(p.type);
        out += '"';
    }
    appendArraySize(out, p.isArray, p.arraySize);
    out += '>';
    if (includeQualifiers)
        appendQualifiers(out, p.qualifiers);
    out += "</";
    out += tag;
    out += '>';
}

void appendMethod(std::string& out, const MethodDecl& m, const CIMXmlWriter::ClassOptions& options)
{
    out += "<METHOD";
    appendAttribute(out, "NAME", m.name);
    out += " TYPE=\"";
    out += XmlWriter::typeName(m.returnType);
    out += '"';
    if (options.includeClassOrigin && !m.classOrigin.empty())
        appendAttribute(out, "CLASSORIGIN", m.classOrigin);
    if (m.propagated)
        out += " PROPAGATED=\"true\"";
    out += '>';
    if (options.includeQualifiers)
        appendQualifiers(out, m.qualifiers);
    for (const ParameterDecl& p : m.parameters)
        appendParameter(out, p, options.includeQualifiers);
    out += "</METHOD>";
}

void appendErrorDescription(std::string& out, const CIMException& error)
{
    std::string description = cimStatusCodeToString(error.getCode());
    const std::string message = error.getMessage().toUtf8();
    if (!message.empty())
    {
        description += ": ";
        description += message;
    }
    out += "<ERROR CODE=\"";
    out += std::to_string(static_cast<int>(error.getCode()));
    out += '"';
    appendAttribute(out, "DESCRIPTION", description);
    out += "/>";
}

} // namespace

void CIMXmlWriter::appendEscaped(std::string& out, const String& text)
{
    XmlWriter::appendEscaped(out, text);
}

void CIMXmlWriter::appendValue(std::string& out, const CIMValue& value)
{
    XmlWriter::appendValueElement(out, value);
}

void CIMXmlWriter::appendClassName(std::string& out, const CIMName& className)
{
    XmlWriter::appendClassNameElement(out, className);
}

void CIMXmlWriter::appendInstanceName(std::string& out, const CIMObjectPath& path)
{
    XmlWriter::appendInstanceNameElement(out, path);
}

void CIMXmlWriter::appendLocalNamespacePath(std::string& out, const CIMNamespaceName& nameSpace)
{
    XmlWriter::appendLocalNamespacePathElement(out, nameSpace);
}

void CIMXmlWriter::appendNamespacePath(std::string& out, const String& host,
    const CIMNamespaceName& nameSpace)
{
    XmlWriter::appendNamespacePathElement(out, host, nameSpace);
}

void CIMXmlWriter::appendLocalInstancePath(std::string& out, const CIMObjectPath& path)
{
    out += "<LOCALINSTANCEPATH>";
    XmlWriter::appendLocalNamespacePathElement(out, path.getNameSpace());
    XmlWriter::appendInstanceNameElement(out, path);
    out += "</LOCALINSTANCEPATH>";
}

void CIMXmlWriter::appendInstancePath(std::string& out, const CIMObjectPath& path)
{
    out += "<INSTANCEPATH>";
    XmlWriter::appendNamespacePathElement(out, path.getHost(), path.getNameSpace());
    XmlWriter::appendInstanceNameElement(out, path);
    out += "</INSTANCEPATH>";
}

void CIMXmlWriter::appendLocalClassPath(std::string& out, const CIMObjectPath& path)
{
    out += "<LOCALCLASSPATH>";
    XmlWriter::appendLocalNamespacePathElement(out, path.getNameSpace());
    XmlWriter::appendClassNameElement(out, path.getClassName());
    out += "</LOCALCLASSPATH>";
}

void CIMXmlWriter::appendClassPath(std::string& out, const CIMObjectPath& path)
{
    out += "<CLASSPATH>";
    XmlWriter::appendNamespacePathElement(out, path.getHost(), path.getNameSpace());
    XmlWriter::appendClassNameElement(out, path.getClassName());
    out += "</CLASSPATH>";
}

void CIMXmlWriter::appendValueReference(std::string& out, const CIMObjectPath& path)
{
    XmlWriter::appendValueReferenceElement(out, path);
}

void CIMXmlWriter::appendObjectPath(std::string& out, const CIMObjectPath& path)
{
    out += "<OBJECTPATH>";
    if (path.getKeyBindings().size() > 0)
        appendInstancePath(out, path);
    else
        appendClassPath(out, path);
    out += "</OBJECTPATH>";
}

void CIMXmlWriter::appendInstance(std::string& out, const CIMConstInstance& instance,
    const InstanceOptions& options)
{
    XmlWriter::appendInstanceElement(out, instance, options.propertyList,
                                     options.includeClassOrigin);
}

void CIMXmlWriter::appendValueNamedInstance(std::string& out, const CIMConstInstance& instance,
    const InstanceOptions& options)
{
    out += "<VALUE.NAMEDINSTANCE>";
    XmlWriter::appendInstanceNameElement(out, instance.getPath());
    appendInstance(out, instance, options);
    out += "</VALUE.NAMEDINSTANCE>";
}

void CIMXmlWriter::appendValueObjectWithPath(std::string& out, const CIMConstObject& object,
    const InstanceOptions& options)
{
    out += "<VALUE.OBJECTWITHPATH>";
    appendInstancePath(out, object.getPath());
    appendInstance(out, CIMConstInstance(object), options);
    out += "</VALUE.OBJECTWITHPATH>";
}

void CIMXmlWriter::appendClass(std::string& out, const ClassDecl& cls, const ClassOptions& options)
{
    out += "<CLASS";
    appendAttribute(out, "NAME", cls.name);
    if (!cls.superClassName.empty())
        appendAttribute(out, "SUPERCLASS", cls.superClassName);
    out += '>';
    if (options.includeQualifiers)
        appendQualifiers(out, cls.qualifiers);
    for (const PropertyDecl& p : cls.properties())
    {
        if (options.localOnly && p.propagated)
            continue;
        if (!options.propertyList.isNull())
        {
            bool listed = false;
            for (Uint32 i = 0; i < options.propertyList.size() && !listed; ++i)
                listed = sameName(options.propertyList[i].getString().toUtf8(), p.name);
            if (!listed)
                continue;
        }
        appendClassProperty(out, p, options);
    }
    for (const MethodDecl& m : cls.methods())
    {
        if (options.localOnly && m.propagated)
            continue;
        appendMethod(out, m, options);
    }
    out += "</CLASS>";
}

void CIMXmlWriter::appendClassWithPath(std::string& out, const String& host,
    const CIMNamespaceName& nameSpace, const ClassDecl& cls, const ClassOptions& options)
{
    out += "<VALUE.OBJECTWITHPATH>";
    appendClassPath(out, CIMObjectPath(host, nameSpace, CIMName(String::fromUtf8(cls.name))));
    appendClass(out, cls, options);
    out += "</VALUE.OBJECTWITHPATH>";
}

void CIMXmlWriter::appendParamValue(std::string& out, const CIMParamValue& param)
{
    const CIMValue value = param.getValue();
    out += "<PARAMVALUE";
    appendAttribute(out, "NAME", param.getParameterName().toUtf8());
    if (param.isTyped())
    {
        out += " PARAMTYPE=\"";
        out += XmlWriter::typeName(value.getType());
        out += '"';
        if (value.getType() == CIMTYPE_INSTANCE)
            out += " EmbeddedObject=\"instance\"";
        else if (value.getType() == CIMTYPE_OBJECT)
            out += " EmbeddedObject=\"object\"";
    }
    out += '>';
    XmlWriter::appendValueElement(out, value);
    out += "</PARAMVALUE>";
}

void CIMXmlWriter::appendError(std::string& out, const CIMException& error)
{
    appendErrorDescription(out, error);
}

void CIMXmlWriter::appendMessageStart(std::string& out, const std::string& messageId)
{
    out += "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
           "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n<MESSAGE";
    appendAttribute(out, "ID", messageId);
    out += " PROTOCOLVERSION=\"1.0\">\n";
}

void CIMXmlWriter::appendMessageEnd(std::string& out)
{
    out += "\n</MESSAGE>\n</CIM>\n";
}

void CIMXmlWriter::beginIMethodResponse(std::string& out, const std::string& messageId,
    const std::string& methodName)
{
    appendMessageStart(out, messageId);
    out += "<SIMPLERSP>\n<IMETHODRESPONSE";
    appendAttribute(out, "NAME", methodName);
    out += ">\n<IRETURNVALUE>";
}

void CIMXmlWriter::endIMethodResponse(std::string& out)
{
    out += "</IRETURNVALUE>\n</IMETHODRESPONSE>\n</SIMPLERSP>";
    appendMessageEnd(out);
}

std::string CIMXmlWriter::formatIMethodResponse(const std::string& messageId,
    const std::string& methodName, const std::string& returnValue, bool hasReturnValue)
{
    std::string out;
    out.reserve(returnValue.size() + 256);
    if (hasReturnValue)
    {
        beginIMethodResponse(out, messageId, methodName);
        out += returnValue;
        endIMethodResponse(out);
        return out;
    }
    appendMessageStart(out, messageId);
    out += "<SIMPLERSP>\n<IMETHODRESPONSE";
    appendAttribute(out, "NAME", methodName);
    out += "></IMETHODRESPONSE>\n</SIMPLERSP>";
    appendMessageEnd(out);
    return out;
}

namespace {

// An ERROR answer inside the response element of an intrinsic
// (IMETHODRESPONSE) or extrinsic (METHODRESPONSE) call.
std::string formatCallError(const std::string& messageId, const char* element, const std::string& methodName,
    const CIMException& error)
{
    std::string out;
    CIMXmlWriter::appendMessageStart(out, messageId);
    out += "<SIMPLERSP>\n<";
    out += element;
    appendAttribute(out, "NAME", methodName);
    out += ">\n";
    CIMXmlWriter::appendError(out, error);
    out += "\n</";
    out += element;
    out += ">\n</SIMPLERSP>";
    CIMXmlWriter::appendMessageEnd(out);
    return out;
}

} // namespace

std::string CIMXmlWriter::formatIMethodError(const std::string& messageId,
    const std::string& methodName, const CIMException& error)
{
    return formatCallError(messageId, "IMETHODRESPONSE", methodName, error);
}

std::string CIMXmlWriter::formatMethodResponse(const std::string& messageId,
    const std::string& methodName, const CIMValue& returnValue,
    const Array<CIMParamValue>& outParameters)
{
    std::string out;
    appendMessageStart(out, messageId);
    out += "<SIMPLERSP>\n<METHODRESPONSE";
    appendAttribute(out, "NAME", methodName);
    out += ">\n";
    if (!returnValue.isNull())
    {
        out += "<RETURNVALUE PARAMTYPE=\"";
        out += XmlWriter::typeName(returnValue.getType());
        out += '"';
        if (returnValue.getType() == CIMTYPE_INSTANCE)
            out += " EmbeddedObject=\"instance\"";
        else if (returnValue.getType() == CIMTYPE_OBJECT)
            out += " EmbeddedObject=\"object\"";
        out += '>';
        XmlWriter::appendValueElement(out, returnValue);
        out += "</RETURNVALUE>\n";
    }
    for (Uint32 i = 0; i < outParameters.size(); ++i)
    {
        appendParamValue(out, outParameters[i]);
        out += '\n';
    }
    out += "</METHODRESPONSE>\n</SIMPLERSP>";
    appendMessageEnd(out);
    return out;
}

std::string CIMXmlWriter::formatMethodError(const std::string& messageId,
    const std::string& methodName, const CIMException& error)
{
    return formatCallError(messageId, "METHODRESPONSE", methodName, error);
}

std::string CIMXmlWriter::formatExportIndication(const CIMInstance& indication,
    const std::string& messageId)
{
    std::string out;
    appendMessageStart(out, messageId);
    out += "<SIMPLEEXPREQ>\n<EXPMETHODCALL NAME=\"ExportIndication\">\n"
           "<EXPPARAMVALUE NAME=\"NewIndication\">";
    XmlWriter::appendInstanceElement(out, indication);
    out += "</EXPPARAMVALUE>\n</EXPMETHODCALL>\n</SIMPLEEXPREQ>";
    appendMessageEnd(out);
    return out;
}

std::string CIMXmlWriter::formatExportIndicationResponse(const std::string& messageId)
{
    std::string out;
    appendMessageStart(out, messageId);
    out += "<SIMPLEEXPRSP>\n<EXPMETHODRESPONSE NAME=\"ExportIndication\">"
           "</EXPMETHODRESPONSE>\n</SIMPLEEXPRSP>";
    appendMessageEnd(out);
    return out;
}

std::string CIMXmlWriter::formatExportIndicationError(const std::string& messageId,
    const CIMException& error)
{
    std::string out;
    appendMessageStart(out, messageId);
    out += "<SIMPLEEXPRSP>\n<EXPMETHODRESPONSE NAME=\"ExportIndication\">\n";
    appendError(out, error);
    out += "\n</EXPMETHODRESPONSE>\n</SIMPLEEXPRSP>";
    appendMessageEnd(out);
    return out;
}

} // namespace Pegasus
