#include <Pegasus/CIMXml/CIMXmlOperationHandler.h>

#include <Pegasus/CIMXml/CIMXmlReader.h>
#include <Pegasus/CIMXml/CIMXmlWriter.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/Tracer.h>
#include <Pegasus/Schema/SchemaManager.h>
#include <Pegasus/Server/OperationDispatcher.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <strings.h>

namespace Pegasus {

namespace {

const char* const kXmlContentType = "application/xml; charset=utf-8";
const char* const kInteropNamespace = "root/interop";

bool equalNoCase(const std::string& a, const std::string& b)
{
    return a.size() == b.size() && strcasecmp(a.c_str(), b.c_str()) == 0;
}

std::string lower(std::string s)
{
    for (char& c : s)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

std::string trim(const std::string& s)
{
    const char* ws = " \t\r\n";
    size_t b = s.find_first_not_of(ws);
    if (b == std::string::npos)
        return std::string();
    return s.substr(b, s.find_last_not_of(ws) - b + 1);
}

std::string percentEncode(const std::string& text)
{
    static const char hex[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : text)
    {
        if (std::isalnum(c) || c == '-' || c == '_' || c == '.' || c == '~' || c == ' ' || c == ':'
            || c == '/' || c == ',' || c == '(' || c == ')')
            out += char(c);
        else
        {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
        }
    }
    return out;
}

bool percentDecode(const std::string& text, std::string& out)
{
    out.clear();
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] != '%')
        {
            out += text[i];
            continue;
        }
        if (i + 2 >= text.size() || !std::isxdigit(static_cast<unsigned char>(text[i + 1]))
            || !std::isxdigit(static_cast<unsigned char>(text[i + 2])))
            return false;
        out += char(std::stoi(text.substr(i + 1, 2), nullptr, 16));
        i += 2;
    }
    return true;
}

std::string stripSlash(const std::string& ns)
{
    size_t b = ns.find_first_not_of('/');
    return b == std::string::npos ? std::string() : ns.substr(b);
}

// True when the Content-Type names XML in UTF-8 (no charset means UTF-8).
bool acceptableContentType(const std::string& value)
{
    if (trim(value).empty())
        return true;
    size_t semi = value.find(';');
    const std::string media = lower(trim(value.substr(0, semi)));
    if (media != "application/xml" && media != "text/xml")
        return false;
    while (semi != std::string::npos)
    {
        size_t next = value.find(';', semi + 1);
        std::string param = trim(value.substr(semi + 1, next == std::string::npos ? std::string::npos : next - semi - 1));
        size_t eq = param.find('=');
        if (eq != std::string::npos && lower(trim(param.substr(0, eq))) == "charset")
        {
            std::string cs = lower(trim(param.substr(eq + 1)));
            if (cs.size() >= 2 && cs.front() == '"' && cs.back() == '"')
                cs = cs.substr(1, cs.size() - 2);
            if (cs != "utf-8" && cs != "utf8")
                return false;
        }
        semi = next;
    }
    return true;
}

// The same instance path, ignoring key order and the case of names.
bool samePath(const CIMObjectPath& a, const CIMObjectPath& b)
{
    if (!a.getClassName().equal(b.getClassName()))
        return false;
    if (!equalNoCase(a.getNameSpace().getString().toUtf8(), b.getNameSpace().getString().toUtf8()))
        return false;
    const Array<CIMKeyBinding>& ka = a.getKeyBindings();
    const Array<CIMKeyBinding>& kb = b.getKeyBindings();
    if (ka.size() != kb.size())
        return false;
    for (Uint32 i = 0; i < ka.size(); ++i)
    {
        bool found = false;
        for (Uint32 j = 0; j < kb.size() && !found; ++j)
        {
            if (!ka[i].getName().equal(kb[j].getName()))
                continue;
            if (ka[i].getType() == CIMKeyBinding::REFERENCE && kb[j].getType() == CIMKeyBinding::REFERENCE)
                found = samePath(CIMObjectPath(ka[i].getValue()), CIMObjectPath(kb[j].getValue()));
            else if (ka[i].getType() == CIMKeyBinding::BOOLEAN)
                found = String::equalNoCase(ka[i].getValue(), kb[j].getValue());
            else
                found = ka[i].getValue() == kb[j].getValue();
        }
        if (!found)
            return false;
    }
    return true;
}

// A failure in the request itself: answered at the HTTP level.
struct HttpFailure
{
    int status;
    std::string cimError;
    std::string detail;
};

[[noreturn]] void httpFail(int status, const std::string& cimError, const std::string& detail)
{
    throw HttpFailure{status, cimError, detail};
}

[[noreturn]] void cimFail(CIMStatusCode code, const std::string& text)
{
    throw CIMException(code, String::fromUtf8(text));
}

// The IPARAMVALUEs of one intrinsic call, by lower-case name.
class Parameters
{
public:
    Parameters(const xmlNode* call, const xmlNode* first, const std::vector<const char*>& allowed)
    {
        std::set<std::string> names;
        for (const char* a : allowed)
            names.insert(lower(a));
        for (const xmlNode* p = first; p; p = CIMXmlReader::nextSibling(p))
        {
            if (!CIMXmlReader::isElement(p, "IPARAMVALUE"))
                cimFail(CIM_ERR_INVALID_PARAMETER, std::string("expected IPARAMVALUE inside ")
                        + CIMXmlReader::name(call) + ", found " + CIMXmlReader::name(p));
            const std::string n = CIMXmlReader::requiredAttribute(p, "NAME");
            const std::string key = lower(n);
            if (!names.count(key))
                cimFail(CIM_ERR_NOT_SUPPORTED, "parameter " + n + " is not supported");
            if (!_nodes.emplace(key, p).second)
                cimFail(CIM_ERR_INVALID_PARAMETER, "parameter " + n + " given twice");
        }
    }

    const xmlNode* find(const char* name) const
    {
        auto it = _nodes.find(lower(name));
        return it == _nodes.end() ? nullptr : it->second;
    }

    const xmlNode* required(const char* name) const
    {
        const xmlNode* p = find(name);
        if (!p || !CIMXmlReader::parameterElement(p))
            cimFail(CIM_ERR_INVALID_PARAMETER, std::string("missing required parameter ") + name);
        return p;
    }

    bool boolean(const char* name, bool defaultValue) const
    {
        const xmlNode* p = find(name);
        if (!p || !CIMXmlReader::parameterElement(p))
            return defaultValue;
        return CIMXmlReader::readBooleanParameter(p);
    }

    CIMName className(const char* name) const
    {
        const xmlNode* p = find(name);
        return p ? CIMXmlReader::readClassNameParameter(p) : CIMName();
    }

    String string(const char* name) const
    {
        const xmlNode* p = find(name);
        return p ? CIMXmlReader::readStringParameter(p) : String();
    }

    CIMPropertyList propertyList() const
    {
        const xmlNode* p = find("PropertyList");
        return p ? CIMXmlReader::readPropertyListParameter(p) : CIMPropertyList();
    }

    // INSTANCENAME (or any instance path form) of a required parameter.
    CIMObjectPath instanceName(const char* name) const
    {
        const xmlNode* e = CIMXmlReader::parameterElement(required(name));
        if (!CIMXmlReader::isElement(e, "INSTANCENAME"))
            cimFail(CIM_ERR_INVALID_PARAMETER, std::string(name) + ": expected INSTANCENAME, found "
                    + CIMXmlReader::name(e));
        return CIMXmlReader::readObjectPath(e);
    }

private:
    std::map<std::string, const xmlNode*> _nodes;
};

} // namespace

struct CIMXmlOperationHandler::Call
{
    std::string messageId;
    std::string name;                 // as the client spelled it
    const xmlNode* element = nullptr; // IMETHODCALL or METHODCALL
    const xmlNode* firstParameter = nullptr;
    CIMNamespaceName nameSpace;       // resolved
    CIMObjectPath target;             // extrinsic calls: the object
    OperationContext context;
};

std::string CIMXmlOperationHandler::Response::text() const
{
    std::string out;
    out.reserve(textSize());
    for (const std::string& part : bodyParts)
        out += part;
    out += body;
    return out;
}

size_t CIMXmlOperationHandler::Response::textSize() const
{
    size_t n = body.size();
    for (const std::string& part : bodyParts)
        n += part.size();
    return n;
}

CIMXmlOperationHandler::CIMXmlOperationHandler(const SchemaManager& schema, CIMOMHandleRep& server,
    const std::string& hostName, OperationDispatcher* dispatcher)
    : _schema(schema), _server(server), _hostName(hostName), _dispatcher(dispatcher)
{
}

bool CIMXmlOperationHandler::findHeader(const Request& request, const std::string& name, std::string& value)
{
    for (const auto& h : request.headers)
    {
        if (equalNoCase(h.first, name))
        {
            value = trim(h.second);
            return true;
        }
    }
    return false;
}

std::string CIMXmlOperationHandler::resolveNamespace(const std::string& name) const
{
    std::string ns = stripSlash(trim(name));
    if (equalNoCase(ns, "interop") || equalNoCase(ns, "root/PG_InterOp"))
        ns = kInteropNamespace;
    for (const std::string& served : _schema.namespaces())
        if (equalNoCase(stripSlash(served), ns))
            return served;
    return std::string();
}

CIMXmlOperationHandler::Response CIMXmlOperationHandler::handle(const Request& request) const
{
    try
    {
        return _handle(request);
    }
    catch (const HttpFailure& f)
    {
        PEG_TRACE((TRC_XML, Tracer::LEVEL2, "CIM-XML request refused: %d %s: %s", f.status,
                   f.cimError.c_str(), f.detail.c_str()));
        Response r;
        r.status = f.status;
        if (!f.cimError.empty())
            r.headers.emplace_back("CIMError", f.cimError);
        r.headers.emplace_back("PGErrorDetail", percentEncode(f.detail));
        return r;
    }
    catch (const Exception& e)
    {
        PEG_TRACE((TRC_XML, Tracer::LEVEL1, "CIM-XML request failed: %s", e.getMessage().toUtf8().c_str()));
        Response r;
        r.status = 500;
        r.headers.emplace_back("PGErrorDetail", percentEncode(e.getMessage().toUtf8()));
        return r;
    }
    catch (const std::exception& e)
    {
        PEG_TRACE((TRC_XML, Tracer::LEVEL1, "CIM-XML request failed: %s", e.what()));
        Response r;
        r.status = 500;
        r.headers.emplace_back("PGErrorDetail", percentEncode(e.what()));
        return r;
    }
    catch (...)
    {
        Response r;
        r.status = 500;
        r.headers.emplace_back("PGErrorDetail", "internal%20error");
        return r;
    }
}

CIMXmlOperationHandler::Response CIMXmlOperationHandler::_handle(const Request& request) const
{
    if (request.httpMethod != "POST" && request.httpMethod != "M-POST")
        httpFail(405, std::string(), "method " + request.httpMethod + " is not allowed");
    if (!acceptableContentType(request.contentType))
        httpFail(400, "request-not-valid", "Content-Type \"" + request.contentType + "\" is not XML in UTF-8");

    std::string operation, method, object, protocol, batch;
    if (!findHeader(request, "CIMOperation", operation) || !equalNoCase(operation, "MethodCall"))
        httpFail(400, "unsupported-operation", "the CIMOperation header must be MethodCall");
    if (findHeader(request, "CIMBatch", batch))
        httpFail(501, "multiple-requests-unsupported", "batched requests are not supported");
    const bool hasProtocol = findHeader(request, "CIMProtocolVersion", protocol);
    if (hasProtocol && !CIMXmlReader::hasMajorVersion(protocol, 1))
        httpFail(501, "unsupported-protocol-version", "protocol version " + protocol + " is not supported");
    if (!findHeader(request, "CIMMethod", method) || method.empty())
        httpFail(400, "header-mismatch", "missing CIMMethod header");
    if (!findHeader(request, "CIMObject", object) || object.empty())
        httpFail(400, "header-mismatch", "missing CIMObject header");
    std::string objectText;
    if (!percentDecode(object, objectText))
        httpFail(400, "header-mismatch", "the CIMObject header is not URI-encoded correctly");

    std::unique_ptr<CIMXmlReader> reader;
    try
    {
        reader.reset(new CIMXmlReader(request.body));
    }
    catch (const CIMException& e)
    {
        httpFail(400, "request-not-well-formed", e.getMessage().toUtf8());
    }
    CIMXmlReader::Message message;
    try
    {
        message = reader->readMessage();
    }
    catch (const CIMException& e)
    {
        if (e.getCode() == CIM_ERR_NOT_SUPPORTED)
            httpFail(501, "multiple-requests-unsupported", e.getMessage().toUtf8());
        httpFail(400, "request-not-valid", e.getMessage().toUtf8());
    }
    if (!CIMXmlReader::hasMajorVersion(message.cimVersion, 2))
        httpFail(501, "unsupported-cim-version", "CIMVERSION " + message.cimVersion + " is not supported");
    if (!CIMXmlReader::hasMajorVersion(message.dtdVersion, 2))
        httpFail(501, "unsupported-dtd-version", "DTDVERSION " + message.dtdVersion + " is not supported");
    if (!CIMXmlReader::hasMajorVersion(message.protocolVersion, 1))
        httpFail(501, "unsupported-protocol-version",
                 "PROTOCOLVERSION " + message.protocolVersion + " is not supported");
    if (hasProtocol && protocol != message.protocolVersion)
        httpFail(400, "header-mismatch", "CIMProtocolVersion " + protocol + " differs from PROTOCOLVERSION "
                 + message.protocolVersion);
    if (message.kind != "SIMPLEREQ")
        httpFail(400, "request-not-valid", "expected SIMPLEREQ, found " + message.kind);

    Call call;
    call.messageId = message.id;
    call.element = message.body;
    const bool intrinsic = CIMXmlReader::isElement(message.body, "IMETHODCALL");
    if (!intrinsic && !CIMXmlReader::isElement(message.body, "METHODCALL"))
        httpFail(400, "request-not-valid", std::string("expected IMETHODCALL or METHODCALL, found ")
                 + CIMXmlReader::name(message.body));
    std::string nsName;
    try
    {
        call.name = CIMXmlReader::requiredAttribute(message.body, "NAME");
        const xmlNode* where = CIMXmlReader::firstChild(message.body);
        if (intrinsic)
        {
            nsName = CIMXmlReader::readLocalNamespacePath(where).getString().toUtf8();
        }
        else
        {
            if (!CIMXmlReader::isElement(where, "LOCALINSTANCEPATH") && !CIMXmlReader::isElement(where, "LOCALCLASSPATH"))
                throw CIMException(CIM_ERR_INVALID_PARAMETER, String::fromUtf8(
                    std::string("METHODCALL: expected LOCALINSTANCEPATH or LOCALCLASSPATH, found ")
                    + (where ? CIMXmlReader::name(where) : "nothing")));
            call.target = CIMXmlReader::readObjectPath(where);
            nsName = call.target.getNameSpace().getString().toUtf8();
        }
        call.firstParameter = CIMXmlReader::nextSibling(where);
    }
    catch (const CIMException& e)
    {
        httpFail(400, "request-not-valid", e.getMessage().toUtf8());
    }

    // The headers must say what the body says.
    if (intrinsic)
    {
        if (!equalNoCase(method, call.name))
            httpFail(400, "header-mismatch", "CIMMethod " + method + " differs from " + call.name);
        if (!equalNoCase(stripSlash(objectText), stripSlash(nsName)))
            httpFail(400, "header-mismatch", "CIMObject " + objectText + " differs from namespace " + nsName);
    }
    else
    {
        if (method != call.name)
            httpFail(400, "header-mismatch", "CIMMethod " + method + " differs from " + call.name);
        bool same = false;
        try
        {
            same = samePath(CIMObjectPath(String::fromUtf8(objectText)), call.target);
        }
        catch (const std::exception&)
        {
            same = false;
        }
        if (!same)
            httpFail(400, "header-mismatch", "CIMObject " + objectText + " differs from the object in the request");
    }

    Response response;
    response.headers.emplace_back("CIMOperation", "MethodResponse");
    response.contentType = kXmlContentType;
    try
    {
        const std::string resolved = resolveNamespace(nsName);
        if (resolved.empty())
            cimFail(CIM_ERR_INVALID_NAMESPACE, "namespace " + nsName + " is not served here");
        call.nameSpace = CIMNamespaceName(String::fromUtf8(resolved));
        call.target.setNameSpace(call.nameSpace);
        call.context.insert(IdentityContainer(String::fromUtf8(request.userName)));
        if (intrinsic)
            _intrinsic(call, response);
        else
            response.body = _extrinsic(call);
    }
    catch (const CIMException& e)
    {
        PEG_TRACE((TRC_XML, Tracer::LEVEL3, "%s failed: %s: %s", call.name.c_str(),
                   cimStatusCodeToString(e.getCode()), e.getMessage().toUtf8().c_str()));
        response.bodyParts.clear();
        response.body = intrinsic ? CIMXmlWriter::formatIMethodError(call.messageId, call.name, e)
                                  : CIMXmlWriter::formatMethodError(call.messageId, call.name, e);
    }
    catch (const Exception& e)
    {
        CIMException failed(CIM_ERR_FAILED, e.getMessage());
        response.bodyParts.clear();
        response.body = intrinsic ? CIMXmlWriter::formatIMethodError(call.messageId, call.name, failed)
                                  : CIMXmlWriter::formatMethodError(call.messageId, call.name, failed);
    }
    catch (const std::bad_alloc&)
    {
        throw;
    }
    catch (const std::exception& e)
    {
        CIMException failed(CIM_ERR_FAILED, String::fromUtf8(e.what()));
        response.bodyParts.clear();
        response.body = intrinsic ? CIMXmlWriter::formatIMethodError(call.messageId, call.name, failed)
                                  : CIMXmlWriter::formatMethodError(call.messageId, call.name, failed);
    }
    return response;
}

namespace {

// Class-level association queries, answered from the schema: the
// association classes that reference `cls` (References) or the classes at
// their other ends (Associators).
std::vector<const ClassDecl*> classAssociations(const ClassRegistry& registry, const ClassDecl& cls,
    const CIMName& assocClass, const CIMName& resultClass, const std::string& role,
    const std::string& resultRole, bool wantResults)
{
    std::vector<const ClassDecl*> found;
    auto add = [&](const ClassDecl* c) {
        if (c && std::find(found.begin(), found.end(), c) == found.end())
            found.push_back(c);
    };
    const std::string assocName = assocClass.getString().toUtf8();
    const std::string resultName = resultClass.getString().toUtf8();
    for (const ClassDecl* assoc : registry.associationClassesReferencing(cls.name))
    {
        if (!assocName.empty() && !registry.isSubclassOf(assoc->name, assocName))
            continue;
        for (const PropertyDecl* near : assoc->referenceProperties())
        {
            if (!registry.isSubclassOf(cls.name, near->referenceClass)
                && !registry.isSubclassOf(near->referenceClass, cls.name))
                continue;
            if (!role.empty() && !equalNoCase(role, near->name))
                continue;
            if (!wantResults)
            {
                if (resultName.empty() || registry.isSubclassOf(assoc->name, resultName))
                    add(assoc);
                continue;
            }
            for (const PropertyDecl* far : assoc->referenceProperties())
            {
                if (far == near)
                    continue;
                if (!resultRole.empty() && !equalNoCase(resultRole, far->name))
                    continue;
                if (!resultName.empty() && !registry.isSubclassOf(far->referenceClass, resultName))
                    continue;
                add(registry.findClass(far->referenceClass));
            }
        }
    }
    return found;
}

// Paths of association results carry host and namespace.
CIMObjectPath completed(CIMObjectPath path, const std::string& host, const CIMNamespaceName& ns)
{
    if (path.getNameSpace().isNull())
        path.setNameSpace(ns);
    if (path.getHost().size() == 0)
        path.setHost(String::fromUtf8(host));
    return path;
}

CIMValue readNewValue(const xmlNode* iparam, const PropertyDecl& property)
{
    const xmlNode* v = CIMXmlReader::parameterElement(iparam);
    CIMType type = property.type;
    std::string embedded;
    if (!property.embeddedInstanceClass.empty())
        embedded = "instance";
    else if (property.embeddedObject)
        embedded = "object";
    if (!v)
    {
        CIMType nullType = embedded == "instance" ? CIMTYPE_INSTANCE : embedded == "object" ? CIMTYPE_OBJECT : type;
        return CIMValue(nullType, property.isArray);
    }
    const bool arrayGiven = CIMXmlReader::isElement(v, "VALUE.ARRAY") || CIMXmlReader::isElement(v, "VALUE.REFARRAY");
    if (arrayGiven != property.isArray)
        cimFail(CIM_ERR_TYPE_MISMATCH, "NewValue: property " + property.name
                + (property.isArray ? " is an array" : " is not an array"));
    return CIMXmlReader::readValue(v, type, embedded);
}

} // namespace

void CIMXmlOperationHandler::_intrinsic(Call& call, Response& response) const
{
    const std::string op = call.name;
    const xmlNode* first = call.firstParameter;
    const CIMNamespaceName& ns = call.nameSpace;
    const ClassRegistry* registry = _schema.registry(ns.getString().toUtf8());
    if (!registry)
        cimFail(CIM_ERR_INVALID_NAMESPACE, "namespace " + ns.getString().toUtf8() + " is not served here");
    // The answer is written in place, a large one in pieces: its text is
    // never copied or regrown as a whole. Nothing reaches the response before
    // the whole text is there: an error on the way leaves only the error.
    std::string out;
    std::vector<std::string> pieces;
    CIMXmlWriter::beginIMethodResponse(out, call.messageId, call.name);
    auto settle = [&]() {
        if (out.size() < pieceBytes)
            return;
        pieces.push_back(std::move(out));
        out = std::string();
        out.reserve(pieceBytes + pieceBytes / 8);
    };
    bool hasResult = true;
    auto is = [&](const char* name) { return equalNoCase(op, name); };

    if (is("GetClass"))
    {
        Parameters p(call.element, first, {"ClassName", "LocalOnly", "IncludeQualifiers", "IncludeClassOrigin",
                                           "PropertyList"});
        const CIMName className = CIMXmlReader::readClassNameParameter(p.required("ClassName"));
        const ClassDecl* cls = registry->findClass(className.getString().toUtf8());
        if (!cls)
            cimFail(CIM_ERR_NOT_FOUND, "class " + className.getString().toUtf8() + " does not exist");
        CIMXmlWriter::ClassOptions options;
        options.localOnly = p.boolean("LocalOnly", true);
        options.includeQualifiers = p.boolean("IncludeQualifiers", true);
        options.includeClassOrigin = p.boolean("IncludeClassOrigin", false);
        options.propertyList = p.propertyList();
        CIMXmlWriter::appendClass(out, *cls, options);
    }
    else if (is("EnumerateClasses") || is("EnumerateClassNames"))
    {
        const bool namesOnly = is("EnumerateClassNames");
        std::unique_ptr<Parameters> p;
        if (namesOnly)
            p.reset(new Parameters(call.element, first, {"ClassName", "DeepInheritance"}));
        else
            p.reset(new Parameters(call.element, first, {"ClassName", "DeepInheritance", "LocalOnly",
                                                         "IncludeQualifiers", "IncludeClassOrigin"}));
        const CIMName className = p->className("ClassName");
        const bool deep = p->boolean("DeepInheritance", false);
        std::vector<std::string> names;
        if (className.isNull())
            names = deep ? registry->classNames() : registry->topClasses();
        else
        {
            if (!registry->hasClass(className.getString().toUtf8()))
                cimFail(CIM_ERR_INVALID_CLASS, "class " + className.getString().toUtf8() + " does not exist");
            names = registry->subclassesOf(className.getString().toUtf8(), deep);
        }
        CIMXmlWriter::ClassOptions options;
        if (!namesOnly)
        {
            options.localOnly = p->boolean("LocalOnly", true);
            options.includeQualifiers = p->boolean("IncludeQualifiers", true);
            options.includeClassOrigin = p->boolean("IncludeClassOrigin", false);
        }
        for (const std::string& n : names)
        {
            const ClassDecl* cls = registry->findClass(n);
            if (!cls)
                continue;
            if (namesOnly)
                CIMXmlWriter::appendClassName(out, CIMName(String::fromUtf8(cls->name)));
            else
                CIMXmlWriter::appendClass(out, *cls, options);
        }
        hasResult = !names.empty();
    }
    else if (is("GetInstance"))
    {
        Parameters p(call.element, first, {"InstanceName", "LocalOnly", "IncludeQualifiers", "IncludeClassOrigin",
                                           "PropertyList"});
        CIMObjectPath name = p.instanceName("InstanceName");
        name.setNameSpace(ns);
        CIMXmlWriter::InstanceOptions options;
        options.includeQualifiers = p.boolean("IncludeQualifiers", false);
        options.includeClassOrigin = p.boolean("IncludeClassOrigin", false);
        options.propertyList = p.propertyList();
        p.boolean("LocalOnly", false);  // checked, then ignored: instances carry no local-only notion
        CIMInstance instance = _server.getInstance(call.context, ns, name, false, options.includeQualifiers,
                                                   options.includeClassOrigin, options.propertyList);
        CIMXmlWriter::appendInstance(out, instance, options);
    }
    else if (is("EnumerateInstances"))
    {
        Parameters p(call.element, first, {"ClassName", "DeepInheritance", "LocalOnly", "IncludeQualifiers",
                                           "IncludeClassOrigin", "PropertyList"});
        const CIMName className = CIMXmlReader::readClassNameParameter(p.required("ClassName"));
        CIMXmlWriter::InstanceOptions options;
        options.includeQualifiers = p.boolean("IncludeQualifiers", false);
        options.includeClassOrigin = p.boolean("IncludeClassOrigin", false);
        options.propertyList = p.propertyList();
        const bool deep = p.boolean("DeepInheritance", true);
        p.boolean("LocalOnly", false);
        Uint32 count = 0;
        if (_dispatcher)
        {
            _dispatcher->enumerateInstances(call.context, ns, className, deep, false, options.includeQualifiers,
                options.includeClassOrigin, options.propertyList, Caller::Client, [&](CIMInstance& instance) {
                    CIMXmlWriter::appendValueNamedInstance(out, instance, options);
                    ++count;
                    settle();
                });
        }
        else
        {
            Array<CIMInstance> instances = _server.enumerateInstances(call.context, ns, className, deep, false,
                options.includeQualifiers, options.includeClassOrigin, options.propertyList);
            for (Uint32 i = 0; i < instances.size(); ++i)
            {
                CIMXmlWriter::appendValueNamedInstance(out, instances[i], options);
                settle();
            }
            count = instances.size();
        }
        hasResult = count > 0;
    }
    else if (is("EnumerateInstanceNames"))
    {
        Parameters p(call.element, first, {"ClassName"});
        const CIMName className = CIMXmlReader::readClassNameParameter(p.required("ClassName"));
        Uint32 count = 0;
        if (_dispatcher)
        {
            _dispatcher->enumerateInstanceNames(call.context, ns, className, Caller::Client,
                [&](CIMObjectPath& name) {
                    CIMXmlWriter::appendInstanceName(out, name);
                    ++count;
                    settle();
                });
        }
        else
        {
            Array<CIMObjectPath> names = _server.enumerateInstanceNames(call.context, ns, className);
            for (Uint32 i = 0; i < names.size(); ++i)
            {
                CIMXmlWriter::appendInstanceName(out, names[i]);
                settle();
            }
            count = names.size();
        }
        hasResult = count > 0;
    }
    else if (is("CreateInstance"))
    {
        Parameters p(call.element, first, {"NewInstance"});
        const xmlNode* e = CIMXmlReader::parameterElement(p.required("NewInstance"));
        CIMInstance instance = CIMXmlReader::readInstance(e);
        CIMObjectPath created = _server.createInstance(call.context, ns, instance);
        CIMXmlWriter::appendInstanceName(out, created);
    }
    else if (is("ModifyInstance"))
    {
        Parameters p(call.element, first, {"ModifiedInstance", "IncludeQualifiers", "PropertyList"});
        const xmlNode* e = CIMXmlReader::parameterElement(p.required("ModifiedInstance"));
        CIMInstance instance = CIMXmlReader::readNamedInstance(e);
        CIMObjectPath path = instance.getPath();
        path.setNameSpace(ns);
        instance.setPath(path);
        _server.modifyInstance(call.context, ns, instance, p.boolean("IncludeQualifiers", true), p.propertyList());
        hasResult = false;
    }
    else if (is("DeleteInstance"))
    {
        Parameters p(call.element, first, {"InstanceName"});
        CIMObjectPath name = p.instanceName("InstanceName");
        name.setNameSpace(ns);
        _server.deleteInstance(call.context, ns, name);
        hasResult = false;
    }
    else if (is("Associators") || is("AssociatorNames") || is("References") || is("ReferenceNames"))
    {
        const bool associators = is("Associators") || is("AssociatorNames");
        const bool namesOnly = is("AssociatorNames") || is("ReferenceNames");
        std::vector<const char*> allowed = {"ObjectName", "ResultClass", "Role"};
        if (associators)
        {
            allowed.push_back("AssocClass");
            allowed.push_back("ResultRole");
        }
        if (!namesOnly)
        {
            allowed.push_back("IncludeQualifiers");
            allowed.push_back("IncludeClassOrigin");
            allowed.push_back("PropertyList");
        }
        std::unique_ptr<Parameters> p(new Parameters(call.element, first, allowed));
        const xmlNode* objectElement = CIMXmlReader::parameterElement(p->required("ObjectName"));
        if (!CIMXmlReader::isElement(objectElement, "INSTANCENAME") && !CIMXmlReader::isElement(objectElement, "CLASSNAME"))
            cimFail(CIM_ERR_INVALID_PARAMETER, std::string("ObjectName: expected INSTANCENAME or CLASSNAME, found ")
                    + CIMXmlReader::name(objectElement));
        CIMObjectPath objectName = CIMXmlReader::readObjectPath(objectElement);
        objectName.setNameSpace(ns);
        const CIMName assocClass = associators ? p->className("AssocClass") : CIMName();
        const CIMName resultClass = p->className("ResultClass");
        const String role = p->string("Role");
        const String resultRole = associators ? p->string("ResultRole") : String();
        CIMXmlWriter::InstanceOptions options;
        if (!namesOnly)
        {
            options.includeQualifiers = p->boolean("IncludeQualifiers", false);
            options.includeClassOrigin = p->boolean("IncludeClassOrigin", false);
            options.propertyList = p->propertyList();
        }
        if (CIMXmlReader::isElement(objectElement, "CLASSNAME"))
        {
            const ClassDecl* cls = registry->findClass(objectName.getClassName().getString().toUtf8());
            if (!cls)
                cimFail(CIM_ERR_INVALID_PARAMETER, "class " + objectName.getClassName().getString().toUtf8()
                        + " does not exist");
            std::vector<const ClassDecl*> classes = classAssociations(*registry, *cls, assocClass, resultClass,
                role.toUtf8(), resultRole.toUtf8(), associators);
            CIMXmlWriter::ClassOptions classOptions;
            classOptions.localOnly = false;
            classOptions.includeQualifiers = options.includeQualifiers;
            classOptions.includeClassOrigin = options.includeClassOrigin;
            classOptions.propertyList = options.propertyList;
            for (const ClassDecl* c : classes)
            {
                if (namesOnly)
                    CIMXmlWriter::appendObjectPath(out, CIMObjectPath(String::fromUtf8(_hostName), ns,
                                                                      CIMName(String::fromUtf8(c->name))));
                else
                    CIMXmlWriter::appendClassWithPath(out, String::fromUtf8(_hostName), ns, *c, classOptions);
            }
            hasResult = !classes.empty();
        }
        else if (namesOnly)
        {
            Uint32 count = 0;
            auto write = [&](const CIMObjectPath& name) {
                CIMXmlWriter::appendObjectPath(out, completed(name, _hostName, ns));
                ++count;
                settle();
            };
            if (_dispatcher && associators)
                _dispatcher->associatorNames(call.context, ns, objectName, assocClass, resultClass, role, resultRole,
                                             Caller::Client, write);
            else if (_dispatcher)
                _dispatcher->referenceNames(call.context, ns, objectName, resultClass, role, Caller::Client, write);
            else
            {
                Array<CIMObjectPath> names = associators
                    ? _server.associatorNames(call.context, ns, objectName, assocClass, resultClass, role,
                                              resultRole)
                    : _server.referenceNames(call.context, ns, objectName, resultClass, role);
                for (Uint32 i = 0; i < names.size(); ++i)
                    write(names[i]);
            }
            hasResult = count > 0;
        }
        else
        {
            Uint32 count = 0;
            auto write = [&](CIMObject& o) {
                o.setPath(completed(o.getPath(), _hostName, ns));
                CIMXmlWriter::appendValueObjectWithPath(out, o, options);
                ++count;
                settle();
            };
            if (_dispatcher && associators)
                _dispatcher->associators(call.context, ns, objectName, assocClass, resultClass, role, resultRole,
                                         options.includeQualifiers, options.includeClassOrigin, options.propertyList,
                                         Caller::Client, write);
            else if (_dispatcher)
                _dispatcher->references(call.context, ns, objectName, resultClass, role, options.includeQualifiers,
                                        options.includeClassOrigin, options.propertyList, Caller::Client, write);
            else
            {
                Array<CIMObject> objects = associators
                    ? _server.associators(call.context, ns, objectName, assocClass, resultClass, role, resultRole,
                                          options.includeQualifiers, options.includeClassOrigin,
                                          options.propertyList)
                    : _server.references(call.context, ns, objectName, resultClass, role,
                                         options.includeQualifiers, options.includeClassOrigin,
                                         options.propertyList);
                for (Uint32 i = 0; i < objects.size(); ++i)
                {
                    CIMObject o = objects[i];
                    write(o);
                }
            }
            hasResult = count > 0;
        }
    }
    else if (is("GetProperty"))
    {
        Parameters p(call.element, first, {"InstanceName", "PropertyName"});
        CIMObjectPath name = p.instanceName("InstanceName");
        name.setNameSpace(ns);
        const String propertyName = CIMXmlReader::readStringParameter(p.required("PropertyName"));
        if (!CIMName::legal(propertyName))
            cimFail(CIM_ERR_INVALID_PARAMETER, "PropertyName \"" + propertyName.toUtf8() + "\" is not a valid name");
        CIMValue value = _server.getProperty(call.context, ns, name, CIMName(propertyName));
        CIMXmlWriter::appendValue(out, value);
        hasResult = !value.isNull();
    }
    else if (is("SetProperty"))
    {
        Parameters p(call.element, first, {"InstanceName", "PropertyName", "NewValue"});
        CIMObjectPath name = p.instanceName("InstanceName");
        name.setNameSpace(ns);
        const String propertyName = CIMXmlReader::readStringParameter(p.required("PropertyName"));
        if (!CIMName::legal(propertyName))
            cimFail(CIM_ERR_INVALID_PARAMETER, "PropertyName \"" + propertyName.toUtf8() + "\" is not a valid name");
        // The value comes untyped: the class declares what it is.
        const ClassDecl* cls = registry->findClass(name.getClassName().getString().toUtf8());
        if (!cls)
            cimFail(CIM_ERR_INVALID_CLASS, "class " + name.getClassName().getString().toUtf8() + " does not exist");
        const PropertyDecl* property = cls->findProperty(propertyName.toUtf8());
        if (!property)
            cimFail(CIM_ERR_NO_SUCH_PROPERTY, "class " + cls->name + " has no property " + propertyName.toUtf8());
        const xmlNode* newValue = p.find("NewValue");
        CIMValue value = newValue ? readNewValue(newValue, *property)
                                  : CIMValue(property->type, property->isArray);
        _server.setProperty(call.context, ns, name, CIMName(propertyName), value);
        hasResult = false;
    }
    else
    {
        cimFail(CIM_ERR_NOT_SUPPORTED, "operation " + op + " is not supported");
    }
    if (!hasResult)
    {
        response.body = CIMXmlWriter::formatIMethodResponse(call.messageId, call.name, std::string(), false);
        return;
    }
    CIMXmlWriter::endIMethodResponse(out);
    response.bodyParts = std::move(pieces);
    response.body = std::move(out);
}

std::string CIMXmlOperationHandler::_extrinsic(Call& call) const
{
    Array<CIMParamValue> in;
    std::set<std::string> seen;
    for (const xmlNode* p = call.firstParameter; p; p = CIMXmlReader::nextSibling(p))
    {
        CIMParamValue value = CIMXmlReader::readParamValue(p);
        if (!seen.insert(lower(value.getParameterName().toUtf8())).second)
            cimFail(CIM_ERR_INVALID_PARAMETER, "parameter " + value.getParameterName().toUtf8() + " given twice");
        in.append(value);
    }
    if (!CIMName::legal(String::fromUtf8(call.name)))
        cimFail(CIM_ERR_INVALID_PARAMETER, "\"" + call.name + "\" is not a valid method name");
    Array<CIMParamValue> out;
    CIMValue result = _server.invokeMethod(call.context, call.nameSpace, call.target,
                                           CIMName(String::fromUtf8(call.name)), in, out);
    return CIMXmlWriter::formatMethodResponse(call.messageId, call.name, result, out);
}

} // namespace Pegasus
