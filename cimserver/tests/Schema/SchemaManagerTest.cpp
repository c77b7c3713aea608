#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <Pegasus/Schema/SchemaError.h>
#include <Pegasus/Schema/SchemaManager.h>

using namespace Pegasus;

namespace {

class SchemaDir : public ::testing::Test
{
protected:
    void SetUp() override
    {
        char tmpl[] = "/tmp/schema-test-XXXXXX";
        ASSERT_NE(nullptr, ::mkdtemp(tmpl));
        dir = tmpl;
    }

    void TearDown() override
    {
        std::string cmd = "rm -rf '" + dir + "'";
        ASSERT_EQ(0, std::system(cmd.c_str()));
    }

    void write(const std::string& rel, const std::string& text)
    {
        std::string path = dir + "/" + rel;
        std::string::size_type slash = path.rfind('/');
        ::mkdir(path.substr(0, slash).c_str(), 0755);
        std::ofstream out(path);
        out << text;
    }

    std::string loadError(SchemaManager& schema)
    {
        try
        {
            schema.loadDirectory(dir);
        }
        catch (const SchemaError& e)
        {
            return e.what();
        }
        return std::string();
    }

    std::string dir;
};

} // namespace

TEST_F(SchemaDir, EntryFilesInNameOrderEachWithItsNamespace)
{
    // 20-b uses a class of 10-a's namespace only through its own namespace,
    // so the order of the files matters: 10 first, then 20.
    write("cim/base.mof", "class T_Base { [Key] string Name; };\n");
    write("10-a.mof", "#pragma namespace(\"root/A\")\n#pragma include(\"cim/base.mof\")\n"
                      "class T_A : T_Base { };\ninstance of T_A { Name = \"a1\"; };\n"
                      "instance of T_A { Name = \"a2\"; };\n");
    write("20-b.mof", "#pragma namespace(\"root/b\")\n#pragma include(\"cim/base.mof\")\n"
                      "#pragma namespace(\"ROOT/a\")\nclass T_A2 : T_A { };\n");
    write("notes.txt", "not a schema file");
    write("sub/99-ignored.mof", "this is not read");

    SchemaManager schema;
    schema.loadDirectory(dir);
    EXPECT_EQ((std::vector<std::string>{"root/A", "root/b"}), schema.namespaces());
    EXPECT_TRUE(schema.hasNamespace("ROOT/A"));
    EXPECT_NE(nullptr, schema.findClass("root/a", "T_A2"));
    EXPECT_NE(nullptr, schema.findClass("root/b", "T_Base"));
    EXPECT_EQ(nullptr, schema.findClass("root/b", "T_A"));
    EXPECT_EQ(nullptr, schema.findClass("root/none", "T_A"));
    EXPECT_EQ(nullptr, schema.registry("root/none"));
    const std::vector<InstanceDecl>& inst = schema.instances("root/a");
    ASSERT_EQ(2u, inst.size());
    EXPECT_EQ("a1", inst[0].properties[0].value.text);
    EXPECT_EQ("a2", inst[1].properties[0].value.text);
    EXPECT_TRUE(schema.instances("root/b").empty());
    EXPECT_TRUE(schema.instances("root/none").empty());
}

TEST_F(SchemaDir, EachEntryFileStartsWithoutNamespace)
{
    // 10 sets a namespace; it must not carry over into 20.
    write("10-a.mof", "#pragma namespace(\"root/a\")\nclass T_A { };\n");
    write("20-b.mof", "\n\nclass T_B { };\n");
    SchemaManager schema;
    std::string err = loadError(schema);
    EXPECT_EQ(dir + "/20-b.mof:3: class T_B declared before any #pragma namespace", err);
}

TEST_F(SchemaDir, BrokenSchemasAreRefused)
{
    SchemaManager empty;
    EXPECT_NE(std::string::npos, loadError(empty).find("holds no *.mof file"));

    SchemaManager missing;
    EXPECT_THROW(missing.loadDirectory(dir + "/nonexistent"), SchemaError);

    write("10-a.mof", "#pragma namespace(\"root/a\")\ninstance of T_Nothing { Name = \"x\"; };\n");
    SchemaManager undefined;
    EXPECT_EQ(dir + "/10-a.mof:2: instance of undefined class T_Nothing in namespace root/a", loadError(undefined));

    write("10-a.mof", "instance of T_Nothing { };\n");
    SchemaManager noNamespace;
    EXPECT_EQ(dir + "/10-a.mof:1: instance of T_Nothing declared before any #pragma namespace",
              loadError(noNamespace));
}

TEST(SchemaManager, LoadStringWithDefaultNamespaceAndNamespacesOnDemand)
{
    SchemaManager schema;
    schema.loadString("class T_X { [Key] string K; };", "inline.mof", "root/x");
    EXPECT_NE(nullptr, schema.findClass("root/x", "t_x"));
    ClassRegistry& reg = schema.addNamespace("root/empty");
    EXPECT_EQ(0u, reg.size());
    EXPECT_EQ(&reg, &schema.addNamespace("Root/Empty"));
    EXPECT_EQ((std::vector<std::string>{"root/x", "root/empty"}), schema.namespaces());
    EXPECT_THROW(schema.loadString("class T_Y { };", "inline.mof"), SchemaError);
}
