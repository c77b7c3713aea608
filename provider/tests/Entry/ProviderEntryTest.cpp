// The module's entry and its method and associator routing.

#include "../Runtime/TempRoot.h"

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/CIMProvider.h>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

#include "ConfigManager.h"
#include "ControllerManager.h"
#include "SmisProvider.h"

extern "C" Pegasus::CIMProvider* PegasusCreateProvider(const Pegasus::String& providerName);

using namespace Pegasus;
using namespace orvsmis;

namespace {

std::string shippedConfiguration() {
    std::ifstream in(std::string(TEST_SOURCE_DIR) + "/provider/etc/smis_provider.conf");
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Collects what a controller hands to the server.
class Results : public MethodResultResponseHandler {
public:
    void processing() override {}
    void complete() override { completed = true; }
    void deliverParamValue(const CIMParamValue& value) override { out.push_back(value); }
    void deliver(const CIMValue& value) override { result = value; }
    std::vector<CIMParamValue> out;
    CIMValue result;
    bool completed = false;
};

class Paths : public ObjectPathResponseHandler {
public:
    void processing() override {}
    void complete() override {}
    void deliver(const CIMObjectPath&) override {}
};

class ProviderEntryTest : public ::testing::Test {
protected:
    void SetUp() override {
        root.Write("/opt/pegasus/etc/smis_provider.conf", shippedConfiguration());
        ConfigManager* config = Singleton<ConfigManager>::Instance();
        ASSERT_TRUE(config->IsInitialized() || config->Initialize());
    }

    CIMStatusCode invoke(const char* path, const char* method, Results& results, std::string* text = nullptr) {
        Array<CIMParamValue> in, out;
        const CIMObjectPath object(path);
        const CIMName name(method);
        InvokeMethodArgs args(OperationContext(), object, name, in, out, results);
        try {
            ControllerManager().InvokeMethod(args);
        } catch (const CIMException& e) {
            if (text) *text = e.getMessage().toUtf8();
            return e.getCode();
        }
        return CIM_ERR_SUCCESS;
    }

    TempRoot root;
};

TEST_F(ProviderEntryTest, PrefixesComeOffTheFront) {
    const struct {
        const char* in;
        const char* out;
    } cases[] = {
        {"ORV_Storage_StoragePool", "StoragePool"},
        {"CIM_StoragePool", "StoragePool"},
        {"XmlDataLoader", "XmlDataLoader"},
        // The prefix is found anywhere but cut from the front.
        {"X_ORV_Storage_Pool", "e_Pool"},
        {"My_CIM_Thing", "IM_Thing"},
        {"", ""},
    };
    for (const auto& c : cases) {
        std::string name = c.in;
        ControllerManager::removePrefix(name);
        EXPECT_EQ(name, c.out) << c.in;
    }
    std::unique_ptr<Controller> loader(ControllerManager::createController("XmlDataLoader"));
    EXPECT_NE(loader, nullptr);
    EXPECT_EQ(ControllerManager::createController("ORV_Storage_ComputerSystem"), nullptr);
}

TEST_F(ProviderEntryTest, RequestsWithoutAControllerAreRefusedByName) {
    Results results;
    std::string text;
    EXPECT_EQ(invoke("root/orv:ORV_Storage_ComputerSystem.Name=\"x\"", "RequestStateChange", results, &text),
        CIM_ERR_NOT_SUPPORTED);
    EXPECT_EQ(text, "not support this function : RequestStateChange");
    EXPECT_FALSE(results.completed);

    Paths paths;
    const CIMObjectPath object("root/orv:ORV_Storage_ComputerSystem.Name=\"x\"");
    const CIMName none, result;
    const String role, resultRole;
    AssoNameArgs args(OperationContext(), object, none, result, role, resultRole, paths);
    try {
        ControllerManager().AssociatorNames(args);
        FAIL() << "an associator without a controller was answered";
    } catch (const CIMException& e) {
        EXPECT_EQ(e.getCode(), CIM_ERR_NOT_SUPPORTED);
        EXPECT_EQ(e.getMessage(), "not support associator for this class : ");
    }
}

TEST_F(ProviderEntryTest, TheDataLoaderAnswersUnknownMethodsWithOne) {
    Results results;
    EXPECT_EQ(invoke("root/orv:XmlDataLoader", "Reload", results), CIM_ERR_SUCCESS);
    EXPECT_TRUE(results.completed);
    EXPECT_EQ(results.result, CIMValue(Uint32(1)));
}

TEST_F(ProviderEntryTest, OperationModeComesFromTheClientFile) {
    EXPECT_EQ(SMISProvider::GetOperationMode(), 0);
    EXPECT_FALSE(root.Exists("/opt/pegasus/etc/conf/client"));   // never made when missing
    root.MakeDir("/opt/pegasus/etc/conf");
    root.Write("/opt/pegasus/etc/conf/client", "");
    EXPECT_EQ(SMISProvider::GetOperationMode(), 0);
    EXPECT_EQ(root.Read("/opt/pegasus/etc/conf/client"), "default");
    root.Write("/opt/pegasus/etc/conf/client", "TYPE1\n");
    EXPECT_EQ(SMISProvider::GetOperationMode(), 1);
    root.Write("/opt/pegasus/etc/conf/client", "type1 \n");
    EXPECT_EQ(SMISProvider::GetOperationMode(), 0);
}

TEST_F(ProviderEntryTest, TheModuleIsOnlyTheProviderItsConfigurationNames) {
    EXPECT_EQ(PegasusCreateProvider("SomeOtherProvider"), nullptr);
    CIMProvider* provider = PegasusCreateProvider("orvsmisprovidermodule");
    ASSERT_NE(provider, nullptr);
    EXPECT_NE(dynamic_cast<CIMMethodProvider*>(provider), nullptr);
    EXPECT_NE(dynamic_cast<CIMIndicationProvider*>(provider), nullptr);
    EXPECT_EQ(dynamic_cast<SMISProvider*>(provider), GetProvider());
    EXPECT_NE(GetDataFlowService(), nullptr);
    EXPECT_NE(GetDataFlowSource(), nullptr);
    // A client's delete is the one instance operation that answers.
    class Done : public ResponseHandler {
    public:
        void processing() override {}
        void complete() override {}
    } done;
    try {
        GetProvider()->deleteInstance(OperationContext(), CIMObjectPath("root/orv:X.Name=\"a\""), done);
        FAIL() << "delete accepted";
    } catch (const CIMException& e) {
        EXPECT_EQ(e.getCode(), CIM_ERR_NOT_SUPPORTED);
        EXPECT_EQ(e.getMessage(), "Not Support");
    }
    EXPECT_TRUE(GetProvider()->validateNamespace(CIMObjectPath("ROOT/ORV:X.Name=\"a\"")));
    EXPECT_FALSE(GetProvider()->validateNamespace(CIMObjectPath("root/interop:X.Name=\"a\"")));
}

} // namespace
