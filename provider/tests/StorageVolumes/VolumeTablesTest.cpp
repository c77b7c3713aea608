// The fixed tables of volumes and composite extents: states, redundancy by
// RAID code, layouts and the geometry of each RAID text.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CompositeExtent.h"
#include "StorageVolume.h"
#include "VolumeTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;
using modeltest::prop;
using modeltest::uint16s;

namespace {

TEST(VolumeStateTable, EachLdStateMapsToItsStatusAndHealth) {
    struct Row {
        const char* state;
        Uint16 operational;
        Uint16 extent;
        Uint16 health;
    };
    const Row rows[] = {
        {"ready", 2, 0, 5},
        {"ready(formatting)", 2, 0, 5},
        {"attn.(preventive copy)", 2, 0, 5},
        {"attn.(copy back)", 2, 0, 5},
        {"attn.(expanding)", 2, 0, 5},
        {"attn.(expand-fail)", 2, 0, 5},
        {"attn.(erasing)", 2, 0, 5},
        {"attn.(erase-cancel)", 2, 0, 5},
        {"attn.(erase-fail)", 2, 0, 5},
        {"attn.(erase-end)", 2, 0, 5},
        {"attn.(reduce)", 3, 0, 10},
        {"attn.(over capacity)", 3, 0, 10},
        {"fault(over quota)", 3, 0, 10},
        {"fault(over capacity)", 3, 0, 10},
        {"attn.(rebuilding)", 3, 11, 10},
        {"attn.(unformatted)", 8, 10, 10},
        {"attn.(formatting)", 8, 10, 10},
        {"attn.(format-fail)", 6, 3, 20},
        {"fault", 6, 3, 20},
        {"fault(media error)", 6, 3, 20},
        {"fault(system area fault)", 6, 3, 20},
        {"attn.(stop)", 15, 0, 0},
        // The whole text counts: near misses are unknown.
        {"Ready", 0, 1, 0},
        {"ready ", 0, 1, 0},
        {"fault(other)", 0, 1, 0},
        {"", 0, 1, 0},
    };
    for (const Row& row : rows) {
        Array<Uint16> operational;
        Array<Uint16> extent;
        Uint16 health = 99;
        StorageVolume::mapState(row.state, operational, extent, health);
        ASSERT_EQ(operational.size(), 1u) << row.state;
        ASSERT_EQ(extent.size(), 1u) << row.state;
        EXPECT_EQ(operational[0], row.operational) << row.state;
        EXPECT_EQ(extent[0], row.extent) << row.state;
        EXPECT_EQ(health, row.health) << row.state;
    }
}

TEST(VolumeRedundancyTable, RaidCodesGiveDataAndPackageRedundancy) {
    const int rows[][3] = {{2, 2, 1}, {6, 1, 1}, {8, 1, 2}, {10, 3, 2}, {1, 0, 0}, {4, 0, 0}, {0, 0, 0}, {-3, 0, 0}};
    for (const auto& row : rows) {
        Uint16 data = 99;
        Uint16 package = 99;
        StorageVolume::mapRedundancy(row[0], data, package);
        EXPECT_EQ(data, row[1]) << row[0];
        EXPECT_EQ(package, row[2]) << row[0];
    }
}

TEST(VolumeNames, NameDropsFourCharactersAndCapitalises) {
    EXPECT_EQ(StorageVolume::volumeName("2000000991000012", "00a1"), "000991000012" "00A1");
    EXPECT_EQ(StorageVolume::volumeName("abcdef", "1f"), "EF1F");
    // An id shorter than what is cut leaves the LD number alone.
    EXPECT_EQ(StorageVolume::volumeName("abc", "1f"), "1F");
    EXPECT_EQ(StorageVolume::CreateElementName("001f", "db01"), "LD001fh:[db01]");
}

TEST(VolumeNames, OnlyTheLdSetGroupsGrantInBandAccess) {
    const std::pair<const char*, bool> rows[] = {
        {"LD Set(iSCSI)", true}, {"LD Set(FC)", true}, {"LD Set(SAS)", true}, {"LD Set", true},
        {"LD Set(FC), LD Set(iSCSI)", true}, {"", false}, {"LD Set(iSCSI), LD Set(FC)", false},
        {"ld set", false}, {"Pool", false},
    };
    for (const auto& row : rows) {
        LdRawData ld;
        ld.group = row.first;
        EXPECT_EQ(StorageVolume::IsInBandAccessGranted(&ld), row.second) << row.first;
    }
    EXPECT_FALSE(StorageVolume::IsInBandAccessGranted(nullptr));
}

TEST(CompositeExtentLayout, LevelsBaseSizesAndSlaveTexts) {
    struct Row {
        const char* raid;
        Uint32 disks;
        int layout;
        int perBase;
        const char* slave;
    };
    const Row rows[] = {
        {"RAID5(2+P)", 30, 1, 3, "RAID5(2+P)"},
        {"RAID5(4+P)", 30, 1, 5, "RAID5(4+P)"},
        {"RAID5(8+P)", 30, 1, 9, "RAID5(8+P)"},
        {"RAID6(4+PQ)", 30, 1, 6, "RAID6(4+PQ)"},
        {"RAID6(8+PQ)", 30, 1, 10, "RAID6(8+PQ)"},
        {"RAID1", 30, 1, -1, "RAID1"},
        {"RAID-TMC", 30, 1, -1, "RAID-TMC"},
        {"RAID0", 30, 1, -1, "RAID0"},
        {"RAID5/50(2+P)", 5, 1, 3, "RAID5(2+P)"},
        {"RAID5/50(2+P)", 6, 2, 3, "RAID5(2+P)"},
        {"RAID5/50(4+P)", 9, 1, 5, "RAID5(4+P)"},
        {"RAID5/50(4+P)", 10, 2, 5, "RAID5(4+P)"},
        {"RAID5/50(8+P)", 17, 1, 9, "RAID5(8+P)"},
        {"RAID5/50(8+P)", 18, 2, 9, "RAID5(8+P)"},
        {"RAID6/60(4+PQ)", 11, 1, 6, "RAID6(4+PQ)"},
        {"RAID6/60(4+PQ)", 12, 2, 6, "RAID6(4+PQ)"},
        {"RAID6/60(8+PQ)", 19, 1, 10, "RAID6(8+PQ)"},
        {"RAID6/60(8+PQ)", 20, 2, 10, "RAID6(8+PQ)"},
        {"RAID1/10", 2, 1, -1, "RAID1"},
        {"RAID1/10", 4, 2, -1, "RAID1"},
        {"RAID-TM", 5, 1, -1, "RAID-TMC"},
        {"RAID-TM", 6, 2, -1, "RAID-TMC"},
        {"RAID3", 6, -1, -1, "RAID3"},
        {"", 6, -1, -1, ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(CompositeExtent::getNumberOfLayout(row.raid, row.disks), row.layout) << row.raid << " " << row.disks;
        EXPECT_EQ(CompositeExtent::getPdOfBaseNum(row.raid), row.perBase) << row.raid;
        EXPECT_EQ(CompositeExtent::getSlaveRaidType(row.raid), row.slave) << row.raid;
    }
}

class CompositeExtentWrap : public volumetest::VolumeFixture {};

TEST_F(CompositeExtentWrap, GeometryFollowsTheRaidText) {
    struct Row {
        const char* raid;
        Uint32 n;
        Uint64 blocks;
        Uint64 stripe;
        Uint16 data;
        Uint16 package;
        bool noSpof;
        const char* nameRaid;
    };
    const Uint64 B = 1000;
    const Row rows[] = {
        {"RAID0", 3, 3 * B, 3, 1, 0, false, "RAID0"},
        {"RAID1", 2, B, 1, 2, 1, true, "RAID1"},
        {"RAID1/10", 6, 3 * B, 3, 2, 1, true, "RAID1/10"},
        {"RAID5(4+P)", 5, 4 * B, 5, 1, 1, true, "RAID5(4+P)"},
        {"RAID5(2+P)", 7, (7 * 2 / 3) * B, 7, 1, 1, true, "RAID5(2+P)"},
        {"RAID6(8+PQ)", 10, 8 * B, 10, 1, 2, true, "RAID6(8+PQ)"},
        {"RAID-TM", 6, 2 * B, 2, 3, 2, true, "RAID-TM"},
        {"RAID-TMC", 6, 2 * B, 1, 3, 2, true, "RAID-TM"},
        {"RAID5/50(4+P)", 10, 8 * B, 2, 1, 1, true, "RAID5/50(4+P)"},
        {"RAID6/60(4+PQ)", 12, 8 * B, 2, 1, 2, true, "RAID6/60(4+PQ)"},
        {"RAID3", 4, 4 * B, 0, 1, 0, true, "UNKOWN"},
    };
    for (const Row& row : rows) {
        DataEventArgs event(context, nullptr, nullptr, volumetest::ARRAY_ID);
        CompositeExtentArgs args(event);
        args.poolNo = "0001";
        args.poolState = "ready";
        args.raidType = row.raid;
        args.pdCount = row.n;
        args.pdBlocks = B;
        args.pdsPerBase = CompositeExtent::getPdOfBaseNum(row.raid);
        args.consumableBlocks = 77;
        CIMInstance ce = CompositeExtent::WrapInstance(args);
        EXPECT_EQ(prop<Uint64>(ce, "NumberOfBlocks"), row.blocks) << row.raid;
        EXPECT_EQ(prop<Uint64>(ce, "ExtentStripeLength"), row.stripe) << row.raid;
        EXPECT_EQ(prop<Uint16>(ce, "DataRedundancy"), row.data) << row.raid;
        EXPECT_EQ(prop<Uint16>(ce, "PackageRedundancy"), row.package) << row.raid;
        EXPECT_EQ(prop<Boolean>(ce, "NoSinglePointOfFailure"), row.noSpof) << row.raid;
        EXPECT_EQ(prop<Boolean>(ce, "IsBasedOnUnderlyingRedundancy"), row.noSpof) << row.raid;
        EXPECT_EQ(prop<Uint64>(ce, "ConsumableBlocks"), 77u);
        const std::string name = std::string("Composite Extent(RAID=") + row.nameRaid + ", DeviceID=0001h)";
        EXPECT_EQ(prop<String>(ce, "Name").toUtf8(), name);
        EXPECT_EQ(prop<String>(ce, "ElementName").toUtf8(), name);
        EXPECT_EQ(prop<String>(ce, "Description").toUtf8(),
                  std::string("A composite extent of ") + row.nameRaid + " with DeviceID=0001h");
    }
    // A base set that holds nothing but parity counts no blocks instead of dividing by zero.
    DataEventArgs event(context, nullptr, nullptr, volumetest::ARRAY_ID);
    CompositeExtentArgs args(event);
    args.poolNo = "0001";
    args.raidType = "RAID6(4+PQ)";
    args.pdCount = 6;
    args.pdBlocks = B;
    for (Sint32 perBase : {0, 2, -1}) {
        args.pdsPerBase = perBase;
        EXPECT_EQ(modeltest::prop<Uint64>(CompositeExtent::WrapInstance(args), "NumberOfBlocks"), 0u) << perBase;
    }
}

TEST_F(CompositeExtentWrap, PoolStateGivesExtentStatusAndHealth) {
    struct Row {
        const char* state;
        std::vector<Uint16> extent;
        Uint16 health;
    };
    const Row rows[] = {
        {"ready", {}, 5},
        {"attn.(reduce)", {}, 10},
        {"attn.(preventive copy)", {}, 10},
        {"attn.(copy back)", {}, 10},
        {"attn.(stop)", {}, 10},
        {"attn.(rebuilding)", {11}, 10},
        {"fault", {4}, 20},
        {"fault(over capacity)", {4}, 20},
        {"attn.(expanding)", {1}, 0},
    };
    for (const Row& row : rows) {
        DataEventArgs event(context, nullptr, nullptr, volumetest::ARRAY_ID);
        CompositeExtentArgs args(event);
        args.poolNo = "0002";
        args.poolState = row.state;
        args.raidType = "RAID1";
        args.pdCount = 2;
        args.pdBlocks = 10;
        CIMInstance ce = CompositeExtent::WrapInstance(args);
        EXPECT_EQ(uint16s(ce, "ExtentStatus"), row.extent) << row.state;
        EXPECT_EQ(prop<Uint16>(ce, "HealthState"), row.health) << row.state;
        EXPECT_EQ(ce.findProperty(CIMName("OperationalStatus")), PEG_NOT_FOUND);
    }
}

}  // namespace
