#include <Pegasus/Common/Exception.h>
#include <Pegasus/Server/ParameterRetyper.h>

#include <gtest/gtest.h>

using namespace Pegasus;

namespace {

MethodDecl method() {
    MethodDecl m;
    m.name = "DoIt";
    auto add = [&m](const char* name, CIMType type, bool array, bool in = true) {
        ParameterDecl p;
        p.name = name;
        p.type = type;
        p.isArray = array;
        p.isIn = in;
        p.isOut = !in;
        m.parameters.push_back(p);
    };
    add("Count", CIMTYPE_UINT16, false);
    add("Delta", CIMTYPE_SINT8, false);
    add("Size", CIMTYPE_UINT64, false);
    add("Ratio", CIMTYPE_REAL64, false);
    add("Force", CIMTYPE_BOOLEAN, false);
    add("Name", CIMTYPE_STRING, false);
    add("When", CIMTYPE_DATETIME, false);
    add("Flags", CIMTYPE_UINT16, true);
    add("Result", CIMTYPE_STRING, false, false);
    return m;
}

CIMValue retyped(const char* name, const CIMValue& value, bool typed = false) {
    Array<CIMParamValue> in;
    in.append(CIMParamValue(name, value, typed));
    const Array<CIMParamValue> out = ParameterRetyper::retype(method(), in);
    EXPECT_EQ(out.size(), 1u);
    EXPECT_TRUE(out[0].isTyped());
    return out[0].getValue();
}

CIMStatusCode refusal(const char* name, const CIMValue& value, bool typed = false) {
    try {
        retyped(name, value, typed);
    } catch (const CIMException& e) {
        return e.getCode();
    }
    return CIM_ERR_SUCCESS;
}

TEST(ParameterRetyperTest, UntypedTextTakesTheDeclaredType) {
    EXPECT_EQ(retyped("count", CIMValue(String("65535"))), CIMValue(Uint16(65535)));
    EXPECT_EQ(retyped("Delta", CIMValue(String("-128"))), CIMValue(Sint8(-128)));
    EXPECT_EQ(retyped("Size", CIMValue(String("0x10"))), CIMValue(Uint64(16)));
    EXPECT_EQ(retyped("Size", CIMValue(String("18446744073709551615"))), CIMValue(Uint64(18446744073709551615ull)));
    EXPECT_EQ(retyped("Ratio", CIMValue(String("2.5"))), CIMValue(Real64(2.5)));
    EXPECT_EQ(retyped("Force", CIMValue(String("TRUE"))), CIMValue(Boolean(true)));
    EXPECT_EQ(retyped("Name", CIMValue(String("  kept as sent "))), CIMValue(String("  kept as sent ")));
    EXPECT_EQ(retyped("When", CIMValue(String("20261123101500.000000+000"))).getType(), CIMTYPE_DATETIME);
    Array<String> flags;
    flags.append("1");
    flags.append("7");
    Array<Uint16> expected;
    expected.append(1);
    expected.append(7);
    EXPECT_EQ(retyped("Flags", CIMValue(flags)), CIMValue(expected));
    // A null stays null with the declared type.
    const CIMValue null = retyped("Count", CIMValue(CIMTYPE_STRING, false));
    EXPECT_TRUE(null.isNull());
    EXPECT_EQ(null.getType(), CIMTYPE_UINT16);
}

TEST(ParameterRetyperTest, BadParametersAreRefusedWithTheRightCode) {
    EXPECT_EQ(refusal("Count", CIMValue(String("65536"))), CIM_ERR_INVALID_PARAMETER);
    EXPECT_EQ(refusal("Count", CIMValue(String("-1"))), CIM_ERR_INVALID_PARAMETER);
    EXPECT_EQ(refusal("Count", CIMValue(String("12abc"))), CIM_ERR_INVALID_PARAMETER);
    EXPECT_EQ(refusal("Count", CIMValue(String(""))), CIM_ERR_INVALID_PARAMETER);
    EXPECT_EQ(refusal("Delta", CIMValue(String("128"))), CIM_ERR_INVALID_PARAMETER);
    EXPECT_EQ(refusal("Force", CIMValue(String("yes"))), CIM_ERR_INVALID_PARAMETER);
    EXPECT_EQ(refusal("Ratio", CIMValue(String("nan"))), CIM_ERR_INVALID_PARAMETER);
    EXPECT_EQ(refusal("When", CIMValue(String("yesterday"))), CIM_ERR_INVALID_PARAMETER);
    EXPECT_EQ(refusal("Nothing", CIMValue(String("1"))), CIM_ERR_INVALID_PARAMETER);
    EXPECT_EQ(refusal("Result", CIMValue(String("x"))), CIM_ERR_INVALID_PARAMETER);   // an output
    EXPECT_EQ(refusal("Flags", CIMValue(String("1"))), CIM_ERR_TYPE_MISMATCH);
    EXPECT_EQ(refusal("Count", CIMValue(Uint32(1)), true), CIM_ERR_TYPE_MISMATCH);

    Array<CIMParamValue> twice;
    twice.append(CIMParamValue("Count", CIMValue(String("1")), false));
    twice.append(CIMParamValue("COUNT", CIMValue(String("2")), false));
    EXPECT_THROW(ParameterRetyper::retype(method(), twice), CIMException);
}

} // namespace
