// Volumes and composite extents against a stand-in repository: what each
// creation, change and deletion leaves behind, and the computed BasedOn.

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "BasedOnCESV.h"
#include "CompositeExtent.h"
#include "ComputerSystem.h"
#include "MC.h"
#include "StoragePool.h"
#include "StorageVolume.h"
#include "VolumeTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;
using modeltest::prop;
using modeltest::propertyNames;
using modeltest::uint16s;
using volumetest::ARRAY_ID;

namespace {

class VolumeModel : public volumetest::VolumeFixture {
protected:
    // The pool's record in the store, its instance in the repository, and
    // its disks.
    PoolRawData* AddPool(const std::string& no, const std::string& raid, int disks,
                         const std::string& type = "dynamic") {
        PoolRawData* pool = MakePool(no, raid, type);
        Store(pool);
        CIMObjectPath path = Model::AdjustObjectPath(StoragePool::WrapReference(no, ARRAY_ID));
        CIMInstance instance(MC::ClassName("StoragePool"));
        instance.addProperty(CIMProperty(CIMName("InstanceID"), path.getKeyBindings()[0].getValue()));
        instance.setPath(path);
        walking->createInstance(context, MC::Namespace(), instance);
        AddDisks(no, disks, 1000);
        pools.push_back(pool);
        return pool;
    }
    void TearDown() override {
        for (PoolRawData* pool : pools) pool->Release();
        VolumeFixture::TearDown();
    }
    void PoolEvent(void (*handler)(ParentArgs&), PoolRawData* newPool, PoolRawData* oldPool = nullptr) {
        DataEventArgs event(context, newPool, oldPool, ARRAY_ID);
        CIMObjectPath path = Model::AdjustObjectPath(StoragePool::WrapReference(newPool->poolNo, ARRAY_ID));
        ParentArgs args(event, path);
        handler(args);
    }
    std::vector<CIMInstance> Links(const char* shortName) { return walking->of(MC::ClassNameText(shortName)); }
    static std::string RefDeviceId(const CIMInstance& link, const char* role) {
        CIMObjectPath ref = prop<CIMObjectPath>(link, role);
        for (Uint32 i = 0; i < ref.getKeyBindings().size(); ++i)
            if (ref.getKeyBindings()[i].getName().equal(CIMName("DeviceID")))
                return ref.getKeyBindings()[i].getValue().toUtf8();
        return std::string();
    }

    std::vector<PoolRawData*> pools;
};

TEST_F(VolumeModel, TwoLevelPoolGetsMasterSlaveAndDiskLinks) {
    PoolRawData* pool = AddPool("0001", "RAID1/10", 4);
    PoolEvent(CompositeExtent::OnCreate, pool);

    ASSERT_EQ(walking->count("ORV_Storage_CompositeExtent"), 2u);
    CIMInstance master = walking->get(Model::AdjustObjectPath(CompositeExtent::WrapReference("0001", ARRAY_ID)));
    EXPECT_EQ(prop<Uint64>(master, "NumberOfBlocks"), 2000u);
    EXPECT_EQ(prop<Uint64>(master, "ConsumableBlocks"), pool->freePoolCapacity / 512);
    std::vector<CIMInstance> between = Links("CompositeExtentBasedOn");
    ASSERT_EQ(between.size(), 1u);
    EXPECT_EQ(RefDeviceId(between[0], "Antecedent"), "0001h");
    EXPECT_EQ(RefDeviceId(between[0], "Dependent"), "0001h:1h");
    EXPECT_EQ(prop<Uint16>(between[0], "OrderIndex"), 1);

    std::vector<CIMInstance> onDisks = Links("BasedOn");
    ASSERT_EQ(onDisks.size(), 4u);
    std::vector<Uint16> order;
    for (const CIMInstance& link : onDisks) {
        EXPECT_EQ(RefDeviceId(link, "Antecedent"), "0001h:1h");
        order.push_back(prop<Uint16>(link, "OrderIndex"));
    }
    std::sort(order.begin(), order.end());
    EXPECT_EQ(order, (std::vector<Uint16>{1, 2, 3, 4}));
    CIMInstance slave = walking->of("ORV_Storage_CompositeExtent")[0];
    if (prop<String>(slave, "DeviceID") == "0001h") slave = walking->of("ORV_Storage_CompositeExtent")[1];
    EXPECT_EQ(prop<String>(slave, "Name").toUtf8(), "Composite Extent(RAID=RAID1, DeviceID=0001h:1h)");
    EXPECT_EQ(Links("ConcreteComponent").size(), 1u);
    EXPECT_EQ(Links("AssociatedComponentExtent").size(), 1u);
}

TEST_F(VolumeModel, OneLevelAndTripleMirrorLayouts) {
    PoolRawData* mirror = AddPool("0002", "RAID1/10", 2);
    PoolEvent(CompositeExtent::OnCreate, mirror);
    EXPECT_EQ(walking->count("ORV_Storage_CompositeExtent"), 1u);
    EXPECT_EQ(Links("BasedOn").size(), 2u);
    EXPECT_EQ(Links("CompositeExtentBasedOn").size(), 0u);

    PoolRawData* triple = AddPool("0003", "RAID-TM", 6);
    PoolEvent(CompositeExtent::OnCreate, triple);
    CIMObjectPath slavePath = CompositeExtent::WrapReference("0003", ARRAY_ID);
    Array<CIMKeyBinding> keys = slavePath.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i)
        if (keys[i].getName().equal(CIMName("DeviceID"))) keys[i].setValue("0003h:1h");
    slavePath.setKeyBindings(keys);
    ASSERT_TRUE(walking->has(slavePath));
    CIMInstance slave = walking->get(slavePath);
    EXPECT_EQ(prop<String>(slave, "Name").toUtf8(), "Composite Extent(RAID=RAID-TM, DeviceID=0003h:1h)");
    // The slave of a triple mirror is striped over its disks at the pool's strip size.
    size_t striped = 0;
    for (const CIMInstance& link : Links("CompositeExtentBasedOn"))
        if (RefDeviceId(link, "Antecedent") == "0003h:1h") {
            ++striped;
            EXPECT_EQ(prop<Uint64>(link, "UserDataStripeDepth"), triple->stripSize);
        }
    EXPECT_EQ(striped, 6u);
}

TEST_F(VolumeModel, PoolWithoutDisksOrWithNewRaidIsRefused) {
    PoolRawData* pool = MakePool("0004", "RAID5(4+P)");
    pools.push_back(pool);
    try {
        PoolEvent(CompositeExtent::OnCreate, pool);
        FAIL() << "a pool on no disks was accepted";
    } catch (const CIMException& e) {
        EXPECT_EQ(e.getMessage(), "An pool can't based on zero PDs.");
    }
    PoolRawData* changed = MakePool("0004", "RAID6(4+PQ)");
    pools.push_back(changed);
    try {
        PoolEvent(CompositeExtent::OnModify, changed, pool);
        FAIL() << "a new RAID text was accepted";
    } catch (const CIMException& e) {
        EXPECT_NE(e.getMessage().toUtf8().find("raidType"), std::string::npos);
    }
}

TEST_F(VolumeModel, VolumeLifeOnPlainPool) {
    PoolRawData* pool = AddPool("0001", "RAID5(4+P)", 5);
    PoolEvent(CompositeExtent::OnCreate, pool);
    LdRawData* ld = MakeLd("001a", "0001", "RAID5(4+P)", "ready", "LD Set(FC)");
    Store(ld);
    StorageVolume model;
    DataEventArgs created(context, ld, nullptr, ARRAY_ID);
    CIMObjectPath path = model.Create(&created);

    CIMInstance volume = walking->get(path);
    const std::vector<std::string> order = {
        "DeviceID", "CreationClassName", "SystemCreationClassName", "SystemName", "Name", "NameFormat",
        "NameNamespace", "BlockSize", "NumberOfBlocks", "ConsumableBlocks", "DataRedundancy", "PackageRedundancy",
        "DeltaReservation", "ElementName", "IsBasedOnUnderlyingRedundancy", "NoSinglePointOfFailure",
        "ExtentStatus", "OperationalStatus", "HealthState", "Description", "Purpose", "IdentifyingDescriptions",
        "OtherIdentifyingInfo", "SequentialAccess", "Access", "DataOrganization", "ExtentStripeLength",
        "ThinlyProvisioned", "ExtentDiscriminator", "Primordial", "StatusDescriptions"};
    EXPECT_EQ(propertyNames(volume), order);
    EXPECT_EQ(prop<String>(volume, "DeviceID"), "001ah");
    EXPECT_EQ(prop<String>(volume, "Name").toUtf8(), "00099100001200" "1A");
    EXPECT_EQ(uint16s(volume, "ExtentStatus"), (std::vector<Uint16>{0, 15}));
    EXPECT_EQ(prop<Uint16>(volume, "DataRedundancy"), 1);
    EXPECT_FALSE(prop<Boolean>(volume, "ThinlyProvisioned"));
    EXPECT_EQ(prop<String>(volume, "Description"), "A Storage Volume whose number is 001ah");
    ASSERT_EQ(indications.named("CIM_InstCreation").size(), 1u);

    std::vector<CIMInstance> allocated = Links("AllocatedFromStoragePool");
    ASSERT_EQ(allocated.size(), 1u);
    EXPECT_EQ(prop<Uint64>(allocated[0], "SpaceConsumed"), ld->LDCapacity);
    size_t volumeLinks = 0;
    for (const CIMInstance& link : Links("BasedOn"))
        if (RefDeviceId(link, "Dependent") == "001ah") {
            ++volumeLinks;
            EXPECT_EQ(RefDeviceId(link, "Antecedent"), "0001h");
        }
    EXPECT_EQ(volumeLinks, 1u);

    // The volume grows and fills: the allocation follows, the alert goes out.
    LdRawData* grown = MakeLd("001a", "0001", "RAID5(4+P)", "fault(over capacity)", "LD Set(FC)");
    grown->LDCapacity *= 2;
    DataEventArgs modified(context, grown, ld, ARRAY_ID);
    model.Modify(&modified);
    allocated = Links("AllocatedFromStoragePool");
    ASSERT_EQ(allocated.size(), 1u);
    EXPECT_EQ(prop<Uint64>(allocated[0], "SpaceConsumed"), grown->LDCapacity);
    EXPECT_EQ(prop<Uint64>(walking->get(path), "NumberOfBlocks"), grown->LDCapacity / 512);
    bool drm29 = false;
    for (const CIMInstance& alert : indications.named("CIM_AlertIndication"))
        if (alert.findProperty(CIMName("MessageID")) != PEG_NOT_FOUND && prop<String>(alert, "MessageID") == "DRM29")
            drm29 = true;
    EXPECT_TRUE(drm29);

    // Rebuilding the pool's extents leaves the volume's link alone.
    PoolRawData* fuller = MakePool("0001", "RAID5(4+P)");
    fuller->freePoolCapacity /= 2;
    pools.push_back(fuller);
    PoolEvent(CompositeExtent::OnModify, fuller, pool);
    EXPECT_EQ(prop<Uint64>(walking->get(CompositeExtent::WrapReference("0001", ARRAY_ID)), "ConsumableBlocks"),
              fuller->freePoolCapacity / 512);
    volumeLinks = 0;
    for (const CIMInstance& link : Links("BasedOn"))
        if (RefDeviceId(link, "Dependent") == "001ah") ++volumeLinks;
    EXPECT_EQ(volumeLinks, 1u);

    DataEventArgs deleted(context, grown, nullptr, ARRAY_ID);
    model.Delete(&deleted);
    EXPECT_FALSE(walking->has(path));
    EXPECT_EQ(Links("AllocatedFromStoragePool").size(), 0u);
    for (const CIMInstance& link : Links("BasedOn")) EXPECT_NE(RefDeviceId(link, "Dependent"), "001ah");
    EXPECT_EQ(indications.named("CIM_InstDeletion").size(), 1u);

    PoolEvent(CompositeExtent::OnDelete, fuller);
    EXPECT_EQ(walking->count("ORV_Storage_CompositeExtent"), 0u);
    EXPECT_EQ(Links("BasedOn").size(), 0u);
    EXPECT_EQ(Links("CompositeExtentBasedOn").size(), 0u);
    EXPECT_EQ(Links("ConcreteComponent").size(), 0u);
    EXPECT_EQ(Links("AssociatedComponentExtent").size(), 0u);
    ld->Release();
    grown->Release();
}

TEST_F(VolumeModel, ThinVolumeConsumesItsActualUse) {
    AddPool("0005", "RAID6(4+PQ)", 6, "virtual");
    LdRawData* ld = MakeLd("0020", "0005", "RAID6(4+PQ)", "attn.(stop)");
    StorageVolume model;
    DataEventArgs created(context, ld, nullptr, ARRAY_ID);
    CIMObjectPath path = model.Create(&created);
    CIMInstance volume = walking->get(path);
    EXPECT_TRUE(prop<Boolean>(volume, "ThinlyProvisioned"));
    EXPECT_EQ(uint16s(volume, "OperationalStatus"), (std::vector<Uint16>{15}));
    EXPECT_EQ(prop<Uint16>(volume, "HealthState"), 0);
    EXPECT_EQ(prop<Uint64>(Links("AllocatedFromStoragePool")[0], "SpaceConsumed"), ld->actualUsedCapacity);
    ld->Release();
}

TEST_F(VolumeModel, VolumeOfUnknownPoolOrWrongRecordIsRefused) {
    LdRawData* ld = MakeLd("0030", "00ff", "RAID1");
    StorageVolume model;
    DataEventArgs created(context, ld, nullptr, ARRAY_ID);
    try {
        model.Create(&created);
        FAIL() << "a volume of no pool was stored";
    } catch (const CIMException& e) {
        EXPECT_EQ(e.getMessage(), "can not get PoolRawData! [StorageVolume::WrapInstance]");
    }
    EXPECT_EQ(walking->count("ORV_Storage_StorageVolume"), 0u);
    PoolRawData* notLd = MakePool("0001", "RAID1");
    DataEventArgs wrong(context, notLd, nullptr, ARRAY_ID);
    EXPECT_THROW(model.Create(&wrong), CIMException);
    ld->Release();
    notLd->Release();
}

TEST_F(VolumeModel, FindGoesFromTheArrayToTheVolumeByName) {
    ArrayRawData* array = MakeArray(ARRAY_ID, "ready");
    DataEventArgs arrayEvent(context, array, nullptr, ARRAY_ID);
    ComputerSystem system;
    CIMObjectPath systemPath = system.Create(&arrayEvent);
    AddPool("0001", "RAID1", 2);
    StorageVolume model;
    std::vector<LdRawData*> lds = {MakeLd("0001", "0001", "RAID1"), MakeLd("00ab", "0001", "RAID1")};
    for (LdRawData* ld : lds) {
        DataEventArgs args(context, ld, nullptr, ARRAY_ID);
        CIMObjectPath volume = model.Create(&args);
        // The server answers SystemDevice; here a stored link stands in for it.
        CIMInstance link(MC::ClassName("SystemDevice"));
        link.addProperty(CIMProperty(CIMName("GroupComponent"), CIMValue(Model::AdjustObjectPath(systemPath))));
        link.addProperty(CIMProperty(CIMName("PartComponent"), CIMValue(volume)));
        walking->createInstance(context, MC::Namespace(), link);
    }
    CIMObjectPath found;
    ASSERT_TRUE(model.Find(StorageVolume::volumeName(ARRAY_ID, "00ab"), ARRAY_ID, found));
    EXPECT_EQ(modeltest::canonical(found), modeltest::canonical(StorageVolume::Find(ARRAY_ID, "00ab")));
    EXPECT_FALSE(model.Find(StorageVolume::volumeName(ARRAY_ID, "0fff"), ARRAY_ID, found));
    for (LdRawData* ld : lds) ld->Release();
    array->Release();
}

TEST_F(VolumeModel, BasedOnRunsBetweenVolumesAndTheirPoolsExtent) {
    PoolRawData* pool = AddPool("0001", "RAID1", 2);
    PoolEvent(CompositeExtent::OnCreate, pool);
    LdRawData* first = MakeLd("0001", "0001", "RAID1");
    LdRawData* second = MakeLd("0002", "0001", "RAID1");
    StorageVolume model;
    DataEventArgs a(context, first, nullptr, ARRAY_ID);
    DataEventArgs b(context, second, nullptr, ARRAY_ID);
    CIMObjectPath firstPath = model.Create(&a);
    model.Create(&b);

    BasedOnCESV controller;
    const String noRole;  // the request arguments hold references
    CIMName assoc = MC::ClassName("BasedOn");
    CIMName toExtent = MC::ClassName("CompositeExtent");
    const CIMPropertyList properties;
    volumetest::RecordingObjects objects;
    AssoArgs fromVolume(context, firstPath, assoc, toExtent, noRole, noRole, false, false, properties,
                        objects);
    controller.Associator(fromVolume, "StorageVolume", "CompositeExtent");
    ASSERT_EQ(objects.delivered.size(), 1u);
    EXPECT_EQ(prop<String>(CIMInstance(objects.delivered[0]), "DeviceID"), "0001h");
    EXPECT_EQ(objects.completed, 1);

    CIMObjectPath extent = Model::AdjustObjectPath(CompositeExtent::WrapReference("0001", ARRAY_ID));
    CIMName toVolume = MC::ClassName("StorageVolume");
    volumetest::RecordingPaths paths;
    AssoNameArgs fromExtent(context, extent, assoc, toVolume, noRole, noRole, paths);
    controller.AssociatorNames(fromExtent, "CompositeExtent", "StorageVolume");
    EXPECT_EQ(paths.delivered.size(), 2u);

    // Other pairs get an empty, completed answer.
    volumetest::RecordingPaths none;
    AssoNameArgs other(context, extent, assoc, toVolume, noRole, noRole, none);
    controller.AssociatorNames(other, "CompositeExtent", "StorageExtent");
    EXPECT_TRUE(none.delivered.empty());
    EXPECT_EQ(none.completed, 1);
    first->Release();
    second->Release();
}

}  // namespace
