#include <Pegasus/FrontEnd/InteropContent.h>
#include <Pegasus/Schema/ClassDecl.h>
#include <Pegasus/Schema/ClassRegistry.h>
#include <Pegasus/Schema/SchemaManager.h>

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

using namespace Pegasus;

namespace {

InteropContent::Settings settings(bool https)
{
    InteropContent::Settings s;
    s.hostName = "array-host";
    s.serverVersion = "1.0";
    s.httpPort = 15988;
    s.httpsEnabled = https;
    s.httpsPort = 15989;
    s.namespaces = {"root/interop", "root/orv"};
    return s;
}

} // namespace

// Every instance must fit the server's own schema: class, property names,
// types and keys, or the repository would refuse it at start.
TEST(InteropContentTest, ContentFitsTheSchema)
{
    SchemaManager schema;
    schema.loadDirectory(std::string(TEST_SOURCE_DIR) + "/schema");
    const ClassRegistry* registry = schema.registry("root/interop");
    ASSERT_NE(nullptr, registry);
    for (const CIMInstance& instance : InteropContent::build(settings(true)))
    {
        const std::string className = instance.getClassName().getString().toUtf8();
        const ClassDecl* cls = registry->findClass(className);
        ASSERT_NE(nullptr, cls) << className;
        EXPECT_FALSE(cls->isAbstract()) << className;
        std::set<std::string> given;
        for (Uint32 i = 0; i < instance.getPropertyCount(); ++i)
        {
            const CIMConstProperty p = instance.getProperty(i);
            const std::string name = p.getName().getString().toUtf8();
            const PropertyDecl* decl = cls->findProperty(name);
            ASSERT_NE(nullptr, decl) << className << "." << name;
            EXPECT_EQ(decl->type, p.getType()) << className << "." << name;
            EXPECT_EQ(decl->isArray, p.isArray()) << className << "." << name;
            given.insert(decl->name);
        }
        for (const std::string& key : cls->keyNames())
            EXPECT_TRUE(given.count(key)) << className << " lacks key " << key;
    }
}

TEST(InteropContentTest, OneNamespaceEachAndOneMechanismPerProtocol)
{
    std::map<std::string, int> count;
    std::string httpsAddress;
    for (const CIMInstance& instance : InteropContent::build(settings(false)))
        ++count[instance.getClassName().getString().toUtf8()];
    EXPECT_EQ(1, count["CIM_ObjectManager"]);
    EXPECT_EQ(2, count["CIM_Namespace"]);
    EXPECT_EQ(2, count["CIM_NamespaceInManager"]);
    EXPECT_EQ(1, count["CIM_CIMXMLCommunicationMechanism"]);
    EXPECT_EQ(1, count["CIM_CommMechanismForManager"]);
    EXPECT_EQ(1, count["CIM_ComputerSystem"]);
    EXPECT_EQ(1, count["CIM_HostedService"]);
    EXPECT_EQ(1, count["CIM_HostedAccessPoint"]);
    for (const CIMInstance& instance : InteropContent::build(settings(true)))
    {
        if (instance.getClassName().getString() != "CIM_CIMXMLCommunicationMechanism")
            continue;
        String text;
        instance.getProperty(instance.findProperty("Description")).getValue().get(text);
        if (text.find(String("https")) == 0)
            httpsAddress = text.toUtf8();
    }
    EXPECT_EQ("https://array-host:15989", httpsAddress);
}

// A client of the server's description goes from the host to the object
// manager and to every access point.
TEST(InteropContentTest, TheHostRunsTheManagerAndItsAccessPoints)
{
    std::map<std::string, std::vector<CIMObjectPath>> hosted;  // class of the dependent -> its paths
    std::string hostName;
    for (const CIMInstance& instance : InteropContent::build(settings(true)))
    {
        const std::string className = instance.getClassName().getString().toUtf8();
        if (className == "CIM_ComputerSystem")
        {
            String name;
            instance.getProperty(instance.findProperty("Name")).getValue().get(name);
            hostName = name.toUtf8();
        }
        if (className != "CIM_HostedService" && className != "CIM_HostedAccessPoint")
            continue;
        CIMObjectPath antecedent, dependent;
        instance.getProperty(instance.findProperty("Antecedent")).getValue().get(antecedent);
        instance.getProperty(instance.findProperty("Dependent")).getValue().get(dependent);
        EXPECT_EQ("CIM_ComputerSystem", antecedent.getClassName().getString().toUtf8());
        bool namesHost = false;
        for (const CIMKeyBinding& key : antecedent.getKeyBindings())
            if (key.getName().equal(CIMName("Name")))
                namesHost = key.getValue().toUtf8() == "array-host";
        EXPECT_TRUE(namesHost) << antecedent.toString().toUtf8();
        hosted[dependent.getClassName().getString().toUtf8()].push_back(dependent);
    }
    EXPECT_EQ("array-host", hostName);
    EXPECT_EQ(1u, hosted["CIM_ObjectManager"].size());
    EXPECT_EQ(2u, hosted["CIM_CIMXMLCommunicationMechanism"].size());
}
