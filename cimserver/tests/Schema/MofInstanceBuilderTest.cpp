#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Schema/MofInstanceBuilder.h>
#include <Pegasus/Schema/SchemaError.h>
#include <Pegasus/Schema/SchemaManager.h>

using namespace Pegasus;

namespace {

const char* CLASSES = R"(
[Abstract] class T_Base { string Caption; };
class T_All : T_Base
{
    [Key] string Id;
    boolean B;
    uint8 U8; sint8 S8; uint16 U16; sint16 S16; uint32 U32; sint32 S32;
    uint64 U64; sint64 S64; real32 R32; real64 R64; char16 C; datetime D;
    uint16 List[]; string Names[]; uint8 Pair[2];
    [EmbeddedObject] string Embedded;
};
class T_Module { [Key] string Name; string Vendor; };
class T_Other { [Key] uint32 Number = 7; [Key] boolean Flag; };
[Association] class T_Link
{
    [Key] T_Module REF Module;
    [Key] T_All REF Target;
};
)";

class BuilderTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        schema.loadString(CLASSES, "classes.mof", "root/t");
        builder = std::make_unique<MofInstanceBuilder>(*schema.registry("root/t"));
    }

    // Builds every instance of `mof` in order; returns the last.
    CIMInstance build(const std::string& mof)
    {
        std::size_t before = schema.instances("root/t").size();
        schema.loadString(mof, "inst.mof", "root/t");
        const std::vector<InstanceDecl>& all = schema.instances("root/t");
        CIMInstance last;
        for (std::size_t i = before; i < all.size(); ++i)
            last = builder->build(all[i]);
        return last;
    }

    std::string buildError(const std::string& mof)
    {
        try
        {
            build(mof);
        }
        catch (const SchemaError& e)
        {
            return e.what();
        }
        return std::string();
    }

    template <class T>
    T get(const CIMInstance& inst, const char* name)
    {
        Uint32 pos = inst.findProperty(CIMName(name));
        EXPECT_NE(PEG_NOT_FOUND, pos) << name;
        T out = T();
        if (pos != PEG_NOT_FOUND)
            inst.getProperty(pos).getValue().get(out);
        return out;
    }

    SchemaManager schema;
    std::unique_ptr<MofInstanceBuilder> builder;
};

} // namespace

TEST_F(BuilderTest, ConvertsEveryTypeAndBuildsThePath)
{
    CIMInstance inst = build(R"(
instance of T_All
{
    Id = "a" "1";  B = true;  U8 = 255;  S8 = -128;  U16 = 0xFFFF;  S16 = -0x8000;
    U32 = 4294967295;  S32 = -2147483648;  U64 = 18446744073709551615;
    S64 = -9223372036854775808;  R32 = 1.5;  R64 = -2;  C = 'x';
    D = "20240115103045.123456+060";  List = {1, 2, 3};  Names = {"x", "y"};
    Pair = {1, 0b};  Caption = NULL;
};)");
    EXPECT_EQ(String("T_All"), inst.getClassName().getString());
    EXPECT_EQ(String("a1"), get<String>(inst, "Id"));
    EXPECT_TRUE(get<Boolean>(inst, "B"));
    EXPECT_EQ(255, get<Uint8>(inst, "U8"));
    EXPECT_EQ(-128, get<Sint8>(inst, "S8"));
    EXPECT_EQ(65535, get<Uint16>(inst, "U16"));
    EXPECT_EQ(-32768, get<Sint16>(inst, "S16"));
    EXPECT_EQ(4294967295u, get<Uint32>(inst, "U32"));
    EXPECT_EQ(INT32_MIN, get<Sint32>(inst, "S32"));
    EXPECT_EQ(UINT64_MAX, get<Uint64>(inst, "U64"));
    EXPECT_EQ(INT64_MIN, get<Sint64>(inst, "S64"));
    EXPECT_FLOAT_EQ(1.5f, get<Real32>(inst, "R32"));
    EXPECT_DOUBLE_EQ(-2.0, get<Real64>(inst, "R64"));
    EXPECT_EQ(Char16('x'), get<Char16>(inst, "C"));
    EXPECT_EQ(String("20240115103045.123456+060"), get<CIMDateTime>(inst, "D").toString());
    EXPECT_EQ(3u, get<Array<Uint16>>(inst, "List").size());
    EXPECT_EQ(String("y"), get<Array<String>>(inst, "Names")[1]);
    Uint32 caption = inst.findProperty(CIMName("Caption"));
    ASSERT_NE(PEG_NOT_FOUND, caption);
    EXPECT_TRUE(inst.getProperty(caption).getValue().isNull());
    EXPECT_EQ(CIMTYPE_STRING, inst.getProperty(caption).getValue().getType());
    // Properties not written are left out.
    EXPECT_EQ(PEG_NOT_FOUND, inst.findProperty(CIMName("Embedded")));

    const CIMObjectPath& path = inst.getPath();
    EXPECT_EQ(String("T_All"), path.getClassName().getString());
    EXPECT_TRUE(path.getHost().size() == 0);
    ASSERT_EQ(1u, path.getKeyBindings().size());
    EXPECT_EQ(String("a1"), path.getKeyBindings()[0].getValue());
}

TEST_F(BuilderTest, KeysFromDefaultsAndReferencesThroughAliases)
{
    CIMInstance other = build("instance of T_Other { Flag = FALSE; };");
    ASSERT_EQ(2u, other.getPath().getKeyBindings().size());
    EXPECT_EQ(7u, get<Uint32>(other, "Number"));

    CIMInstance link = build(R"(
instance of T_Module as $M { Name = "mod"; Vendor = "v"; };
instance of T_All as $A { Id = "x"; };
instance of T_Link { Module = $M; Target = "T_All.Id=\"y\""; };)");
    CIMObjectPath module = get<CIMObjectPath>(link, "Module");
    EXPECT_EQ(String("T_Module"), module.getClassName().getString());
    EXPECT_EQ(String("mod"), module.getKeyBindings()[0].getValue());
    EXPECT_EQ(String("y"), get<CIMObjectPath>(link, "Target").getKeyBindings()[0].getValue());
    EXPECT_EQ(2u, link.getPath().getKeyBindings().size());
}

TEST_F(BuilderTest, FaultsNameFileAndLine)
{
    struct Case { const char* mof; const char* message; };
    const Case cases[] = {
        {"instance of T_All {\n Id = \"x\";\n Nope = 1; };", "inst.mof:3: class T_All has no property Nope"},
        {"instance of T_All { Id = \"x\";\n U8 = 256; };", "inst.mof:2: value integer 256 for property U8 (uint8) is out of range"},
        {"instance of T_All { Id = \"x\";\n U32 = -1; };", "inst.mof:2: value integer -1 for property U32 (uint32) is out of range"},
        {"instance of T_All { Id = \"x\";\n B = 1; };", "inst.mof:2: value integer 1 for property B (boolean) is not a boolean"},
        {"instance of T_All { Id = \"x\";\n U16 = \"5\"; };", "inst.mof:2: value string \"5\" for property U16 (uint16) is not an integer"},
        {"instance of T_All { Id = \"x\";\n List = 5; };", "inst.mof:2: value integer 5 for property List (uint16[]) is a single value"},
        {"instance of T_All { Id = \"x\";\n Names = {\"a\", NULL}; };", "inst.mof:2: value array of 2 values for property Names (string[]) holds NULL"},
        {"instance of T_All { Id = \"x\";\n Pair = {1}; };", "inst.mof:2: value array of 1 value for property Pair (uint8[]) has 1 elements, but the array holds exactly 2"},
        {"instance of T_All { Id = \"x\";\n D = \"yesterday\"; };", "inst.mof:2: value string \"yesterday\" for property D (datetime) is not a valid datetime"},
        {"instance of T_All { Id = \"x\";\n R32 = 1e300; };", "inst.mof:2: value real 1e300 for property R32 (real32) is out of range"},
        {"instance of T_All { Id = \"x\";\n Embedded = \"x\"; };", "inst.mof:2: value string \"x\" for property Embedded (string) cannot be given as MOF text"},
        {"instance of T_All { Id = NULL; };", "inst.mof:1: key property Id of class T_All is NULL"},
        {"\ninstance of T_All { B = true; };", "inst.mof:2: instance of T_All gives no value for key property Id"},
        {"instance of T_Base { };", "inst.mof:1: instance of abstract class T_Base"},
        {"instance of T_Link {\n Module = $Nobody; Target = \"T_All.Id=1\"; };", "inst.mof:2: alias $Nobody for property Module names no instance declared before it"},
        {"instance of T_Link { Module = \"T_All.Id=\\\"x\\\"\"; Target = \"T_All.Id=1\"; };", "inst.mof:1: reference property Module must refer to T_Module or a subclass, not T_All"},
        {"instance of T_Link { Module = \"not a path\"; Target = \"T_All.Id=1\"; };", "inst.mof:1: value string \"not a path\" for property Module (reference) is not a valid object path"},
        {"instance of T_Module as $Twice { Name = \"1\"; };\ninstance of T_Module as $Twice { Name = \"2\"; };", "inst.mof:2: alias $Twice is already taken"},
    };
    for (const Case& c : cases)
    {
        std::string err = buildError(c.mof);
        EXPECT_EQ(0u, err.find(c.message)) << "input: " << c.mof << "\nerror: " << err;
    }
}

TEST(MofInstanceBuilder, RegistrationInstancesOfTheShippedSchema)
{
    SchemaManager schema;
    schema.loadDirectory(std::string(TEST_SOURCE_DIR) + "/schema");
    schema.loadString(R"(
instance of PG_ProviderModule { Name = "XModule"; Vendor = "X"; Version = "1.0";
    InterfaceType = "C++Default"; InterfaceVersion = "2.1.0"; Location = "XProvider"; };
instance of PG_Provider { ProviderModuleName = "XModule"; Name = "XProvider"; };
instance of PG_ProviderCapabilities { ProviderModuleName = "XModule"; ProviderName = "XProvider";
    CapabilityID = "X1"; ClassName = "CIM_ComputerSystem"; Namespaces = {"root/orv"};
    ProviderType = {2, 5}; SupportedProperties = NULL; SupportedMethods = NULL; };
)", "registration.mof", "root/interop");
    MofInstanceBuilder builder(*schema.registry("root/interop"));
    const std::vector<InstanceDecl>& decls = schema.instances("root/interop");
    ASSERT_EQ(3u, decls.size());
    CIMInstance caps = builder.build(decls[2]);
    EXPECT_EQ(3u, caps.getPath().getKeyBindings().size());
    CIMValue types = caps.getProperty(caps.findProperty(CIMName("ProviderType"))).getValue();
    EXPECT_EQ(CIMTYPE_UINT16, types.getType());
    EXPECT_EQ(2u, types.getArraySize());
    CIMValue methods = caps.getProperty(caps.findProperty(CIMName("SupportedMethods"))).getValue();
    EXPECT_TRUE(methods.isNull());
    EXPECT_TRUE(methods.isArray());
    CIMInstance module = builder.build(decls[0]);
    EXPECT_EQ(String("XModule"), module.getPath().getKeyBindings()[0].getValue());
}
