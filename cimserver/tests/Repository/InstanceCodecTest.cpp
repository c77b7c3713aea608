#include <gtest/gtest.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Repository/InstanceCodec.h>
#include <Pegasus/Repository/NameDictionary.h>

#include "FirstFormatBlobs.h"

#include <limits>

using namespace Pegasus;

namespace {

template <class T> CIMValue arrayOf(std::initializer_list<T> items)
{
    Array<T> a;
    for (const T& x : items)
        a.append(x);
    return CIMValue(a);
}

CIMValue nullOf(CIMType type, bool isArray, Uint32 size = 0)
{
    CIMValue v;
    v.setNullValue(type, isArray, size);
    return v;
}

// Every type, scalar and array, at its limits, with null values, text beyond
// ASCII (two- and three-byte forms, a pair of surrogates, a lone surrogate),
// references with host and namespace, embedded instances and objects.
CIMInstance everyKind()
{
    CIMInstance inner{CIMName("T_Inner")};
    inner.addProperty(CIMProperty(CIMName("Text"), CIMValue(String("inner \xc3\xa9 text"))));
    inner.setPath(CIMObjectPath("T_Inner.Text=\"inner\""));

    CIMInstance i{CIMName("T_All")};
    i.setPath(CIMObjectPath("//h/root/orv:T_All.Id=\"x\",N=5"));
    i.addProperty(CIMProperty(CIMName("B"), CIMValue(true)));
    i.addProperty(CIMProperty(CIMName("U8"), CIMValue(Uint8(200))));
    i.addProperty(CIMProperty(CIMName("S8"), CIMValue(Sint8(-128))));
    i.addProperty(CIMProperty(CIMName("U16"), CIMValue(Uint16(65535))));
    i.addProperty(CIMProperty(CIMName("S16"), CIMValue(Sint16(-32768))));
    i.addProperty(CIMProperty(CIMName("U32"), CIMValue(Uint32(4294967295u))));
    i.addProperty(CIMProperty(CIMName("S32"), CIMValue(Sint32(std::numeric_limits<Sint32>::min()))));
    i.addProperty(CIMProperty(CIMName("U64"), CIMValue(std::numeric_limits<Uint64>::max())));
    i.addProperty(CIMProperty(CIMName("S64"), CIMValue(std::numeric_limits<Sint64>::min())));
    i.addProperty(CIMProperty(CIMName("R32"), CIMValue(Real32(-1.5f))));
    i.addProperty(CIMProperty(CIMName("R64"), CIMValue(Real64(2.5))));
    i.addProperty(CIMProperty(CIMName("C"), CIMValue(Char16(0x263a))));
    i.addProperty(CIMProperty(CIMName("S"), CIMValue(String("text with \"quotes\" \xc3\xa9\xe2\x82\xac"))));
    static const Char16 astral[] = {Char16(0xd83d), Char16(0xde00), Char16('x'), Char16(0xdc00), Char16(0)};
    i.addProperty(CIMProperty(CIMName("Astral"), CIMValue(String(astral))));
    i.addProperty(CIMProperty(CIMName("Empty"), CIMValue(String())));
    // Equal to a class name the dictionary knows: stored as its number.
    i.addProperty(CIMProperty(CIMName("CreationClassName"), CIMValue(String("T_All"))));
    i.addProperty(CIMProperty(CIMName("D"), CIMValue(CIMDateTime("20240101120000.000000+000"))));
    i.addProperty(CIMProperty(CIMName("Ref"), CIMValue(CIMObjectPath("//h/root/orv:T_X.K=\"1\"")),
        0, CIMName("T_X"), CIMName("T_Base"), true));
    i.addProperty(CIMProperty(CIMName("Codes"), arrayOf<Uint16>({2, 65535, 0}), 3));
    i.addProperty(CIMProperty(CIMName("Big"), arrayOf<Sint64>({-1, 1, std::numeric_limits<Sint64>::max()})));
    i.addProperty(CIMProperty(CIMName("Bytes"), arrayOf<Uint8>({0, 255})));
    i.addProperty(CIMProperty(CIMName("Reals"), arrayOf<Real64>({0.1, -1e300})));
    i.addProperty(CIMProperty(CIMName("Flags"), arrayOf<Boolean>({true, false})));
    i.addProperty(CIMProperty(CIMName("Chars"), arrayOf<Char16>({Char16('a'), Char16(0xffff)})));
    i.addProperty(CIMProperty(CIMName("Names"), arrayOf<String>({String("a"), String(), String("T_All")})));
    i.addProperty(CIMProperty(CIMName("Dates"),
        arrayOf<CIMDateTime>({CIMDateTime("00000001020304.000000:000")})));
    i.addProperty(CIMProperty(CIMName("Emb"), CIMValue(inner)));
    i.addProperty(CIMProperty(CIMName("Objs"), arrayOf<CIMObject>({CIMObject(inner.clone())})));
    i.addProperty(CIMProperty(CIMName("Insts"), arrayOf<CIMInstance>({inner.clone(), inner.clone()})));
    i.addProperty(CIMProperty(CIMName("NullArray"), nullOf(CIMTYPE_UINT32, true, 4)));
    i.addProperty(CIMProperty(CIMName("NullString"), nullOf(CIMTYPE_STRING, false)));
    i.addProperty(CIMProperty(CIMName("NullRef"), nullOf(CIMTYPE_REFERENCE, false), 0, CIMName("T_X")));
    i.addProperty(CIMProperty(CIMName("NullInst"), nullOf(CIMTYPE_INSTANCE, false)));
    // Embedded instances of nothing but a class: the smallest there are.
    i.addProperty(CIMProperty(CIMName("Bare"), arrayOf<CIMInstance>({CIMInstance(CIMName("T_E")),
        CIMInstance(CIMName("T_E")), CIMInstance(CIMName("T_E"))})));
    return i;
}

// A volume as the repository stores it: its path is its key properties.
CIMInstance storedVolume(const std::string& id)
{
    CIMInstance v{CIMName("T_Volume")};
    v.addProperty(CIMProperty(CIMName("SystemName"), CIMValue(String("SYS1")), 0, CIMName(),
        CIMName("T_Logical"), true));
    v.addProperty(CIMProperty(CIMName("Size"), CIMValue(Uint64(1) << 40), 0, CIMName(),
        CIMName("T_Logical"), true));
    v.addProperty(CIMProperty(CIMName("DeviceID"), CIMValue(String(id.c_str())), 0, CIMName(),
        CIMName("T_Logical"), true));
    v.addProperty(CIMProperty(CIMName("Pool"), CIMValue(CIMObjectPath("T_Pool.InstanceID=\"P1\"")),
        0, CIMName("T_Pool"), CIMName("T_Volume")));
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("SystemName"), CIMValue(String("SYS1"))));
    keys.append(CIMKeyBinding(CIMName("DeviceID"), CIMValue(String(id.c_str()))));
    v.setPath(CIMObjectPath(String(), CIMNamespaceName(), CIMName("T_Volume"), keys));
    return v;
}

TEST(InstanceCodec, RoundTripKeepsEveryTypeValueAndAttribute)
{
    NameDictionary names;
    names.nameId(String("T_All"));
    CIMInstance original = everyKind();
    std::string data = InstanceCodec::encode(original, names);
    EXPECT_EQ(InstanceCodec::CURRENT_FORMAT, InstanceCodec::format(data));
    CIMInstance back = InstanceCodec::decode(data, names);
    EXPECT_TRUE(back.identical(original));
    EXPECT_TRUE(back.getPath().identical(original.getPath()));
    for (Uint32 i = 0; i < original.getPropertyCount(); ++i) {
        CIMConstProperty want = original.getProperty(i);
        CIMConstProperty got = back.getProperty(i);
        SCOPED_TRACE(want.getName().getString().toUtf8());
        EXPECT_TRUE(got.getValue() == want.getValue());
        EXPECT_EQ(want.getValue().isNull(), got.getValue().isNull());
        EXPECT_EQ(want.getValue().getArraySize(), got.getValue().getArraySize());
        EXPECT_EQ(want.getArraySize(), got.getArraySize());
        EXPECT_TRUE(want.getClassOrigin().equal(got.getClassOrigin()));
        EXPECT_TRUE(want.getReferenceClassName().equal(got.getReferenceClassName()));
        EXPECT_EQ(want.getPropagated(), got.getPropagated());
    }
    CIMObjectPath target;
    back.getProperty(back.findProperty(CIMName("Ref"))).getValue().get(target);
    EXPECT_EQ("h", target.getHost().toUtf8());
    EXPECT_EQ("root/orv", target.getNameSpace().getString().toUtf8());

    // Without class origins, the rest is the same.
    CIMInstance lean = InstanceCodec::decode(data, names, false);
    EXPECT_TRUE(lean.getProperty(lean.findProperty(CIMName("Ref"))).getClassOrigin().isNull());
    EXPECT_TRUE(lean.getProperty(lean.findProperty(CIMName("Ref"))).getPropagated());

    CIMObjectPath path("//host/root/orv:T_Y.A=\"1\",B=TRUE");
    EXPECT_TRUE(path.identical(InstanceCodec::decodePath(InstanceCodec::encodePath(path, names), names)));
    EXPECT_TRUE(InstanceCodec::decodeInstancePath(data, names).identical(original.getPath()));
}

TEST(InstanceCodec, KeyPathIsKeptAsItsPropertiesAndNamesOncePerDictionary)
{
    NameDictionary names;
    CIMInstance volume = storedVolume("LUN-0001");
    std::string first = InstanceCodec::encode(volume, names);
    size_t entries = names.size();
    std::string second = InstanceCodec::encode(storedVolume("LUN-0002"), names);
    EXPECT_EQ(entries, names.size()) << "the second instance of a class adds no names";

    CIMInstance back = InstanceCodec::decode(first, names);
    EXPECT_TRUE(back.identical(volume));
    EXPECT_TRUE(back.getPath().identical(volume.getPath()));
    EXPECT_TRUE(InstanceCodec::decodeInstancePath(second, names)
        .identical(storedVolume("LUN-0002").getPath()));

    CIMName cls;
    std::vector<InstanceCodec::KeyValue> keys;
    ASSERT_TRUE(InstanceCodec::decodeKeyValues(second, names, cls, keys));
    EXPECT_EQ("T_Volume", cls.getString().toUtf8());
    ASSERT_EQ(2u, keys.size());
    for (const InstanceCodec::KeyValue& k : keys) {
        if (k.name.getString().toUtf8() == "DeviceID")
            EXPECT_TRUE(k.value == CIMValue(String("LUN-0002")));
        else
            EXPECT_EQ("SystemName", k.name.getString().toUtf8());
    }

    // Names, origins and the path's text are not in the data: the 8-character
    // key value, the reference and a few numbers remain.
    EXPECT_LT(second.size(), 70u) << "encoded volume grew to " << second.size() << " bytes";

    // A path that is not made of the key properties is kept as it is.
    CIMInstance odd = storedVolume("LUN-0003");
    odd.setPath(CIMObjectPath("//other/root/orv:T_Volume.SystemName=\"SYS1\",DeviceID=\"elsewhere\""));
    std::string oddData = InstanceCodec::encode(odd, names);
    EXPECT_TRUE(InstanceCodec::decode(oddData, names).getPath().identical(odd.getPath()));
    EXPECT_FALSE(InstanceCodec::decodeKeyValues(oddData, names, cls, keys));
}

TEST(InstanceCodec, FirstFormatStillDecodes)
{
    NameDictionary names;
    CIMInstance volume = InstanceCodec::decode(firstformat::volume(), names);
    EXPECT_EQ(0u, names.size());
    EXPECT_EQ("T_Volume", volume.getClassName().getString().toUtf8());
    EXPECT_EQ("T_Volume.DeviceID=\"OLD1\",SystemName=\"SYS1\"", volume.getPath().toString().toUtf8());
    String name;
    volume.getProperty(volume.findProperty(CIMName("Name"))).getValue().get(name);
    EXPECT_EQ("caf\xc3\xa9", name.toUtf8());
    EXPECT_EQ("T_Logical",
        volume.getProperty(volume.findProperty(CIMName("Size"))).getClassOrigin().getString().toUtf8());

    // Encoded again it is the same instance.
    CIMInstance again = InstanceCodec::decode(InstanceCodec::encode(volume, names), names);
    EXPECT_TRUE(again.identical(volume));
    EXPECT_TRUE(again.getPath().identical(volume.getPath()));
    CIMInstance alloc = InstanceCodec::decode(firstformat::alloc(), names);
    EXPECT_TRUE(InstanceCodec::decode(InstanceCodec::encode(alloc, names), names).identical(alloc));
}

TEST(InstanceCodec, DamagedDataIsAnErrorNotACrash)
{
    NameDictionary names;
    names.nameId(String("T_All"));
    std::string data = InstanceCodec::encode(everyKind(), names);
    auto failsCleanly = [&](const std::string& bad, const std::string& what) {
        try {
            InstanceCodec::decode(bad, names);
            InstanceCodec::decodeInstancePath(bad, names);
            ADD_FAILURE() << what << " decoded";
        } catch (const CIMException& e) {
            EXPECT_EQ(CIM_ERR_FAILED, e.getCode()) << what;
            EXPECT_NE(std::string::npos, e.getMessage().toUtf8().find("damaged")) << what;
        }
    };
    for (size_t cut = 0; cut < data.size(); ++cut)
        failsCleanly(data.substr(0, cut), "cut at " + std::to_string(cut));
    failsCleanly(data + "x", "trailing byte");
    std::string version = data;
    version[0] = char(9);
    failsCleanly(version, "unknown format");
    for (size_t i = 1; i < data.size(); i += 5) {
        std::string garbage = data;
        garbage[i] = char(0xff);
        try {
            InstanceCodec::decode(garbage, names);
        } catch (const CIMException& e) {
            EXPECT_EQ(CIM_ERR_FAILED, e.getCode());
        }
    }
    std::string first = firstformat::pool();
    for (size_t cut = 1; cut < first.size(); cut += 3)
        failsCleanly(first.substr(0, cut), "first format cut at " + std::to_string(cut));

    // A number the dictionary does not know, a name where a shape belongs,
    // malformed UTF-8, an integer too large for its type.
    NameDictionary other;
    failsCleanly(InstanceCodec::encode(storedVolume("X"), other), "foreign dictionary numbers");
    NameDictionary small;
    small.nameId(String("T_Small"));
    CIMInstance probe{CIMName("T_Small")};
    probe.addProperty(CIMProperty(CIMName("S"), CIMValue(String("ab"))));
    probe.addProperty(CIMProperty(CIMName("N"), CIMValue(Uint16(5))));
    std::string good = InstanceCodec::encode(probe, small);
    ASSERT_NO_THROW(InstanceCodec::decode(good, small));
    size_t text = good.find("ab");
    ASSERT_NE(std::string::npos, text);
    std::string badUtf8 = good;
    badUtf8[text] = char(0xc3);
    badUtf8[text + 1] = char(0x28);
    EXPECT_THROW(InstanceCodec::decode(badUtf8, small), CIMException);
    std::string overlong = good;
    overlong[text] = char(0xc0);
    overlong[text + 1] = char(0x81);
    EXPECT_THROW(InstanceCodec::decode(overlong, small), CIMException);
    // The uint16 value 5 is the last byte: 70000 does not fit.
    std::string tooBig = good.substr(0, good.size() - 1) + "\xf0\xa2\x04";
    EXPECT_THROW(InstanceCodec::decode(tooBig, small), CIMException);
    // The class number pointing at a property shape (the last entry made).
    std::string shapeAsClass = good;
    shapeAsClass[1] = char(small.size());
    EXPECT_THROW(InstanceCodec::decode(shapeAsClass, small), CIMException);
}

} // namespace
