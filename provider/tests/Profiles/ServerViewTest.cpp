// The module's own description of the CIM server, written when the server
// describes nothing of itself, and the address it is named by.

#include <set>
#include <string>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMProperty.h>

#include "EventArgs.h"
#include "ProfilesTestSupport.h"
#include "RegisteredProfile.h"
#include "ServerCIMXMLCommunicationMechanism.h"
#include "ServerNamespace.h"
#include "ServerObjectManager.h"
#include "ServerSystem.h"

using namespace Pegasus;
using namespace orvsmis;

namespace {

using modeltest::prop;

std::string text(const CIMInstance& instance, const char* name) { return prop<String>(instance, name).toUtf8(); }

std::string refKey(const CIMInstance& instance, const char* role) {
    return modeltest::canonical(prop<CIMObjectPath>(instance, role));
}

class ServerViewTest : public profiletest::ProfilesFixture {};

TEST_F(ServerViewTest, WithoutTheServersOwnDescriptionTheModuleWritesAConnectedServerView) {
    DataEventArgs args(context, nullptr, nullptr, std::string());
    RegisteredProfile profiles;
    profiles.Create(&args);

    ASSERT_EQ(1u, interop().count("ORV_Storage_System"));
    ASSERT_EQ(1u, interop().count("ORV_Storage_ObjectManager"));
    ASSERT_EQ(1u, interop().count("ORV_Storage_CIMXMLCommunicationMechanism"));
    const CIMInstance system = interop().of("ORV_Storage_System")[0];
    const CIMInstance manager = interop().of("ORV_Storage_ObjectManager")[0];
    const CIMInstance mechanism = interop().of("ORV_Storage_CIMXMLCommunicationMechanism")[0];
    const std::string address = ServerSystem::getIP();
    const std::string url = "http://" + address + ":" + std::to_string(ServerObjectManager::getPortNumber());

    EXPECT_EQ(address, text(system, "Name"));
    EXPECT_EQ("IP", text(system, "NameFormat"));
    EXPECT_EQ(url, text(manager, "Name"));
    EXPECT_EQ("ORV_Storage_System", text(manager, "SystemCreationClassName"));
    EXPECT_EQ(address, text(manager, "SystemName"));
    EXPECT_TRUE(prop<Boolean>(manager, "Started"));
    EXPECT_EQ(url, text(mechanism, "Description")) << "clients read where to connect";

    // The namespaces a client reaches through this manager.
    std::set<std::string> names;
    for (const CIMInstance& ns : interop().of("ORV_Storage_Namespace")) {
        names.insert(text(ns, "Name"));
        EXPECT_EQ(url, text(ns, "ObjectManagerName"));
        EXPECT_EQ("ORV_Storage_ObjectManager", text(ns, "ObjectManagerCreationClassName"));
        EXPECT_EQ(address, text(ns, "SystemName"));
    }
    EXPECT_EQ((std::set<std::string>{"root/interop", "root/orv"}), names);

    const std::string systemKey = modeltest::canonical(system.getPath());
    const std::string managerKey = modeltest::canonical(manager.getPath());
    const std::string mechanismKey = modeltest::canonical(mechanism.getPath());
    ASSERT_EQ(1u, interop().count("ORV_Storage_HostedService"));
    EXPECT_EQ(systemKey, refKey(interop().of("ORV_Storage_HostedService")[0], "Antecedent"));
    EXPECT_EQ(managerKey, refKey(interop().of("ORV_Storage_HostedService")[0], "Dependent"));
    ASSERT_EQ(1u, interop().count("ORV_Storage_HostedAccessPoint"));
    EXPECT_EQ(mechanismKey, refKey(interop().of("ORV_Storage_HostedAccessPoint")[0], "Dependent"));
    ASSERT_EQ(1u, interop().count("ORV_Storage_CommMechanismForManager"));
    EXPECT_EQ(managerKey, refKey(interop().of("ORV_Storage_CommMechanismForManager")[0], "Antecedent"));
    EXPECT_EQ(2u, interop().count("ORV_Storage_NamespaceInManager"));
    for (const CIMInstance& link : interop().of("ORV_Storage_NamespaceInManager"))
        EXPECT_EQ(managerKey, refKey(link, "Antecedent"));

    // The "Server" profile leads to this manager.
    std::set<std::string> conforming;
    for (const CIMInstance& link : interop().of("ORV_Storage_ElementConformsToProfile"))
        if (refKey(link, "ManagedElement") == managerKey) conforming.insert(refKey(link, "ConformantStandard"));
    EXPECT_EQ((std::set<std::string>{"orv_storage_registeredprofile|instanceid=SNIA.SMI-S.1.6.1",
                                     "orv_storage_registeredprofile|instanceid=SNIA.Server.1.6.0"}),
              conforming);
}

TEST_F(ServerViewTest, ANamespaceNeedsTheKeysOfItsSystemAndManager) {
    const OperationContext ctx;
    // A system stored without its Name.
    CIMInstance system(CIMName("ORV_Storage_System"));
    system.addProperty(CIMProperty(CIMName("CreationClassName"), CIMValue(String("ORV_Storage_System"))));
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), CIMValue(String("ORV_Storage_System"))));
    keys.append(CIMKeyBinding(CIMName("Name"), CIMValue(String("10.0.0.1"))));
    const CIMObjectPath systemPath(String(), CIMNamespaceName("root/interop"), CIMName("ORV_Storage_System"), keys);
    system.setPath(systemPath);
    interop().createInstance(ctx, CIMNamespaceName("root/interop"), system);

    ServerNamespace nameSpace;
    try {
        nameSpace.WrapInstance(ctx, systemPath, systemPath, "root/orv");
        FAIL() << "a system without Name was taken";
    } catch (const CIMException& e) {
        EXPECT_NE(std::string::npos,
                  e.getMessage().toUtf8().find("ServerNamespace::WrapInstance execution failed.can't find system Name"))
            << e.getMessage().toUtf8();
    }
    EXPECT_THROW(nameSpace.WrapInstance(ctx, systemPath, systemPath, ""), CIMException);
}

TEST(ServerSystemAddress, ANameThatCannotBeResolvedGivesTheLoopbackAddress) {
    EXPECT_EQ("10.1.2.3", ServerSystem::ResolveAddress("10.1.2.3"));
    EXPECT_EQ("127.0.0.1", ServerSystem::ResolveAddress("localhost"));
    EXPECT_EQ("127.0.0.1", ServerSystem::ResolveAddress("no-such-host.invalid"));
    EXPECT_EQ("127.0.0.1", ServerSystem::ResolveAddress(""));
    EXPECT_EQ("http://10.1.2.3:5988", ServerObjectManager::Name("10.1.2.3", 5988));
}

}  // namespace
