#include <gtest/gtest.h>

#include <Pegasus/Repository/ObjectPathNormalizer.h>
#include <Pegasus/Schema/SchemaManager.h>

using namespace Pegasus;

namespace {

class Normalizer : public ::testing::Test {
protected:
    void SetUp() override
    {
        schema.loadString(R"(
            class T_Pool { [Key] string InstanceID; [Key] uint32 Number; };
            [Association] class T_Link { [Key] T_Pool REF Left; [Key] T_Pool REF Right; };
        )", "n.mof", "root/orv");
    }
    std::string canon(const char* path, const char* ns = "root/orv")
    {
        return ObjectPathNormalizer(schema).canonical(CIMObjectPath(path), ns);
    }
    SchemaManager schema;
};

TEST_F(Normalizer, SameInstanceGivesSameTextWhateverItsSpelling)
{
    std::string expected = "T_Pool.InstanceID=\"A\\\"b\",Number=26";
    EXPECT_EQ(expected, canon("T_Pool.InstanceID=\"A\\\"b\",Number=26"));
    EXPECT_EQ(expected, canon("//host:5989/ROOT/orv:t_pool.number=0x1a,instanceid=\"A\\\"b\""));
    EXPECT_NE(expected, canon("T_Pool.InstanceID=\"a\\\"b\",Number=26"));
    // Another namespace is kept, in lower case.
    EXPECT_EQ("interop:T_Other.k=\"1\"", canon("Interop:T_Other.K=\"1\""));
    EXPECT_EQ("root/orv:T_Pool.InstanceID=\"A\",Number=1", canon("root/orv:T_Pool.InstanceID=\"A\",Number=1", "interop"));
}

TEST_F(Normalizer, ReferenceKeysAreCanonicalRecursively)
{
    std::string a = canon("T_Link.Left=\"//h1/root/orv:T_Pool.Number=1,InstanceID=\\\"X\\\"\","
                          "Right=\"T_Pool.InstanceID=\\\"Y\\\",Number=02\"");
    std::string b = canon("T_Link.right=\"root/orv:t_pool.number=2,instanceid=\\\"Y\\\"\","
                          "left=\"T_Pool.InstanceID=\\\"X\\\",Number=0x1\"");
    EXPECT_EQ(a, b);
    EXPECT_EQ("T_Link.Left={T_Pool.InstanceID=\"X\",Number=1},Right={T_Pool.InstanceID=\"Y\",Number=2}", a);
}

TEST(NormaliseNumber, IntegersRealsAndText)
{
    EXPECT_EQ("26", ObjectPathNormalizer::normaliseNumber("0x1A"));
    EXPECT_EQ("-5", ObjectPathNormalizer::normaliseNumber("-005"));
    EXPECT_EQ("0", ObjectPathNormalizer::normaliseNumber("-0"));
    EXPECT_EQ("18446744073709551615", ObjectPathNormalizer::normaliseNumber("18446744073709551615"));
    EXPECT_EQ("1.5", ObjectPathNormalizer::normaliseNumber("1.50"));
    EXPECT_EQ("abc", ObjectPathNormalizer::normaliseNumber("abc"));
}

} // namespace
