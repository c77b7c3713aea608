// Writer and reader together: what the server writes must read back to the
// same objects, the output must be well formed whatever the data, and
// malformed or hostile input must be refused with a clear CIMException.

#include <Pegasus/CIMXml/CIMXmlReader.h>
#include <Pegasus/CIMXml/CIMXmlWriter.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/XmlWriter.h>
#include <Pegasus/Schema/SchemaManager.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Pegasus;

namespace {

std::string msg(const CIMException& e) { return e.getMessage().toUtf8(); }

// Parses `xml` and reads its root element with `read`.
template <class F>
auto readRoot(const std::string& xml, F read) -> decltype(read(nullptr))
{
    CIMXmlReader reader(xml);
    return read(reader.root());
}

CIMObjectPath volumePath()
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("DeviceID", "vol 1 \"a\" & <b>", CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding("Index", "42", CIMKeyBinding::NUMERIC));
    keys.append(CIMKeyBinding("Primary", "TRUE", CIMKeyBinding::BOOLEAN));
    return CIMObjectPath("", CIMNamespaceName(), "ORV_StorageVolume", keys);
}

CIMInstance embeddedSetting()
{
    CIMInstance s("ORV_Setting");
    s.addProperty(CIMProperty("Name", CIMValue(String("  spaced  \"quoted\" <tag> & more "))));
    s.addProperty(CIMProperty("Size", CIMValue(Uint64(18446744073709551615ULL))));
    return s;
}

// One property of every type, scalar, array and null, plus references and
// embedded objects nested two deep.
CIMInstance everyType()
{
    CIMInstance i("ORV_Everything");
    i.addProperty(CIMProperty("B", CIMValue(Boolean(true))));
    i.addProperty(CIMProperty("U8", CIMValue(Uint8(255))));
    i.addProperty(CIMProperty("S8", CIMValue(Sint8(-128))));
    i.addProperty(CIMProperty("U16", CIMValue(Uint16(65535))));
    i.addProperty(CIMProperty("S16", CIMValue(Sint16(-32768))));
    i.addProperty(CIMProperty("U32", CIMValue(Uint32(4294967295u))));
    i.addProperty(CIMProperty("S32", CIMValue(Sint32(std::numeric_limits<Sint32>::min()))));
    i.addProperty(CIMProperty("U64", CIMValue(Uint64(18446744073709551615ULL))));
    i.addProperty(CIMProperty("S64", CIMValue(Sint64(std::numeric_limits<Sint64>::min()))));
    i.addProperty(CIMProperty("R32", CIMValue(Real32(1.5e-7f))));
    i.addProperty(CIMProperty("R64", CIMValue(Real64(-2.2250738585072014e-308))));
    i.addProperty(CIMProperty("C16", CIMValue(Char16(0x20AC))));
    i.addProperty(CIMProperty("Blank", CIMValue(Char16(' '))));
    i.addProperty(CIMProperty("Str", CIMValue(String::fromUtf8(" lead\ttab\r\nline  double trail \xF0\x9F\x98\x80 "))));
    i.addProperty(CIMProperty("Empty", CIMValue(String())));
    i.addProperty(CIMProperty("When", CIMValue(CIMDateTime("20260123101112.123456+060"))));
    i.addProperty(CIMProperty("Span", CIMValue(CIMDateTime("00000001020304.000005:000"))));
    i.addProperty(CIMProperty("NullU32", CIMValue(CIMTYPE_UINT32, false)));
    i.addProperty(CIMProperty("NullStrings", CIMValue(CIMTYPE_STRING, true)));
    Array<Uint16> states;
    states.append(2);
    states.append(3);
    i.addProperty(CIMProperty("States", CIMValue(states)));
    Array<String> names;
    names.append(String(" a "));
    names.append(String());
    names.append(String("x&y"));
    i.addProperty(CIMProperty("Names", CIMValue(names)));
    Array<Real64> reals;
    reals.append(0.1);
    reals.append(std::numeric_limits<Real64>::infinity());
    i.addProperty(CIMProperty("Reals", CIMValue(reals)));
    Array<Boolean> flags;
    flags.append(false);
    i.addProperty(CIMProperty("Flags", CIMValue(flags)));
    Array<CIMDateTime> times;
    times.append(CIMDateTime("20260101000000.000000+000"));
    i.addProperty(CIMProperty("Times", CIMValue(times)));
    CIMObjectPath full = volumePath();
    full.setNameSpace("root/orv");
    full.setHost("array1.example.com");
    i.addProperty(CIMProperty("Ref", CIMValue(full), 0, "ORV_StorageVolume"));
    CIMInstance outer("ORV_Outer");
    outer.addProperty(CIMProperty("Inner", CIMValue(embeddedSetting())));
    i.addProperty(CIMProperty("Setting", CIMValue(outer)));
    Array<CIMInstance> settings;
    settings.append(embeddedSetting());
    settings.append(embeddedSetting());
    i.addProperty(CIMProperty("Settings", CIMValue(settings)));
    i.addProperty(CIMProperty("Obj", CIMValue(CIMObject(embeddedSetting()))));
    return i;
}

void expectSameInstance(const CIMConstInstance& a, const CIMConstInstance& b)
{
    ASSERT_TRUE(a.getClassName().equal(b.getClassName()));
    ASSERT_EQ(a.getPropertyCount(), b.getPropertyCount());
    for (Uint32 k = 0; k < a.getPropertyCount(); ++k)
    {
        CIMConstProperty p = a.getProperty(k);
        Uint32 at = b.findProperty(p.getName());
        ASSERT_NE(at, PEG_NOT_FOUND) << p.getName().getString();
        const CIMValue& x = p.getValue();
        const CIMValue& y = b.getProperty(at).getValue();
        EXPECT_EQ(x.getType(), y.getType()) << p.getName().getString();
        EXPECT_EQ(x.isArray(), y.isArray()) << p.getName().getString();
        EXPECT_EQ(x.isNull(), y.isNull()) << p.getName().getString();
        EXPECT_TRUE(x == y) << p.getName().getString() << ": " << x.toString() << " vs " << y.toString();
    }
}

} // namespace

TEST(CIMXmlCodec, InstanceOfEveryTypeRoundTrips)
{
    CIMInstance original = everyType();
    std::string xml;
    CIMXmlWriter::appendInstance(xml, original, CIMXmlWriter::InstanceOptions());
    // Embedded objects carry both attribute spellings.
    EXPECT_NE(xml.find("NAME=\"Setting\" TYPE=\"string\" EmbeddedObject=\"instance\""),
              std::string::npos);
    EXPECT_NE(xml.find("EmbeddedObject=\"object\""), std::string::npos);
    CIMInstance back = readRoot(xml, [](const xmlNode* n) { return CIMXmlReader::readInstance(n); });
    expectSameInstance(original, back);
    EXPECT_EQ(back.getProperty(back.findProperty("Obj")).getValue().getType(), CIMTYPE_OBJECT);
    EXPECT_EQ(back.getProperty(back.findProperty("Ref")).getReferenceClassName().getString(), "ORV_StorageVolume");

    // NaN survives as NaN (it never compares equal).
    CIMInstance nan("ORV_N");
    nan.addProperty(CIMProperty("R", CIMValue(Real32(std::numeric_limits<float>::quiet_NaN()))));
    xml.clear();
    CIMXmlWriter::appendInstance(xml, nan, CIMXmlWriter::InstanceOptions());
    Real32 r = 0;
    readRoot(xml, [](const xmlNode* n) { return CIMXmlReader::readInstance(n); })
        .getProperty(0).getValue().get(r);
    EXPECT_TRUE(std::isnan(r));
}

TEST(CIMXmlCodec, EscapingKeepsTextExactAndOutputWellFormed)
{
    std::string out;
    XmlWriter::appendEscaped(out, std::string("  a  b "));
    EXPECT_EQ(out, "&#32;&#32;a &#32;b&#32;");
    out.clear();
    XmlWriter::appendEscaped(out, std::string("<\"'&>\t\r\n"));
    EXPECT_EQ(out, "&lt;&quot;&apos;&amp;&gt;&#9;&#13;&#10;");
    // Characters XML cannot carry become U+FFFD: controls, U+FFFF, broken UTF-8.
    out.clear();
    XmlWriter::appendEscaped(out, std::string("a\x01" "b\xEF\xBF\xBF" "c\xC3" "d\xED\xA0\x80"));
    EXPECT_EQ(out, "a\xEF\xBF\xBD" "b\xEF\xBF\xBD" "c\xEF\xBF\xBD" "d\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");

    CIMInstance i("ORV_Hostile");
    i.addProperty(CIMProperty("S", CIMValue(String::fromUtf8(std::string("x\0\x1b]]>--><!--", 13)))));
    Char16 nul[1] = {Char16(0)};
    i.addProperty(CIMProperty("C", CIMValue(String(nul, 1))));
    std::string doc = CIMXmlWriter::formatExportIndication(i, "id\"<&>");
    CIMXmlReader::ExportIndication e = CIMXmlReader::readExportIndication(doc);
    EXPECT_EQ(e.messageId, "id\"<&>");
    String s;
    e.indication.getProperty(0).getValue().get(s);
    EXPECT_EQ(s.toUtf8(), "x\xEF\xBF\xBD\xEF\xBF\xBD]]>--><!--");
}

TEST(CIMXmlCodec, EveryPathFormRoundTrips)
{
    CIMObjectPath bare = volumePath();
    CIMObjectPath local = bare;
    local.setNameSpace("root/orv");
    CIMObjectPath full = local;
    full.setHost("host:5988");
    // A reference key holding a full path.
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding("Antecedent", full.toString(), CIMKeyBinding::REFERENCE));
    keys.append(CIMKeyBinding("Dependent", local.toString(), CIMKeyBinding::REFERENCE));
    CIMObjectPath assoc("", CIMNamespaceName(), "ORV_Assoc", keys);
    CIMObjectPath cls("", CIMNamespaceName(), "ORV_StorageVolume");
    CIMObjectPath localCls("", "root/orv", "ORV_StorageVolume");
    CIMObjectPath fullCls("h", "root/orv", "ORV_StorageVolume");

    const struct { CIMObjectPath path; const char* element; } cases[] = {
        {bare, "<INSTANCENAME"}, {local, "<LOCALINSTANCEPATH>"}, {full, "<INSTANCEPATH>"},
        {assoc, "<INSTANCENAME"}, {cls, "<CLASSNAME"}, {localCls, "<LOCALCLASSPATH>"},
        {fullCls, "<CLASSPATH>"},
    };
    for (const auto& c : cases)
    {
        std::string xml;
        CIMXmlWriter::appendValueReference(xml, c.path);
        EXPECT_EQ(xml.find(c.element), std::string("<VALUE.REFERENCE>").size()) << xml;
        CIMObjectPath back = readRoot(xml, [](const xmlNode* n) { return CIMXmlReader::readObjectPath(n); });
        EXPECT_TRUE(back.identical(c.path)) << c.path.toString() << " came back as " << back.toString();
    }
    std::string xml;
    CIMXmlWriter::appendObjectPath(xml, full);
    EXPECT_TRUE(readRoot(xml, [](const xmlNode* n) { return CIMXmlReader::readObjectPath(n); }).identical(full));
    xml.clear();
    CIMXmlWriter::appendObjectPath(xml, fullCls);
    EXPECT_TRUE(readRoot(xml, [](const xmlNode* n) { return CIMXmlReader::readObjectPath(n); }).identical(fullCls));

    // VALUE.NAMEDINSTANCE carries the path with the instance.
    CIMInstance inst = embeddedSetting();
    inst.setPath(CIMObjectPath("", CIMNamespaceName(), "ORV_Setting", volumePath().getKeyBindings()));
    xml.clear();
    CIMXmlWriter::appendValueNamedInstance(xml, inst, CIMXmlWriter::InstanceOptions());
    CIMInstance named = readRoot(xml, [](const xmlNode* n) { return CIMXmlReader::readNamedInstance(n); });
    EXPECT_TRUE(named.getPath().identical(inst.getPath()));
    expectSameInstance(inst, named);
}

TEST(CIMXmlCodec, InstanceOptionsFilterProperties)
{
    CIMInstance i("ORV_V");
    i.addProperty(CIMProperty("A", CIMValue(Uint8(1)), 0, CIMName(), "ORV_Base"));
    i.addProperty(CIMProperty("B", CIMValue(Uint8(2)), 0, CIMName(), "ORV_Base"));
    CIMXmlWriter::InstanceOptions options;
    Array<CIMName> names;
    names.append("b");
    options.propertyList = CIMPropertyList(names);
    std::string xml;
    CIMXmlWriter::appendInstance(xml, i, options);
    EXPECT_EQ(xml, "<INSTANCE CLASSNAME=\"ORV_V\"><PROPERTY NAME=\"B\" TYPE=\"uint8\"><VALUE>2</VALUE>"
                   "</PROPERTY></INSTANCE>");
    options.propertyList = CIMPropertyList(Array<CIMName>());
    options.includeClassOrigin = true;
    xml.clear();
    CIMXmlWriter::appendInstance(xml, i, options);
    EXPECT_EQ(xml, "<INSTANCE CLASSNAME=\"ORV_V\"></INSTANCE>");
    options.propertyList = CIMPropertyList();
    xml.clear();
    CIMXmlWriter::appendInstance(xml, i, options);
    EXPECT_NE(xml.find("CLASSORIGIN=\"ORV_Base\""), std::string::npos);
}

TEST(CIMXmlCodec, ParamValuesKeepTypesAndUntypedStaysString)
{
    Array<CIMObjectPath> refs;
    refs.append(volumePath());
    Array<Uint64> sizes;
    sizes.append(1);
    sizes.append(2);
    const CIMParamValue params[] = {
        CIMParamValue("State", CIMValue(Uint16(3))),
        CIMParamValue("Target", CIMValue(volumePath())),
        CIMParamValue("Targets", CIMValue(refs)),
        CIMParamValue("Sizes", CIMValue(sizes)),
        CIMParamValue("Setting", CIMValue(embeddedSetting())),
        CIMParamValue("Opt", CIMValue(CIMTYPE_STRING, false)),
    };
    for (const CIMParamValue& p : params)
    {
        std::string xml;
        CIMXmlWriter::appendParamValue(xml, p);
        CIMParamValue back = readRoot(xml, [](const xmlNode* n) { return CIMXmlReader::readParamValue(n); });
        EXPECT_EQ(back.getParameterName(), p.getParameterName());
        EXPECT_TRUE(back.isTyped());
        EXPECT_TRUE(back.getValue() == p.getValue()) << xml;
        EXPECT_EQ(back.getValue().getType(), p.getValue().getType()) << xml;
    }

    CIMParamValue untyped = readRoot(
        "<PARAMVALUE NAME=\"N\"><VALUE.ARRAY><VALUE>1</VALUE><VALUE>2</VALUE></VALUE.ARRAY></PARAMVALUE>",
        [](const xmlNode* n) { return CIMXmlReader::readParamValue(n); });
    EXPECT_FALSE(untyped.isTyped());
    EXPECT_EQ(untyped.getValue().getType(), CIMTYPE_STRING);
    EXPECT_TRUE(untyped.getValue().isArray());
    CIMParamValue empty = readRoot("<PARAMVALUE NAME=\"Opt\"/>",
        [](const xmlNode* n) { return CIMXmlReader::readParamValue(n); });
    EXPECT_FALSE(empty.isTyped());
    EXPECT_TRUE(empty.getValue().isNull());
    // An untyped reference is still a reference.
    std::string ref = "<PARAMVALUE NAME=\"R\"><VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"C\"><KEYBINDING NAME=\"K\">"
                      "<KEYVALUE>v</KEYVALUE></KEYBINDING></INSTANCENAME></VALUE.REFERENCE></PARAMVALUE>";
    CIMParamValue r = readRoot(ref, [](const xmlNode* n) { return CIMXmlReader::readParamValue(n); });
    EXPECT_TRUE(r.isTyped());
    EXPECT_EQ(r.getValue().getType(), CIMTYPE_REFERENCE);

    // A method response reads back: return value first, out parameters in order.
    Array<CIMParamValue> outs;
    outs.append(params[1]);
    outs.append(params[4]);
    std::string doc = CIMXmlWriter::formatMethodResponse("7", "Do", CIMValue(Uint32(4096)), outs);
    CIMXmlReader reader(doc);
    CIMXmlReader::Message m = reader.readMessage();
    EXPECT_EQ(m.kind, "SIMPLERSP");
    const xmlNode* rv = CIMXmlReader::firstChild(m.body);
    ASSERT_TRUE(CIMXmlReader::isElement(rv, "RETURNVALUE"));
    EXPECT_EQ(CIMXmlReader::requiredAttribute(rv, "PARAMTYPE"), "uint32");
    const xmlNode* p1 = CIMXmlReader::nextSibling(rv);
    EXPECT_TRUE(CIMXmlReader::readParamValue(p1).getValue() == params[1].getValue());
    EXPECT_TRUE(CIMXmlReader::readParamValue(CIMXmlReader::nextSibling(p1)).getValue() == params[4].getValue());
}

TEST(CIMXmlCodec, ErrorsAndExportRepliesRoundTrip)
{
    CIMException e(CIM_ERR_NOT_FOUND, "no volume \"v1\" & <none>");
    std::string doc = CIMXmlWriter::formatIMethodError("9", "GetInstance", e);
    EXPECT_NE(doc.find("CODE=\"6\" DESCRIPTION=\"CIM_ERR_NOT_FOUND: no volume &quot;v1&quot; &amp; &lt;none&gt;\""),
              std::string::npos);
    CIMXmlReader reader(doc);
    CIMException back = CIMXmlReader::readError(CIMXmlReader::firstChild(reader.readMessage().body));
    EXPECT_EQ(back.getCode(), CIM_ERR_NOT_FOUND);
    EXPECT_EQ(msg(back), "no volume \"v1\" & <none>");

    EXPECT_NO_THROW(CIMXmlReader::readExportIndicationResponse(CIMXmlWriter::formatExportIndicationResponse("1")));
    try
    {
        CIMXmlReader::readExportIndicationResponse(
            CIMXmlWriter::formatExportIndicationError("1", CIMException(CIM_ERR_FAILED, "listener full")));
        FAIL() << "the ERROR was not reported";
    }
    catch (const CIMException& x)
    {
        EXPECT_EQ(x.getCode(), CIM_ERR_FAILED);
        EXPECT_EQ(msg(x), "listener full");
    }

    CIMInstance alert("ORV_Alert");
    alert.addProperty(CIMProperty("Message", CIMValue(String("disk  failed "))));
    alert.addProperty(CIMProperty("SourceInstance", CIMValue(everyType())));
    CIMXmlReader::ExportIndication ind =
        CIMXmlReader::readExportIndication(CIMXmlWriter::formatExportIndication(alert, "1001"));
    EXPECT_EQ(ind.messageId, "1001");
    EXPECT_EQ(ind.methodName, "ExportIndication");
    expectSameInstance(alert, ind.indication);
}

TEST(CIMXmlCodec, ClassesFromTheSchema)
{
    SchemaManager schema;
    schema.loadString(
        "[Description(\"base\")] class T_Base { [Key, Description(\"the id\")] string Id;"
        " uint32 Count = 5; string Tags[] = {\"a\", \"b\"}; };\n"
        "class T_Child : T_Base { [EmbeddedInstance(\"T_Base\")] string Inner;"
        " [Static] uint32 Do([In] uint16 A, [In, Out] string B[], [Out] T_Base REF R); };\n",
        "test.mof", "root/test");
    const ClassDecl* child = schema.findClass("root/test", "T_Child");
    ASSERT_NE(child, nullptr);
    CIMXmlWriter::ClassOptions options;
    options.localOnly = false;
    options.includeClassOrigin = true;
    std::string xml;
    CIMXmlWriter::appendClass(xml, *child, options);
    CIMXmlReader reader(xml);   // well formed
    EXPECT_NE(xml.find("<CLASS NAME=\"T_Child\" SUPERCLASS=\"T_Base\">"), std::string::npos);
    EXPECT_NE(xml.find("<PROPERTY NAME=\"Id\" TYPE=\"string\" CLASSORIGIN=\"T_Base\" PROPAGATED=\"true\">"
                       "<QUALIFIER NAME=\"Key\" TYPE=\"boolean\"><VALUE>TRUE</VALUE></QUALIFIER>"),
              std::string::npos) << xml;
    EXPECT_NE(xml.find("<VALUE>5</VALUE>"), std::string::npos);
    EXPECT_NE(xml.find("<VALUE.ARRAY><VALUE>a</VALUE><VALUE>b</VALUE></VALUE.ARRAY>"), std::string::npos);
    EXPECT_NE(xml.find("EmbeddedObject=\"instance\""), std::string::npos);
    EXPECT_NE(xml.find("<METHOD NAME=\"Do\" TYPE=\"uint32\" CLASSORIGIN=\"T_Child\">"), std::string::npos);
    EXPECT_NE(xml.find("<PARAMETER.ARRAY NAME=\"B\" TYPE=\"string\">"), std::string::npos);
    EXPECT_NE(xml.find("<PARAMETER.REFERENCE NAME=\"R\" REFERENCECLASS=\"T_Base\">"), std::string::npos);

    // Local only, no qualifiers, a property list: only Inner is left.
    options = CIMXmlWriter::ClassOptions();
    options.includeQualifiers = false;
    Array<CIMName> names;
    names.append("inner");
    names.append("Id");
    options.propertyList = CIMPropertyList(names);
    xml.clear();
    CIMXmlWriter::appendClass(xml, *child, options);
    EXPECT_EQ(xml.find("QUALIFIER"), std::string::npos);
    EXPECT_EQ(xml.find("NAME=\"Id\""), std::string::npos);
    EXPECT_EQ(xml.find("NAME=\"Count\""), std::string::npos);
    EXPECT_NE(xml.find("NAME=\"Inner\""), std::string::npos);
    EXPECT_NE(xml.find("<METHOD NAME=\"Do\""), std::string::npos);
}

TEST(CIMXmlCodec, HostileDocumentsAreRefused)
{
    struct Case { const char* name; std::string doc; const char* expect; };
    const std::string laughs =
        "<?xml version=\"1.0\"?><!DOCTYPE lolz [<!ENTITY lol \"lol\">"
        "<!ENTITY lol2 \"&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;\">"
        "<!ENTITY lol3 \"&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;\">]>"
        "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"&lol3;\" PROTOCOLVERSION=\"1.0\"/></CIM>";
    const std::string external =
        "<?xml version=\"1.0\"?><!DOCTYPE CIM [<!ENTITY x SYSTEM \"file:///etc/passwd\">]>"
        "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"&x;\" PROTOCOLVERSION=\"1.0\"/></CIM>";
    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "<a>";
    std::string nested;
    for (int i = 0; i < 100; ++i) nested += "<a>";
    for (int i = 0; i < 100; ++i) nested += "</a>";
    const Case cases[] = {
        {"billion laughs", laughs, "DOCTYPE"},
        {"external entity", external, "DOCTYPE"},
        {"unbounded nesting", deep, "not well formed"},
        {"nesting over the limit", nested, "nested deeper than 64"},
        {"bad UTF-8", "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.\xC3\x28\"/>", "not well formed"},
        {"truncated", "<CIM CIMVERSION=\"2.0\"><MESSAGE>", "not well formed"},
        {"undeclared entity", "<CIM X=\"&nope;\"/>", "not well formed"},
        {"empty", "", "not well formed"},
    };
    for (const Case& c : cases)
    {
        try
        {
            CIMXmlReader reader(c.doc);
            FAIL() << c.name << " was accepted";
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(e.getCode(), CIM_ERR_INVALID_PARAMETER) << c.name;
            EXPECT_NE(msg(e).find(c.expect), std::string::npos) << c.name << ": " << msg(e);
        }
    }

    CIMXmlReader::Limits small;
    small.maxDocumentBytes = 1000;
    small.maxTextBytes = 100;
    EXPECT_THROW(CIMXmlReader(std::string(2000, ' '), small), CIMException);
    try
    {
        CIMXmlReader reader("<CIM A=\"" + std::string(200, 'x') + "\"/>", small);
        FAIL() << "huge attribute accepted";
    }
    catch (const CIMException& e)
    {
        EXPECT_NE(msg(e).find("attribute A is longer than 100 bytes"), std::string::npos) << msg(e);
    }
    EXPECT_THROW(CIMXmlReader("<VALUE>" + std::string(200, 'x') + "</VALUE>", small), CIMException);

    // Embedded instances nested beyond the limit: each level escaped once more.
    std::string inner = "<INSTANCE CLASSNAME=\"X\"></INSTANCE>";
    for (int level = 0; level < 12; ++level)
    {
        CIMInstance wrap("X");
        std::string esc;
        XmlWriter::appendEscaped(esc, inner);
        inner = "<INSTANCE CLASSNAME=\"X\"><PROPERTY NAME=\"E\" TYPE=\"string\" EmbeddedObject=\"instance\">"
                "<VALUE>" + esc + "</VALUE></PROPERTY></INSTANCE>";
    }
    try
    {
        readRoot(inner, [](const xmlNode* n) { return CIMXmlReader::readInstance(n); });
        FAIL() << "embedding depth not limited";
    }
    catch (const CIMException& e)
    {
        EXPECT_NE(msg(e).find("nested deeper than"), std::string::npos) << msg(e);
    }
}

TEST(CIMXmlCodec, MalformedElementsNameTheElement)
{
    auto instanceError = [](const std::string& xml) {
        try
        {
            readRoot(xml, [](const xmlNode* n) { return CIMXmlReader::readInstance(n); });
        }
        catch (const CIMException& e)
        {
            EXPECT_EQ(e.getCode(), CIM_ERR_INVALID_PARAMETER);
            return msg(e);
        }
        return std::string("accepted");
    };
    const struct { const char* xml; const char* expect; } cases[] = {
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY NAME=\"P\" TYPE=\"uint8\"><VALUE>256</VALUE></PROPERTY></INSTANCE>",
         "VALUE (line 1): \"256\" is not a uint8"},
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY NAME=\"P\" TYPE=\"uint16\"><VALUE>-1</VALUE></PROPERTY></INSTANCE>",
         "is not a uint16"},
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY NAME=\"P\" TYPE=\"sint32\"><VALUE>12abc</VALUE></PROPERTY></INSTANCE>",
         "is not a sint32"},
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY NAME=\"P\" TYPE=\"boolean\"><VALUE>yes</VALUE></PROPERTY></INSTANCE>",
         "is not a boolean"},
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY NAME=\"P\" TYPE=\"real32\"><VALUE>1e300</VALUE></PROPERTY></INSTANCE>",
         "is not a real32"},
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY NAME=\"P\" TYPE=\"char16\"><VALUE>ab</VALUE></PROPERTY></INSTANCE>",
         "single char16"},
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY NAME=\"P\" TYPE=\"datetime\"><VALUE>2026</VALUE></PROPERTY></INSTANCE>",
         "not a datetime"},
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY NAME=\"P\" TYPE=\"float\"/></INSTANCE>", "unknown type \"float\""},
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY TYPE=\"string\"/></INSTANCE>", "PROPERTY (line 1): missing attribute NAME"},
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY NAME=\"P\"/><PROPERTY NAME=\"p\"/></INSTANCE>", "given twice"},
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY.ARRAY NAME=\"P\" TYPE=\"string\"><VALUE>x</VALUE></PROPERTY.ARRAY></INSTANCE>",
         "expected VALUE.ARRAY inside PROPERTY.ARRAY"},
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY NAME=\"P\" TYPE=\"uint8\" EmbeddedObject=\"instance\"/></INSTANCE>",
         "EmbeddedObject is only allowed on string values"},
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY NAME=\"P\" TYPE=\"string\" EmbeddedObject=\"instance\">"
         "<VALUE>&lt;INSTANCE</VALUE></PROPERTY></INSTANCE>", "embedded object: CIM-XML document is not well formed"},
        {"<INSTANCE CLASSNAME=\"1bad\"/>", "\"1bad\" is not a valid class name"},
        {"<INSTANCE CLASSNAME=\"C\">text<PROPERTY NAME=\"P\"/></INSTANCE>", "unexpected text between elements"},
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY.REFERENCE NAME=\"R\"><VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"D\">"
         "<KEYVALUE>1</KEYVALUE></INSTANCENAME></VALUE.REFERENCE></PROPERTY.REFERENCE></INSTANCE>",
         "unnamed key values are not supported"},
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY.REFERENCE NAME=\"R\"><VALUE.REFERENCE><LOCALINSTANCEPATH>"
         "<INSTANCENAME CLASSNAME=\"D\"/></LOCALINSTANCEPATH></VALUE.REFERENCE></PROPERTY.REFERENCE></INSTANCE>",
         "expected LOCALNAMESPACEPATH, found INSTANCENAME"},
        {"<INSTANCE CLASSNAME=\"C\"><PROPERTY.REFERENCE NAME=\"R\"><VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"D\">"
         "<KEYBINDING NAME=\"K\"><KEYVALUE VALUETYPE=\"numeric\">x1</KEYVALUE></KEYBINDING></INSTANCENAME>"
         "</VALUE.REFERENCE></PROPERTY.REFERENCE></INSTANCE>", "is not a numeric key value"},
    };
    for (const auto& c : cases)
    {
        std::string m = instanceError(c.xml);
        EXPECT_NE(m.find(c.expect), std::string::npos) << c.xml << "\n  -> " << m;
    }

    // Hex integers are accepted, as are padded numbers.
    CIMInstance ok = readRoot(
        "<INSTANCE CLASSNAME=\"C\"><PROPERTY NAME=\"P\" TYPE=\"uint32\"><VALUE> 0x1F </VALUE></PROPERTY></INSTANCE>",
        [](const xmlNode* n) { return CIMXmlReader::readInstance(n); });
    Uint32 v = 0;
    ok.getProperty(0).getValue().get(v);
    EXPECT_EQ(v, 31u);
}
