#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <Pegasus/Schema/ClassRegistry.h>
#include <Pegasus/Schema/SchemaError.h>
#include <Pegasus/Schema/SchemaManager.h>

using namespace Pegasus;

namespace {

const char* BASE_MOF = R"(
[Abstract]
class T_Managed
{
    string Caption;
    [Description("base")] string Description;
    uint16 Status[];
    uint32 Reset();
};

[Abstract]
class T_Logical : T_Managed
{
    [Key] string SystemName;
    [Key] string DeviceID;
    uint64 Size = 0;
};

class T_Volume : T_Logical
{
    [Override ("Description"), MaxLen(64)] string Description;
    string Name;
    uint32 Reset(uint16 Mode);
};

class T_Disk : T_Logical
{
};

class T_Pool : T_Managed
{
    [Key] string InstanceID;
};

[Association]
class T_Dependency
{
    [Key] T_Managed REF Antecedent;
    [Key] T_Managed REF Dependent;
};

[Association]
class T_AllocatedFrom : T_Dependency
{
    [Override ("Antecedent")] T_Pool REF Antecedent;
    [Override ("Dependent")] T_Logical REF Dependent;
    uint64 SpaceConsumed;
};

[Association]
class T_DiskOnly
{
    [Key] T_Disk REF Disk;
    [Key] T_Pool REF Pool;
};
)";

class RegistryTest : public ::testing::Test
{
protected:
    void SetUp() override { schema.loadString(BASE_MOF, "base.mof", "root/t"); }

    const ClassRegistry& reg() const { return *schema.registry("root/t"); }

    std::string addError(const std::string& mof)
    {
        try
        {
            schema.loadString(mof, "extra.mof", "root/t");
        }
        catch (const SchemaError& e)
        {
            return e.what();
        }
        return std::string();
    }

    static std::vector<std::string> names(const std::vector<PropertyDecl>& props)
    {
        std::vector<std::string> out;
        for (const PropertyDecl& p : props)
            out.push_back(p.name);
        return out;
    }

    SchemaManager schema;
};

} // namespace

TEST_F(RegistryTest, FlattensInheritedMembersFirstWithOverridesInPlace)
{
    const ClassDecl* vol = reg().findClass("t_volume");
    ASSERT_NE(nullptr, vol);
    EXPECT_EQ((std::vector<std::string>{"Caption", "Description", "Status", "SystemName", "DeviceID", "Size", "Name"}),
              names(vol->properties()));
    EXPECT_EQ(2u, vol->localProperties.size());

    const PropertyDecl* caption = vol->findProperty("CAPTION");
    ASSERT_NE(nullptr, caption);
    EXPECT_EQ("T_Managed", caption->classOrigin);
    EXPECT_TRUE(caption->propagated);

    // The override keeps its place, takes this class as origin, and merges
    // inherited qualifiers with its own.
    const PropertyDecl* desc = vol->findProperty("Description");
    EXPECT_EQ("T_Volume", desc->classOrigin);
    EXPECT_FALSE(desc->propagated);
    EXPECT_EQ("base", desc->qualifiers.stringValue("Description"));
    EXPECT_TRUE(desc->qualifiers.has("MaxLen"));
    EXPECT_EQ("Description", desc->qualifiers.stringValue("Override"));

    EXPECT_EQ((std::vector<std::string>{"SystemName", "DeviceID"}), vol->keyNames());
    EXPECT_EQ(2u, vol->keyProperties().size());
    ASSERT_TRUE(vol->findProperty("size")->defaultValue.has_value());
    EXPECT_EQ(nullptr, vol->findProperty("Nothing"));
    EXPECT_EQ(nullptr, vol->findLocalProperty("Caption"));
    EXPECT_NE(nullptr, vol->findLocalProperty("name"));

    ASSERT_EQ(1u, vol->methods().size());
    EXPECT_EQ("T_Volume", vol->findMethod("reset")->classOrigin);
    EXPECT_EQ(1u, vol->findMethod("Reset")->parameters.size());
    EXPECT_EQ("T_Managed", reg().findClass("T_Disk")->findMethod("Reset")->classOrigin);
}

TEST_F(RegistryTest, ClassFlagsAndAncestry)
{
    const ClassDecl* managed = reg().findClass("T_Managed");
    const ClassDecl* logical = reg().findClass("T_Logical");
    const ClassDecl* vol = reg().findClass("T_Volume");
    EXPECT_TRUE(managed->isAbstract());
    EXPECT_TRUE(logical->isAbstract());
    EXPECT_FALSE(vol->isAbstract()); // Abstract is not inherited
    EXPECT_EQ(logical, vol->superClass());
    EXPECT_EQ(2u, vol->depth());
    EXPECT_TRUE(reg().findClass("T_AllocatedFrom")->isAssociation()); // also inherited
    EXPECT_FALSE(vol->isAssociation());

    EXPECT_TRUE(reg().isSubclassOf("T_Volume", "t_managed"));
    EXPECT_TRUE(reg().isSubclassOf("T_Volume", "T_Volume"));
    EXPECT_FALSE(reg().isSubclassOf("T_Managed", "T_Volume"));
    EXPECT_FALSE(reg().isSubclassOf("T_Volume", "T_Disk"));
    EXPECT_FALSE(reg().isSubclassOf("T_Volume", "T_Unknown"));
    EXPECT_FALSE(reg().isSubclassOf("T_Unknown", "T_Unknown"));

    EXPECT_EQ((std::vector<std::string>{"T_Logical", "T_Pool"}), reg().subclassesOf("T_Managed", false));
    EXPECT_EQ((std::vector<std::string>{"T_Logical", "T_Volume", "T_Disk", "T_Pool"}),
              reg().subclassesOf("t_managed", true));
    EXPECT_TRUE(reg().subclassesOf("T_Volume", true).empty());
    EXPECT_TRUE(reg().subclassesOf("T_Unknown", true).empty());
    EXPECT_EQ((std::vector<std::string>{"T_Managed", "T_Dependency", "T_DiskOnly"}), reg().topClasses());
    EXPECT_EQ(8u, reg().classNames().size());
    EXPECT_EQ("T_Managed", reg().classNames().front());
}

TEST_F(RegistryTest, AssociationsReferencingAClassOrItsAncestors)
{
    auto assocNames = [this](const std::string& cls) {
        std::vector<std::string> out;
        for (const ClassDecl* c : reg().associationClassesReferencing(cls))
            out.push_back(c->name);
        return out;
    };
    EXPECT_EQ((std::vector<std::string>{"T_Dependency", "T_AllocatedFrom"}), assocNames("T_Volume"));
    EXPECT_EQ((std::vector<std::string>{"T_Dependency", "T_AllocatedFrom", "T_DiskOnly"}), assocNames("T_Disk"));
    EXPECT_EQ((std::vector<std::string>{"T_Dependency", "T_AllocatedFrom", "T_DiskOnly"}), assocNames("T_Pool"));
    EXPECT_EQ((std::vector<std::string>{"T_Dependency"}), assocNames("T_Managed"));
    EXPECT_TRUE(assocNames("T_Nothing").empty());

    const ClassDecl* alloc = reg().findClass("T_AllocatedFrom");
    std::vector<const PropertyDecl*> refs = alloc->referenceProperties();
    ASSERT_EQ(2u, refs.size());
    EXPECT_EQ("T_Pool", refs[0]->referenceClass);
    EXPECT_TRUE(refs[0]->isKey); // Key comes from the overridden property
    EXPECT_EQ((std::vector<std::string>{"Antecedent", "Dependent"}), alloc->keyNames());
}

TEST_F(RegistryTest, RefusesInconsistentClasses)
{
    struct Case { const char* mof; const char* message; };
    const Case cases[] = {
        {"\nclass T_X : T_Missing { };", "extra.mof:2: superclass T_Missing of class T_X is not defined in namespace root/t"},
        {"class t_volume : T_Logical { };", "extra.mof:1: class t_volume is already defined in namespace root/t (base.mof:"},
        {"class T_X : T_Managed {\n uint32 Caption; };", "extra.mof:2: property Caption of class T_X changes the type of the inherited property Caption"},
        {"class T_X : T_Managed {\n string Status; };", "extra.mof:2: property Status of class T_X changes the type"},
        {"class T_X : T_Managed {\n [Override(\"Nope\")] string Other; };", "extra.mof:2: property Other of class T_X overrides Nope, which no superclass declares"},
        {"class T_X {\n string A;\n string a; };", "extra.mof:3: property a declared twice in class T_X"},
        {"class T_X {\n T_Managed REF A; };", "extra.mof:2: reference property A in class T_X, which is not an association"},
        {"[Association] class T_X {\n T_Nowhere REF A; };", "extra.mof:2: reference property A of class T_X refers to class T_Nowhere, which is not defined"},
        {"[Association] class T_X : T_AllocatedFrom {\n [Override(\"Antecedent\")] T_Disk REF Antecedent; };",
         "extra.mof:2: reference property Antecedent of class T_X refers to T_Disk, which is not a subclass of T_Pool"},
        {"class T_X { uint32 M(); uint8 m(); };", "extra.mof:1: method m declared twice in class T_X"},
        {"class T_X : T_Managed { string Reset(); };", "extra.mof:1: method Reset of class T_X changes the return type"},
        {"[Association, Indication] class T_X { };", "extra.mof:1: class T_X cannot be both an association and an indication"},
        {"class T_X { [EmbeddedInstance(\"T_Pool\")] uint8 E; };", "extra.mof:1: property E carries an embedded object qualifier but is not a string"},
    };
    for (const Case& c : cases)
    {
        std::string err = addError(c.mof);
        EXPECT_EQ(0u, err.find(c.message)) << "input: " << c.mof << "\nerror: " << err;
    }
    // A self-referencing association is fine.
    EXPECT_EQ("", addError("[Association] class T_Self { [Key] T_Self REF Parent; [Key] T_Managed REF Child; };"));
    EXPECT_EQ(1u, reg().associationClassesReferencing("T_Self").size());
}

TEST_F(RegistryTest, ConcurrentReadersSeeTheSameAnswers)
{
    std::atomic<int> wrong(0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
    {
        threads.emplace_back([this, &wrong] {
            for (int i = 0; i < 2000; ++i)
            {
                if (!reg().isSubclassOf("T_AllocatedFrom", "T_Dependency") ||
                    reg().findClass("T_Volume")->findProperty("DeviceID") == nullptr ||
                    reg().associationClassesReferencing("T_Disk").size() != 3)
                    ++wrong;
            }
        });
    }
    for (std::thread& th : threads)
        th.join();
    EXPECT_EQ(0, wrong.load());
}
