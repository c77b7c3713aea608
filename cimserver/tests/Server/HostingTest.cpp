// The server with the test provider module loaded from its library: routing
// of methods, instance writes, associations and transactions.

#include "ServerTestRoot.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Repository/Repository.h>
#include <Pegasus/Server/CIMServer.h>
#include <Pegasus/Server/OperationDispatcher.h>
#include <Pegasus/Server/ProviderManager.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using namespace Pegasus;

namespace {

const CIMNamespaceName kTest("root/test");

CIMObjectPath elementPath(const char* id) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("Id", id, CIMKeyBinding::STRING));
    return CIMObjectPath(String(), kTest, "Test_Element", keys);
}

CIMInstance element(const char* id) {
    CIMInstance instance("Test_Element");
    instance.addProperty(CIMProperty("Id", String(id)));
    return instance;
}

std::set<std::string> ids(const Array<CIMObjectPath>& paths) {
    std::set<std::string> out;
    for (Uint32 i = 0; i < paths.size(); ++i) out.insert(paths[i].getKeyBindings()[0].getValue().toUtf8());
    return out;
}

class HostingTest : public ::testing::Test {
protected:
    void SetUp() override {
        server = std::make_unique<CIMServer>(root.config());
        server->start();
    }
    void TearDown() override {
        if (server) server->stop();
    }
    OperationDispatcher& dispatcher() { return server->dispatcher(); }

    CIMStatusCode codeOf(const std::function<void()>& call, std::string* message = nullptr) {
        try {
            call();
        } catch (const CIMException& e) {
            if (message) *message = e.getMessage().toUtf8();
            return e.getCode();
        }
        return CIM_ERR_SUCCESS;
    }

    CIMValue invoke(const char* method, const Array<CIMParamValue>& in, Array<CIMParamValue>& out) {
        return dispatcher().invokeMethod(OperationContext(), kTest, elementPath("x"), CIMName(method), in, out,
            Caller::Client);
    }

    ServerTestRoot root;
    std::unique_ptr<CIMServer> server;
};

TEST_F(HostingTest, LoadsRegisteredProvidersAndSkipsUnknownOnes) {
    // "UnknownToTheModule" is registered but the module returns null for it.
    ASSERT_EQ(server->providers().loaded().size(), 1u);
    EXPECT_EQ(server->providers().loaded()[0]->name, "TestProvider");
    EXPECT_NE(server->providers().loaded()[0]->method, nullptr);
    EXPECT_NE(server->providers().loaded()[0]->association, nullptr);
    // What the provider wrote through its handle in initialize is committed.
    const Array<CIMObjectPath> names =
        dispatcher().enumerateInstanceNames(OperationContext(), kTest, "Test_Element", Caller::Client);
    EXPECT_EQ(ids(names), std::set<std::string>{"from-initialize"});
    EXPECT_FALSE(names[0].getHost().size() == 0);
    EXPECT_EQ(names[0].getNameSpace(), kTest);
}

TEST_F(HostingTest, MethodsReachTheProviderWithTypedParameters) {
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("Count", CIMValue(String("21")), false));   // untyped, as clients send
    in.append(CIMParamValue("Name", CIMValue(String("vol")), false));
    Array<String> flags;
    flags.append("2");
    flags.append("3");
    in.append(CIMParamValue("Flags", CIMValue(flags), false));
    in.append(CIMParamValue("Echo", CIMValue(String("back")), true));
    const CIMValue result = invoke("DoIt", in, out);
    EXPECT_EQ(result, CIMValue(Uint32(42)));
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[0].getParameterName(), "Echo");
    EXPECT_EQ(out[0].getValue(), CIMValue(String("vol:back")));
    Array<Uint64> sizes;
    out[1].getValue().get(sizes);
    ASSERT_EQ(sizes.size(), 2u);
    EXPECT_EQ(sizes[1], 3000u);
}

TEST_F(HostingTest, MethodErrorsHaveTheirCodes) {
    Array<CIMParamValue> none, out;
    auto fail = [&](const char* how) {
        Array<CIMParamValue> in;
        in.append(CIMParamValue("How", CIMValue(String(how)), true));
        return codeOf([&] { invoke("Fail", in, out); });
    };
    std::string message;
    EXPECT_EQ(codeOf([&] {
        Array<CIMParamValue> in;
        in.append(CIMParamValue("How", CIMValue(String("cim")), true));
        invoke("Fail", in, out);
    }, &message), CIM_ERR_ACCESS_DENIED);
    EXPECT_EQ(message, "denied by the test provider");
    EXPECT_EQ(fail("std"), CIM_ERR_FAILED);
    EXPECT_EQ(fail("null"), CIM_ERR_FAILED);   // a null return value is refused
    EXPECT_EQ(fail("fine"), CIM_ERR_SUCCESS);
    EXPECT_EQ(codeOf([&] { invoke("Unregistered", none, out); }), CIM_ERR_METHOD_NOT_AVAILABLE);
    EXPECT_EQ(codeOf([&] { invoke("NoSuchMethod", none, out); }), CIM_ERR_METHOD_NOT_AVAILABLE);
    EXPECT_EQ(codeOf([&] {
        dispatcher().invokeMethod(OperationContext(), kTest, CIMObjectPath("Test_Missing.Id=\"1\""), "DoIt", none,
            out, Caller::Client);
    }), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(codeOf([&] {
        dispatcher().invokeMethod(OperationContext(), "root/none", elementPath("x"), "DoIt", none, out,
            Caller::Client);
    }), CIM_ERR_INVALID_NAMESPACE);
    Array<CIMParamValue> bad;
    bad.append(CIMParamValue("Count", CIMValue(String("lots")), false));
    EXPECT_EQ(codeOf([&] { invoke("DoIt", bad, out); }), CIM_ERR_INVALID_PARAMETER);
    // A provider that neither delivers nor completes still ends the call.
    EXPECT_TRUE(invoke("Silent", none, out).isNull());
    EXPECT_EQ(out.size(), 0u);
}

TEST_F(HostingTest, ClientWritesOfProviderClassesGoToTheProvider) {
    std::string message;
    EXPECT_EQ(codeOf([&] {
        dispatcher().deleteInstance(OperationContext(), kTest, elementPath("from-initialize"), Caller::Client);
    }, &message), CIM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(message, "Not Support");
    EXPECT_EQ(codeOf([&] {
        dispatcher().createInstance(OperationContext(), kTest, element("new"), Caller::Client);
    }), CIM_ERR_NOT_SUPPORTED);
    CIMInstance change = element("refused");
    change.setPath(elementPath("refused"));
    EXPECT_EQ(codeOf([&] {
        dispatcher().modifyInstance(OperationContext(), kTest, change, false, CIMPropertyList(), Caller::Client);
    }), CIM_ERR_NOT_SUPPORTED);
    CIMInstance accepted = element("accepted");
    accepted.setPath(elementPath("accepted"));
    EXPECT_EQ(codeOf([&] {
        dispatcher().modifyInstance(OperationContext(), kTest, accepted, false, CIMPropertyList(), Caller::Client);
    }), CIM_ERR_SUCCESS);
    // Nothing reached the repository; the stored instance is still there.
    EXPECT_EQ(ids(dispatcher().enumerateInstanceNames(OperationContext(), kTest, "Test_Element", Caller::Client)),
        std::set<std::string>{"from-initialize"});
    const std::string log = root.read(root.log());
    EXPECT_NE(log.find("deleteInstance\ncreateInstance\nmodifyInstance refused\nmodifyInstance accepted\n"),
        std::string::npos) << log;

    // A class without a provider is written to the repository.
    CIMInstance stored("Test_Stored");
    stored.addProperty(CIMProperty("Id", String("s1")));
    const CIMObjectPath path = dispatcher().createInstance(OperationContext(), kTest, stored, Caller::Client);
    EXPECT_EQ(dispatcher().getInstance(OperationContext(), kTest, path, false, false, false, CIMPropertyList(),
                  Caller::Client).getClassName(), "Test_Stored");
}

TEST_F(HostingTest, AssociatorsUniteRepositoryAndProviderWithoutDuplicates) {
    // The repository holds one link from "a" to "stored-peer".
    Repository& repository = server->repository();
    repository.createInstance(kTest, element("a"), RepositoryAccess::Committed);
    repository.createInstance(kTest, element("stored-peer"), RepositoryAccess::Committed);
    CIMInstance link("Test_Link");
    link.addProperty(CIMProperty("Left", elementPath("a")));
    link.addProperty(CIMProperty("Right", elementPath("stored-peer")));
    repository.createInstance(kTest, link, RepositoryAccess::Committed);

    const Array<CIMObjectPath> names = dispatcher().associatorNames(OperationContext(), kTest, elementPath("a"),
        CIMName(), CIMName(), String(), String(), Caller::Client);
    EXPECT_EQ(ids(names), (std::set<std::string>{"a-peer", "stored-peer"}));
    EXPECT_EQ(names.size(), 2u);
    const Array<CIMObject> objects = dispatcher().associators(OperationContext(), kTest, elementPath("a"),
        "Test_Link", CIMName(), String(), String(), false, false, CIMPropertyList(), Caller::Client);
    EXPECT_EQ(objects.size(), 2u);
    for (Uint32 i = 0; i < objects.size(); ++i) EXPECT_EQ(objects[i].getPath().getNameSpace(), kTest);
    // An association class filter that excludes the link asks nobody.
    EXPECT_EQ(dispatcher().associatorNames(OperationContext(), kTest, elementPath("a"), "CIM_Component",
                  CIMName(), String(), String(), Caller::Client).size(), 0u);
    const std::string log = root.read(root.log());
    EXPECT_NE(log.find("associatorNames Test_Link"), std::string::npos);
    EXPECT_NE(log.find("associators Test_Link"), std::string::npos);
}

TEST_F(HostingTest, AProviderTransactionIsJoinedByItsThreadsAndHiddenFromClients) {
    Array<CIMParamValue> in, out;
    in.append(CIMParamValue("Count", CIMValue(Uint32(3)), true));
    invoke("Begin", in, out);
    // Inside the transaction: the provider sees its writes, clients do not.
    EXPECT_EQ(dispatcher().enumerateInstanceNames(OperationContext(), kTest, "Test_Element", Caller::Provider).size(),
        5u);
    EXPECT_EQ(ids(dispatcher().enumerateInstanceNames(OperationContext(), kTest, "Test_Element", Caller::Client)),
        std::set<std::string>{"from-initialize"});
    invoke("Commit", Array<CIMParamValue>(), out);
    EXPECT_EQ(ids(dispatcher().enumerateInstanceNames(OperationContext(), kTest, "Test_Element", Caller::Client)),
        (std::set<std::string>{"from-initialize", "tx-0", "tx-1", "tx-2", "tx-thread"}));
}

TEST_F(HostingTest, StopTerminatesProvidersLastAndOnce) {
    server->stop();
    server.reset();
    const std::string log = root.read(root.log());
    EXPECT_EQ(log.find("initialize"), 0u);
    const std::size_t terminate = log.find("terminate");
    ASSERT_NE(terminate, std::string::npos);
    EXPECT_EQ(log.find("terminate", terminate + 1), std::string::npos);
    EXPECT_EQ(log.substr(terminate), "terminate\n");
}

TEST(HostingStartTest, BrokenSchemaOrRegistrationStopsTheStart) {
    ServerTestRoot root;
    root.write(root.path() + "/opt/pegasus/schema/50-broken.mof", "#pragma namespace (\"root/test\")\nclass {\n");
    CIMServer server(root.config());
    try {
        server.start();
        FAIL() << "a broken schema was accepted";
    } catch (const std::runtime_error& e) {
        EXPECT_NE(std::string(e.what()).find("the schema cannot be loaded"), std::string::npos) << e.what();
        EXPECT_NE(std::string(e.what()).find("50-broken.mof"), std::string::npos) << e.what();
    }
}

TEST(HostingStartTest, RestartReplacesDeclaredInstancesAndKeepsData) {
    ServerTestRoot root;
    {
        CIMServer server(root.config());
        server.start();
        CIMInstance stored("Test_Stored");
        stored.addProperty(CIMProperty("Id", String("kept")));
        server.dispatcher().createInstance(OperationContext(), kTest, stored, Caller::Client);
        server.stop();
    }
    {
        CIMServer server(root.config());
        server.start();
        EXPECT_EQ(server.dispatcher().enumerateInstanceNames(OperationContext(), kTest, "Test_Stored",
                      Caller::Client).size(), 1u);
        EXPECT_EQ(server.providers().loaded().size(), 1u);
        // The registration, declared in MOF, is there once.
        EXPECT_EQ(server.dispatcher().enumerateInstanceNames(OperationContext(), "interop", "PG_ProviderModule",
                      Caller::Client).size(), 1u);
        server.stop();
    }
}

} // namespace
