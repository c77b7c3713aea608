#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/XmlWriter.h>

#include <gtest/gtest.h>

PEGASUS_USING_PEGASUS;

namespace {
CIMInstance volume() {
    CIMInstance i(CIMName("ORV_StorageVolume"));
    i.addProperty(CIMProperty(CIMName("DeviceID"), CIMValue(String("0001"))));
    i.addProperty(CIMProperty(CIMName("BlockSize"), CIMValue(Uint64(512)), 0, CIMName(), CIMName("CIM_StorageExtent")));
    return i;
}
}  // namespace

TEST(CIMInstanceTest, CopiesShareAndClonesDoNot) {
    CIMInstance a = volume();
    CIMInstance shared(a);
    CIMInstance copy = a.clone();
    a.getProperty(a.findProperty("blocksize")).setValue(CIMValue(Uint64(4096)));
    Uint64 size = 0;
    shared.getProperty(1).getValue().get(size);
    EXPECT_EQ(size, 4096u);
    copy.getProperty(1).getValue().get(size);
    EXPECT_EQ(size, 512u);
    EXPECT_TRUE(a.identical(shared));
    EXPECT_FALSE(a.identical(copy));
    CIMObject object(a);
    EXPECT_TRUE(object.isInstance());
    EXPECT_FALSE(object.isClass());
    EXPECT_EQ(CIMInstance(object).getPropertyCount(), 2u);
}

TEST(CIMInstanceTest, Contracts) {
    CIMInstance i = volume();
    EXPECT_THROW(i.addProperty(CIMProperty(CIMName("deviceid"), CIMValue(String("x")))), AlreadyExistsException);
    EXPECT_EQ(i.findProperty("Nope"), PEG_NOT_FOUND);
    EXPECT_THROW(i.getProperty(PEG_NOT_FOUND), IndexOutOfBoundsException);
    EXPECT_THROW(i.getProperty(0).setValue(CIMValue(Uint16(1))), TypeMismatchException);
    EXPECT_THROW(i.setPath(CIMObjectPath("ORV_Other.DeviceID=\"1\"")), TypeMismatchException);
    i.setPath(CIMObjectPath("orv_storagevolume.DeviceID=\"0001\""));
    EXPECT_EQ(i.getPath().getKeyBindings().size(), 1u);
    CIMInstance empty;
    EXPECT_TRUE(empty.isUninitialized());
    EXPECT_THROW(empty.getClassName(), UninitializedObjectException);
    EXPECT_THROW(CIMProperty(CIMName("R"), CIMValue(Uint16(1)), 0, CIMName("ORV_X")), TypeMismatchException);
    CIMProperty held = i.getProperty(0);
    EXPECT_THROW(held.setName(CIMName("Other")), Exception);
    i.removeProperty(0);
    EXPECT_EQ(i.getPropertyCount(), 1u);
}

TEST(CIMInstanceTest, FilterKeepsListedPropertiesAndDropsOrigins) {
    CIMInstance i = volume();
    Array<CIMName> names;
    names.append(CIMName("blocksize"));
    i.instanceFilter(false, false, CIMPropertyList(names));
    ASSERT_EQ(i.getPropertyCount(), 1u);
    EXPECT_TRUE(i.getProperty(0).getClassOrigin().isNull());
    CIMInstance all = volume();
    all.instanceFilter(false, true, CIMPropertyList());
    EXPECT_EQ(all.getPropertyCount(), 2u);
    EXPECT_EQ(all.getProperty(1).getClassOrigin().getString(), "CIM_StorageExtent");
}

TEST(CIMInstanceTest, XmlFormOfPropertiesAndReferences) {
    CIMInstance i(CIMName("ORV_Assoc"));
    i.addProperty(CIMProperty(CIMName("Dependent"), CIMValue(CIMObjectPath("//h/root/orv:ORV_X.Id=\"1\"")), 0, CIMName("ORV_X")));
    Array<String> names;
    names.append("a&b");
    i.addProperty(CIMProperty(CIMName("Names"), CIMValue(names)));
    std::string out;
    XmlWriter::appendInstanceElement(out, i);
    EXPECT_EQ(out,
              "<INSTANCE CLASSNAME=\"ORV_Assoc\"><PROPERTY.REFERENCE NAME=\"Dependent\" REFERENCECLASS=\"ORV_X\">"
              "<VALUE.REFERENCE><INSTANCEPATH><NAMESPACEPATH><HOST>h</HOST><LOCALNAMESPACEPATH>"
              "<NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"orv\"/></LOCALNAMESPACEPATH></NAMESPACEPATH>"
              "<INSTANCENAME CLASSNAME=\"ORV_X\"><KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"string\">1"
              "</KEYVALUE></KEYBINDING></INSTANCENAME></INSTANCEPATH></VALUE.REFERENCE></PROPERTY.REFERENCE>"
              "<PROPERTY.ARRAY NAME=\"Names\" TYPE=\"string\"><VALUE.ARRAY><VALUE>a&amp;b</VALUE>"
              "</VALUE.ARRAY></PROPERTY.ARRAY></INSTANCE>");
    std::string text;
    XmlWriter::appendEscaped(text, std::string("a\x01<"));
    EXPECT_EQ(text, "a\xEF\xBF\xBD&lt;");
}

TEST(CIMParamValueTest, HandleSemanticsAndNames) {
    CIMParamValue p("Size", CIMValue(Uint64(10)));
    CIMParamValue q(p);
    CIMValue v(Uint64(20));
    q.setValue(v);
    Uint64 n = 0;
    p.getValue().get(n);
    EXPECT_EQ(n, 20u);
    EXPECT_TRUE(p.isTyped());
    EXPECT_THROW(CIMParamValue("bad name", CIMValue()), InvalidNameException);
    EXPECT_TRUE(CIMParamValue().isUninitialized());
}

TEST(OperationContextTest, ContainersByName) {
    OperationContext context;
    context.insert(IdentityContainer("orvadmin"));
    EXPECT_THROW(context.insert(IdentityContainer("other")), AlreadyExistsException);
    IdentityContainer id(context.get(IdentityContainer::NAME));
    EXPECT_EQ(id.getUserName(), "orvadmin");
    context.set(IdentityContainer("other"));
    OperationContext copy(context);
    context.remove(IdentityContainer::NAME);
    EXPECT_FALSE(context.contains(IdentityContainer::NAME));
    EXPECT_THROW(context.get(IdentityContainer::NAME), Exception);
    EXPECT_EQ(IdentityContainer(copy.get(IdentityContainer::NAME)).getUserName(), "other");
    copy.insert(TimeoutContainer(5));
    EXPECT_THROW(IdentityContainer(copy.get(TimeoutContainer::NAME)), DynamicCastFailedException);
}
