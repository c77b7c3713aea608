#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

PEGASUS_USING_PEGASUS;

TEST(CIMObjectPathTest, ParsesHostNamespaceClassAndTypedKeys) {
    CIMObjectPath p("//array1/root/orv:ORV_StorageVolume.SystemName=\"ORV:1:2\",DeviceID=\"00A0h\","
                    "Number=0x1F,Primordial=true,Size=-5");
    EXPECT_EQ(p.getHost(), "array1");
    EXPECT_EQ(p.getNameSpace().getString(), "root/orv");
    EXPECT_EQ(p.getClassName().getString(), "ORV_StorageVolume");
    const Array<CIMKeyBinding>& keys = p.getKeyBindings();
    ASSERT_EQ(keys.size(), 5u);
    // Sorted by name, ignoring case.
    EXPECT_EQ(keys[0].getName().getString(), "DeviceID");
    EXPECT_EQ(keys[1].getName().getString(), "Number");
    EXPECT_EQ(keys[1].getType(), CIMKeyBinding::NUMERIC);
    EXPECT_EQ(keys[2].getName().getString(), "Primordial");
    EXPECT_EQ(keys[2].getType(), CIMKeyBinding::BOOLEAN);
    EXPECT_EQ(keys[2].getValue(), "TRUE");
    EXPECT_EQ(keys[4].getName().getString(), "SystemName");
    EXPECT_EQ(keys[4].getValue(), "ORV:1:2");
    EXPECT_EQ(p.toString(), "//array1/root/orv:ORV_StorageVolume.DeviceID=\"00A0h\",Number=0x1F,"
                            "Primordial=TRUE,Size=-5,SystemName=\"ORV:1:2\"");
    EXPECT_EQ(CIMObjectPath(p.toString()), p);
}

TEST(CIMObjectPathTest, QuotingAndReferenceKeysRoundTrip) {
    Array<CIMKeyBinding> inner;
    inner.append(CIMKeyBinding("Name", "b", CIMKeyBinding::STRING));
    inner.append(CIMKeyBinding("CreationClassName", "ORV_System", CIMKeyBinding::STRING));
    const CIMObjectPath system("", CIMNamespaceName("root/orv"), "ORV_System", inner);
    Array<CIMKeyBinding> outer;
    outer.append(CIMKeyBinding(CIMName("Antecedent"), CIMValue(system)));
    outer.append(CIMKeyBinding("Text", "say \"hi\" \\ bye", CIMKeyBinding::STRING));
    const CIMObjectPath assoc("", CIMNamespaceName(), "ORV_Assoc", outer);
    EXPECT_EQ(assoc.getKeyBindings()[0].getType(), CIMKeyBinding::REFERENCE);
    const String text = assoc.toString();
    EXPECT_EQ(text, "ORV_Assoc.Antecedent=\"root/orv:ORV_System.CreationClassName=\\\"ORV_System\\\","
                    "Name=\\\"b\\\"\",Text=\"say \\\"hi\\\" \\\\ bye\"");
    const CIMObjectPath back(text);
    EXPECT_EQ(back, assoc);
    EXPECT_EQ(back.getKeyBindings()[0].getType(), CIMKeyBinding::REFERENCE);
    EXPECT_EQ(back.getKeyBindings()[1].getValue(), "say \"hi\" \\ bye");
}

TEST(CIMObjectPathTest, ComparisonRules) {
    // Class and key names ignore case, and key order does not matter.
    EXPECT_EQ(CIMObjectPath("orv_x.B=\"v\",a=1"), CIMObjectPath("ORV_X.A=1,b=\"v\""));
    // String values are exact; numbers compare as numbers; booleans ignore case.
    EXPECT_NE(CIMObjectPath("ORV_X.A=\"v\""), CIMObjectPath("ORV_X.A=\"V\""));
    EXPECT_EQ(CIMObjectPath("ORV_X.A=16"), CIMObjectPath("ORV_X.A=0x10"));
    EXPECT_EQ(CIMObjectPath("ORV_X.A=true"), CIMObjectPath("ORV_X.A=TRUE"));
    // A string "1" is not the number 1.
    EXPECT_NE(CIMObjectPath("ORV_X.A=\"1\""), CIMObjectPath("ORV_X.A=1"));
    // Host and namespace count, host without case.
    EXPECT_NE(CIMObjectPath("//h/root/orv:ORV_X.A=1"), CIMObjectPath("root/orv:ORV_X.A=1"));
    EXPECT_EQ(CIMObjectPath("//H/root/orv:ORV_X.A=1"), CIMObjectPath("//h/ROOT/orv:ORV_X.A=1"));
    EXPECT_EQ(CIMObjectPath("ORV_X.A=1,b=\"v\"").makeHashCode(), CIMObjectPath("orv_x.B=\"v\",A=1").makeHashCode());
}

TEST(CIMObjectPathTest, ColonAfterTheFirstDotIsPartOfAValue) {
    CIMObjectPath p("ORV_X.Id=\"a:b\"");
    EXPECT_TRUE(p.getNameSpace().isNull());
    EXPECT_EQ(p.getKeyBindings()[0].getValue(), "a:b");
    CIMObjectPath classOnly("root/orv:ORV_X");
    EXPECT_EQ(classOnly.getNameSpace().getString(), "root/orv");
    EXPECT_EQ(classOnly.getKeyBindings().size(), 0u);
    EXPECT_EQ(classOnly.toString(), "root/orv:ORV_X");
}

TEST(CIMObjectPathTest, MalformedNamesAreRefused) {
    for (const char* bad : {"", ".A=1", "ORV_X.", "ORV_X.A", "ORV_X.A=", "ORV_X.A=\"open",
                            "ORV_X.A=1,", "ORV_X.A=1,A=2", "ORV_X.A=maybe", "ORV_X.A=12abc",
                            "ORV_X.A=\"x\"y", "1X.A=1", "//host", "//host/ORV_X.A=1",
                            "root//orv:ORV_X", "ORV_X.A=0xZZ"}) {
        EXPECT_THROW(CIMObjectPath{String(bad)}, MalformedObjectNameException) << bad;
    }
}

TEST(CIMKeyBindingTest, FromValuesAndTheirKinds) {
    EXPECT_EQ(CIMKeyBinding(CIMName("K"), CIMValue(Uint16(7))).getType(), CIMKeyBinding::NUMERIC);
    EXPECT_EQ(CIMKeyBinding(CIMName("K"), CIMValue(String("s"))).getType(), CIMKeyBinding::STRING);
    EXPECT_EQ(CIMKeyBinding(CIMName("K"), CIMValue(true)).getValue(), "TRUE");
    Array<Uint16> list;
    EXPECT_THROW(CIMKeyBinding(CIMName("K"), CIMValue(list)), TypeMismatchException);
    CIMKeyBinding k("K", "7", CIMKeyBinding::NUMERIC);
    EXPECT_TRUE(k.equal(CIMValue(Uint32(7))));
    EXPECT_FALSE(k.equal(CIMValue(String("7"))));
}
