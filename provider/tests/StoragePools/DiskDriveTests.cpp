// Physical disks: the tables that turn a disk record into drive and extent
// values, and a disk's life with its extent, links and index entry.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "DacRawData.h"
#include "DiskDrive.h"
#include "Exception.h"
#include "PrimordialPool.h"
#include "StorageExtent.h"
#include "PoolTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;
using modeltest::prop;
using modeltest::propertyNames;
using modeltest::uint16s;

namespace {

PdRawData Disk(const std::string& state, const std::string& type = "SAS", const std::string& speed = "15000rpm") {
    PdRawData pd;
    pd.PDN = "00-0a";
    pd.state = state;
    pd.type = type;
    pd.rotationalSpeed = speed;
    return pd;
}

TEST(DiskTables, StatesGiveDriveAndExtentValues) {
    struct Row {
        const char* state;
        Uint16 driveStatus, driveHealth, availability;
        Uint16 extentStatus, extentExtentStatus, extentHealth;
    };
    const Row rows[] = {
        {"ready", 2, 5, 3, 2, 0, 5},
        {"attn.(powering up)", 8, 5, 19, 13, 10, 5},
        {"attn.(rebuilding)", 2, 10, 19, 2, 11, 10},
        {"attn.(formatting)", 2, 10, 19, 2, 10, 10},
        {"attn.(stop)", 10, 5, 7, 13, 0, 5},
        {"fault", 6, 20, 10, 13, 3, 20},
        {"fault(invalid)", 6, 20, 10, 13, 3, 20},
        {"info.(inactive)", 5, 10, 4, 13, 0, 10},
        {"attn.(exchg)", 5, 10, 4, 13, 0, 10},
        {"Ready", 0, 0, 2, 0, 1, 0},
        {"fault(over heat)", 0, 0, 2, 0, 1, 0},
        {"", 0, 0, 2, 0, 1, 0},
    };
    for (const Row& row : rows) {
        PdRawData pd = Disk(row.state);
        Array<Uint16> status;
        Uint16 health = 99, availability = 99;
        DiskDrive::getPDstatusCimValue(&pd, status, health, availability);
        ASSERT_EQ(status.size(), 1u) << row.state;
        EXPECT_EQ(status[0], row.driveStatus) << row.state;
        EXPECT_EQ(health, row.driveHealth) << row.state;
        EXPECT_EQ(availability, row.availability) << row.state;

        Uint16 extentOperational = 99, extentStatus = 99, extentHealth = 99;
        StorageExtent::getPDstatusCimValue(&pd, extentOperational, extentStatus, extentHealth);
        EXPECT_EQ(extentOperational, row.extentStatus) << row.state;
        EXPECT_EQ(extentStatus, row.extentExtentStatus) << row.state;
        EXPECT_EQ(extentHealth, row.extentHealth) << row.state;
    }
}

TEST(DiskTables, TypesAndSpeeds) {
    struct Row {
        const char* type;
        const char* speed;
        Uint16 diskType, interconnect;
        Uint32 rpm;
    };
    const Uint32 unknown = 0xFFFFFFFFu;
    const Row rows[] = {
        {"ATA", "7200rpm", 2, 3, 7200},
        {"SSD(ATA)", "---", 3, 4, 0},
        {"SAS", "15000rpm", 2, 5, 15000},
        {"NLSAS", "7200 rpm", 2, 5, 7200},
        {"SAS(SED)", "10000rpm", 2, 5, 10000},
        {"NLSAS(SED)", "---", 2, 5, unknown},
        {"AFSAS", "---", 2, 5, unknown},
        {"AFSAS(SED)", "10000", 2, 5, unknown},
        {"SSD", "---", 3, 5, 0},
        {"SSD(SED)", "---", 3, 5, 0},
        {"FC", "15000rpm", 0, 0, 15000},
        {"sas", "---", 0, 0, unknown},
    };
    for (const Row& row : rows) {
        PdRawData pd = Disk("ready", row.type, row.speed);
        Uint16 diskType = 99, interconnect = 99;
        DiskDrive::getPDtypeCimValue(&pd, diskType, interconnect);
        EXPECT_EQ(diskType, row.diskType) << row.type;
        EXPECT_EQ(interconnect, row.interconnect) << row.type;
        EXPECT_EQ(DiskDrive::getPDrpmCimValue(&pd), row.rpm) << row.type << " " << row.speed;
    }
}

TEST(DiskTables, ClassificationsGiveExtentUsage) {
    const std::vector<std::pair<const char*, Uint16>> rows = {
        {"not set", 2}, {"data", 18}, {"spare", 14}, {"System Volume", 3}, {"L2 Cache", 3},
        {"pool", 65535}, {"Spare", 65535}, {"", 65535},
    };
    for (const auto& row : rows) {
        PdRawData pd = Disk("ready");
        pd.classification = row.first;
        EXPECT_EQ(StorageExtent::MapUsageProperty(&pd), row.second) << row.first;
    }
}

TEST(DiskTables, DeviceIdsAndBadRecords) {
    EXPECT_EQ(DiskDrive::DeviceID("00-0a"), "00h-0ah");
    EXPECT_EQ(DiskDrive::DeviceID("01-1234"), "01h-1234h");
    EXPECT_THROW(DiskDrive::DeviceID("0a"), InvalidParamException);

    Array<Uint16> status;
    Uint16 a = 0, b = 0, c = 0;
    EXPECT_THROW(DiskDrive::getPDstatusCimValue(nullptr, status, a, b), CIMException);
    EXPECT_THROW(DiskDrive::getPDtypeCimValue(nullptr, a, b), CIMException);
    EXPECT_THROW(DiskDrive::getPDrpmCimValue(nullptr), CIMException);
    EXPECT_THROW(StorageExtent::getPDstatusCimValue(nullptr, a, b, c), CIMException);
    EXPECT_THROW(StorageExtent::MapUsageProperty(nullptr), CIMException);
}

class DiskDriveTest : public pooltest::PoolFixture {
protected:
    void SetUp() override {
        PoolFixture::SetUp();
        if (!repository->has(PrimordialPool::GetPath(WWN))) {
            DataEventArgs args(context, array, nullptr, WWN);
            PrimordialPool primordial;
            primordial.Create(&args);
        }
    }
    CIMObjectPath Create(PdRawData* pd) {
        DataEventArgs args(context, pd, nullptr, WWN);
        DiskDrive model;
        return model.Create(&args);
    }
    void Modify(PdRawData* newPd, PdRawData* oldPd) {
        DataEventArgs args(context, newPd, oldPd, WWN);
        DiskDrive model;
        model.Modify(&args);
    }
    void Delete(PdRawData* pd) {
        DataEventArgs args(context, pd, nullptr, WWN);
        DiskDrive model;
        model.Delete(&args);
    }
};

TEST_F(DiskDriveTest, DriveAndExtentInstances) {
    PdRawData* pd = Pd("00-0a", 1000000, "not set", "00", "attn.(stop)");
    DataEventArgs args(context, pd, nullptr, WWN);
    DiskDrive model;
    CIMInstance drive = model.WrapInstance(&args);
    EXPECT_EQ(propertyNames(drive),
              (std::vector<std::string>{"SystemCreationClassName", "SystemName", "CreationClassName", "DeviceID",
                                        "Name", "OperationalStatus", "EnabledState", "HealthState", "MinBlockSize",
                                        "MaxBlockSize", "DefaultBlockSize", "MaxMediaSize", "ElementName",
                                        "Description", "Availability", "Capabilities", "DiskType",
                                        "InterconnectType", "RPM"}));
    EXPECT_EQ(prop<String>(drive, "DeviceID"), "00h-0ah");
    EXPECT_EQ(prop<String>(drive, "Name"), "PD:00h-0ah");
    EXPECT_EQ(prop<String>(drive, "ElementName"), "Disk Drive(DeviceID=00h-0ah)");
    EXPECT_EQ(prop<String>(drive, "Description"), "A disk drive whose number is 00h-0ah");
    EXPECT_EQ(prop<Uint64>(drive, "MaxMediaSize"), 1000u);
    EXPECT_EQ(prop<Uint16>(drive, "EnabledState"), 3);
    EXPECT_EQ(uint16s(drive, "OperationalStatus"), (std::vector<Uint16>{10}));
    EXPECT_EQ(drive.getPath().getKeyBindings().size(), 4u);

    struct Row {
        const char* state;
        Uint16 enabled;
    };
    for (const Row& row : {Row{"ready", 2}, Row{"attn.(powering up)", 10}, Row{"fault", 3}, Row{"odd", 3}}) {
        pd->state = row.state;
        EXPECT_EQ(prop<Uint16>(model.WrapInstance(&args), "EnabledState"), row.enabled) << row.state;
    }

    pd->classification = "spare";
    ParentArgs parent(args, drive.getPath());
    StorageExtent extent;
    CIMInstance e = extent.WrapInstance(parent);
    EXPECT_EQ(propertyNames(e).size(), 24u);
    EXPECT_EQ(prop<String>(e, "DeviceID"), "00h-0ah");
    EXPECT_EQ(prop<String>(e, "Name"), "StorageExtent(00h-0ah)");
    EXPECT_EQ(prop<String>(e, "Description"), "A Storage Extent whose number is 00h-0ah.");
    EXPECT_EQ(prop<Uint64>(e, "NumberOfBlocks"), 1000000u / 512);
    EXPECT_EQ(prop<Uint64>(e, "ConsumableBlocks"), 0u);
    EXPECT_EQ(prop<Uint16>(e, "Usage"), 14);
    EXPECT_TRUE(prop<Boolean>(e, "Primordial"));

    DacRawData dac;
    DataEventArgs wrong(context, &dac, nullptr, WWN);
    try {
        model.WrapInstance(&wrong);
        FAIL() << "a controller record made a disk";
    } catch (const CIMException& ex) {
        EXPECT_EQ(ex.getCode(), CIM_ERR_INVALID_PARAMETER);
    }
}

TEST_F(DiskDriveTest, ADiskComesWithItsExtentLinksAndIndexEntry) {
    PdRawData* pd = Pd("00-0a", 1000000);
    CIMObjectPath drive = Create(pd);
    CIMObjectPath extent = Model::AdjustObjectPath(StorageExtent::WrapReference("00-0a", WWN));
    ASSERT_TRUE(repository->has(drive));
    ASSERT_TRUE(repository->has(extent));
    EXPECT_EQ(repository->referring("ORV_Storage_SystemDevice", drive, "PartComponent"), 1u);
    EXPECT_EQ(repository->referring("ORV_Storage_SystemDevice", extent, "PartComponent"), 1u);
    EXPECT_EQ(repository->referring("ORV_Storage_MediaPresent", extent, "Dependent"), 1u);
    EXPECT_EQ(repository->referring("ORV_Storage_AssociatedRemainingExtent", extent, "PartComponent"), 1u);
    EXPECT_EQ(PDmanager::Instance()->GetConsumableSumPDSize(), 1000000u);

    // The disk joins a pool and fails: the extent leaves the free ones, and
    // the health change is an alert.
    EnableIndications(true);
    PdRawData* pooled = Pd("00-0a", 1000000, "data", "01", "fault");
    Modify(pooled, pd);
    EXPECT_EQ(uint16s(repository->get(drive), "OperationalStatus"), (std::vector<Uint16>{6}));
    EXPECT_EQ(prop<Uint16>(repository->get(extent), "Usage"), 18);
    EXPECT_EQ(repository->referring("ORV_Storage_AssociatedRemainingExtent", extent, "PartComponent"), 0u);
    EXPECT_EQ(PDmanager::Instance()->GetSumPDSizeOfPool("0001"), 1000000u);
    EXPECT_FALSE(indications.named("CIM_AlertIndication").empty());

    Delete(pooled);
    EXPECT_FALSE(repository->has(drive));
    EXPECT_FALSE(repository->has(extent));
    for (const char* cls : {"ORV_Storage_SystemDevice", "ORV_Storage_MediaPresent",
                            "ORV_Storage_AssociatedComponentExtent", "ORV_Storage_ConcreteComponent"})
        EXPECT_EQ(repository->count(cls), 0u) << cls;
    EXPECT_EQ(PDmanager::Instance()->GetSumPDSize(), 0u);
    EXPECT_EQ(indications.named("CIM_InstDeletion").size(), 1u);
}

}  // namespace
