#include <gtest/gtest.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Repository/InstanceCodec.h>

using namespace Pegasus;

namespace {

CIMInstance everyKind()
{
    CIMInstance inner{CIMName("T_Inner")};
    inner.addProperty(CIMProperty(CIMName("Text"), CIMValue(String("inner \xc3\xa9 text"))));

    CIMInstance i{CIMName("T_All")};
    i.setPath(CIMObjectPath("T_All.Id=\"x\",N=5"));
    i.addProperty(CIMProperty(CIMName("B"), CIMValue(true)));
    i.addProperty(CIMProperty(CIMName("U8"), CIMValue(Uint8(200))));
    i.addProperty(CIMProperty(CIMName("S64"), CIMValue(Sint64(-1234567890123LL))));
    i.addProperty(CIMProperty(CIMName("R64"), CIMValue(Real64(2.5))));
    i.addProperty(CIMProperty(CIMName("C"), CIMValue(Char16(0x263a))));
    i.addProperty(CIMProperty(CIMName("S"), CIMValue(String("text with \"quotes\""))));
    i.addProperty(CIMProperty(CIMName("D"), CIMValue(CIMDateTime("20240101120000.000000+000"))));
    i.addProperty(CIMProperty(CIMName("Ref"), CIMValue(CIMObjectPath("//h/root/orv:T_X.K=\"1\"")),
        0, CIMName("T_X"), CIMName("T_Base"), true));
    Array<Uint16> codes;
    codes.append(2);
    codes.append(65535);
    i.addProperty(CIMProperty(CIMName("Codes"), CIMValue(codes)));
    Array<String> names;
    names.append(String("a"));
    names.append(String());
    i.addProperty(CIMProperty(CIMName("Names"), CIMValue(names)));
    i.addProperty(CIMProperty(CIMName("Emb"), CIMValue(inner)));
    Array<CIMObject> objects;
    objects.append(CIMObject(inner.clone()));
    i.addProperty(CIMProperty(CIMName("Objs"), CIMValue(objects)));
    CIMValue nullArray;
    nullArray.setNullValue(CIMTYPE_UINT32, true);
    i.addProperty(CIMProperty(CIMName("NullArray"), nullArray));
    return i;
}

TEST(InstanceCodec, RoundTripKeepsEveryTypeAndAttribute)
{
    CIMInstance original = everyKind();
    std::string data = InstanceCodec::encode(original);
    CIMInstance back = InstanceCodec::decode(data);
    EXPECT_TRUE(back.identical(original));
    EXPECT_EQ(original.getPath().toString(), back.getPath().toString());
    CIMConstProperty ref = back.getProperty(back.findProperty(CIMName("Ref")));
    EXPECT_EQ("T_X", ref.getReferenceClassName().getString().toUtf8());
    EXPECT_EQ("T_Base", ref.getClassOrigin().getString().toUtf8());
    EXPECT_TRUE(ref.getPropagated());
    CIMObjectPath target;
    ref.getValue().get(target);
    EXPECT_EQ("h", target.getHost().toUtf8());

    CIMObjectPath path("//host/root/orv:T_Y.A=\"1\",B=TRUE");
    EXPECT_TRUE(path.identical(InstanceCodec::decodePath(InstanceCodec::encodePath(path))));
}

TEST(InstanceCodec, DamagedDataIsAnErrorNotACrash)
{
    std::string data = InstanceCodec::encode(everyKind());
    for (size_t cut = 0; cut < data.size(); cut += 7) {
        try {
            InstanceCodec::decode(data.data(), cut);
            ADD_FAILURE() << "truncated at " << cut << " decoded";
        } catch (const CIMException& e) {
            EXPECT_EQ(CIM_ERR_FAILED, e.getCode());
        }
    }
    std::string garbage = data;
    for (size_t i = 1; i < garbage.size(); i += 3)
        garbage[i] = char(0xff);
    EXPECT_THROW(InstanceCodec::decode(garbage), CIMException);
    EXPECT_THROW(InstanceCodec::decode(data + "x"), CIMException);
}

} // namespace
