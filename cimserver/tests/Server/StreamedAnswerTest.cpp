// Enumerations and association queries written as their results come: the
// same answers as through the server's array calls (property lists,
// qualifiers, class origins, deep inheritance, results of association
// providers united with the repository's), committed data only while a
// transaction is open, and an error found on the way answered as an ERROR
// with nothing of the half-written answer.

#include "ServerTestRoot.h"

#include <Pegasus/CIMXml/CIMXmlOperationHandler.h>
#include <Pegasus/CIMXml/CIMXmlReader.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Repository/Repository.h>
#include <Pegasus/Server/CIMServer.h>
#include <Pegasus/Server/OperationDispatcher.h>
#include <Pegasus/Server/ServerCIMOMHandleRep.h>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <vector>

using namespace Pegasus;

namespace {

const CIMNamespaceName kTest("root/test");

CIMObjectPath elementPath(const std::string& id) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("Id", String::fromUtf8(id), CIMKeyBinding::STRING));
    return CIMObjectPath(String(), kTest, "Test_Element", keys);
}

CIMInstance element(const std::string& id, Uint32 size) {
    CIMInstance instance("Test_Element");
    instance.addProperty(CIMProperty("Id", String::fromUtf8(id)));
    instance.addProperty(CIMProperty("Size", size));
    instance.addProperty(CIMProperty("Caption", String::fromUtf8("element " + id)));
    return instance;
}

size_t countOf(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

class StreamedAnswerTest : public ::testing::Test {
protected:
    void SetUp() override {
        server = std::make_unique<CIMServer>(root.config());
        server->start();
        client = std::make_unique<ServerCIMOMHandleRep>(server->dispatcher(), Caller::Client);
        arrays = std::make_unique<CIMXmlOperationHandler>(server->schema(), *client, "cimhost");
        streamed = std::make_unique<CIMXmlOperationHandler>(server->schema(), *client, "cimhost",
            &server->dispatcher());
        Repository& repository = server->repository();
        // "a" links to 20 stored elements and to "stored-peer", which the
        // test provider answers too (with "a-peer" of its own).
        repository.createInstance(kTest, element("a", 1), RepositoryAccess::Committed);
        repository.createInstance(kTest, element("stored-peer", 2), RepositoryAccess::Committed);
        link("a", "stored-peer");
        for (int i = 0; i < 20; ++i) {
            const std::string id = "e" + std::to_string(100 + i);
            repository.createInstance(kTest, element(id, Uint32(i)), RepositoryAccess::Committed);
            link("a", id);
        }
        // The test provider may keep elements of its own in the repository.
        elements = server->repository().enumerateInstanceNames(kTest, "Test_Element", RepositoryAccess::Committed).size();
        ASSERT_GE(elements, 22u);
    }
    void TearDown() override {
        streamed.reset();
        arrays.reset();
        client.reset();
        if (server) server->stop();
    }

    void link(const std::string& left, const std::string& right) {
        CIMInstance l("Test_Link");
        l.addProperty(CIMProperty("Left", elementPath(left)));
        l.addProperty(CIMProperty("Right", elementPath(right)));
        server->repository().createInstance(kTest, l, RepositoryAccess::Committed);
    }

    static CIMXmlOperationHandler::Request request(const std::string& op, const std::string& params) {
        CIMXmlOperationHandler::Request r;
        r.httpMethod = "POST";
        r.contentType = "application/xml; charset=utf-8";
        r.headers = {{"CIMOperation", "MethodCall"}, {"CIMMethod", op}, {"CIMObject", "root%2Ftest"}};
        r.body = "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
                 "<MESSAGE ID=\"7\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><IMETHODCALL NAME=\"" + op + "\">"
                 "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"test\"/></LOCALNAMESPACEPATH>"
                 + params + "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";
        r.userName = "tester";
        return r;
    }

    static std::string param(const std::string& name, const std::string& value) {
        return "<IPARAMVALUE NAME=\"" + name + "\">" + value + "</IPARAMVALUE>";
    }
    static std::string className(const std::string& cls) {
        return param("ClassName", "<CLASSNAME NAME=\"" + cls + "\"/>");
    }
    static std::string objectName(const std::string& id) {
        return param("ObjectName", "<INSTANCENAME CLASSNAME=\"Test_Element\"><KEYBINDING NAME=\"Id\">"
                     "<KEYVALUE VALUETYPE=\"string\">" + id + "</KEYVALUE></KEYBINDING></INSTANCENAME>");
    }

    // The streamed answer, checked to be the array answer byte for byte.
    std::string both(const std::string& op, const std::string& params) {
        const CIMXmlOperationHandler::Response a = arrays->handle(request(op, params));
        const CIMXmlOperationHandler::Response s = streamed->handle(request(op, params));
        EXPECT_EQ(a.status, 200);
        EXPECT_EQ(s.status, 200);
        EXPECT_EQ(a.text(), s.text()) << op << " " << params;
        return s.text();
    }

    static CIMStatusCode errorOf(const std::string& body) {
        CIMXmlReader reader(body);
        const xmlNode* first = CIMXmlReader::firstChild(reader.readMessage().body);
        if (!CIMXmlReader::isElement(first, "ERROR")) return CIM_ERR_SUCCESS;
        return CIMXmlReader::readError(first).getCode();
    }

    ServerTestRoot root;
    std::unique_ptr<CIMServer> server;
    std::unique_ptr<ServerCIMOMHandleRep> client;
    std::unique_ptr<CIMXmlOperationHandler> arrays;
    std::unique_ptr<CIMXmlOperationHandler> streamed;
    size_t elements = 0;
};

TEST_F(StreamedAnswerTest, EnumerationsAnswerLikeTheArrayCallsWithEveryOption) {
    std::string body = both("EnumerateInstances", className("Test_Element"));
    EXPECT_EQ(countOf(body, "<VALUE.NAMEDINSTANCE>"), elements);
    EXPECT_NE(body.find("element e119"), std::string::npos);

    body = both("EnumerateInstances", className("CIM_ManagedElement") + param("DeepInheritance", "<VALUE>FALSE</VALUE>"));
    EXPECT_EQ(countOf(body, "<VALUE.NAMEDINSTANCE>"), elements);
    EXPECT_EQ(body.find("NAME=\"Size\""), std::string::npos) << "a property of the subclass without deep inheritance";
    EXPECT_NE(body.find("NAME=\"Caption\""), std::string::npos);

    body = both("EnumerateInstances", className("Test_Element")
        + param("PropertyList", "<VALUE.ARRAY><VALUE>Size</VALUE></VALUE.ARRAY>")
        + param("IncludeClassOrigin", "<VALUE>TRUE</VALUE>") + param("IncludeQualifiers", "<VALUE>TRUE</VALUE>"));
    EXPECT_EQ(countOf(body, "NAME=\"Size\""), 22u) << "each element stored here has a Size";
    EXPECT_EQ(body.find("NAME=\"Caption\""), std::string::npos);
    EXPECT_NE(body.find("CLASSORIGIN=\"Test_Element\""), std::string::npos);

    body = both("EnumerateInstanceNames", className("Test_Element"));
    EXPECT_EQ(countOf(body, "<INSTANCENAME "), elements);

    // Nothing stored: no IRETURNVALUE at all, as before.
    body = both("EnumerateInstances", className("Test_Stored"));
    EXPECT_EQ(body.find("IRETURNVALUE"), std::string::npos);
    body = both("EnumerateInstances", className("No_Such_Class"));
    EXPECT_EQ(errorOf(body), CIM_ERR_INVALID_CLASS);
}

TEST_F(StreamedAnswerTest, AssociationQueriesUniteRepositoryAndProviderOnceEach) {
    std::string body = both("AssociatorNames", objectName("a"));
    // 21 links in the repository, one extra object from the provider; the
    // peer both answer comes once, the repository's answers first.
    EXPECT_EQ(countOf(body, "<INSTANCEPATH>"), 22u);
    EXPECT_EQ(countOf(body, "stored-peer"), 1u);
    ASSERT_NE(body.find("a-peer"), std::string::npos);
    EXPECT_LT(body.find("e119"), body.find("a-peer"));

    body = both("Associators", objectName("a") + param("PropertyList", "<VALUE.ARRAY><VALUE>Id</VALUE></VALUE.ARRAY>"));
    EXPECT_EQ(countOf(body, "<VALUE.OBJECTWITHPATH>"), 22u);
    EXPECT_EQ(countOf(body, "stored-peer"), 2u) << "path and Id property of one object";
    EXPECT_EQ(body.find("NAME=\"Size\""), std::string::npos);

    body = both("ReferenceNames", objectName("a"));
    EXPECT_EQ(countOf(body, "<INSTANCEPATH>"), 21u);
    body = both("References", objectName("a") + param("IncludeClassOrigin", "<VALUE>TRUE</VALUE>"));
    EXPECT_EQ(countOf(body, "<VALUE.OBJECTWITHPATH>"), 21u);
    body = both("Associators", objectName("e105"));
    EXPECT_EQ(countOf(body, "<VALUE.OBJECTWITHPATH>"), 3u) << "a, and the provider's two";
}

TEST_F(StreamedAnswerTest, LargeAnswersComeInPiecesThatMakeTheWholeText) {
    // 12 elements of 200 KB each: about 2.4 MB of answer.
    const std::string big(200 * 1024, 'x');
    for (int i = 0; i < 12; ++i) {
        CIMInstance e = element("big" + std::to_string(i), Uint32(i));
        e.getProperty(e.findProperty("Caption")).setValue(CIMValue(String::fromUtf8(big + std::to_string(i))));
        server->repository().createInstance(kTest, e, RepositoryAccess::Committed);
    }
    const CIMXmlOperationHandler::Response r = streamed->handle(request("EnumerateInstances", className("Test_Element")));
    ASSERT_EQ(r.status, 200);
    ASSERT_GE(r.bodyParts.size(), 2u);
    for (const std::string& part : r.bodyParts) {
        EXPECT_GE(part.size(), CIMXmlOperationHandler::pieceBytes);
        EXPECT_LT(part.size(), CIMXmlOperationHandler::pieceBytes + 300 * 1024) << "a piece ends after the result that filled it";
    }
    const std::string text = r.text();
    EXPECT_EQ(text.size(), r.textSize());
    EXPECT_EQ(errorOf(text), CIM_ERR_SUCCESS);
    EXPECT_EQ(countOf(text, "<VALUE.NAMEDINSTANCE>"), elements + 12);
    EXPECT_EQ(countOf(text, big), 12u);
    EXPECT_EQ(text.compare(text.size() - 7, 7, "</CIM>\n"), 0);
    EXPECT_EQ(text, both("EnumerateInstances", className("Test_Element")));
}

TEST_F(StreamedAnswerTest, ClientsSeeOnlyCommittedDataWhileATransactionIsOpen) {
    Repository& repository = server->repository();
    repository.beginTransaction(kTest);
    repository.createInstance(kTest, element("uncommitted", 9));
    CIMInstance l("Test_Link");
    l.addProperty(CIMProperty("Left", elementPath("a")));
    l.addProperty(CIMProperty("Right", elementPath("uncommitted")));
    repository.createInstance(kTest, l);
    const std::string names = both("EnumerateInstanceNames", className("Test_Element"));
    EXPECT_EQ(names.find("uncommitted"), std::string::npos);
    EXPECT_EQ(countOf(names, "<INSTANCENAME "), elements);
    EXPECT_EQ(both("Associators", objectName("a")).find("uncommitted"), std::string::npos);
    EXPECT_EQ(countOf(both("ReferenceNames", objectName("a")), "<INSTANCEPATH>"), 21u);
    repository.commitTransaction();
    EXPECT_NE(both("EnumerateInstanceNames", className("Test_Element")).find("uncommitted"), std::string::npos);
    EXPECT_NE(both("Associators", objectName("a")).find("uncommitted"), std::string::npos);
}

TEST_F(StreamedAnswerTest, AFaultHalfWayIsAnErrorWithNothingOfTheAnswer) {
    // Damage the stored form of the last element created: the enumeration
    // has written most of its answer when it meets it.
    server->repository().createInstance(kTest, element("last", 3), RepositoryAccess::Committed);
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(server->repository().databaseFile(kTest).c_str(), &db), SQLITE_OK);
    char* error = nullptr;
    const int rc = sqlite3_exec(db, "UPDATE instances SET data = x'FF01' WHERE id = (SELECT max(id) FROM instances)",
        nullptr, nullptr, &error);
    EXPECT_EQ(rc, SQLITE_OK) << (error ? error : "");
    sqlite3_free(error);
    EXPECT_EQ(sqlite3_changes(db), 1);
    sqlite3_close(db);

    for (const char* op : {"EnumerateInstances", "EnumerateInstanceNames"}) {
        const CIMXmlOperationHandler::Response r = streamed->handle(request(op, className("Test_Element")));
        EXPECT_EQ(r.status, 200);
        EXPECT_TRUE(r.bodyParts.empty());
        EXPECT_EQ(errorOf(r.body), CIM_ERR_FAILED) << op;
        EXPECT_EQ(r.body.find("IRETURNVALUE"), std::string::npos) << op;
        EXPECT_EQ(r.body.find("INSTANCENAME"), std::string::npos) << op;
        EXPECT_NE(r.body.find("damaged"), std::string::npos) << r.body;
    }
    // Other classes are still answered.
    EXPECT_EQ(errorOf(both("ReferenceNames", objectName("a"))), CIM_ERR_SUCCESS);
}

TEST_F(StreamedAnswerTest, DispatcherStreamsTheSameResultsAsItsArrays) {
    OperationDispatcher& d = server->dispatcher();
    const Array<CIMObject> gathered = d.associators(OperationContext(), kTest, elementPath("a"), CIMName(),
        CIMName(), String(), String(), false, false, CIMPropertyList(), Caller::Client);
    std::vector<std::string> streamedPaths;
    d.associators(OperationContext(), kTest, elementPath("a"), CIMName(), CIMName(), String(), String(), false,
        false, CIMPropertyList(), Caller::Client,
        [&](CIMObject& o) { streamedPaths.push_back(o.getPath().toString().toUtf8()); });
    ASSERT_EQ(streamedPaths.size(), gathered.size());
    for (Uint32 i = 0; i < gathered.size(); ++i) EXPECT_EQ(streamedPaths[i], gathered[i].getPath().toString().toUtf8());
    EXPECT_EQ(streamedPaths.back().find("a-peer") != std::string::npos, true) << "the provider's own result comes last";

    // What the sink throws ends the call and leaves the server usable.
    int seen = 0;
    EXPECT_THROW(d.enumerateInstances(OperationContext(), kTest, "Test_Element", true, false, false, false,
                     CIMPropertyList(), Caller::Client,
                     [&](CIMInstance&) {
                         if (++seen == 5) throw std::runtime_error("client went away");
                     }),
        std::runtime_error);
    EXPECT_EQ(seen, 5);
    EXPECT_EQ(d.enumerateInstanceNames(OperationContext(), kTest, "Test_Element", Caller::Client).size(), elements);
}

} // namespace
