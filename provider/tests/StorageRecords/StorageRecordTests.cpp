#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <typeinfo>
#include <vector>

#include "LdRawData.h"
#include "PdRawData.h"
#include "PoolRawData.h"

using namespace orvsmis;

namespace {

PoolRawData* fullPool() {
    PoolRawData* p = new PoolRawData();
    p->AddRef();
    p->name = p->poolNo = "0001";
    p->arrayId = "W1";
    p->poolName = "Pool0001";
    p->poolType = "dynamic";
    p->RAIDType = "RAID6";
    p->numberofRAID5s = 2;
    p->nodeNo = "00";
    p->PDType = "SAS";
    p->poolState = "ready";
    p->expansionState = "---";
    p->expansion = "---";
    p->rearrangement = "---";
    p->progressRatio = "0";
    p->rebuildTime = 3;
    p->expansionTime = 4;
    p->rearrangingMode = "---";
    p->poolCapacity = 1000;
    p->usedPoolCapacity = 400;
    p->freePoolCapacity = 600;
    p->configurationSetting = "---";
    p->noBPD = "2";
    p->stripSize = 65536;
    p->actualCapacity = 900;
    p->actualUsedCapacity = 100;
    p->threshold = "80";
    p->actualCapacityThreshold = 80;
    return p;
}

LdRawData* fullLd() {
    LdRawData* l = new LdRawData();
    l->AddRef();
    l->name = l->LDN = "0003";
    l->arrayId = "W1";
    l->LDName = "VOL3";
    l->LDCapacity = 4096;
    l->poolNo = "0001";
    l->raidType = "RAID6";
    l->PDType = "SAS";
    l->LDState = "ready";
    l->group = "---";
    l->purpose = "---";
    l->RPLAttribute = "IV";
    l->snapshotAttribute = "IV";
    l->threshold = "70";
    l->actualUsedCapacity = 12;
    return l;
}

PdRawData* fullPd() {
    PdRawData* d = new PdRawData();
    d->AddRef();
    d->name = d->PDN = "00-0a";
    d->arrayId = "W1";
    d->classification = "not set";
    d->rankGroupNumber = "--";
    d->state = "ready";
    d->PDCapacity = 1 << 20;
    d->rotationalSpeed = "10000rpm";
    d->nodeNo = "00";
    d->type = "SAS";
    d->vendorID = "V";
    d->productID = "P";
    d->productRevision = "R1";
    d->serialNumber = "S1";
    d->configurationChange = "---";
    d->transferRate = "6Gbps";
    return d;
}

template <class T>
struct ChangeRow {
    const char* field;
    std::function<void(T&)> change;
    bool sameIdentity;
    bool changed;
};

// Changes one field of a copy of the base record at a time and checks how
// identity and content comparison see it.
template <class T>
void checkComparisons(T* (*make)(), const std::vector<ChangeRow<T>>& rows) {
    for (const ChangeRow<T>& row : rows) {
        T* base = make();
        T* other = make();
        row.change(*other);
        EXPECT_EQ(base->IsEqual(other), row.sameIdentity) << row.field;
        EXPECT_EQ(base->HasChanged(other), row.changed) << row.field;
        base->Release();
        other->Release();
    }
}

}  // namespace

TEST(StorageRecordTypes, FactoryBuildsTheStorageRecords) {
    struct Row {
        int type;
        const std::type_info& cls;
        int code;
    } rows[] = {
        {RAWDATA_PD, typeid(PdRawData), PdRawData::GetType()},
        {RAWDATA_POOL, typeid(PoolRawData), PoolRawData::GetType()},
        {RAWDATA_LD, typeid(LdRawData), LdRawData::GetType()},
    };
    EXPECT_EQ(PdRawData::GetType(), 3);
    EXPECT_EQ(PoolRawData::GetType(), 5);
    EXPECT_EQ(LdRawData::GetType(), 6);
    for (const Row& row : rows) {
        RawData* record = RawDataFactory::CreateInstance(row.type);
        ASSERT_NE(record, nullptr) << row.type;
        EXPECT_TRUE(typeid(*record) == row.cls) << row.type;
        EXPECT_EQ(record->type, row.code);
        EXPECT_EQ(record->GetRefCount(), 1u);
        record->Release();
    }
}

TEST(StorageRecordTypes, PoolComparisons) {
    checkComparisons<PoolRawData>(fullPool, {
        {"nothing", [](PoolRawData&) {}, true, false},
        {"name", [](PoolRawData& p) { p.name = "0002"; }, false, false},
        {"type code", [](PoolRawData& p) { p.type = RAWDATA_LD; }, false, false},
        {"poolType", [](PoolRawData& p) { p.poolType = "virtual"; }, false, false},
        {"RAIDType", [](PoolRawData& p) { p.RAIDType = "RAID1"; }, false, false},
        {"PDType", [](PoolRawData& p) { p.PDType = "SSD"; }, false, false},
        {"poolName", [](PoolRawData& p) { p.poolName = "X"; }, true, true},
        {"poolState", [](PoolRawData& p) { p.poolState = "fault"; }, true, true},
        {"expansion", [](PoolRawData& p) { p.expansion = "expanding"; }, true, true},
        {"poolCapacity", [](PoolRawData& p) { p.poolCapacity++; }, true, true},
        {"usedPoolCapacity", [](PoolRawData& p) { p.usedPoolCapacity++; }, true, true},
        {"freePoolCapacity", [](PoolRawData& p) { p.freePoolCapacity++; }, true, true},
        {"noBPD", [](PoolRawData& p) { p.noBPD = "3"; }, true, true},
        {"stripSize", [](PoolRawData& p) { p.stripSize = 131072; }, true, true},
        {"actualCapacity", [](PoolRawData& p) { p.actualCapacity++; }, true, true},
        {"actualUsedCapacity", [](PoolRawData& p) { p.actualUsedCapacity++; }, true, true},
        {"threshold", [](PoolRawData& p) { p.threshold = "90"; }, true, true},
        {"expansionState", [](PoolRawData& p) { p.expansionState = "expanding"; }, true, false},
        {"progressRatio", [](PoolRawData& p) { p.progressRatio = "50"; }, true, false},
        {"actualCapacityThreshold", [](PoolRawData& p) { p.actualCapacityThreshold = 90; }, true, false},
        {"rebuildTime", [](PoolRawData& p) { p.rebuildTime = 9; }, true, false},
    });
}

TEST(StorageRecordTypes, LdComparisons) {
    checkComparisons<LdRawData>(fullLd, {
        {"nothing", [](LdRawData&) {}, true, false},
        {"name", [](LdRawData& l) { l.name = "0004"; }, false, false},
        {"type code not compared", [](LdRawData& l) { l.type = RAWDATA_POOL; }, true, false},
        {"poolNo", [](LdRawData& l) { l.poolNo = "0002"; }, false, false},
        {"raidType", [](LdRawData& l) { l.raidType = "RAID1"; }, false, false},
        {"PDType", [](LdRawData& l) { l.PDType = "SSD"; }, false, false},
        {"LDName", [](LdRawData& l) { l.LDName = "X"; }, true, true},
        {"LDCapacity", [](LdRawData& l) { l.LDCapacity++; }, true, true},
        {"LDState", [](LdRawData& l) { l.LDState = "fault"; }, true, true},
        {"snapshotAttribute", [](LdRawData& l) { l.snapshotAttribute = "BV"; }, true, true},
        {"group", [](LdRawData& l) { l.group = "G"; }, true, true},
        {"RPLAttribute", [](LdRawData& l) { l.RPLAttribute = "MV"; }, true, true},
        {"threshold", [](LdRawData& l) { l.threshold = "71"; }, true, true},
        {"actualUsedCapacity", [](LdRawData& l) { l.actualUsedCapacity++; }, true, true},
        {"purpose", [](LdRawData& l) { l.purpose = "RPL"; }, true, false},
    });
}

TEST(StorageRecordTypes, PdComparisons) {
    checkComparisons<PdRawData>(fullPd, {
        {"nothing", [](PdRawData&) {}, true, false},
        {"name", [](PdRawData& d) { d.name = "00-0b"; }, false, false},
        {"PDN", [](PdRawData& d) { d.PDN = "00-0b"; }, true, true},
        {"classification", [](PdRawData& d) { d.classification = "pool"; }, true, true},
        {"rankGroupNumber", [](PdRawData& d) { d.rankGroupNumber = "01"; }, true, true},
        {"state", [](PdRawData& d) { d.state = "fault"; }, true, true},
        {"PDCapacity", [](PdRawData& d) { d.PDCapacity++; }, true, true},
        {"rotationalSpeed", [](PdRawData& d) { d.rotationalSpeed = "---"; }, true, true},
        {"nodeNo", [](PdRawData& d) { d.nodeNo = "01"; }, true, true},
        {"type", [](PdRawData& d) { d.type = "SSD"; }, true, true},
        {"vendorID", [](PdRawData& d) { d.vendorID = "W"; }, true, true},
        {"productID", [](PdRawData& d) { d.productID = "Q"; }, true, true},
        {"productRevision", [](PdRawData& d) { d.productRevision = "R2"; }, true, true},
        {"serialNumber", [](PdRawData& d) { d.serialNumber = "S2"; }, true, true},
        {"configurationChange", [](PdRawData& d) { d.configurationChange = "x"; }, true, true},
        {"transferRate", [](PdRawData& d) { d.transferRate = "12Gbps"; }, true, true},
    });
}

TEST(StorageRecordTypes, CopyBringsEveryFieldOver) {
    PoolRawData* pool = fullPool();
    PoolRawData emptyPool;
    emptyPool.Copy(pool);
    EXPECT_TRUE(emptyPool.IsEqual(pool));
    EXPECT_FALSE(emptyPool.HasChanged(pool));
    // Fields outside the comparisons are copied too.
    EXPECT_EQ(emptyPool.arrayId, "W1");
    EXPECT_EQ(emptyPool.numberofRAID5s, 2);
    EXPECT_EQ(emptyPool.nodeNo, "00");
    EXPECT_EQ(emptyPool.expansionState, "---");
    EXPECT_EQ(emptyPool.rearrangement, "---");
    EXPECT_EQ(emptyPool.progressRatio, "0");
    EXPECT_EQ(emptyPool.rebuildTime, 3);
    EXPECT_EQ(emptyPool.expansionTime, 4);
    EXPECT_EQ(emptyPool.rearrangingMode, "---");
    EXPECT_EQ(emptyPool.configurationSetting, "---");
    EXPECT_EQ(emptyPool.actualCapacityThreshold, 80);
    pool->Release();

    LdRawData* ld = fullLd();
    LdRawData emptyLd;
    emptyLd.Copy(ld);
    EXPECT_TRUE(emptyLd.IsEqual(ld));
    EXPECT_FALSE(emptyLd.HasChanged(ld));
    EXPECT_EQ(emptyLd.purpose, "---");
    EXPECT_EQ(emptyLd.LDN, "0003");
    ld->Release();

    PdRawData* pd = fullPd();
    PdRawData emptyPd;
    emptyPd.Copy(pd);
    EXPECT_TRUE(emptyPd.IsEqual(pd));
    EXPECT_FALSE(emptyPd.HasChanged(pd));
    pd->Release();
}

TEST(StorageRecordTypes, ComparisonsWithAnotherRecordClass) {
    PoolRawData* pool = fullPool();
    LdRawData* ld = fullLd();
    ld->name = pool->name;
    EXPECT_FALSE(ld->IsEqual(pool));
    EXPECT_TRUE(pool->HasChanged(ld));
    EXPECT_TRUE(ld->HasChanged(pool));
    PoolRawData copy;
    copy.poolName = "kept";
    copy.Copy(ld);  // only the base fields can come over
    EXPECT_EQ(copy.poolName, "kept");
    EXPECT_EQ(copy.name, "0001");
    pool->Release();
    ld->Release();
}

TEST(StorageRecordTypes, RaidCodeOfThePool) {
    struct Row {
        const char* text;
        int code;
    } rows[] = {{"RAID1", 2}, {"RAID5", 6}, {"RAID6", 8}, {"RAIDTM", 10},
                {"RAID10", 0}, {"raid5", 0}, {"", 0}, {"RAID-TM", 0}};
    for (const Row& row : rows) {
        PoolRawData pool;
        pool.RAIDType = row.text;
        EXPECT_EQ(pool.FromRaidType(), row.code) << row.text;
    }
}

TEST(StorageRecordTypes, LdTypeClassification) {
    struct Row {
        const char* purpose;
        const char* rpl;
        const char* snapshot;
        int result;
    } rows[] = {
        {"---", "", "", 0},
        {"---", "MV", "BV", 0},
        {"RPL", "MV", "", 1},
        {"RPL", "RV", "", 2},
        {"RPL", "RV/MV", "", 3},
        {"RPL", "IV", "", 22},
        {"Control Volume", "MV", "", 4},
        {"Control Volume", "RV", "", 13},
        {"Control Volume", "", "", 13},
        {"Snapshot", "", "BV", 5},
        {"Snapshot", "MV", "SV", 6},
        {"Snapshot", "", "SDV", 7},
        {"Snapshot", "", "SV*", 8},
        {"Snapshot", "", "", 22},
        {"RPL/Snapshot", "MV", "BV", 9},
        {"RPL/Snapshot", "RV", "BV", 10},
        {"RPL/Snapshot", "RV/MV", "BV", 11},
        {"RPL/Snapshot", "MV", "SV", 22},
        {"Link Volume", "", "", 12},
        {"L2 Cache", "", "", 14},
        {"Data Protection", "", "", 15},
        {"RPL/Data Protection", "", "", 16},
        {"System Volume", "", "", 17},
        {"Replication Reserved Volume", "", "", 18},
        {"Migration Reserved Volume", "", "", 19},
        {"Optimization", "", "", 20},
        {"VVOL", "", "", 21},
        {"vvol", "", "", 22},
        {"", "", "", 22},
        {"Something New", "MV", "BV", 22},
    };
    for (const Row& row : rows) {
        LdRawData ld;
        ld.purpose = row.purpose;
        ld.RPLAttribute = row.rpl;
        ld.snapshotAttribute = row.snapshot;
        EXPECT_EQ(ld.GetLdType(), row.result) << row.purpose << " / " << row.rpl << " / " << row.snapshot;
    }
}
