#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

PEGASUS_USING_PEGASUS;

namespace {

template <class T>
void expectRoundTrip(const T& x, CIMType type) {
    CIMValue v(x);
    EXPECT_EQ(v.getType(), type);
    EXPECT_FALSE(v.isArray());
    EXPECT_FALSE(v.isNull());
    T out;
    v.get(out);
    EXPECT_TRUE(out == x);
    Array<T> items;
    items.append(x);
    items.append(x);
    CIMValue a(items);
    EXPECT_EQ(a.getType(), type);
    EXPECT_TRUE(a.isArray());
    EXPECT_EQ(a.getArraySize(), 2u);
    Array<T> back;
    a.get(back);
    ASSERT_EQ(back.size(), 2u);
    EXPECT_TRUE(back[1] == x);
    // The wrong array-ness is refused.
    EXPECT_THROW(v.get(back), TypeMismatchException);
    EXPECT_THROW(a.get(out), TypeMismatchException);
}

}  // namespace

TEST(CIMValueTest, EveryTypeScalarAndArray) {
    expectRoundTrip(Boolean(true), CIMTYPE_BOOLEAN);
    expectRoundTrip(Uint8(200), CIMTYPE_UINT8);
    expectRoundTrip(Sint8(-100), CIMTYPE_SINT8);
    expectRoundTrip(Uint16(60000), CIMTYPE_UINT16);
    expectRoundTrip(Sint16(-30000), CIMTYPE_SINT16);
    expectRoundTrip(Uint32(4000000000u), CIMTYPE_UINT32);
    expectRoundTrip(Sint32(-2000000000), CIMTYPE_SINT32);
    expectRoundTrip(Uint64(18000000000000000000ull), CIMTYPE_UINT64);
    expectRoundTrip(Sint64(-9000000000000000000ll), CIMTYPE_SINT64);
    expectRoundTrip(Real32(1.5f), CIMTYPE_REAL32);
    expectRoundTrip(Real64(-2.25), CIMTYPE_REAL64);
    expectRoundTrip(Char16('x'), CIMTYPE_CHAR16);
    expectRoundTrip(String("text"), CIMTYPE_STRING);
    expectRoundTrip(CIMDateTime("20240115103045.123456+060"), CIMTYPE_DATETIME);
    expectRoundTrip(CIMObjectPath("ORV_X.Id=\"1\""), CIMTYPE_REFERENCE);
}

TEST(CIMValueTest, WrongTypeThrowsAndNullLeavesOutputAlone) {
    CIMValue v(Uint16(5));
    Uint32 wrong = 7;
    EXPECT_THROW(v.get(wrong), TypeMismatchException);
    CIMValue null(CIMTYPE_UINT16, false);
    EXPECT_TRUE(null.isNull());
    Uint16 out = 99;
    null.get(out);
    EXPECT_EQ(out, 99);
    EXPECT_THROW(null.get(wrong), TypeMismatchException);
    CIMValue nullArray(CIMTYPE_STRING, true, 3);
    EXPECT_EQ(nullArray.getArraySize(), 3u);
    EXPECT_TRUE(nullArray.isArray());
    EXPECT_EQ(CIMValue().getType(), CIMTYPE_BOOLEAN);
    EXPECT_TRUE(CIMValue().isNull());
}

TEST(CIMValueTest, TextForms) {
    EXPECT_EQ(CIMValue(true).toString(), "TRUE");
    EXPECT_EQ(CIMValue(Sint8(-5)).toString(), "-5");
    EXPECT_EQ(CIMValue(Uint8(250)).toString(), "250");
    EXPECT_EQ(CIMValue(Uint64(12345678901234ull)).toString(), "12345678901234");
    EXPECT_EQ(CIMValue(Real64(1.5)).toString(), "1.5000000000000000e+00");
    EXPECT_EQ(CIMValue(Real32(1.5f)).toString(), "1.5000000e+00");
    Array<Uint16> codes;
    codes.append(2);
    codes.append(32768);
    EXPECT_EQ(CIMValue(codes).toString(), "2 32768 ");
    EXPECT_EQ(CIMValue(CIMTYPE_STRING, false).toString(), "");
    CIMInstance embedded(CIMName("ORV_E"));
    embedded.addProperty(CIMProperty(CIMName("Text"), CIMValue(String("a<b"))));
    EXPECT_EQ(CIMValue(embedded).toString(),
              "<INSTANCE CLASSNAME=\"ORV_E\"><PROPERTY NAME=\"Text\" TYPE=\"string\">"
              "<VALUE>a&lt;b</VALUE></PROPERTY></INSTANCE>");
}

TEST(CIMValueTest, ValueSemanticsAndEmbeddedCopies) {
    CIMValue a(String("one"));
    CIMValue b(a);
    b.set(String("two"));
    String out;
    a.get(out);
    EXPECT_EQ(out, "one");
    EXPECT_NE(a, b);
    EXPECT_EQ(a, CIMValue(String("one")));
    EXPECT_NE(CIMValue(Uint16(1)), CIMValue(Uint32(1)));

    CIMInstance instance(CIMName("ORV_E"));
    instance.addProperty(CIMProperty(CIMName("N"), CIMValue(Uint32(1))));
    CIMValue v(instance);
    instance.getProperty(0).setValue(CIMValue(Uint32(2)));
    CIMInstance inside;
    v.get(inside);
    Uint32 n = 0;
    inside.getProperty(0).getValue().get(n);
    EXPECT_EQ(n, 1u);  // the value holds its own copy
    EXPECT_THROW(CIMValue{CIMInstance()}, UninitializedObjectException);
}
