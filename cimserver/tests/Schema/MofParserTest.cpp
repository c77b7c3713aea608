#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <Pegasus/Schema/MofParser.h>
#include <Pegasus/Schema/SchemaError.h>

using namespace Pegasus;

namespace {

// Collects what the parser reports.
class Collector : public MofHandler
{
public:
    void classDeclared(ClassDecl& cls) override { classes.push_back(cls); }
    void instanceDeclared(InstanceDecl& inst) override { instances.push_back(inst); }
    void namespaceChanged(const std::string& name, const std::string&, unsigned) override
    {
        namespaces.push_back(name);
    }

    std::vector<ClassDecl> classes;
    std::vector<InstanceDecl> instances;
    std::vector<std::string> namespaces;
};

Collector parse(const std::string& text)
{
    Collector c;
    MofParser parser(c);
    parser.parseString(text, "test.mof");
    return c;
}

// The SchemaError text of parsing `text`, or "" when it parses.
std::string parseError(const std::string& text)
{
    try
    {
        parse(text);
    }
    catch (const SchemaError& e)
    {
        return e.what();
    }
    return std::string();
}

MofValue valueOf(const std::string& literal)
{
    Collector c = parse("instance of X { P = " + literal + "; };");
    return c.instances.at(0).properties.at(0).value;
}

const std::string DATA = std::string(TEST_DATA_DIR) + "/mof";

} // namespace

TEST(MofParser, IntegerLiteralsInEveryForm)
{
    struct Case { const char* text; bool negative; std::uint64_t magnitude; };
    const Case cases[] = {
        {"0", false, 0},        {"42", false, 42},        {"-17", true, 17},
        {"+5", false, 5},       {"0x1F", false, 31},      {"0XfF", false, 255},
        {"-0x10", true, 16},    {"017", false, 15},       {"101b", false, 5},
        {"-11B", true, 3},      {"18446744073709551615", false, 18446744073709551615ULL},
        {"-9223372036854775808", true, 9223372036854775808ULL}, {"-0", false, 0},
    };
    for (const Case& c : cases)
    {
        MofValue v = valueOf(c.text);
        ASSERT_EQ(MofValue::INTEGER, v.kind) << c.text;
        EXPECT_EQ(c.negative, v.negative) << c.text;
        EXPECT_EQ(c.magnitude, v.magnitude) << c.text;
        EXPECT_EQ(c.text, v.raw);
    }
    EXPECT_TRUE(valueOf("-9223372036854775808").fitsSigned(64));
    EXPECT_EQ(INT64_MIN, valueOf("-9223372036854775808").asSigned());
    EXPECT_FALSE(valueOf("-129").fitsSigned(8));
    EXPECT_TRUE(valueOf("-128").fitsSigned(8));
    EXPECT_FALSE(valueOf("256").fitsUnsigned(8));
    EXPECT_FALSE(valueOf("-1").fitsUnsigned(64));
}

TEST(MofParser, MalformedNumbersAreRefused)
{
    for (const char* bad : {"18446744073709551616", "0x", "09", "102b", "12abc", "1.5.2", "1e", "0x1G"})
    {
        std::string err = parseError(std::string("instance of X { P = ") + bad + "; };");
        EXPECT_NE(std::string::npos, err.find("test.mof:1: malformed number")) << bad << ": " << err;
    }
}

TEST(MofParser, RealsBooleansNullChar16AndAlias)
{
    EXPECT_DOUBLE_EQ(1.5, valueOf("1.5").realValue);
    EXPECT_DOUBLE_EQ(-0.25, valueOf("-.25").realValue);
    EXPECT_DOUBLE_EQ(3e10, valueOf("3E10").realValue);
    EXPECT_DOUBLE_EQ(2.5e-3, valueOf("2.5e-3").realValue);
    EXPECT_EQ(MofValue::REAL, valueOf("7e+2").kind);
    EXPECT_TRUE(valueOf("TRUE").boolValue);
    EXPECT_FALSE(valueOf("false").boolValue);
    EXPECT_EQ(MofValue::BOOLEAN, valueOf("False").kind);
    EXPECT_TRUE(valueOf("NULL").isNull());
    EXPECT_EQ('A', valueOf("'A'").charValue);
    EXPECT_EQ(0x41, valueOf("'\\x41'").charValue);
    EXPECT_EQ('\n', valueOf("'\\n'").charValue);
    EXPECT_EQ(0xE9, valueOf("'\xC3\xA9'").charValue);
    MofValue alias = valueOf("$Module1");
    EXPECT_EQ(MofValue::ALIAS, alias.kind);
    EXPECT_EQ("Module1", alias.text);
}

TEST(MofParser, StringsJoinAndDecodeEscapes)
{
    MofValue v = valueOf("\"one \" \"two\"\n   \" three\"");
    EXPECT_EQ(MofValue::STRING, v.kind);
    EXPECT_EQ("one two three", v.text);
    EXPECT_EQ("tab\there \"q\" back\\slash 'x'", valueOf("\"tab\\there \\\"q\\\" back\\\\slash \\'x\\'\"").text);
    EXPECT_EQ("\xC3\xA9\xE2\x82\xAC", valueOf("\"\\xE9\\x20AC\"").text);
    EXPECT_EQ("", valueOf("\"\"").text);
    // A comment marker inside a string is text.
    EXPECT_EQ("a // b /* c */", valueOf("\"a // b /* c */\"").text);
}

TEST(MofParser, ArraysOfValues)
{
    MofValue v = valueOf("{1, 0x2, -3}");
    ASSERT_EQ(MofValue::ARRAY, v.kind);
    ASSERT_EQ(3u, v.elements.size());
    EXPECT_EQ(2u, v.elements[1].magnitude);
    EXPECT_TRUE(v.elements[2].negative);
    EXPECT_TRUE(valueOf("{}").elements.empty());
    MofValue s = valueOf("{\"a\" \"b\", NULL, \"c\"}");
    ASSERT_EQ(3u, s.elements.size());
    EXPECT_EQ("ab", s.elements[0].text);
    EXPECT_TRUE(s.elements[1].isNull());
}

TEST(MofParser, ClassWithQualifiersPropertiesAndMethods)
{
    Collector c = parse(R"(
// a line comment
/* a block
   comment */
[Abstract, Version ( "2.8.0" ), Description ("A test " "class.") : ToSubclass Translatable]
class Test_Element : Test_Base
{
    [Key, MaxLen ( 256 )] string InstanceID;
    uint16 OperationalStatus[];
    [ValueMap {"0", "2", ".."}, Values {"Unknown", "OK", "Reserved"}]
    uint16 HealthState = 5;
    sint64 Fixed[4] = {1, 2, 3, 4};
    real64 Ratio = 1;
    datetime Since;
    char16 Letter = 'z';
    boolean Flag = TRUE;
    [EmbeddedInstance ("Test_Setting")] string Setting;
    [Static] uint32 Start(
        [IN, Description("How")] uint16 Mode,
        [IN ( false ), OUT] Test_Job REF Job,
        [OUT, EmbeddedObject] string Errors[],
        string Plain);
    uint32 Stop();
};)");
    ASSERT_EQ(1u, c.classes.size());
    const ClassDecl& cls = c.classes[0];
    EXPECT_EQ("Test_Element", cls.name);
    EXPECT_EQ("Test_Base", cls.superClassName);
    EXPECT_EQ(5u, cls.line);
    EXPECT_EQ("test.mof", cls.file);
    EXPECT_TRUE(cls.qualifiers.isTrue("abstract"));
    EXPECT_EQ("A test class.", cls.qualifiers.stringValue("Description"));
    ASSERT_NE(nullptr, cls.qualifiers.find("Description"));
    EXPECT_EQ(2u, cls.qualifiers.find("Description")->flavors.size());

    ASSERT_EQ(9u, cls.localProperties.size());
    const PropertyDecl& id = cls.localProperties[0];
    EXPECT_EQ("InstanceID", id.name);
    EXPECT_EQ(CIMTYPE_STRING, id.type);
    EXPECT_TRUE(id.qualifiers.isTrue("Key"));
    EXPECT_EQ(256u, id.qualifiers.find("MaxLen")->value.magnitude);
    EXPECT_TRUE(cls.localProperties[1].isArray);
    EXPECT_EQ(0u, cls.localProperties[1].arraySize);
    const PropertyDecl& health = cls.localProperties[2];
    EXPECT_EQ(CIMTYPE_UINT16, health.type);
    ASSERT_TRUE(health.defaultValue.has_value());
    EXPECT_EQ(5u, health.defaultValue->magnitude);
    EXPECT_EQ((std::vector<std::string>{"Unknown", "OK", "Reserved"}), health.qualifiers.stringArray("Values"));
    EXPECT_EQ(4u, cls.localProperties[3].arraySize);
    EXPECT_EQ(CIMTYPE_SINT64, cls.localProperties[3].type);
    EXPECT_EQ(CIMTYPE_REAL64, cls.localProperties[4].type);
    EXPECT_EQ(CIMTYPE_DATETIME, cls.localProperties[5].type);
    EXPECT_EQ(CIMTYPE_CHAR16, cls.localProperties[6].type);
    EXPECT_EQ(CIMTYPE_BOOLEAN, cls.localProperties[7].type);
    EXPECT_EQ("Test_Setting", cls.localProperties[8].qualifiers.stringValue("EmbeddedInstance"));

    ASSERT_EQ(2u, cls.localMethods.size());
    const MethodDecl& start = cls.localMethods[0];
    EXPECT_EQ(CIMTYPE_UINT32, start.returnType);
    EXPECT_TRUE(start.isStatic());
    ASSERT_EQ(4u, start.parameters.size());
    EXPECT_TRUE(start.parameters[0].isIn);
    EXPECT_FALSE(start.parameters[0].isOut);
    const ParameterDecl* job = start.findParameter("JOB");
    ASSERT_NE(nullptr, job);
    EXPECT_EQ(CIMTYPE_REFERENCE, job->type);
    EXPECT_EQ("Test_Job", job->referenceClass);
    EXPECT_FALSE(job->isIn);
    EXPECT_TRUE(job->isOut);
    EXPECT_TRUE(start.parameters[2].isArray);
    EXPECT_TRUE(start.parameters[2].embeddedObject);
    EXPECT_FALSE(start.parameters[2].isIn);
    EXPECT_TRUE(start.parameters[3].isIn);
    EXPECT_TRUE(cls.localMethods[1].parameters.empty());
}

TEST(MofParser, AssociationReferencesAndQualifierTypes)
{
    Collector c = parse(R"(
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
Qualifier ValueMap : string[], Scope(property, method, parameter);
Qualifier MaxLen : uint32 = NULL, Scope(property);
#pragma locale ("en_US")
[Association]
class Test_Link
{
    [Key, Override ("Antecedent")] Test_A REF Antecedent;
    [Key] Test_B ref Dependent = NULL;
};)");
    ASSERT_EQ(1u, c.classes.size());
    const PropertyDecl& a = c.classes[0].localProperties[0];
    EXPECT_EQ(CIMTYPE_REFERENCE, a.type);
    EXPECT_EQ("Test_A", a.referenceClass);
    EXPECT_TRUE(a.isReference());
    EXPECT_EQ("Test_B", c.classes[0].localProperties[1].referenceClass);
}

TEST(MofParser, InstancesWithAliasesAndNamespaces)
{
    Collector c = parse(R"(
#pragma namespace ("root/interop")
instance of PG_ProviderModule as $Mod
{
    Name = "OrvModule";
    [Description("ignored")] Vendor = "Orv" "Systems";
    InterfaceVersion = "2.1.0";
};
#pragma namespace("root/orv")
instance of PG_Provider { ProviderModuleName = $Mod; Name = "P"; };
)");
    ASSERT_EQ(2u, c.instances.size());
    EXPECT_EQ((std::vector<std::string>{"root/interop", "root/orv"}), c.namespaces);
    const InstanceDecl& mod = c.instances[0];
    EXPECT_EQ("PG_ProviderModule", mod.className);
    EXPECT_EQ("Mod", mod.alias);
    EXPECT_EQ("root/interop", mod.namespaceName);
    EXPECT_EQ(3u, mod.line);
    ASSERT_EQ(3u, mod.properties.size());
    EXPECT_EQ("OrvSystems", mod.findProperty("vendor")->value.text);
    EXPECT_EQ(6u, mod.findProperty("Vendor")->line);
    EXPECT_EQ("root/orv", c.instances[1].namespaceName);
    EXPECT_EQ(MofValue::ALIAS, c.instances[1].properties[0].value.kind);
}

TEST(MofParser, ErrorsNameFileLineAndWhatWasExpected)
{
    struct Case { const char* text; const char* message; };
    const Case cases[] = {
        {"class A {\n  string Name\n  string Other;\n};", "test.mof:3: expected ';' after property declaration, found 'string'"},
        {"class A {\n string Name;\n}", "test.mof:3: expected ';' after the closing '}' of class A, found end of file"},
        {"class A {\n string Name;\n", "test.mof:3: expected '}' to close class A, found end of file"},
        {"class A : { };", "test.mof:1: expected a superclass name after ':' in class A, found '{'"},
        {"class A { strin Name; };", "test.mof:1: unknown data type 'strin' in class A"},
        {"class A { Test_B Name; };", "test.mof:1: unknown data type 'Test_B'"},
        {"class A { [Key string Name; };", "test.mof:1: expected ']' to close the qualifier list, found 'string'"},
        {"[Key, Key] class A { };", "test.mof:1: qualifier Key given twice"},
        {"class A {\n uint8 Small = 300;\n};", "test.mof:2: value integer 300 for property Small: out of the range of uint8"},
        {"class A { uint8 B[] = 1; };", "test.mof:1: single value integer 1 given for array property B"},
        {"class A { string S = {\"a\"}; };", "test.mof:1: array value given for property S, which is not an array"},
        {"class A { boolean F = \"yes\"; };", "test.mof:1: value string \"yes\" for property F: not a boolean value"},
        {"class A { string S = \"open; };", "test.mof:1: string literal is not closed on its line"},
        {"class A { string S = \"bad \\q\"; };", "test.mof:1: unknown escape sequence '\\q'"},
        {"class A { char16 C = 'ab'; };", "test.mof:1: char16 literal must hold exactly one character"},
        {"class A {};\n/* open", "test.mof:2: comment opened here is not closed"},
        {"class A { string S; }; @", "test.mof:1: unexpected '@'"},
        {"instance A { };", "test.mof:1: expected 'of' after 'instance', found 'A'"},
        {"instance of A {\n X = ;\n};", "test.mof:2: expected a value for property X, found ';'"},
        {"instance of A { X = 1; x = 2; };", "test.mof:1: property x given twice in instance of A"},
        {"instance of A as Mod { };", "test.mof:1: expected an alias ($name) after 'as', found 'Mod'"},
        {"garbage", "test.mof:1: expected 'class', 'instance', 'qualifier' or '#pragma', found 'garbage'"},
        {"#pragma namespace(\"root//x\")", "test.mof:1: invalid namespace name \"root//x\""},
        {"#pragma namespace(root)", "test.mof:1: expected a string as the pragma's parameter, found 'root'"},
        {"#include(\"x\")", "test.mof:1: expected 'pragma' after '#', found 'include'"},
        {"class A { uint32 M([IN(false)] uint8 P); };", "test.mof:1: parameter P of method M is neither input nor output"},
        {"class A { uint32 M(uint8 P, string p); };", "test.mof:1: parameter p declared twice in method M"},
        {"class A { X REF M(); };", "test.mof:1: method M cannot return a reference"},
        {"class A { [EmbeddedObject] uint8 M(uint8 P, [EmbeddedObject] uint8 Q); };", "test.mof:1: parameter Q carries an embedded object qualifier"},
        {"class A { uint8 V[0]; };", "test.mof:1: array size 0 must be a positive 32-bit number"},
        {"class A { uint8 V = {{1}}; };", "test.mof:1: arrays of arrays are not allowed"},
        {"Qualifier Q : bool;", "test.mof:1: unknown data type 'bool' for qualifier Q"},
        {"class A { string S = \"x\\x0\"; };", "test.mof:1: the escape '\\x0' (a NUL character) is not allowed"},
    };
    for (const Case& c : cases)
    {
        std::string err = parseError(c.text);
        EXPECT_EQ(0u, err.find(c.message)) << "input: " << c.text << "\nerror: " << err;
    }
}

TEST(MofParser, IncludesAreRelativeToTheIncludingFile)
{
    Collector c;
    MofParser parser(c);
    parser.parseFile(DATA + "/include-top.mof");
    // include-top.mof sets the namespace, includes sub/inner.mof, which
    // includes its sibling leaf.mof; the namespace holds across the includes.
    ASSERT_EQ(3u, c.classes.size());
    EXPECT_EQ("Test_Leaf", c.classes[0].name);
    EXPECT_EQ(DATA + "/sub/leaf.mof", c.classes[0].file);
    EXPECT_EQ("Test_Inner", c.classes[1].name);
    EXPECT_EQ("Test_Top", c.classes[2].name);
    for (const ClassDecl& cls : c.classes)
        EXPECT_EQ("root/test", cls.namespaceName);
    EXPECT_EQ("root/test", parser.currentNamespace());
}

TEST(MofParser, IncludeFaultsAreReported)
{
    Collector c;
    MofParser parser(c);
    try
    {
        parser.parseFile(DATA + "/cycle-a.mof");
        FAIL() << "include cycle accepted";
    }
    catch (const SchemaError& e)
    {
        EXPECT_NE(std::string::npos, std::string(e.what()).find("include cycle")) << e.what();
        EXPECT_EQ(DATA + "/cycle-b.mof", e.file());
        EXPECT_EQ(2u, e.line());
    }
    try
    {
        parser.parseString("\n#pragma include(\"missing.mof\")", "top.mof", DATA);
        FAIL() << "missing include accepted";
    }
    catch (const SchemaError& e)
    {
        EXPECT_EQ("top.mof", e.file());
        EXPECT_EQ(2u, e.line());
        EXPECT_NE(std::string::npos, e.message().find("missing.mof")) << e.what();
    }
    // An error inside an included file names that file and its line.
    try
    {
        parser.parseString("#pragma include(\"broken.mof\")", "top.mof", DATA);
        FAIL() << "broken include accepted";
    }
    catch (const SchemaError& e)
    {
        EXPECT_EQ(DATA + "/broken.mof", e.file());
        EXPECT_EQ(5u, e.line()); // where the missing ";" was noticed
    }
    // The parser is usable again after a failure: nothing of the failed
    // include stack remains.
    Collector fresh;
    MofParser again(fresh);
    again.parseFile(DATA + "/include-top.mof");
    EXPECT_EQ(3u, fresh.classes.size());
}

TEST(MofParser, DamagedInputGivesSchemaErrorsOnly)
{
    // Cut and byte-flipped versions of a valid text: each must parse or fail
    // with a SchemaError, never with anything else.
    const std::string good = R"(
#pragma namespace("root/x")
[Abstract, Description("d" "e")]
class T_A : T_B { [Key] string K = "x\x41"; uint8 V[] = {1, 0x2, 011, 1b}; real64 R = -1.5e3;
    uint32 M([IN, OUT] T_C REF P, char16 C); };
instance of T_A as $a { K = "k"; V = {1, 2}; R = 2; };
)";
    std::uint32_t seed = 12345;
    auto next = [&seed]() { seed = seed * 1103515245u + 12345u; return (seed >> 8) & 0xFFFFFF; };
    for (int round = 0; round < 3000; ++round)
    {
        std::string text = good;
        if (round % 3 == 0)
            text = text.substr(0, next() % text.size());
        else
        {
            int flips = 1 + static_cast<int>(next() % 3);
            for (int i = 0; i < flips; ++i)
                text[next() % text.size()] = static_cast<char>(next() % 256);
        }
        Collector c;
        MofParser parser(c);
        try
        {
            parser.parseString(text, "damaged.mof");
        }
        catch (const SchemaError& e)
        {
            EXPECT_EQ(0u, std::string(e.what()).find("damaged.mof:")) << e.what();
        }
        catch (const std::exception& e)
        {
            ADD_FAILURE() << "unexpected exception " << e.what() << " for input:\n" << text;
        }
    }
}
