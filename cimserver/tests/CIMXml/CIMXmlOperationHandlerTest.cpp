// The operation handler end to end on request bodies: header and envelope
// checks, every operation against an in-memory server, and the error codes
// clients see.

#include <Pegasus/CIMXml/CIMXmlOperationHandler.h>
#include <Pegasus/CIMXml/CIMXmlReader.h>
#include <Pegasus/CIMXml/CIMXmlWriter.h>
#include <Pegasus/Schema/SchemaManager.h>

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>

using namespace Pegasus;

namespace {

const char* const kMof = R"(
class ORV_Base { [Key] string Id; };
class ORV_Setting { [Key] string Id; uint8 Level; };
class ORV_Volume : ORV_Base {
    uint64 Size; string Name; uint16 States[];
    [EmbeddedInstance("ORV_Setting")] string Setting;
    uint32 Resize([In] uint64 NewSize, [In] ORV_Volume REF Target, [In] string Tags[],
                  [In, EmbeddedInstance("ORV_Setting")] string Goal, [Out] string Messages[]);
};
class ORV_Pool { [Key] string Id; };
[Association] class ORV_VolumeInPool { [Key] ORV_Pool REF Pool; [Key] ORV_Volume REF Volume; };
)";

std::string key(const CIMObjectPath& p)
{
    CIMObjectPath k("", CIMNamespaceName(), p.getClassName(), p.getKeyBindings());
    std::string s = k.toString().toUtf8();
    for (char& c : s) c = char(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// A server holding instances in a map; enough to see that requests arrive
// decoded and results leave encoded.
class FakeServer : public CIMOMHandleRep
{
public:
    explicit FakeServer(const SchemaManager& schema) : _schema(schema) {}

    std::map<std::string, CIMInstance> instances;
    String lastUser;
    CIMNamespaceName lastNamespace;
    Array<CIMParamValue> lastIn;
    CIMObjectPath lastTarget;
    bool throwStd = false;

    CIMObjectPath pathOf(const CIMInstance& i) const
    {
        const ClassDecl* cls = _schema.findClass("root/orv", i.getClassName().getString().toUtf8());
        if (!cls) throw CIMException(CIM_ERR_INVALID_CLASS, i.getClassName().getString());
        Array<CIMKeyBinding> keys;
        for (const std::string& k : cls->keyNames())
        {
            Uint32 at = i.findProperty(CIMName(String::fromUtf8(k)));
            if (at == PEG_NOT_FOUND) throw CIMException(CIM_ERR_INVALID_PARAMETER, "missing key");
            keys.append(CIMKeyBinding(CIMName(String::fromUtf8(k)), i.getProperty(at).getValue()));
        }
        return CIMObjectPath("", CIMNamespaceName(), i.getClassName(), keys);
    }
    void note(const OperationContext& c, const CIMNamespaceName& ns)
    {
        lastUser = IdentityContainer(c.get(IdentityContainer::NAME)).getUserName();
        lastNamespace = ns;
        if (throwStd) throw std::runtime_error("backend exploded");
    }
    CIMInstance& find(const CIMObjectPath& p)
    {
        auto it = instances.find(key(p));
        if (it == instances.end()) throw CIMException(CIM_ERR_NOT_FOUND, p.toString());
        return it->second;
    }

    CIMInstance getInstance(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& p,
        Boolean, Boolean, Boolean, const CIMPropertyList&) override
    { note(c, ns); return find(p).clone(); }
    Array<CIMInstance> enumerateInstances(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMName& cls, Boolean, Boolean, Boolean, Boolean, const CIMPropertyList&) override
    {
        note(c, ns);
        Array<CIMInstance> out;
        for (auto& kv : instances)
            if (_schema.registry("root/orv")->isSubclassOf(kv.second.getClassName().getString().toUtf8(),
                                                           cls.getString().toUtf8()))
                out.append(kv.second.clone());
        return out;
    }
    Array<CIMObjectPath> enumerateInstanceNames(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMName& cls) override
    {
        Array<CIMObjectPath> out;
        Array<CIMInstance> all = enumerateInstances(c, ns, cls, true, false, false, false, CIMPropertyList());
        for (Uint32 i = 0; i < all.size(); ++i) out.append(all[i].getPath());
        return out;
    }
    CIMObjectPath createInstance(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMInstance& i) override
    {
        note(c, ns);
        CIMInstance copy = i.clone();
        CIMObjectPath p = pathOf(copy);
        if (instances.count(key(p))) throw CIMException(CIM_ERR_ALREADY_EXISTS, p.toString());
        copy.setPath(p);
        instances[key(p)] = copy;
        return p;
    }
    void modifyInstance(const OperationContext& c, const CIMNamespaceName& ns, const CIMInstance& i,
        Boolean, const CIMPropertyList& list) override
    {
        note(c, ns);
        CIMInstance& target = find(i.getPath());
        for (Uint32 k = 0; k < i.getPropertyCount(); ++k)
        {
            CIMConstProperty p = i.getProperty(k);
            if (!list.useThisProperty(p.getName())) continue;
            Uint32 at = target.findProperty(p.getName());
            if (at != PEG_NOT_FOUND) target.removeProperty(at);
            target.addProperty(p.clone());
        }
    }
    void deleteInstance(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& p) override
    {
        note(c, ns);
        find(p);
        instances.erase(key(p));
    }
    // Associations: instances with a reference property naming `p`.
    std::vector<std::pair<CIMInstance, CIMObjectPath>> links(const CIMObjectPath& p)
    {
        std::vector<std::pair<CIMInstance, CIMObjectPath>> out;
        for (auto& kv : instances)
        {
            const CIMInstance& a = kv.second;
            bool refers = false;
            CIMObjectPath other;
            for (Uint32 k = 0; k < a.getPropertyCount(); ++k)
            {
                const CIMValue& v = a.getProperty(k).getValue();
                if (v.getType() != CIMTYPE_REFERENCE || v.isNull()) continue;
                CIMObjectPath r;
                v.get(r);
                if (key(r) == key(p)) refers = true;
                else other = r;
            }
            if (refers) out.emplace_back(a, other);
        }
        return out;
    }
    Array<CIMObject> associators(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& p,
        const CIMName&, const CIMName&, const String&, const String&, Boolean, Boolean,
        const CIMPropertyList&) override
    {
        note(c, ns);
        Array<CIMObject> out;
        for (auto& l : links(p)) out.append(CIMObject(find(l.second).clone()));
        return out;
    }
    Array<CIMObjectPath> associatorNames(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMObjectPath& p, const CIMName&, const CIMName&, const String&, const String&) override
    {
        note(c, ns);
        Array<CIMObjectPath> out;
        for (auto& l : links(p)) out.append(l.second);
        return out;
    }
    Array<CIMObject> references(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& p,
        const CIMName&, const String&, Boolean, Boolean, const CIMPropertyList&) override
    {
        note(c, ns);
        Array<CIMObject> out;
        for (auto& l : links(p)) out.append(CIMObject(l.first.clone()));
        return out;
    }
    Array<CIMObjectPath> referenceNames(const OperationContext& c, const CIMNamespaceName& ns,
        const CIMObjectPath& p, const CIMName&, const String&) override
    {
        note(c, ns);
        Array<CIMObjectPath> out;
        for (auto& l : links(p)) out.append(l.first.getPath());
        return out;
    }
    CIMValue getProperty(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& p,
        const CIMName& n) override
    {
        note(c, ns);
        CIMInstance& i = find(p);
        Uint32 at = i.findProperty(n);
        if (at == PEG_NOT_FOUND) throw CIMException(CIM_ERR_NO_SUCH_PROPERTY, n.getString());
        return i.getProperty(at).getValue();
    }
    void setProperty(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& p,
        const CIMName& n, const CIMValue& v) override
    {
        note(c, ns);
        CIMInstance& i = find(p);
        Uint32 at = i.findProperty(n);
        if (at != PEG_NOT_FOUND) i.removeProperty(at);
        i.addProperty(CIMProperty(n, v));
    }
    // Echoes the in parameters back as out parameters; returns their count.
    CIMValue invokeMethod(const OperationContext& c, const CIMNamespaceName& ns, const CIMObjectPath& p,
        const CIMName& m, const Array<CIMParamValue>& in, Array<CIMParamValue>& out) override
    {
        note(c, ns);
        if (!m.equal("Resize")) throw CIMException(CIM_ERR_METHOD_NOT_FOUND, m.getString());
        lastIn = in;
        lastTarget = p;
        for (Uint32 i = 0; i < in.size(); ++i) out.append(in[i]);
        return CIMValue(Uint32(in.size()));
    }
    void disallowProviderUnload() override {}
    void allowProviderUnload() override {}
    void beginTransaction(const CIMNamespaceName&) override {}
    void commitTransaction() override {}
    void rollBackTransaction() override {}

private:
    const SchemaManager& _schema;
};

class HandlerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        schema.loadString(kMof, "orv.mof", "root/orv");
        schema.loadString("class CIM_Namespace { [Key] string Name; };", "interop.mof", "root/interop");
    }

    static std::string envelope(const std::string& call, const std::string& cim = "2.0",
                                const std::string& dtd = "2.0", const std::string& id = "ID=\"42\"")
    {
        return "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"" + cim + "\" DTDVERSION=\"" + dtd
               + "\"><MESSAGE " + id + " PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>" + call
               + "</SIMPLEREQ></MESSAGE></CIM>";
    }

    static std::string nsPath(const std::string& ns)
    {
        std::string out = "<LOCALNAMESPACEPATH>";
        size_t start = 0;
        while (true)
        {
            size_t slash = ns.find('/', start);
            out += "<NAMESPACE NAME=\"" + ns.substr(start, slash - start) + "\"/>";
            if (slash == std::string::npos) break;
            start = slash + 1;
        }
        return out + "</LOCALNAMESPACEPATH>";
    }

    static CIMXmlOperationHandler::Request request(const std::string& method, const std::string& object,
                                                   const std::string& body)
    {
        CIMXmlOperationHandler::Request r;
        r.httpMethod = "POST";
        r.contentType = "application/xml; charset=\"utf-8\"";
        r.headers = {{"CIMOperation", "MethodCall"}, {"CIMMethod", method}, {"CIMObject", object}};
        r.body = body;
        r.userName = "orvadmin";
        return r;
    }

    CIMXmlOperationHandler::Response intrinsic(const std::string& op, const std::string& params,
                                               const std::string& ns = "root/orv")
    {
        std::string encoded = ns;
        for (size_t at; (at = encoded.find('/')) != std::string::npos;) encoded.replace(at, 1, "%2F");
        return handler.handle(request(op, encoded,
            envelope("<IMETHODCALL NAME=\"" + op + "\">" + nsPath(ns) + params + "</IMETHODCALL>")));
    }

    // The IRETURNVALUE content as XML text; an ERROR becomes "ERROR <code>".
    struct Result
    {
        std::string text;
        CIMStatusCode code = CIM_ERR_SUCCESS;
        std::string message;
    };
    static Result result(const CIMXmlOperationHandler::Response& r)
    {
        EXPECT_EQ(r.status, 200);
        Result out;
        CIMXmlReader reader(r.body);
        const xmlNode* c = CIMXmlReader::firstChild(reader.readMessage().body);
        if (CIMXmlReader::isElement(c, "ERROR"))
        {
            CIMException e = CIMXmlReader::readError(c);
            out.code = e.getCode();
            out.message = e.getMessage().toUtf8();
            return out;
        }
        if (c)
        {
            xmlBufferPtr buf = xmlBufferCreate();
            for (const xmlNode* k = CIMXmlReader::firstChild(c); k; k = CIMXmlReader::nextSibling(k))
                xmlNodeDump(buf, nullptr, const_cast<xmlNode*>(k), 0, 0);
            out.text = reinterpret_cast<const char*>(xmlBufferContent(buf));
            xmlBufferFree(buf);
        }
        return out;
    }

    static std::string instanceName(const std::string& cls, const std::string& id)
    {
        return "<INSTANCENAME CLASSNAME=\"" + cls + "\"><KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"string\">" + id
               + "</KEYVALUE></KEYBINDING></INSTANCENAME>";
    }

    void addVolume(const std::string& id, Uint64 size)
    {
        std::string inst = "<INSTANCE CLASSNAME=\"ORV_Volume\"><PROPERTY NAME=\"Id\" TYPE=\"string\"><VALUE>" + id
            + "</VALUE></PROPERTY><PROPERTY NAME=\"Size\" TYPE=\"uint64\"><VALUE>" + std::to_string(size)
            + "</VALUE></PROPERTY><PROPERTY NAME=\"Name\" TYPE=\"string\"><VALUE>vol " + id + "</VALUE></PROPERTY>"
              "</INSTANCE>";
        Result r = result(intrinsic("CreateInstance", "<IPARAMVALUE NAME=\"NewInstance\">" + inst + "</IPARAMVALUE>"));
        ASSERT_EQ(r.code, CIM_ERR_SUCCESS) << r.message;
        EXPECT_EQ(r.text, instanceName("ORV_Volume", id));
    }

    SchemaManager schema;
    FakeServer server{schema};
    CIMXmlOperationHandler handler{schema, server, "cimhost"};
};

std::string header(const CIMXmlOperationHandler::Response& r, const std::string& name)
{
    for (const auto& h : r.headers)
        if (h.first == name) return h.second;
    return "<none>";
}

} // namespace

TEST_F(HandlerTest, HeaderAndEnvelopeFaultsAreHttpErrors)
{
    const std::string good = envelope("<IMETHODCALL NAME=\"EnumerateClassNames\">" + nsPath("root/orv") + "</IMETHODCALL>");
    struct Case
    {
        const char* name;
        std::function<void(CIMXmlOperationHandler::Request&)> change;
        int status;
        const char* cimError;
    };
    auto setHeader = [](CIMXmlOperationHandler::Request& r, const std::string& n, const std::string& v) {
        for (auto& h : r.headers) if (h.first == n) { h.second = v; return; }
        r.headers.emplace_back(n, v);
    };
    auto dropHeader = [](CIMXmlOperationHandler::Request& r, const std::string& n) {
        for (auto it = r.headers.begin(); it != r.headers.end(); ++it)
            if (it->first == n) { r.headers.erase(it); return; }
    };
    const Case cases[] = {
        {"GET", [](auto& r) { r.httpMethod = "GET"; }, 405, "<none>"},
        {"content type", [](auto& r) { r.contentType = "text/plain"; }, 400, "request-not-valid"},
        {"charset", [](auto& r) { r.contentType = "application/xml; charset=iso-8859-1"; }, 400, "request-not-valid"},
        {"no CIMOperation", [&](auto& r) { dropHeader(r, "CIMOperation"); }, 400, "unsupported-operation"},
        {"CIMOperation", [&](auto& r) { setHeader(r, "CIMOperation", "MethodRequest"); }, 400, "unsupported-operation"},
        {"batch", [&](auto& r) { setHeader(r, "CIMBatch", ""); }, 501, "multiple-requests-unsupported"},
        {"protocol", [&](auto& r) { setHeader(r, "CIMProtocolVersion", "2.0"); }, 501, "unsupported-protocol-version"},
        {"protocol differs", [&](auto& r) { setHeader(r, "CIMProtocolVersion", "1.1"); }, 400, "header-mismatch"},
        {"no CIMMethod", [&](auto& r) { dropHeader(r, "CIMMethod"); }, 400, "header-mismatch"},
        {"CIMMethod differs", [&](auto& r) { setHeader(r, "CIMMethod", "EnumerateClasses"); }, 400, "header-mismatch"},
        {"CIMObject differs", [&](auto& r) { setHeader(r, "CIMObject", "root%2Finterop"); }, 400, "header-mismatch"},
        {"CIMObject encoding", [&](auto& r) { setHeader(r, "CIMObject", "root%2"); }, 400, "header-mismatch"},
        {"not XML", [](auto& r) { r.body = "<CIM><MESSAGE></CIM>"; }, 400, "request-not-well-formed"},
        {"wrong root", [](auto& r) { r.body = "<HTML/>"; }, 400, "request-not-valid"},
        {"no MESSAGE ID", [&](auto& r) {
             r.body = envelope("<IMETHODCALL NAME=\"EnumerateClassNames\">" + nsPath("root/orv") + "</IMETHODCALL>",
                               "2.0", "2.0", "");
         }, 400, "request-not-valid"},
        {"CIMVERSION", [&](auto& r) {
             r.body = envelope("<IMETHODCALL NAME=\"EnumerateClassNames\">" + nsPath("root/orv") + "</IMETHODCALL>", "3.0");
         }, 501, "unsupported-cim-version"},
        {"DTDVERSION", [&](auto& r) {
             r.body = envelope("<IMETHODCALL NAME=\"EnumerateClassNames\">" + nsPath("root/orv") + "</IMETHODCALL>",
                               "2.0", "1.1");
         }, 501, "unsupported-dtd-version"},
        {"MULTIREQ", [](auto& r) {
             r.body = "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
                      "<MULTIREQ/></MESSAGE></CIM>";
         }, 501, "multiple-requests-unsupported"},
        {"no namespace path", [](auto& r) {
             r.body = envelope("<IMETHODCALL NAME=\"EnumerateClassNames\"/>");
         }, 400, "request-not-valid"},
    };
    for (const Case& c : cases)
    {
        CIMXmlOperationHandler::Request r = request("EnumerateClassNames", "root%2Forv", good);
        c.change(r);
        CIMXmlOperationHandler::Response resp = handler.handle(r);
        EXPECT_EQ(resp.status, c.status) << c.name;
        EXPECT_EQ(header(resp, "CIMError"), c.cimError) << c.name;
        EXPECT_NE(header(resp, "PGErrorDetail"), "<none>") << c.name;
        EXPECT_TRUE(resp.body.empty()) << c.name;
    }
    // The good request, with M-POST and a header name in another case.
    CIMXmlOperationHandler::Request r = request("enumerateclassnames", "ROOT%2Forv", good);
    r.httpMethod = "M-POST";
    r.headers[0].first = "cimoperation";
    CIMXmlOperationHandler::Response resp = handler.handle(r);
    EXPECT_EQ(resp.status, 200);
    EXPECT_EQ(header(resp, "CIMOperation"), "MethodResponse");
    EXPECT_EQ(resp.contentType, "application/xml; charset=utf-8");
    EXPECT_NE(resp.body.find("<MESSAGE ID=\"42\" PROTOCOLVERSION=\"1.0\">"), std::string::npos);
}

TEST_F(HandlerTest, ClassOperationsComeFromTheSchema)
{
    Result r = result(intrinsic("EnumerateClassNames", ""));
    EXPECT_EQ(r.text, "<CLASSNAME NAME=\"ORV_Base\"/><CLASSNAME NAME=\"ORV_Setting\"/><CLASSNAME NAME=\"ORV_Pool\"/>"
                      "<CLASSNAME NAME=\"ORV_VolumeInPool\"/>");
    r = result(intrinsic("EnumerateClassNames", "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"orv_base\"/>"
                                                "</IPARAMVALUE><IPARAMVALUE NAME=\"deepinheritance\"><VALUE>TRUE</VALUE>"
                                                "</IPARAMVALUE>"));
    EXPECT_EQ(r.text, "<CLASSNAME NAME=\"ORV_Volume\"/>");
    r = result(intrinsic("GetClass", "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"ORV_Volume\"/></IPARAMVALUE>"
                                     "<IPARAMVALUE NAME=\"LocalOnly\"><VALUE>FALSE</VALUE></IPARAMVALUE>"));
    EXPECT_EQ(r.text.find("<CLASS NAME=\"ORV_Volume\" SUPERCLASS=\"ORV_Base\">"), 0u) << r.text;
    EXPECT_NE(r.text.find("<PROPERTY NAME=\"Id\""), std::string::npos);
    EXPECT_NE(r.text.find("<METHOD NAME=\"Resize\""), std::string::npos);
    r = result(intrinsic("EnumerateClasses", "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"ORV_Base\"/></IPARAMVALUE>"));
    EXPECT_EQ(r.text.find("<CLASS NAME=\"ORV_Volume\""), 0u);
    EXPECT_EQ(r.text.find("<PROPERTY NAME=\"Id\""), std::string::npos) << "local only by default";

    EXPECT_EQ(result(intrinsic("GetClass", "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"ORV_None\"/></IPARAMVALUE>")).code,
              CIM_ERR_NOT_FOUND);
    EXPECT_EQ(result(intrinsic("EnumerateClasses", "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"ORV_None\"/></IPARAMVALUE>")).code,
              CIM_ERR_INVALID_CLASS);
    EXPECT_EQ(result(intrinsic("EnumerateClassNames", "", "root/nowhere")).code, CIM_ERR_INVALID_NAMESPACE);
    for (const char* alias : {"interop", "root/PG_InterOp", "Root/Interop"})
    {
        r = result(intrinsic("EnumerateClassNames", "", alias));
        EXPECT_EQ(r.text, "<CLASSNAME NAME=\"CIM_Namespace\"/>") << alias;
    }
    EXPECT_EQ(handler.resolveNamespace("/ROOT/PG_INTEROP"), "root/interop");
    EXPECT_EQ(handler.resolveNamespace("root/orvx"), "");
}

TEST_F(HandlerTest, InstanceLifeCycle)
{
    addVolume("v1", 100);
    addVolume("v2", 200);
    EXPECT_EQ(server.lastUser, "orvadmin");
    EXPECT_EQ(server.lastNamespace.getString(), "root/orv");
    EXPECT_EQ(result(intrinsic("CreateInstance", "<IPARAMVALUE NAME=\"NewInstance\"><INSTANCE CLASSNAME=\"ORV_Volume\">"
                                                 "<PROPERTY NAME=\"Id\" TYPE=\"string\"><VALUE>v1</VALUE></PROPERTY>"
                                                 "</INSTANCE></IPARAMVALUE>")).code,
              CIM_ERR_ALREADY_EXISTS);

    const std::string v1 = "<IPARAMVALUE NAME=\"InstanceName\">" + instanceName("ORV_Volume", "v1") + "</IPARAMVALUE>";
    Result r = result(intrinsic("GetInstance", v1 + "<IPARAMVALUE NAME=\"PropertyList\"><VALUE.ARRAY><VALUE>size</VALUE>"
                                                    "</VALUE.ARRAY></IPARAMVALUE>"));
    EXPECT_EQ(r.text, "<INSTANCE CLASSNAME=\"ORV_Volume\"><PROPERTY NAME=\"Size\" TYPE=\"uint64\"><VALUE>100</VALUE>"
                      "</PROPERTY></INSTANCE>");

    r = result(intrinsic("EnumerateInstances", "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"ORV_Base\"/></IPARAMVALUE>"
                                               "<IPARAMVALUE NAME=\"PropertyList\"><VALUE.ARRAY><VALUE>Id</VALUE>"
                                               "</VALUE.ARRAY></IPARAMVALUE>"));
    EXPECT_EQ(r.text, "<VALUE.NAMEDINSTANCE>" + instanceName("ORV_Volume", "v1") + "<INSTANCE CLASSNAME=\"ORV_Volume\">"
                      "<PROPERTY NAME=\"Id\" TYPE=\"string\"><VALUE>v1</VALUE></PROPERTY></INSTANCE></VALUE.NAMEDINSTANCE>"
                      "<VALUE.NAMEDINSTANCE>" + instanceName("ORV_Volume", "v2") + "<INSTANCE CLASSNAME=\"ORV_Volume\">"
                      "<PROPERTY NAME=\"Id\" TYPE=\"string\"><VALUE>v2</VALUE></PROPERTY></INSTANCE></VALUE.NAMEDINSTANCE>");
    r = result(intrinsic("EnumerateInstanceNames", "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"ORV_Volume\"/></IPARAMVALUE>"));
    EXPECT_EQ(r.text, instanceName("ORV_Volume", "v1") + instanceName("ORV_Volume", "v2"));
    // An empty result has no IRETURNVALUE at all.
    CIMXmlOperationHandler::Response empty =
        intrinsic("EnumerateInstances", "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"ORV_Pool\"/></IPARAMVALUE>");
    EXPECT_EQ(empty.body.find("IRETURNVALUE"), std::string::npos);

    // ModifyInstance with a property list changes only the listed property.
    r = result(intrinsic("ModifyInstance",
        "<IPARAMVALUE NAME=\"ModifiedInstance\"><VALUE.NAMEDINSTANCE>" + instanceName("ORV_Volume", "v1") +
        "<INSTANCE CLASSNAME=\"ORV_Volume\"><PROPERTY NAME=\"Id\" TYPE=\"string\"><VALUE>v1</VALUE></PROPERTY>"
        "<PROPERTY NAME=\"Size\" TYPE=\"uint64\"><VALUE>150</VALUE></PROPERTY>"
        "<PROPERTY NAME=\"Name\" TYPE=\"string\"><VALUE>renamed</VALUE></PROPERTY></INSTANCE></VALUE.NAMEDINSTANCE>"
        "</IPARAMVALUE><IPARAMVALUE NAME=\"PropertyList\"><VALUE.ARRAY><VALUE>Size</VALUE></VALUE.ARRAY></IPARAMVALUE>"));
    EXPECT_EQ(r.code, CIM_ERR_SUCCESS) << r.message;
    r = result(intrinsic("GetProperty", v1 + "<IPARAMVALUE NAME=\"PropertyName\"><VALUE>Size</VALUE></IPARAMVALUE>"));
    EXPECT_EQ(r.text, "<VALUE>150</VALUE>");
    r = result(intrinsic("GetProperty", v1 + "<IPARAMVALUE NAME=\"PropertyName\"><VALUE>Name</VALUE></IPARAMVALUE>"));
    EXPECT_EQ(r.text, "<VALUE>vol v1</VALUE>");

    // SetProperty: the untyped value takes the declared type.
    r = result(intrinsic("SetProperty", v1 + "<IPARAMVALUE NAME=\"PropertyName\"><VALUE>States</VALUE></IPARAMVALUE>"
                                             "<IPARAMVALUE NAME=\"NewValue\"><VALUE.ARRAY><VALUE>2</VALUE><VALUE>3</VALUE>"
                                             "</VALUE.ARRAY></IPARAMVALUE>"));
    EXPECT_EQ(r.code, CIM_ERR_SUCCESS) << r.message;
    CIMInstance stored = server.instances.begin()->second;
    CIMValue states = stored.getProperty(stored.findProperty("States")).getValue();
    EXPECT_EQ(states.getType(), CIMTYPE_UINT16);
    EXPECT_EQ(states.getArraySize(), 2u);
    r = result(intrinsic("SetProperty", v1 + "<IPARAMVALUE NAME=\"PropertyName\"><VALUE>Size</VALUE></IPARAMVALUE>"
                                             "<IPARAMVALUE NAME=\"NewValue\"><VALUE>-5</VALUE></IPARAMVALUE>"));
    EXPECT_EQ(r.code, CIM_ERR_INVALID_PARAMETER);
    r = result(intrinsic("SetProperty", v1 + "<IPARAMVALUE NAME=\"PropertyName\"><VALUE>Nope</VALUE></IPARAMVALUE>"));
    EXPECT_EQ(r.code, CIM_ERR_NO_SUCH_PROPERTY);

    EXPECT_EQ(result(intrinsic("DeleteInstance", v1)).code, CIM_ERR_SUCCESS);
    EXPECT_EQ(result(intrinsic("GetInstance", v1)).code, CIM_ERR_NOT_FOUND);
    EXPECT_EQ(result(intrinsic("DeleteInstance", v1)).code, CIM_ERR_NOT_FOUND);
}

TEST_F(HandlerTest, AssociationResultsCarryHostAndNamespace)
{
    addVolume("v1", 1);
    Result r = result(intrinsic("CreateInstance", "<IPARAMVALUE NAME=\"NewInstance\"><INSTANCE CLASSNAME=\"ORV_Pool\">"
        "<PROPERTY NAME=\"Id\" TYPE=\"string\"><VALUE>p1</VALUE></PROPERTY></INSTANCE></IPARAMVALUE>"));
    ASSERT_EQ(r.code, CIM_ERR_SUCCESS) << r.message;
    CIMInstance link("ORV_VolumeInPool");
    Array<CIMKeyBinding> pk, vk, lk;
    pk.append(CIMKeyBinding("Id", "p1", CIMKeyBinding::STRING));
    vk.append(CIMKeyBinding("Id", "v1", CIMKeyBinding::STRING));
    CIMObjectPath pool("", CIMNamespaceName(), "ORV_Pool", pk), vol("", CIMNamespaceName(), "ORV_Volume", vk);
    link.addProperty(CIMProperty("Pool", CIMValue(pool), 0, "ORV_Pool"));
    link.addProperty(CIMProperty("Volume", CIMValue(vol), 0, "ORV_Volume"));
    lk.append(CIMKeyBinding("Pool", pool.toString(), CIMKeyBinding::REFERENCE));
    lk.append(CIMKeyBinding("Volume", vol.toString(), CIMKeyBinding::REFERENCE));
    link.setPath(CIMObjectPath("", CIMNamespaceName(), "ORV_VolumeInPool", lk));
    server.instances[key(link.getPath())] = link;

    const std::string object = "<IPARAMVALUE NAME=\"ObjectName\">" + instanceName("ORV_Volume", "v1") + "</IPARAMVALUE>";
    const std::string poolPath = "<INSTANCEPATH><NAMESPACEPATH><HOST>cimhost</HOST>" + nsPath("root/orv")
                                 + "</NAMESPACEPATH>" + instanceName("ORV_Pool", "p1") + "</INSTANCEPATH>";
    r = result(intrinsic("AssociatorNames", object));
    EXPECT_EQ(r.text, "<OBJECTPATH>" + poolPath + "</OBJECTPATH>");
    r = result(intrinsic("Associators", object + "<IPARAMVALUE NAME=\"AssocClass\"><CLASSNAME NAME=\"ORV_VolumeInPool\"/>"
                                                 "</IPARAMVALUE>"));
    EXPECT_EQ(r.text, "<VALUE.OBJECTWITHPATH>" + poolPath + "<INSTANCE CLASSNAME=\"ORV_Pool\"><PROPERTY NAME=\"Id\" "
                      "TYPE=\"string\"><VALUE>p1</VALUE></PROPERTY></INSTANCE></VALUE.OBJECTWITHPATH>");
    r = result(intrinsic("ReferenceNames", object));
    EXPECT_NE(r.text.find("<OBJECTPATH><INSTANCEPATH><NAMESPACEPATH><HOST>cimhost</HOST>"), std::string::npos) << r.text;
    EXPECT_NE(r.text.find("<INSTANCENAME CLASSNAME=\"ORV_VolumeInPool\">"), std::string::npos);
    r = result(intrinsic("References", object + "<IPARAMVALUE NAME=\"Role\"><VALUE>Volume</VALUE></IPARAMVALUE>"));
    EXPECT_NE(r.text.find("<PROPERTY.REFERENCE NAME=\"Pool\" REFERENCECLASS=\"ORV_Pool\">"), std::string::npos) << r.text;
    // ResultRole belongs to the associator operations only.
    EXPECT_EQ(result(intrinsic("References", object + "<IPARAMVALUE NAME=\"ResultRole\"><VALUE>Pool</VALUE></IPARAMVALUE>")).code,
              CIM_ERR_NOT_SUPPORTED);

    // Class-level queries are answered from the schema.
    const std::string cls = "<IPARAMVALUE NAME=\"ObjectName\"><CLASSNAME NAME=\"ORV_Volume\"/></IPARAMVALUE>";
    r = result(intrinsic("AssociatorNames", cls));
    EXPECT_EQ(r.text, "<OBJECTPATH><CLASSPATH><NAMESPACEPATH><HOST>cimhost</HOST>" + nsPath("root/orv")
                      + "</NAMESPACEPATH><CLASSNAME NAME=\"ORV_Pool\"/></CLASSPATH></OBJECTPATH>");
    r = result(intrinsic("References", cls));
    EXPECT_NE(r.text.find("<VALUE.OBJECTWITHPATH><CLASSPATH>"), std::string::npos);
    EXPECT_NE(r.text.find("<CLASS NAME=\"ORV_VolumeInPool\">"), std::string::npos);
    r = result(intrinsic("AssociatorNames", cls + "<IPARAMVALUE NAME=\"ResultClass\"><CLASSNAME NAME=\"ORV_Setting\"/>"
                                                  "</IPARAMVALUE>"));
    EXPECT_EQ(r.text, "");
}

TEST_F(HandlerTest, ExtrinsicCallsCarryParametersBothWays)
{
    addVolume("v1", 1);
    const std::string target = "<LOCALINSTANCEPATH>" + nsPath("root/orv") + instanceName("ORV_Volume", "v1")
                               + "</LOCALINSTANCEPATH>";
    const std::string body = envelope(
        "<METHODCALL NAME=\"Resize\">" + target +
        "<PARAMVALUE NAME=\"NewSize\" PARAMTYPE=\"uint64\"><VALUE>2048</VALUE></PARAMVALUE>"
        "<PARAMVALUE NAME=\"Target\" PARAMTYPE=\"reference\"><VALUE.REFERENCE>" + instanceName("ORV_Volume", "v1") +
        "</VALUE.REFERENCE></PARAMVALUE>"
        "<PARAMVALUE NAME=\"Tags\"><VALUE.ARRAY><VALUE>a</VALUE><VALUE> b </VALUE></VALUE.ARRAY></PARAMVALUE>"
        "<PARAMVALUE NAME=\"Goal\" PARAMTYPE=\"string\" EmbeddedObject=\"instance\"><VALUE>&lt;INSTANCE "
        "CLASSNAME=&quot;ORV_Setting&quot;&gt;&lt;PROPERTY NAME=&quot;Level&quot; TYPE=&quot;uint8&quot;&gt;&lt;VALUE&gt;"
        "7&lt;/VALUE&gt;&lt;/PROPERTY&gt;&lt;/INSTANCE&gt;</VALUE></PARAMVALUE>"
        "<PARAMVALUE NAME=\"Unset\"/>"
        "</METHODCALL>");
    CIMXmlOperationHandler::Response resp =
        handler.handle(request("Resize", "root%2Forv%3AORV_Volume.Id%3D%22v1%22", body));
    ASSERT_EQ(resp.status, 200) << header(resp, "PGErrorDetail");
    ASSERT_EQ(server.lastIn.size(), 5u);
    EXPECT_EQ(server.lastTarget.getNameSpace().getString(), "root/orv");
    EXPECT_EQ(server.lastIn[0].getValue(), CIMValue(Uint64(2048)));
    EXPECT_EQ(server.lastIn[1].getValue().getType(), CIMTYPE_REFERENCE);
    EXPECT_FALSE(server.lastIn[2].isTyped());
    EXPECT_EQ(server.lastIn[3].getValue().getType(), CIMTYPE_INSTANCE);
    EXPECT_TRUE(server.lastIn[4].getValue().isNull());

    CIMXmlReader reader(resp.body);
    const xmlNode* response = reader.readMessage().body;
    ASSERT_TRUE(CIMXmlReader::isElement(response, "METHODRESPONSE"));
    EXPECT_EQ(CIMXmlReader::requiredAttribute(response, "NAME"), "Resize");
    const xmlNode* rv = CIMXmlReader::firstChild(response);
    ASSERT_TRUE(CIMXmlReader::isElement(rv, "RETURNVALUE"));
    EXPECT_TRUE(CIMXmlReader::readValue(CIMXmlReader::firstChild(rv), CIMTYPE_UINT32) == CIMValue(Uint32(5)));
    unsigned outs = 0;
    for (const xmlNode* p = CIMXmlReader::nextSibling(rv); p; p = CIMXmlReader::nextSibling(p), ++outs)
    {
        CIMParamValue v = CIMXmlReader::readParamValue(p);
        EXPECT_EQ(v.getParameterName(), server.lastIn[outs].getParameterName());
        EXPECT_TRUE(v.getValue() == server.lastIn[outs].getValue()) << v.getParameterName();
    }
    EXPECT_EQ(outs, 5u);

    // The CIMObject header must name the same object; the method name is exact.
    EXPECT_EQ(header(handler.handle(request("Resize", "root%2Forv%3AORV_Volume.Id%3D%22v2%22", body)), "CIMError"),
              "header-mismatch");
    EXPECT_EQ(header(handler.handle(request("resize", "root%2Forv%3AORV_Volume.Id%3D%22v1%22", body)), "CIMError"),
              "header-mismatch");
    // Errors from below come back as ERROR in METHODRESPONSE.
    std::string bad = body;
    bad.replace(bad.find("<VALUE>2048"), 11, "<VALUE>big!");
    Result r = result(handler.handle(request("Resize", "root%2Forv%3AORV_Volume.Id%3D%22v1%22", bad)));
    EXPECT_EQ(r.code, CIM_ERR_INVALID_PARAMETER);
    EXPECT_NE(r.message.find("\"big!\" is not a uint64"), std::string::npos) << r.message;
    server.throwStd = true;
    r = result(handler.handle(request("Resize", "root%2Forv%3AORV_Volume.Id%3D%22v1%22", body)));
    EXPECT_EQ(r.code, CIM_ERR_FAILED);
    EXPECT_EQ(r.message, "backend exploded");
}

TEST_F(HandlerTest, ParameterFaultsAreCimErrors)
{
    const std::string v1 = "<IPARAMVALUE NAME=\"InstanceName\">" + instanceName("ORV_Volume", "v1") + "</IPARAMVALUE>";
    const struct { const char* op; std::string params; CIMStatusCode code; const char* text; } cases[] = {
        {"ExecQuery", "", CIM_ERR_NOT_SUPPORTED, "operation ExecQuery is not supported"},
        {"GetInstance", v1 + "<IPARAMVALUE NAME=\"Bogus\"/>", CIM_ERR_NOT_SUPPORTED, "parameter Bogus"},
        {"GetInstance", "", CIM_ERR_INVALID_PARAMETER, "missing required parameter InstanceName"},
        {"GetInstance", "<IPARAMVALUE NAME=\"InstanceName\"/>", CIM_ERR_INVALID_PARAMETER, "missing required"},
        {"GetInstance", v1 + v1, CIM_ERR_INVALID_PARAMETER, "given twice"},
        {"GetInstance", "<IPARAMVALUE NAME=\"InstanceName\"><CLASSNAME NAME=\"ORV_Volume\"/></IPARAMVALUE>",
         CIM_ERR_INVALID_PARAMETER, "expected INSTANCENAME"},
        {"GetInstance", v1 + "<IPARAMVALUE NAME=\"IncludeClassOrigin\"><VALUE>maybe</VALUE></IPARAMVALUE>",
         CIM_ERR_INVALID_PARAMETER, "is not a boolean"},
        {"EnumerateInstances", "", CIM_ERR_INVALID_PARAMETER, "missing required parameter ClassName"},
        {"CreateInstance", "<IPARAMVALUE NAME=\"NewInstance\"><INSTANCE/></IPARAMVALUE>", CIM_ERR_INVALID_PARAMETER,
         "missing attribute CLASSNAME"},
        {"Associators", "", CIM_ERR_INVALID_PARAMETER, "missing required parameter ObjectName"},
    };
    for (const auto& c : cases)
    {
        Result r = result(intrinsic(c.op, c.params));
        EXPECT_EQ(r.code, c.code) << c.op << " " << c.params;
        EXPECT_NE(r.message.find(c.text), std::string::npos) << c.op << ": " << r.message;
    }
}
