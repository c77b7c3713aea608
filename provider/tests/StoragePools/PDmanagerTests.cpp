// The disk index: pool lists, free disk selection, sums and the moves of a
// disk between lists when its record changes.

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "PoolTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;

namespace {

class PDmanagerTest : public pooltest::PoolFixture {
protected:
    PDmanager* index = PDmanager::Instance();

    static std::vector<unsigned long long> capacities(const std::list<const structPDInfo*>& disks) {
        std::vector<unsigned long long> out;
        for (const structPDInfo* d : disks) out.push_back(d->pData->PDCapacity);
        return out;
    }
    static std::vector<std::string> numbers(const std::list<structPDInfo*>& disks) {
        std::vector<std::string> out;
        for (const structPDInfo* d : disks) out.push_back(d->pData->PDN);
        return out;
    }
    std::vector<std::string> freeOfType(const std::string& type) {
        std::list<structPDInfo*> disks;
        index->GetPdListByType(type, disks);
        return numbers(disks);
    }
};

TEST_F(PDmanagerTest, PoolListPutsOnlyTheSmallestSoFarInFront) {
    AddPd("00-00", 5, "pool", "01");
    AddPd("00-01", 3, "pool", "01");
    AddPd("00-02", 4, "pool", "01");
    std::list<const structPDInfo*> disks;
    ASSERT_TRUE(index->GetPDListByPool("01", disks));
    EXPECT_EQ(capacities(disks), (std::vector<unsigned long long>{3, 5, 4}));
    std::list<Uint64> copied;
    ASSERT_TRUE(index->GetPDCapacitiesByPool("0001", copied));
    EXPECT_EQ(std::vector<Uint64>(copied.begin(), copied.end()), (std::vector<Uint64>{3, 5, 4}));

    std::list<CIMObjectPath> paths;
    ASSERT_TRUE(index->GetPDListByPool("01", paths));
    ASSERT_EQ(paths.size(), 3u);
    EXPECT_TRUE(paths.front() == ExtentPath("00-01"));

    std::list<const structPDInfo*> none;
    EXPECT_FALSE(index->GetPDListByPool("05", none));
    EXPECT_FALSE(index->GetPDListByPool("", none));
}

TEST_F(PDmanagerTest, PoolNumbersOfEveryWidthFindTheSameDisks) {
    // Pool records say 0001 where their disks say 01; free disks report a
    // group number too but belong to no pool.
    AddPd("00-00", 100, "pool", "01");
    AddPd("00-01", 100, "pool", "01");
    AddPd("00-02", 70, "pool", "00");
    AddPd("00-03", 1000, "not set", "00");
    EXPECT_EQ(index->GetSumPDSizeOfPool("0001"), 200u);
    EXPECT_EQ(index->GetSumPDSizeOfPool("01"), 200u);
    EXPECT_EQ(index->GetSumPDSizeOfPool("0000"), 70u);
    EXPECT_EQ(index->GetSumPDSizeOfPool("0002"), 0u);
    EXPECT_EQ(index->GetSumPDSizeOfPool(""), 0u);
    EXPECT_TRUE(index->HasSpecificPDNumberToPool("01", "0001"));
    EXPECT_FALSE(index->HasSpecificPDNumberToPool("03", "0000"));
    EXPECT_FALSE(index->HasSpecificPDNumberToPool("02", "0001"));
}

TEST_F(PDmanagerTest, FreeDisksOfATypeAreHealthyUnclaimedAndOfNoPool) {
    AddPd("00-00", 50);
    AddPd("00-01", 40);
    AddPd("01-00", 60);
    AddPd("00-02", 30, "not set", "00", "attn.(stop)");
    AddPd("00-03", 10, "not set", "00", "fault");
    AddPd("00-04", 10, "pool", "01");
    AddPd("00-05", 10, "not set", "00", "ready", "NLSAS");
    EXPECT_EQ(freeOfType("SAS"), (std::vector<std::string>{"00-02", "00-01", "00-00", "01-00"}));
    std::list<Uint64> copied;
    ASSERT_TRUE(index->GetFreePDCapacitiesByType("SAS", copied));
    EXPECT_EQ(std::vector<Uint64>(copied.begin(), copied.end()), (std::vector<Uint64>{30, 40, 50, 60}));

    std::list<structPDInfo*> claimed;
    index->GetPdListByType("SAS", claimed);
    claimed.resize(2);  // 00-02 and 00-01
    EXPECT_TRUE(index->MarkBeSelectedPD(claimed));
    EXPECT_EQ(freeOfType("SAS"), (std::vector<std::string>{"00-00", "01-00"}));

    std::list<structPDInfo*> none;
    EXPECT_FALSE(index->GetPdListByType("SSD", none));
    EXPECT_TRUE(none.empty());
}

TEST_F(PDmanagerTest, RecycleGivesBackOnlyTheNamedDisksOfTheGroup) {
    AddPd("00-00", 10);
    AddPd("00-01", 10);
    AddPd("01-00", 10);
    std::list<structPDInfo*> all;
    index->GetPdListByType("SAS", all);
    index->MarkBeSelectedPD(all);

    index->RecycleUnusedPds({"00", "01"}, "");
    index->RecycleUnusedPds({}, "00");
    EXPECT_TRUE(freeOfType("SAS").empty());

    index->RecycleUnusedPds({"00"}, "00");
    EXPECT_EQ(freeOfType("SAS"), (std::vector<std::string>{"00-00"}));
    index->RecycleUnusedPds({"00", "01"}, "01");
    EXPECT_EQ(freeOfType("SAS"), (std::vector<std::string>{"00-00", "01-00"}));
}

TEST_F(PDmanagerTest, SumsCountHealthyDisksAndTheFreeOnesApart) {
    AddPd("00-00", 100);
    AddPd("00-01", 50, "not set", "00", "attn.(stop)");
    AddPd("00-02", 70, "not set", "00", "fault");
    AddPd("00-03", 30, "pool", "01");
    AddPd("00-04", 20, "pool", "01", "attn.(rebuilding)");
    EXPECT_EQ(index->GetSumPDSize(), 180u);
    EXPECT_EQ(index->GetConsumableSumPDSize(), 150u);
    std::list<CIMObjectPath> all, consumable;
    index->GetSumPDObjectPath(all);
    index->GetConsumableSumPDObjectPath(consumable);
    EXPECT_EQ(all.size(), 3u);
    EXPECT_EQ(consumable.size(), 2u);
}

TEST_F(PDmanagerTest, RaidTypesFollowTheLargestHealthyKindInOneGroup) {
    struct Row {
        int disks;
        std::vector<int> codes;
    };
    const Row rows[] = {{0, {}}, {1, {}}, {2, {2}}, {3, {2, 6, 10}}, {5, {2, 6, 10}}, {6, {2, 6, 10, 8}}};
    for (const Row& row : rows) {
        index->Destroy();
        for (int i = 0; i < row.disks; ++i) AddPd("00-0" + std::to_string(i), 10);
        // Neither a broken disk nor the disks of another group or kind add up.
        AddPd("00-0f", 10, "not set", "00", "fault");
        AddPd("01-00", 10);
        AddPd("00-0e", 10, "not set", "00", "ready", "SSD");
        std::vector<int> codes;
        index->EnumRaidType(codes);
        EXPECT_EQ(codes, row.codes) << row.disks << " disks";
    }
}

TEST_F(PDmanagerTest, ChangedRecordsMoveTheDiskBetweenLists) {
    AddPd("00-00", 100);
    PdRawData* old = AddPd("00-01", 100);
    std::list<structPDInfo*> claimed;
    index->GetPdListByType("SAS", claimed);
    index->MarkBeSelectedPD(claimed);

    // The claimed disk lands in its pool: claim ends, pool list gains it.
    PdRawData* pooled = Pd("00-01", 100, "pool", "02");
    index->ModifyData(pooled, old, ExtentPath("00-01"));
    EXPECT_EQ(index->GetSumPDSizeOfPool("0002"), 100u);
    index->ModifyData(old, pooled, ExtentPath("00-01"));
    EXPECT_EQ(freeOfType("SAS"), (std::vector<std::string>{"00-01"}));
    EXPECT_EQ(index->GetSumPDSizeOfPool("0002"), 0u);

    // A new type: out of the SAS list into the NLSAS list.
    PdRawData* retyped = Pd("00-01", 100, "not set", "00", "ready", "NLSAS");
    index->ModifyData(retyped, old, ExtentPath("00-01"));
    EXPECT_TRUE(freeOfType("SAS").empty());
    EXPECT_EQ(freeOfType("NLSAS"), (std::vector<std::string>{"00-01"}));
    EXPECT_EQ(index->GetSumPDSize(), 200u);
}

TEST_F(PDmanagerTest, UnknownDisksAreRefused) {
    PdRawData* stranger = Pd("03-07", 10);
    EXPECT_THROW(index->ModifyData(stranger, stranger, ExtentPath("03-07")), CIMException);
    EXPECT_THROW(index->DeleteData(stranger), CIMException);
    EXPECT_THROW(index->AddData(nullptr, ExtentPath("03-07")), CIMException);

    PdRawData* disk = AddPd("03-07", 10, "pool", "01");
    index->DeleteData(disk);
    EXPECT_EQ(index->GetSumPDSize(), 0u);
    std::list<const structPDInfo*> none;
    EXPECT_FALSE(index->GetPDListByPool("01", none));
    EXPECT_THROW(index->DeleteData(disk), CIMException);
}

}  // namespace
