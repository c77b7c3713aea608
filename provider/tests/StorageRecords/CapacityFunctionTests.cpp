#include <gtest/gtest.h>

#include <list>
#include <string>
#include <vector>

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Exception.h>

#include "CreatePoolAndLdAssistFun.h"
#include "LdRawData.h"
#include "PDmanager.h"
#include "PdRawData.h"
#include "PoolRawData.h"
#include "RawDataCenter.h"
#include "StorageRecordsTestSupport.h"

using namespace orvsmis;

namespace {

const unsigned long long G = 1ULL << 30;

PdRawData makeDisk(const std::string& pdn, const std::string& type, unsigned long long capacity,
                   const std::string& state = "ready", const std::string& classification = "not set") {
    PdRawData d;
    d.name = d.PDN = pdn;
    d.arrayId = "W1";
    d.type = type;
    d.PDCapacity = capacity;
    d.state = state;
    d.classification = classification;
    d.rankGroupNumber = classification == "not set" ? "--" : "0000";
    return d;
}

// Disks that stand outside the process-wide index, for the list forms.
class LocalDisks {
public:
    LocalDisks(size_t count, unsigned long long capacity) {
        for (size_t i = 0; i < count; ++i) {
            char pdn[8];
            std::snprintf(pdn, sizeof pdn, "00-%02zx", i);
            m_records.push_back(makeDisk(pdn, "SAS", capacity));
        }
        for (PdRawData& r : m_records) {
            structPDInfo info;
            info.pData = &r;
            m_infos.push_back(info);
        }
        for (structPDInfo& info : m_infos) list.push_back(&info);
    }
    std::vector<bool> Selected() const {
        std::vector<bool> flags;
        for (const structPDInfo& info : m_infos) flags.push_back(info.selected);
        return flags;
    }

    std::list<structPDInfo*> list;

private:
    std::list<PdRawData> m_records;
    std::list<structPDInfo> m_infos;
};

// The process-wide disk index, emptied around each test that fills it.
class DiskIndexTest : public ::testing::Test {
protected:
    void SetUp() override { PDmanager::Instance()->Destroy(); }
    void TearDown() override { PDmanager::Instance()->Destroy(); }
    void Add(const PdRawData& d) { PDmanager::Instance()->AddData(&d, Pegasus::CIMObjectPath()); }
    // Four free FC disks of 100 GiB in group 01, plus one failed and one in
    // a pool; three free SAS disks of 200 GiB in group 00.
    void AddMixedDisks() {
        for (const char* pdn : {"01-00", "01-01", "01-02", "01-03"}) Add(makeDisk(pdn, "FC", 100 * G));
        Add(makeDisk("01-04", "FC", 100 * G, "fault"));
        Add(makeDisk("01-05", "FC", 100 * G, "ready", "pool"));
        for (const char* pdn : {"00-00", "00-01", "00-02"}) Add(makeDisk(pdn, "SAS", 200 * G));
    }
};

}  // namespace

TEST(CapacityArithmetic, DisksOfOneRaidGroup) {
    struct Row {
        int raid;
        unsigned int count;
        int base;
    } rows[] = {
        {2, 0, 0},  {2, 1, 0},  {2, 2, 2},  {2, 7, 2},   {6, 2, 0},   {6, 3, 3},  {6, 4, 3},  {6, 5, 5},
        {6, 8, 5},  {6, 9, 9},  {6, 40, 9}, {8, 5, 0},   {8, 6, 6},   {8, 9, 6},  {8, 10, 10}, {8, 30, 10},
        {10, 2, 0}, {10, 3, 3}, {10, 12, 3}, {0, 10, 0}, {5, 10, 0},  {-1, 10, 0},
    };
    for (const Row& row : rows)
        EXPECT_EQ(GetBasePdSize(row.raid, row.count), row.base) << "raid " << row.raid << " count " << row.count;
}

TEST(CapacityArithmetic, UsableBytesOfRawBytes) {
    struct Row {
        int raid;
        unsigned int base;
        unsigned long long total;
        bool ok;
        unsigned long long usable;
    } rows[] = {
        {2, 2, 1000, true, 500},
        {6, 3, 1000, true, 666},
        {6, 5, 1000, true, 800},
        {6, 9, 900, true, 800},
        {8, 6, 600, true, 400},
        {8, 10, 1000, true, 800},
        {10, 3, 1000, true, 333},
        // Multiplied first: 7 x 4 / 5 is 5, not 7 / 5 x 4 = 4.
        {6, 5, 7, true, 5},
        // No overflow for the largest raw size.
        {6, 9, 0xFFFFFFFFFFFFFFFFULL, true, 16397105843297379213ULL},
        {6, 1, 1000, false, 0},
        {6, 0, 1000, false, 0},
        {4, 5, 1000, false, 0},
    };
    for (const Row& row : rows) {
        unsigned long long out = 0;
        EXPECT_EQ(GetUsableSize(row.raid, row.base, row.total, out), row.ok) << row.raid << "/" << row.base;
        if (row.ok) EXPECT_EQ(out, row.usable) << row.raid << "/" << row.base;
    }
}

TEST(CapacityArithmetic, WorkSpaceOfTheRaidGroups) {
    struct Row {
        int raid;
        unsigned int base;
        unsigned int count;
        unsigned long long space;
    } rows[] = {
        {2, 2, 2, 4 * G}, {2, 2, 5, 8 * G}, {6, 5, 8, 2 * G}, {6, 3, 9, 6 * G},
        {8, 6, 5, 0},     {8, 6, 12, 4 * G}, {10, 3, 7, 4 * G}, {7, 3, 6, 4 * G},
    };
    for (const Row& row : rows) {
        unsigned long long out = 1;
        SubWorkSpaceFromPool(row.raid, row.base, row.count, out);
        EXPECT_EQ(out, row.space) << row.raid << "/" << row.base << "/" << row.count;
    }
    unsigned long long out = 0;
    try {
        SubWorkSpaceFromPool(6, 0, 3, out);
        ADD_FAILURE() << "a base of 0 must be refused";
    } catch (const Pegasus::CIMException& e) {
        EXPECT_NE(std::string(e.getMessage().getCString()).find("SMIS Provider internal error."), std::string::npos);
    }
}

TEST(CapacityArithmetic, SizesAPoolCouldReach) {
    struct Row {
        const char* label;
        int raid;
        unsigned int base;
        unsigned long long pdSize;
        unsigned int existing;
        unsigned int free;
        std::vector<unsigned long long> sizes;
    } rows[] = {
        {"RAID1 from 2 disks", 2, 0, 10 * G, 0, 4, {6 * G, 11 * G, 12 * G}},
        {"RAID5 groups grow from 3 to 5 to 9", 6, 0, 45 * G, 0, 10,
         {88 * G, 118 * G, 178 * G, 214 * G, 250 * G, 286 * G, 358 * G, 398 * G}},
        {"RAID6 with a fixed group of 6 and 6 disks in the pool", 8, 6, 6 * G, 6, 2, {22 * G, 26 * G, 30 * G}},
        {"RAID6 with too few disks", 8, 0, 6 * G, 0, 5, {}},
        {"RAID-TM", 10, 0, 3 * G, 1, 3, {1 * G, 2 * G}},
        {"disks the work space eats up", 2, 0, 1 * G, 0, 2, {}},
        {"unknown RAID", 3, 0, 10 * G, 0, 10, {}},
    };
    for (const Row& row : rows) {
        std::vector<unsigned long long> list;
        EXPECT_EQ(GetUsableSizeList(row.raid, row.base, row.pdSize, row.existing, row.free, list), !row.sizes.empty())
            << row.label;
        EXPECT_EQ(list, row.sizes) << row.label;
    }
}

TEST(CapacityArithmetic, RaidFiveOnEightDisks) {
    // Eight disks of RAID5 form groups of five: 8 x size x 4/5, less one
    // group's work space.
    std::vector<unsigned long long> list;
    ASSERT_TRUE(GetUsableSizeList(6, 0, 100 * G, 0, 8, list));
    ASSERT_EQ(list.size(), 6u);
    EXPECT_EQ(list.back(), 8 * 100 * G * 4 / 5 - 2 * G);
}

TEST(CapacityArithmetic, ChoosingDisksFromAList) {
    struct Row {
        const char* label;
        unsigned long long size;
        int raid;
        unsigned long long existing;
        unsigned int count;
        bool ok;
        std::vector<std::string> chosen;
    } rows[] = {
        {"smallest group suffices", 198 * G, 6, 0, 0, true, {"00-00", "00-01", "00-02"}},
        {"one disk more", 199 * G, 6, 0, 0, true, {"00-00", "00-01", "00-02", "00-03"}},
        {"nothing asked", 0, 2, 0, 0, true, {"00-00", "00-01"}},
        {"too big", 10000 * G, 6, 0, 0, false, {}},
        // A pool of 3 disks that grows: 4 disks give 264 GiB, 5 give 398.
        {"growing pool", 300 * G, 6, 198 * G, 3, true, {"00-00", "00-01"}},
        {"growing pool named by count only", 300 * G, 6, 0, 3, true, {"00-00", "00-01"}},
        {"unknown RAID", 1 * G, 4, 0, 0, false, {}},
    };
    for (const Row& row : rows) {
        LocalDisks disks(6, 100 * G);
        std::vector<std::string> chosen;
        EXPECT_EQ(getPdList(row.size, row.raid, disks.list, chosen, row.existing, 100 * G, row.count), row.ok)
            << row.label;
        EXPECT_EQ(chosen, row.chosen) << row.label;
        std::vector<bool> flags = disks.Selected();
        for (size_t i = 0; i < flags.size(); ++i) EXPECT_EQ(flags[i], i < row.chosen.size()) << row.label << " " << i;
    }
    std::list<structPDInfo*> none;
    std::vector<std::string> chosen;
    EXPECT_FALSE(getPdList(1, 6, none, chosen, 0, 100 * G, 0));
    EXPECT_TRUE(chosen.empty());
}

TEST(CapacityArithmetic, CuttingDiskListsForTheCommandLine) {
    struct Row {
        std::vector<std::string> ids;
        unsigned int size;
        std::vector<std::string> batches;
    } rows[] = {
        {{"00-01", "00-02", "00-1a"}, 2, {"01h,02h", "1ah"}},
        {{"00-01", "00-02"}, 2, {"01h,02h"}},
        {{"00-0004"}, 60, {"0004h"}},
        {{}, 60, {}},
        {{"00-01"}, 0, {}},
    };
    for (const Row& row : rows) {
        std::vector<std::string> batches;
        EXPECT_EQ(ConverPdList(row.ids, batches, row.size), static_cast<int>(row.batches.size()));
        EXPECT_EQ(batches, row.batches);
    }
    std::vector<std::string> many;
    for (int i = 0; i < 130; ++i) many.push_back("00-" + std::to_string(i));
    std::vector<std::string> batches;
    EXPECT_EQ(ConverPdList(many, batches, 60), 3);
    EXPECT_EQ(batches[2], "120h,121h,122h,123h,124h,125h,126h,127h,128h,129h");
}

TEST(CapacityArithmetic, PoolCapacityWithAddedDisks) {
    struct Row {
        const char* label;
        std::vector<unsigned long long> existing;
        std::vector<unsigned long long> added;
        int raid;
        bool ok;
        unsigned long long capacity;
    } rows[] = {
        {"new RAID5 pool", {}, {100 * G, 100 * G, 100 * G}, 6, true, 198 * G},
        {"new pool of mixed disks", {}, {120 * G, 90 * G, 90 * G}, 6, true, 200 * G - 2 * G},
        {"grown pool", {100 * G, 100 * G, 100 * G}, {150 * G}, 6, true, 300 * G - 2 * G},
        {"added disk too small", {100 * G, 100 * G, 100 * G}, {50 * G}, 6, false, 0},
        {"too few disks for RAID6", {}, {100 * G, 100 * G, 100 * G}, 8, false, 0},
        {"unknown RAID", {}, {100 * G, 100 * G, 100 * G}, 1, false, 0},
    };
    for (const Row& row : rows) {
        std::list<PdRawData> records;
        std::list<structPDInfo> infos;
        std::list<const structPDInfo*> existing;
        std::list<structPDInfo*> added;
        for (size_t i = 0; i < row.existing.size() + row.added.size(); ++i) {
            bool old = i < row.existing.size();
            records.push_back(makeDisk("00-0" + std::to_string(i), "SAS",
                                       old ? row.existing[i] : row.added[i - row.existing.size()]));
            infos.push_back(structPDInfo());
            infos.back().pData = &records.back();
            if (old)
                existing.push_back(&infos.back());
            else
                added.push_back(&infos.back());
        }
        unsigned long long capacity = 0;
        EXPECT_EQ(computePoolCapacity(existing, added, row.raid, capacity), row.ok) << row.label;
        if (row.ok) EXPECT_EQ(capacity, row.capacity) << row.label;
    }
}

TEST_F(DiskIndexTest, NewPoolTakesTheFirstKindThatFits) {
    AddMixedDisks();
    // FC comes before SAS in the search: three FC disks of 100 GiB give 198.
    std::vector<std::string> first;
    ASSERT_TRUE(getPdList(150 * G, 6, first));
    EXPECT_EQ(first, (std::vector<std::string>{"01-00", "01-01", "01-02"}));
    // Claimed disks are not offered again: one FC disk is left, so SAS.
    std::vector<std::string> second;
    ASSERT_TRUE(getPdList(150 * G, 6, second));
    EXPECT_EQ(second, (std::vector<std::string>{"00-00", "00-01", "00-02"}));
    std::vector<std::string> third;
    EXPECT_FALSE(getPdList(1, 6, third));
    EXPECT_TRUE(third.empty());
    // A size no kind can give takes nothing.
    PDmanager::Instance()->Destroy();
    AddMixedDisks();
    std::vector<std::string> tooBig;
    EXPECT_FALSE(getPdList(1000 * G, 6, tooBig));
    std::list<structPDInfo*> stillFree;
    EXPECT_TRUE(PDmanager::Instance()->GetPdListByType("FC", stillFree));
    EXPECT_EQ(stillFree.size(), 4u);
}

TEST_F(DiskIndexTest, SizesOfANewPoolOverAllKinds) {
    std::vector<unsigned long long> list;
    EXPECT_FALSE(GetUsableSizeList(6, list));
    EXPECT_TRUE(list.empty());
    AddMixedDisks();
    // Three SSDs of 100 GiB give what three FC disks give: listed once.
    for (const char* pdn : {"02-00", "02-01", "02-02"}) Add(makeDisk(pdn, "SSD", 100 * G));
    ASSERT_TRUE(GetUsableSizeList(6, list));
    EXPECT_EQ(list, (std::vector<unsigned long long>{198 * G, 400 * G * 2 / 3 - 2 * G, 398 * G}));
    std::vector<unsigned long long> unknown;
    EXPECT_FALSE(GetUsableSizeList(5, unknown));
    std::vector<unsigned long long> raid6;
    EXPECT_FALSE(GetUsableSizeList(8, raid6));
}

TEST_F(DiskIndexTest, DisksNamedByTheirExtents) {
    AddMixedDisks();
    const std::string prefix = "ORV_Storage_StorageExtent.CreationClassName=\"ORV_Storage_StorageExtent\",DeviceID=";
    const std::string suffix = ",SystemCreationClassName=\"ORV_Storage_ComputerSystem\",SystemName=\"W1\"";

    std::list<structPDInfo*> disks;
    ASSERT_TRUE(getPdList(std::vector<std::string>{prefix + "\"01H-02H\"" + suffix, prefix + "\"00h-01h\"" + suffix},
                          disks));
    ASSERT_EQ(disks.size(), 2u);
    for (structPDInfo* d : disks) EXPECT_TRUE(d->selected);
    EXPECT_EQ(disks.front()->pData->PDN, "01-02");
    EXPECT_EQ(disks.back()->pData->PDN, "00-01");

    struct Row {
        const char* label;
        std::vector<std::string> extents;
    } refused[] = {
        {"one unknown", {prefix + "\"01h-03h\"" + suffix, prefix + "\"07h-07h\"" + suffix}},
        {"already claimed", {prefix + "\"01h-02h\"" + suffix}},
        {"failed disk", {prefix + "\"01h-04h\"" + suffix}},
        {"disk of a pool", {prefix + "\"01h-05h\"" + suffix}},
        {"the same disk twice", {prefix + "\"01h-03h\"" + suffix, prefix + "\"01h-03h\"" + suffix}},
        {"no device id", {"ORV_Storage_StorageExtent.SystemName=\"W1\""}},
        {"no extents", {}},
    };
    for (const Row& row : refused) {
        std::list<structPDInfo*> none;
        EXPECT_FALSE(getPdList(row.extents, none)) << row.label;
        EXPECT_TRUE(none.empty()) << row.label;
    }
    // The refusals gave their claims back: 01-03 is free as before.
    std::list<structPDInfo*> fc;
    ASSERT_TRUE(PDmanager::Instance()->GetPdListByType("FC", fc));
    EXPECT_EQ(fc.size(), 3u);

    clearPdSelectedFlag(disks);
    for (structPDInfo* d : disks) EXPECT_FALSE(d->selected);
}

TEST(CapacityArithmetic, LowestFreeNumbers) {
    RawDataCenter* center = RawDataCenter::Instance();
    center->Destroy();
    std::vector<RawData*> mine;
    auto add = [&](int type, const std::string& array, const std::string& name) {
        RawData* r = RawDataFactory::CreateInstance(type);
        r->name = name;
        r->arrayId = array;
        center->AddData(r, array);
        mine.push_back(r);
    };
    char buffer[16];
    ASSERT_TRUE(GetLDUID("W1", buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "0000");

    for (const char* array : {"W1", "W2", "W3"}) add(RAWDATA_ARRAY, array, array);
    for (const char* n : {"0000", "0001", "0003"}) add(RAWDATA_LD, "W1", n);
    add(RAWDATA_LD, "W2", "0002");
    for (const char* n : {"0000", "0001", "0002"}) add(RAWDATA_POOL, "W1", n);
    add(RAWDATA_POOL, "W2", "0003");
    ASSERT_TRUE(GetLDUID("W1", buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "0002");
    ASSERT_TRUE(GetPLUID("W1", buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "0003");
    ASSERT_TRUE(GetPLUID("W2", buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "0000");
    // Numbers far above the count do not block the low ones.
    add(RAWDATA_LD, "W3", "00ff");
    add(RAWDATA_LD, "W3", "zz");
    ASSERT_TRUE(GetLDUID("W3", buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "0000");

    char small[5];
    EXPECT_TRUE(GetLDUID("W1", small, sizeof small));
    EXPECT_STREQ(small, "0002");
    EXPECT_FALSE(GetLDUID("W1", small, 4));
    EXPECT_FALSE(GetPLUID("W1", nullptr, 16));

    center->Destroy();
    ReleaseRawDataList(mine);
}

TEST_F(DiskIndexTest, KindsAreUsedInTheirFixedOrder) {
    const std::vector<std::string> order = {"FC",       "ATA",      "SAS",        "SSD",   "SSD(ATA)",  "NLSAS",
                                            "SAS(SED)", "SSD(SED)", "NLSAS(SED)", "AFSAS", "AFSAS(SED)"};
    // Two disks of each kind, added in reverse order, the kind's place in
    // the search as their group number; each new RAID1 pool takes the next.
    for (size_t i = order.size(); i-- > 0;) {
        char group[3];
        std::snprintf(group, sizeof group, "%02zx", i);
        for (const char* number : {"00", "01"}) Add(makeDisk(std::string(group) + "-" + number, order[i], 10 * G));
    }
    Add(makeDisk("20-00", "SATA", 10 * G));
    Add(makeDisk("20-01", "SATA", 10 * G));
    for (size_t i = 0; i < order.size(); ++i) {
        std::vector<std::string> chosen;
        ASSERT_TRUE(getPdList(1, 2, chosen)) << order[i];
        char group[3];
        std::snprintf(group, sizeof group, "%02zx", i);
        EXPECT_EQ(chosen, (std::vector<std::string>{std::string(group) + "-00", std::string(group) + "-01"}))
            << order[i];
    }
    // A kind outside the list is never offered.
    std::vector<std::string> none;
    EXPECT_FALSE(getPdList(1, 2, none));
}
