// The physical view over the stand-in repository: what each class shows of
// the array and disk records, how the instances are tied together, and how
// they follow firmware changes, moves and deletions.

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/Constants.h>

#include "DacRawData.h"
#include "Exception.h"
#include "Product.h"
#include "SoftwareIdentity.h"
#include "PhysicalViewTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;
using modeltest::prop;
using modeltest::propertyNames;
using physicaltest::WWN;

namespace {

typedef std::vector<std::pair<const char*, std::string>> Texts;

class PhysicalView : public physicaltest::PhysicalFixture {
protected:
    // Checks the string properties of an instance, in the given order.
    void expectTexts(const CIMInstance& instance, const Texts& expected) {
        std::vector<std::string> names = propertyNames(instance);
        size_t last = 0;
        for (const auto& entry : expected) {
            EXPECT_EQ(text(instance, entry.first), entry.second) << entry.first;
            size_t at = std::find(names.begin(), names.end(), entry.first) - names.begin();
            EXPECT_LT(at, names.size()) << entry.first;
            EXPECT_GE(at, last) << entry.first << " out of order";
            last = at;
        }
    }
    CIMObjectPath diskPath(const std::string& pdn) {
        CIMObjectPath path;
        DiskDrive drive;
        EXPECT_TRUE(drive.Find(pdn, WWN, path));
        return path;
    }
    CIMInstance productNamed(const std::string& name) {
        for (const CIMInstance& i : repository->of("ORV_Storage_Product"))
            if (text(i, "Name") == name) return i;
        ADD_FAILURE() << "no product " << name;
        return CIMInstance(CIMName("ORV_Storage_Product"));
    }
    size_t logged(const std::string& entry) const {
        return std::count(repository->log.begin(), repository->log.end(), entry);
    }
};

TEST_F(PhysicalView, TheArraySideShowsTheArrayRecord) {
    ArrayRawData* array = ArrayRecord();
    CreateArray(array);
    const CIMObjectPath system = ComputerSystem::GetPath(WWN);

    CIMInstance chassis = only("ORV_Storage_Chassis");
    expectTexts(chassis, {{"ElementName", "ORV Vx2000(0000000930000001)"},
                          {"Tag", "0000000930000001"},
                          {"CreationClassName", "ORV_Storage_Chassis"},
                          {"Name", "Vx2000"},
                          {"Version", "0971"},
                          {"OtherIdentifyingInfo", ""},
                          {"Manufacturer", "ORV"},
                          {"Model", "Vx2000"},
                          {"SerialNumber", "0000000930000001"}});
    EXPECT_EQ(prop<Uint16>(chassis, "PackageType"), 3);
    EXPECT_EQ(prop<Uint16>(chassis, "ChassisPackageType"), 22);
    EXPECT_EQ(prop<Array<String>>(chassis, "VendorCompatibilityStrings").size(), 0u);

    CIMInstance location = only("ORV_Storage_Location");
    expectTexts(location, {{"Name", "ORV.Vx2000 : Location"},
                           {"PhysicalPosition", "Server room 1"},
                           {"ElementName", "ORV.Vx2000 : Location"},
                           {"Address", "Server room 1"}});

    CIMInstance product = only("ORV_Storage_Product");
    expectTexts(product, {{"Name", "Vx2000"},
                          {"IdentifyingNumber", "0000000930000001"},
                          {"Vendor", "ORV"},
                          {"Version", "0971"},
                          {"ElementName", "Vx2000 0971"}});

    CIMInstance firmware = only("ORV_Storage_SoftwareIdentity");
    expectTexts(firmware, {{"InstanceID", "ORV.Vx2000 : Array0A1B"},
                           {"VersionString", "9.71.0001"},
                           {"Manufacturer", "ORV"}});

    // The links: array - chassis - location and product; array - firmware.
    std::vector<CIMInstance> housing = linksOf("ORV_Storage_ComputerSystemPackage", chassis.getPath());
    ASSERT_EQ(housing.size(), 1u);
    EXPECT_EQ(modeltest::canonical(end(housing[0], "Dependent")), modeltest::canonical(system));
    std::vector<CIMInstance> place = linksOf("ORV_Storage_PhysicalElementLocation", location.getPath());
    ASSERT_EQ(place.size(), 1u);
    EXPECT_EQ(modeltest::canonical(end(place[0], "Element")), modeltest::canonical(chassis.getPath()));
    std::vector<CIMInstance> productOf = linksOf("ORV_Storage_ProductPhysicalComponent", product.getPath());
    ASSERT_EQ(productOf.size(), 1u);
    EXPECT_EQ(modeltest::canonical(end(productOf[0], "PartComponent")), modeltest::canonical(chassis.getPath()));
    std::vector<CIMInstance> installed = linksOf("ORV_Storage_InstalledSoftwareIdentity", firmware.getPath());
    ASSERT_EQ(installed.size(), 1u);
    EXPECT_EQ(modeltest::canonical(end(installed[0], "System")), modeltest::canonical(system));
}

TEST_F(PhysicalView, EachDiskHasItsPackageProductAndFirmware) {
    CreateArray(ArrayRecord());
    CreateDisk(Disk("00-0a"));
    // A number longer than four characters is cut in the package's name.
    CreateDisk(Disk("01-000a5"));
    EXPECT_EQ(repository->count("ORV_Storage_PhysicalPackage"), 2u);

    const std::string tag = "PD:00h-0ah(" + WWN + ")";
    CIMInstance package;
    for (const CIMInstance& i : repository->of("ORV_Storage_PhysicalPackage"))
        if (text(i, "Tag") == tag) package = i;
    ASSERT_FALSE(package.isUninitialized());
    expectTexts(package, {{"Tag", tag},
                          {"CreationClassName", "ORV_Storage_PhysicalPackage"},
                          {"ElementName", tag},
                          {"Name", tag},
                          {"Version", "A3C0"},
                          {"Manufacturer", "ORVDISK"},
                          {"Model", "ST600"},
                          {"SerialNumber", "SN00-0a"}});
    EXPECT_EQ(PhysicalPackage::Tag("01-000a5", WWN), "PD:01h-000ah(" + WWN + ")");
    EXPECT_THROW(PhysicalPackage::Tag("0a", WWN), orvsmis::InvalidParamException);

    CIMInstance product = productNamed(tag);
    expectTexts(product, {{"Name", tag},
                          {"IdentifyingNumber", "SN00-0a"},
                          {"Vendor", "ORVDISK"},
                          {"Version", "A3C0"},
                          {"ElementName", tag}});

    std::vector<CIMInstance> realizes = linksOf("ORV_Storage_Realizes", package.getPath());
    ASSERT_EQ(realizes.size(), 1u);
    EXPECT_EQ(modeltest::canonical(end(realizes[0], "Dependent")), modeltest::canonical(diskPath("00-0a")));
    std::vector<CIMInstance> container = linksOf("ORV_Storage_Container", package.getPath());
    ASSERT_EQ(container.size(), 1u);
    EXPECT_EQ(modeltest::canonical(end(container[0], "GroupComponent")),
              modeltest::canonical(only("ORV_Storage_Chassis").getPath()));
    std::vector<CIMInstance> parent = linksOf("ORV_Storage_ProductParentChild", product.getPath());
    ASSERT_EQ(parent.size(), 1u);
    EXPECT_EQ(text(repository->get(end(parent[0], "Parent")), "Name"), "Vx2000");

    // The disk's firmware, tied to its drive.
    PdRawData* pd = Disk("00-0b", "B100");
    CreateDisk(pd);
    const CIMObjectPath drive = diskPath("00-0b");
    DataEventArgs event(context, pd, nullptr, WWN);
    ParentArgs args(event, drive);
    // The drive made its firmware identity.
    SoftwareIdentityPD identity;
    CIMObjectPath firmwarePath = identity.WrapReference(args);
    CIMInstance firmware = repository->get(firmwarePath);
    expectTexts(firmware, {{"InstanceID", "ORV.Vx2000 : 00-0b.in." + WWN},
                           {"VersionString", "B100"},
                           {"Manufacturer", "ORVDISK"}});
    std::vector<CIMInstance> runsIn = linksOf("ORV_Storage_ElementSoftwareIdentity", firmwarePath);
    ASSERT_EQ(runsIn.size(), 1u);
    EXPECT_EQ(modeltest::canonical(end(runsIn[0], "Dependent")), modeltest::canonical(drive));
}

TEST_F(PhysicalView, AFirmwareChangeReplacesTheProductsAndModifiesTheChassis) {
    ArrayRawData* before = ArrayRecord("0971");
    CreateArray(before);
    PdRawData* disk0 = Disk("00-00");
    PdRawData* disk1 = Disk("00-01");
    CreateDisk(disk0);
    CreateDisk(disk1);
    repository->log.clear();

    ArrayRawData* after = ArrayRecord("0972");
    after->version = "9.72";
    ModifyArray(after, before);

    EXPECT_EQ(logged("modify ORV_Storage_Chassis"), 1u);
    EXPECT_EQ(logged("delete ORV_Storage_Chassis"), 0u);
    CIMInstance chassis = only("ORV_Storage_Chassis");
    EXPECT_EQ(text(chassis, "Version"), "0972");
    // The location did not move.
    EXPECT_EQ(logged("delete ORV_Storage_Location"), 0u);

    // Version is a key of the product: the array's product is a new one, and
    // the disks' products are its children now.
    EXPECT_EQ(repository->count("ORV_Storage_Product"), 3u);
    CIMInstance arrayProduct = productNamed("Vx2000");
    EXPECT_EQ(text(arrayProduct, "Version"), "0972");
    EXPECT_EQ(text(arrayProduct, "ElementName"), "Vx2000 0972");
    EXPECT_EQ(modeltest::canonical(Product::GetArrayProductPath()), modeltest::canonical(arrayProduct.getPath()));
    std::vector<CIMInstance> children = linksOf("ORV_Storage_ProductParentChild", arrayProduct.getPath());
    EXPECT_EQ(children.size(), 2u);
    EXPECT_EQ(repository->count("ORV_Storage_ProductParentChild"), 2u);
    std::vector<CIMInstance> productOf = linksOf("ORV_Storage_ProductPhysicalComponent", arrayProduct.getPath());
    ASSERT_EQ(productOf.size(), 1u);
    EXPECT_EQ(repository->count("ORV_Storage_ProductPhysicalComponent"), 3u);

    // The array's firmware identity follows in place.
    CIMInstance firmware = arrayFirmware();
    EXPECT_EQ(text(firmware, "VersionString"), "9.72.0001");
    EXPECT_EQ(repository->count("ORV_Storage_InstalledSoftwareIdentity"), 1u);

    // A later disk hangs on the new product.
    CreateDisk(Disk("00-02"));
    EXPECT_EQ(linksOf("ORV_Storage_ProductParentChild", arrayProduct.getPath()).size(), 3u);
}

TEST_F(PhysicalView, AMoveReplacesTheLocationAndOtherChangesLeaveItAlone) {
    ArrayRawData* before = ArrayRecord("0971", "Server room 1");
    CreateArray(before);
    repository->log.clear();

    ArrayRawData* renamed = ArrayRecord("0971", "Server room 1");
    renamed->unitName = "renamed-array";
    ModifyArray(renamed, before);
    for (const std::string& entry : repository->log) {
        EXPECT_EQ(entry.find("Location"), std::string::npos) << entry;
        EXPECT_EQ(entry.find("Product"), std::string::npos) << entry;
        EXPECT_EQ(entry.find("Chassis"), std::string::npos) << entry;
    }

    ArrayRawData* moved = ArrayRecord("0971", "Room 2, rack 4");
    ModifyArray(moved, renamed);
    EXPECT_EQ(logged("delete ORV_Storage_Location"), 1u);
    EXPECT_EQ(logged("create ORV_Storage_Location"), 1u);
    CIMInstance location = only("ORV_Storage_Location");
    EXPECT_EQ(text(location, "PhysicalPosition"), "Room 2, rack 4");
    EXPECT_EQ(text(location, "Address"), "Room 2, rack 4");
    EXPECT_EQ(repository->count("ORV_Storage_PhysicalElementLocation"), 1u);
    std::vector<CIMInstance> place = linksOf("ORV_Storage_PhysicalElementLocation", location.getPath());
    ASSERT_EQ(place.size(), 1u);
    EXPECT_EQ(modeltest::canonical(end(place[0], "Element")), modeltest::canonical(only("ORV_Storage_Chassis").getPath()));
}

TEST_F(PhysicalView, ADiskFirmwareChangeFollowsThroughPackageProductAndIdentity) {
    CreateArray(ArrayRecord());
    PdRawData* before = Disk("00-05", "A3C0");
    CreateDisk(before);
    DataEventArgs createEvent(context, before, nullptr, WWN);
    const CIMObjectPath drive = diskPath("00-05");
    ParentArgs createArgs(createEvent, drive);
    SoftwareIdentityPD identity;
    CIMObjectPath firmwarePath = identity.WrapReference(createArgs);
    repository->log.clear();

    // Only the state changed: the physical view writes nothing.
    PdRawData* stateOnly = Disk("00-05", "A3C0");
    stateOnly->state = "attn.(rebuilding)";
    ModifyDisk(stateOnly, before);
    DataEventArgs quietEvent(context, stateOnly, before, WWN);
    ParentArgs quietArgs(quietEvent, drive);
    identity.Modify(quietArgs);
    for (const std::string& entry : repository->log) {
        EXPECT_EQ(entry.find("Package"), std::string::npos) << entry;
        EXPECT_EQ(entry.find("Product"), std::string::npos) << entry;
        EXPECT_EQ(entry.find("SoftwareIdentity"), std::string::npos) << entry;
    }

    PdRawData* updated = Disk("00-05", "B100");
    ModifyDisk(updated, stateOnly);
    DataEventArgs modifyEvent(context, updated, stateOnly, WWN);
    ParentArgs modifyArgs(modifyEvent, drive);
    identity.Modify(modifyArgs);

    EXPECT_EQ(text(only("ORV_Storage_PhysicalPackage"), "Version"), "B100");
    EXPECT_EQ(logged("modify ORV_Storage_PhysicalPackage"), 1u);
    const std::string tag = "PD:00h-05h(" + WWN + ")";
    CIMInstance product = productNamed(tag);
    EXPECT_EQ(text(product, "Version"), "B100");
    EXPECT_EQ(repository->count("ORV_Storage_Product"), 2u);
    EXPECT_EQ(linksOf("ORV_Storage_ProductParentChild", product.getPath()).size(), 1u);
    EXPECT_EQ(linksOf("ORV_Storage_ProductPhysicalComponent", product.getPath()).size(), 1u);
    EXPECT_EQ(text(repository->get(firmwarePath), "VersionString"), "B100");
}

TEST_F(PhysicalView, DeletionsLeaveNoInstanceOrLinkBehind) {
    ArrayRawData* array = ArrayRecord();
    CreateArray(array);
    PdRawData* disk0 = Disk("00-00");
    PdRawData* disk1 = Disk("00-01");
    CreateDisk(disk0);
    CreateDisk(disk1);
    EXPECT_EQ(repository->count("ORV_Storage_SoftwareIdentity"), 3u);
    DeleteDisk(disk1);
    EXPECT_EQ(repository->count("ORV_Storage_PhysicalPackage"), 1u);
    EXPECT_EQ(repository->count("ORV_Storage_Product"), 2u);
    EXPECT_EQ(repository->count("ORV_Storage_Realizes"), 1u);
    EXPECT_EQ(repository->count("ORV_Storage_Container"), 1u);
    EXPECT_EQ(repository->count("ORV_Storage_ProductParentChild"), 1u);
    // The other disk keeps its firmware identity beside the array's.
    EXPECT_EQ(repository->count("ORV_Storage_ElementSoftwareIdentity"), 1u);
    EXPECT_EQ(repository->count("ORV_Storage_SoftwareIdentity"), 2u);

    DeleteDisk(disk0);
    DeleteArray(array);
    for (const char* cls : {"ORV_Storage_Chassis", "ORV_Storage_Location", "ORV_Storage_PhysicalPackage",
                            "ORV_Storage_Product", "ORV_Storage_SoftwareIdentity", "ORV_Storage_Realizes",
                            "ORV_Storage_Container", "ORV_Storage_ComputerSystemPackage",
                            "ORV_Storage_ProductPhysicalComponent", "ORV_Storage_ProductParentChild",
                            "ORV_Storage_PhysicalElementLocation", "ORV_Storage_InstalledSoftwareIdentity",
                            "ORV_Storage_ElementSoftwareIdentity"})
        EXPECT_EQ(repository->count(cls), 0u) << cls;
    EXPECT_EQ(Chassis::GetPath().getKeyBindings().size(), 0u);
    EXPECT_EQ(SoftwareIdentityArray::GetPath().getKeyBindings().size(), 0u);

    // A new array after the old one is gone gets a complete view again.
    CreateArray(ArrayRecord("0980"));
    CreateDisk(Disk("00-00"));
    EXPECT_EQ(linksOf("ORV_Storage_ProductParentChild", productNamed("Vx2000").getPath()).size(), 1u);
}

TEST_F(PhysicalView, FailuresAndWrongRecordsReachTheLoad) {
    CreateArray(ArrayRecord());
    repository->failCreateOfClass = "ORV_Storage_Container";
    EXPECT_THROW(CreateDisk(Disk("00-03")), CIMException);
    repository->failCreateOfClass.clear();

    DacRawData* dac = MakeDac(WWN, "00", "ready");
    held.push_back(dac);
    DataEventArgs event(context, dac, nullptr, WWN);
    ParentArgs args(event, ComputerSystem::GetPath(WWN));
    SoftwareIdentityPD identity;
    try {
        identity.Create(args);
        ADD_FAILURE() << "a controller record made a disk's firmware identity";
    } catch (const CIMException& e) {
        EXPECT_EQ(e.getCode(), CIM_ERR_INVALID_PARAMETER);
        EXPECT_EQ(e.getMessage().toUtf8(), "Dynamic cast parameter \"parm\" failed.");
    }
    Product product;
    EXPECT_THROW(product.Create(args), CIMException);
    Chassis chassis;
    EXPECT_THROW(chassis.Create(args), CIMException);
    PhysicalPackage package;
    EXPECT_THROW(package.Create(args), CIMException);
}

TEST_F(PhysicalView, TheProvidersIdentityHangsOnEachProfileInTheInteropNamespace) {
    auto profile = [](const std::string& name) {
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding(CIMName("InstanceID"), String(("ORV:" + name).c_str()), CIMKeyBinding::STRING));
        return CIMObjectPath(String(), PEGASUS_NAMESPACENAME_INTEROP, CIMName("ORV_Storage_RegisteredProfile"), keys);
    };
    // Another vendor and brand in the configuration: the version stays.
    Singleton<ConfigManager>::Instance()->SetConfigValue("general", "brand", std::list<std::string>(1, "Vx9"));
    std::map<std::string, CIMObjectPath> profiles = {{"Array", profile("Array")}, {"Block Services", profile("BS")}};
    CIMObjectPath path = SoftwareIdentity::Create(context, profiles);
    EXPECT_EQ(repository->lastNamespace, "root/interop");
    EXPECT_EQ(path.getNameSpace().getString().toUtf8(), "root/interop");
    CIMInstance identity = only("ORV_Storage_SoftwareIdentity");
    expectTexts(identity, {{"InstanceID", "ORV.Vx9 : RegisteredProfile_SoftwareIdentity"},
                           {"VersionString", "1.5.0"},
                           {"Manufacturer", "ORV"},
                           {"Name", "ORV SMI-S Provider"}});
    EXPECT_EQ(modeltest::uint16s(identity, "Classifications"), std::vector<Uint16>({5}));
    EXPECT_EQ(repository->count("ORV_Storage_ElementSoftwareIdentity"), 2u);

    // A second call adds the missing link only.
    profiles["Physical Package"] = profile("PP");
    SoftwareIdentity::Create(context, profiles);
    EXPECT_EQ(repository->count("ORV_Storage_SoftwareIdentity"), 1u);
    EXPECT_EQ(repository->count("ORV_Storage_ElementSoftwareIdentity"), 3u);

    // Taken off two profiles, it stays for the third; then it goes.
    std::map<std::string, CIMObjectPath> two = {{"Array", profile("Array")}, {"Block Services", profile("BS")}};
    SoftwareIdentity::Delete(context, two);
    EXPECT_EQ(repository->count("ORV_Storage_SoftwareIdentity"), 1u);
    EXPECT_EQ(repository->count("ORV_Storage_ElementSoftwareIdentity"), 1u);
    SoftwareIdentity::Delete(context, {{"Physical Package", profile("PP")}});
    EXPECT_EQ(repository->count("ORV_Storage_SoftwareIdentity"), 0u);
    EXPECT_EQ(repository->count("ORV_Storage_ElementSoftwareIdentity"), 0u);
    SoftwareIdentity::Delete(context, profiles);
}

}  // namespace
