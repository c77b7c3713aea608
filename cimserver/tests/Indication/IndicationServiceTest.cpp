// Subscriptions through the server's dispatcher, with the test module
// registered as an indication provider: checks and defaults, provider
// enabling, persistence across a restart, and matching and delivery.

#include "../Server/ServerTestRoot.h"
#include "TestListener.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/System.h>
#include <Pegasus/Indication/IndicationService.h>
#include <Pegasus/Repository/Repository.h>
#include <Pegasus/Server/CIMServer.h>
#include <Pegasus/Server/OperationDispatcher.h>

#include <gtest/gtest.h>

#include <functional>

using namespace Pegasus;

namespace {

const CIMNamespaceName kInterop("root/interop");
const char* const kModule = "TestModule";
const char* const kProvider = "TestProvider";

// The test module as indication provider for alerts and instance
// indications of root/test.
const char* const kIndicationClasses =
    "#pragma namespace (\"root/test\")\n"
    "#pragma include (\"cim/Indication.mof\")\n";
const char* const kIndicationRegistration =
    "#pragma namespace (\"root/interop\")\n"
    "instance of PG_ProviderCapabilities {\n"
    "  ProviderModuleName = \"TestModule\"; ProviderName = \"TestProvider\";\n"
    "  CapabilityID = \"TestAlerts\"; ClassName = \"CIM_AlertIndication\";\n"
    "  Namespaces = { \"root/test\" }; ProviderType = { 4 };\n"
    "};\n"
    "instance of PG_ProviderCapabilities {\n"
    "  ProviderModuleName = \"TestModule\"; ProviderName = \"TestProvider\";\n"
    "  CapabilityID = \"TestInstIndications\"; ClassName = \"CIM_InstIndication\";\n"
    "  Namespaces = { \"root/test\" }; ProviderType = { 4 };\n"
    "};\n";

CIMInstance filter(const std::string& name, const std::string& query, const char* source = "root/test",
    const char* language = "WQL") {
    CIMInstance f("CIM_IndicationFilter");
    f.addProperty(CIMProperty("Name", String::fromUtf8(name)));
    f.addProperty(CIMProperty("Query", String::fromUtf8(query)));
    f.addProperty(CIMProperty("QueryLanguage", String(language)));
    if (source != nullptr) f.addProperty(CIMProperty("SourceNamespace", String(source)));
    return f;
}

CIMInstance destination(const std::string& name, const std::string& url,
    const char* className = "CIM_ListenerDestinationCIMXML") {
    CIMInstance d(className);
    d.addProperty(CIMProperty("Name", String::fromUtf8(name)));
    d.addProperty(CIMProperty("Destination", String::fromUtf8(url)));
    return d;
}

CIMInstance subscription(const CIMObjectPath& filterPath, const CIMObjectPath& handlerPath) {
    CIMInstance s("CIM_IndicationSubscription");
    s.addProperty(CIMProperty("Filter", CIMValue(filterPath), 0, "CIM_IndicationFilter"));
    s.addProperty(CIMProperty("Handler", CIMValue(handlerPath), 0, "CIM_ListenerDestination"));
    return s;
}

std::string stringOf(const CIMInstance& instance, const char* name) {
    const Uint32 index = instance.findProperty(name);
    if (index == PEG_NOT_FOUND) return "<missing>";
    return instance.getProperty(index).getValue().toString().toUtf8();
}

CIMInstance indication(const char* className, const char* ns = "root/test") {
    CIMInstance i(className);
    i.addProperty(CIMProperty("IndicationTime", CIMValue(CIMDateTime::getCurrentDateTime())));
    i.setPath(CIMObjectPath(String(), CIMNamespaceName(ns), CIMName(className)));
    return i;
}

CIMInstance element(const char* className, const char* id, Uint32 size) {
    CIMInstance e(className);
    e.addProperty(CIMProperty("Id", String(id)));
    if (size != 0) e.addProperty(CIMProperty("Size", CIMValue(size)));
    return e;
}

CIMInstance instIndication(const char* className, const CIMInstance& source) {
    CIMInstance i = indication(className);
    i.addProperty(CIMProperty("SourceInstance", CIMValue(source)));
    return i;
}

CIMInstance alert(Uint16 severity, const std::string& id) {
    CIMInstance a = indication("CIM_AlertIndication");
    a.addProperty(CIMProperty("PerceivedSeverity", CIMValue(severity)));
    a.addProperty(CIMProperty("AlertType", CIMValue(Uint16(5))));
    a.addProperty(CIMProperty("EventID", String::fromUtf8(id)));
    return a;
}

CIMInstance methodCall(const char* method) {
    CIMInstance m = instIndication("CIM_InstMethodCall", element("Test_Element", "m", 0));
    m.addProperty(CIMProperty("MethodName", String(method)));
    m.addProperty(CIMProperty("PreCall", CIMValue(Boolean(false))));
    return m;
}

class IndicationServiceTest : public ::testing::Test {
protected:
    void SetUp() override {
        root.write(root.path() + "/opt/pegasus/schema/45-test-indications.mof", kIndicationClasses);
        root.write(root.path() + "/opt/pegasus/schema/46-test-indication-registration.mof", kIndicationRegistration);
        startServer();
    }
    void TearDown() override { stopServer(); }

    void startServer() {
        server = std::make_unique<CIMServer>(root.config());
        IndicationService::Options options;
        options.queue.retryInterval = std::chrono::milliseconds(20);
        options.queue.maxRetryInterval = std::chrono::milliseconds(100);
        service = IndicationService::attach(*server, options);
        server->start();
    }
    void stopServer() {
        if (server) server->stop();
        server.reset();
        service.reset();
    }

    OperationDispatcher& dispatcher() { return server->dispatcher(); }

    CIMObjectPath create(const CIMInstance& instance) {
        return dispatcher().createInstance(OperationContext(), kInterop, instance, Caller::Client);
    }
    void remove(const CIMObjectPath& path) { dispatcher().deleteInstance(OperationContext(), kInterop, path, Caller::Client); }
    CIMInstance get(const CIMObjectPath& path) {
        return dispatcher().getInstance(OperationContext(), kInterop, path, false, false, false, CIMPropertyList(),
            Caller::Client);
    }

    CIMStatusCode codeOf(const std::function<void()>& call, std::string* message = nullptr) {
        try {
            call();
        } catch (const CIMException& e) {
            if (message) *message = e.getMessage().toUtf8();
            return e.getCode();
        }
        return CIM_ERR_SUCCESS;
    }

    int logCount(const std::string& line) {
        const std::string log = root.read(root.log());
        int count = 0;
        for (std::size_t at = log.find(line + "\n"); at != std::string::npos; at = log.find(line + "\n", at + 1))
            if (at == 0 || log[at - 1] == '\n') ++count;
        return count;
    }

    // A filter, a destination and the subscription joining them.
    CIMObjectPath subscribe(const std::string& name, const std::string& query, const std::string& url) {
        const CIMObjectPath f = create(filter(name, query));
        const CIMObjectPath d = create(destination(name, url));
        return create(subscription(f, d));
    }

    std::size_t deliver(const CIMInstance& indication) {
        return service->deliver(kModule, kProvider, OperationContext(), indication);
    }

    ServerTestRoot root;
    std::unique_ptr<CIMServer> server;
    std::shared_ptr<IndicationService> service;
};

TEST_F(IndicationServiceTest, FiltersAreCheckedAndCompleted) {
    struct Bad {
        CIMInstance instance;
        CIMStatusCode code;
        const char* text;
    };
    CIMInstance noQuery("CIM_IndicationFilter");
    noQuery.addProperty(CIMProperty("Name", String("f")));
    noQuery.addProperty(CIMProperty("QueryLanguage", String("WQL")));
    CIMInstance noName = filter("", "SELECT * FROM CIM_AlertIndication");
    CIMInstance wrongCreationClass = filter("f", "SELECT * FROM CIM_AlertIndication");
    wrongCreationClass.addProperty(CIMProperty("CreationClassName", String("CIM_Other")));
    CIMInstance numericQuery("CIM_IndicationFilter");
    numericQuery.addProperty(CIMProperty("Name", String("f")));
    numericQuery.addProperty(CIMProperty("Query", CIMValue(Uint32(5))));
    numericQuery.addProperty(CIMProperty("QueryLanguage", String("WQL")));
    const Bad cases[] = {
        {noQuery, CIM_ERR_INVALID_PARAMETER, "Query"},
        {noName, CIM_ERR_INVALID_PARAMETER, "Name"},
        {wrongCreationClass, CIM_ERR_INVALID_PARAMETER, "CreationClassName"},
        {numericQuery, CIM_ERR_INVALID_PARAMETER, "Query"},
        {filter("f", "SELECT * FROM CIM_AlertIndication WHERE"), CIM_ERR_INVALID_PARAMETER, "position 39"},
        {filter("f", "SELECT * FORM CIM_AlertIndication"), CIM_ERR_INVALID_PARAMETER, "position 9"},
        {filter("f", "SELECT * FROM CIM_AlertIndication", "root/test", "SQL"), CIM_ERR_NOT_SUPPORTED, "SQL"},
        {filter("f", "SELECT * FROM CIM_NoSuchIndication"), CIM_ERR_INVALID_PARAMETER, "CIM_NoSuchIndication"},
        {filter("f", "SELECT * FROM Test_Element"), CIM_ERR_INVALID_PARAMETER, "not an indication class"},
        {filter("f", "SELECT * FROM CIM_AlertIndication WHERE Nonsense = 1"), CIM_ERR_INVALID_PARAMETER, "Nonsense"},
        {filter("f", "SELECT Nonsense FROM CIM_AlertIndication"), CIM_ERR_INVALID_PARAMETER, "Nonsense"},
        {filter("f", "SELECT * FROM CIM_AlertIndication", "root/nowhere"), CIM_ERR_INVALID_PARAMETER, "root/nowhere"},
    };
    for (const Bad& c : cases) {
        SCOPED_TRACE(c.text);
        std::string message;
        EXPECT_EQ(codeOf([&] { create(c.instance); }, &message), c.code) << message;
        EXPECT_NE(message.find(c.text), std::string::npos) << message;
    }
    EXPECT_EQ(dispatcher().enumerateInstanceNames(OperationContext(), kInterop, "CIM_IndicationFilter",
        Caller::Client).size(), 0u);

    // Keys defaulted, source namespace defaulted to the filter's own; CQL
    // is the same language here.
    const CIMObjectPath path = create(filter("good", "SELECT * FROM CIM_AlertIndication", nullptr, "DMTF:CQL"));
    const CIMInstance stored = get(path);
    EXPECT_EQ(stringOf(stored, "CreationClassName"), "CIM_IndicationFilter");
    EXPECT_EQ(stringOf(stored, "SystemCreationClassName"), System::getSystemCreationClassName().toUtf8());
    EXPECT_EQ(stringOf(stored, "SystemName"), System::getFullyQualifiedHostName().toUtf8());
    EXPECT_EQ(stringOf(stored, "SourceNamespace"), "root/interop");
    EXPECT_EQ(codeOf([&] { create(filter("good", "SELECT * FROM CIM_AlertIndication")); }), CIM_ERR_ALREADY_EXISTS);
    // Filters are not changed in place.
    EXPECT_EQ(codeOf([&] {
        dispatcher().modifyInstance(OperationContext(), kInterop, stored, false, CIMPropertyList(), Caller::Client);
    }), CIM_ERR_NOT_SUPPORTED);
}

TEST_F(IndicationServiceTest, DestinationsAreCheckedAndCompleted) {
    CIMInstance badPersistence = destination("d", "http://127.0.0.1:5990/");
    badPersistence.addProperty(CIMProperty("PersistenceType", CIMValue(Uint16(7))));
    CIMInstance noDestination("CIM_ListenerDestinationCIMXML");
    noDestination.addProperty(CIMProperty("Name", String("d")));
    for (const CIMInstance& bad : {destination("d", "ftp://127.0.0.1/"), destination("d", "http://127.0.0.1:99999/"),
                                   destination("d", "127.0.0.1:5990"), destination("d", "http://h/a b"),
                                   badPersistence, noDestination}) {
        std::string message;
        EXPECT_EQ(codeOf([&] { create(bad); }, &message), CIM_ERR_INVALID_PARAMETER) << message;
    }
    const CIMInstance stored = get(create(destination("d", "https://listener.example.com/x")));
    EXPECT_EQ(stringOf(stored, "PersistenceType"), "2");
    EXPECT_EQ(stringOf(stored, "CreationClassName"), "CIM_ListenerDestinationCIMXML");
    // The older handler class is served the same way.
    const CIMInstance handler = get(create(destination("h", "http://127.0.0.1:5990", "CIM_IndicationHandlerCIMXML")));
    EXPECT_EQ(stringOf(handler, "Destination"), "http://127.0.0.1:5990");
}

TEST_F(IndicationServiceTest, SubscriptionsNeedResolvableReferencesAndAProvider) {
    const CIMObjectPath f = create(filter("alerts", "SELECT * FROM CIM_AlertIndication"));
    const CIMObjectPath d = create(destination("d", "http://127.0.0.1:5990/"));

    CIMInstance noFilter("CIM_IndicationSubscription");
    noFilter.addProperty(CIMProperty("Handler", CIMValue(d), 0, "CIM_ListenerDestination"));
    std::string message;
    EXPECT_EQ(codeOf([&] { create(noFilter); }, &message), CIM_ERR_INVALID_PARAMETER) << message;

    CIMObjectPath dangling = f;
    Array<CIMKeyBinding> keys = f.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i)
        if (keys[i].getName() == CIMName("Name")) keys[i].setValue("nothing-of-that-name");
    dangling.setKeyBindings(keys);
    EXPECT_EQ(codeOf([&] { create(subscription(dangling, d)); }, &message), CIM_ERR_INVALID_PARAMETER);
    EXPECT_NE(message.find("does not exist"), std::string::npos) << message;
    CIMObjectPath danglingHandler = d;
    Array<CIMKeyBinding> hkeys = d.getKeyBindings();
    for (Uint32 i = 0; i < hkeys.size(); ++i)
        if (hkeys[i].getName() == CIMName("Name")) hkeys[i].setValue("gone");
    danglingHandler.setKeyBindings(hkeys);
    EXPECT_EQ(codeOf([&] { create(subscription(f, danglingHandler)); }), CIM_ERR_INVALID_PARAMETER);
    // Filter and Handler the wrong way round.
    EXPECT_EQ(codeOf([&] { create(subscription(d, f)); }), CIM_ERR_INVALID_PARAMETER);

    // Nothing provides indications in the interop namespace.
    const CIMObjectPath lonely = create(filter("lonely", "SELECT * FROM CIM_AlertIndication", "root/interop"));
    EXPECT_EQ(codeOf([&] { create(subscription(lonely, d)); }, &message), CIM_ERR_NOT_SUPPORTED);
    EXPECT_NE(message.find("No providers"), std::string::npos) << message;

    const CIMObjectPath s = create(subscription(f, d));
    const CIMInstance stored = get(s);
    EXPECT_EQ(stringOf(stored, "SubscriptionState"), "2");
    EXPECT_EQ(stringOf(stored, "OnFatalErrorPolicy"), "2");
    EXPECT_EQ(stringOf(stored, "RepeatNotificationPolicy"), "2");
    EXPECT_EQ(codeOf([&] { create(subscription(f, d)); }), CIM_ERR_ALREADY_EXISTS);
    EXPECT_EQ(service->activeSubscriptions(), 1u);

    // What a subscription uses cannot go before it.
    EXPECT_EQ(codeOf([&] { remove(f); }, &message), CIM_ERR_FAILED);
    EXPECT_EQ(codeOf([&] { remove(d); }), CIM_ERR_FAILED);
    remove(s);
    EXPECT_EQ(service->activeSubscriptions(), 0u);
    EXPECT_EQ(codeOf([&] { remove(s); }), CIM_ERR_NOT_FOUND);
    remove(f);
    remove(d);
}

TEST_F(IndicationServiceTest, ProvidersAreEnabledAtTheFirstSubscriptionAndDisabledAtTheLast) {
    EXPECT_EQ(logCount("enableIndications"), 0);
    const CIMObjectPath d = create(destination("d", "http://127.0.0.1:5990/"));
    const CIMObjectPath s1 = create(subscription(create(filter("a", "SELECT * FROM CIM_AlertIndication")), d));
    EXPECT_EQ(logCount("enableIndications"), 1);
    EXPECT_EQ(service->subscriptionCount(kModule, kProvider), 1u);
    const CIMObjectPath s2 = create(subscription(create(filter("b", "SELECT * FROM CIM_InstCreation")), d));
    EXPECT_EQ(logCount("enableIndications"), 1);
    EXPECT_EQ(service->subscriptionCount(kModule, kProvider), 2u);

    remove(s1);
    EXPECT_EQ(logCount("disableIndications"), 0);
    EXPECT_EQ(service->subscriptionCount(kModule, kProvider), 1u);

    // Disabling the state counts as going; enabling it again as coming.
    CIMInstance change("CIM_IndicationSubscription");
    change.addProperty(CIMProperty("SubscriptionState", CIMValue(Uint16(4))));
    change.setPath(s2);
    Array<CIMName> only;
    only.append("SubscriptionState");
    dispatcher().modifyInstance(OperationContext(), kInterop, change, false, CIMPropertyList(only), Caller::Client);
    EXPECT_EQ(logCount("disableIndications"), 1);
    EXPECT_EQ(service->subscriptionCount(kModule, kProvider), 0u);
    EXPECT_EQ(stringOf(get(s2), "SubscriptionState"), "4");
    change.getProperty(0).setValue(CIMValue(Uint16(2)));
    dispatcher().modifyInstance(OperationContext(), kInterop, change, false, CIMPropertyList(only), Caller::Client);
    EXPECT_EQ(logCount("enableIndications"), 2);
    change.getProperty(0).setValue(CIMValue(Uint16(9)));
    EXPECT_EQ(codeOf([&] {
        dispatcher().modifyInstance(OperationContext(), kInterop, change, false, CIMPropertyList(only), Caller::Client);
    }), CIM_ERR_NOT_SUPPORTED);

    remove(s2);
    EXPECT_EQ(logCount("disableIndications"), 2);
    EXPECT_EQ(service->subscriptionCount(kModule, kProvider), 0u);
}

TEST_F(IndicationServiceTest, SubscriptionsSurviveARestart) {
    TestListener listener;
    subscribe("alerts", "SELECT * FROM CIM_AlertIndication", listener.url());
    const CIMObjectPath d = create(destination("disabled", listener.url("/never")));
    CIMInstance off = subscription(create(filter("off", "SELECT * FROM CIM_AlertIndication")), d);
    off.addProperty(CIMProperty("SubscriptionState", CIMValue(Uint16(4))));
    create(off);
    EXPECT_EQ(service->activeSubscriptions(), 1u);

    stopServer();
    EXPECT_EQ(logCount("disableIndications"), 1);
    EXPECT_EQ(logCount("terminate"), 1);

    startServer();
    EXPECT_EQ(service->activeSubscriptions(), 1u);
    EXPECT_EQ(service->subscriptionCount(kModule, kProvider), 1u);
    const std::string log = root.read(root.log());
    // Enabled again, after the provider was initialised the second time.
    EXPECT_EQ(logCount("enableIndications"), 2);
    EXPECT_GT(log.rfind("enableIndications"), log.rfind("initialize"));
    EXPECT_EQ(deliver(alert(5, "after-restart")), 1u);
    const std::vector<CIMInstance> got = listener.waitFor(1);
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(stringOf(got[0], "EventID"), "after-restart");
    EXPECT_EQ(dispatcher().enumerateInstanceNames(OperationContext(), kInterop, "CIM_IndicationSubscription",
        Caller::Client).size(), 2u);
}

TEST_F(IndicationServiceTest, DeliversEachKindToItsMatchingSubscriptionInOrder) {
    TestListener listener;
    const CIMObjectPath d = create(destination("all", listener.url("/cim")));
    const char* const queries[] = {
        "SELECT * FROM CIM_InstCreation WHERE SourceInstance ISA Test_Element",
        "SELECT * FROM CIM_InstDeletion",
        "SELECT * FROM CIM_InstModification WHERE SourceInstance.Size > 10",
        "SELECT * FROM CIM_InstMethodCall WHERE MethodName = 'DoIt'",
        "SELECT EventID, PerceivedSeverity FROM CIM_AlertIndication WHERE PerceivedSeverity >= 5",
    };
    int n = 0;
    for (const char* query : queries) create(subscription(create(filter("kind" + std::to_string(n++), query)), d));

    struct Sent {
        CIMInstance indication;
        bool wanted;
    };
    const Sent sent[] = {
        {instIndication("CIM_InstCreation", element("Test_Element", "c1", 0)), true},
        {instIndication("CIM_InstCreation", element("Test_Stored", "c2", 0)), false},
        {instIndication("CIM_InstDeletion", element("Test_Stored", "d1", 0)), true},
        {instIndication("CIM_InstModification", element("Test_Element", "m1", 5)), false},
        {instIndication("CIM_InstModification", element("Test_Element", "m2", 20)), true},
        {methodCall("DoIt"), true},
        {methodCall("Fail"), false},
        {alert(4, "minor"), false},
        {alert(5, "major"), true},
        {alert(6, "critical"), true},
    };
    std::vector<std::string> expected;
    for (const Sent& s : sent) {
        EXPECT_EQ(deliver(s.indication), s.wanted ? 1u : 0u) << s.indication.getClassName().getString().toUtf8();
        if (s.wanted) expected.push_back(s.indication.getClassName().getString().toUtf8());
    }
    // Another namespace, another provider, an uninitialized indication.
    EXPECT_EQ(deliver(indication("CIM_AlertIndication", "root/interop")), 0u);
    EXPECT_EQ(service->deliver(kModule, "SomeoneElse", OperationContext(), alert(6, "x")), 0u);
    EXPECT_THROW(deliver(CIMInstance()), CIMException);

    const std::vector<CIMInstance> got = listener.waitFor(expected.size());
    ASSERT_EQ(got.size(), expected.size());
    for (std::size_t i = 0; i < got.size(); ++i) EXPECT_EQ(got[i].getClassName().getString().toUtf8(), expected[i]);
    EXPECT_EQ(stringOf(got[4], "EventID"), "major");
    EXPECT_EQ(stringOf(got[5], "EventID"), "critical");
    // Only the selected properties (and the sequence) of the alerts go out.
    EXPECT_EQ(stringOf(got[5], "AlertType"), "<missing>");
    EXPECT_EQ(stringOf(got[5], "SequenceNumber"), "5");
    // The source instance arrives embedded.
    const Uint32 source = got[0].findProperty("SourceInstance");
    ASSERT_NE(source, PEG_NOT_FOUND);
    EXPECT_FALSE(got[0].getProperty(source).getValue().isNull());

    // A subscription limited by the provider's context.
    Array<CIMObjectPath> none;
    none.append(CIMObjectPath("//h/root/interop:CIM_IndicationSubscription.Filter=\"x\",Handler=\"y\""));
    OperationContext context;
    context.insert(SubscriptionInstanceNamesContainer(none));
    EXPECT_EQ(service->deliver(kModule, kProvider, context, alert(6, "targeted")), 0u);
    stopServer();   // before the listener, so that it has no connection left to wait for
}

} // namespace
