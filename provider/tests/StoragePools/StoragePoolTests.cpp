// Concrete and primordial pools: their tables, their instances and the
// instances that come and go with them.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "DacRawData.h"
#include "DataFlow.h"
#include "PrimordialPool.h"
#include "StorageCapability.h"
#include "StoragePool.h"
#include "PoolTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;
using modeltest::prop;
using modeltest::propertyNames;
using modeltest::uint16s;

namespace {

const Uint64 GiB = 0x40000000ULL;

TEST(StoragePoolTables, RaidTextsGiveTheirCodesExactly) {
    struct Row {
        const char* text;
        int code;
    };
    const Row rows[] = {
        {"RAID1", 2},          {"RAID10", 2},         {"RAID1/10", 2},       {"RAID5", 6},
        {"RAID50", 6},         {"RAID5(2+P)", 6},     {"RAID5(4+P)", 6},     {"RAID5(8+P)", 6},
        {"RAID5/50", 6},       {"RAID5/50(2+P)", 6},  {"RAID5/50(4+P)", 6},  {"RAID5/50(8+P)", 6},
        {"RAID6", 8},          {"RAID60", 8},         {"RAID6(4+PQ)", 8},    {"RAID6(8+PQ)", 8},
        {"RAID6/60", 8},       {"RAID6/60(4+PQ)", 8}, {"RAID6/60(8+PQ)", 8}, {"RAID-TM", 10},
        {"RAID3", 4},          {"RAID3DP", 4},        {"RAID0", 1},
        // Neither case nor blanks are forgiven.
        {"raid1", 0},          {"RAID 1", 0},         {"RAID1 ", 0},         {"", 0},
        {"RAID6/60(2+PQ)", 0}, {"RAIDTM", 0},
    };
    for (const Row& row : rows) EXPECT_EQ(StoragePool::GetPoolType(row.text), row.code) << row.text;
}

TEST(StoragePoolTables, StatesMapBySubstringInTableOrder) {
    struct Row {
        const char* state;
        Uint16 status;
    };
    const Row rows[] = {
        {"ready", 2}, {"attn.(rebuilding)", 3}, {"fault", 6}, {"fault(over capacity)", 6},
        {"fault ready", 2}, {"attn fault", 3}, {"", 0}, {"Ready", 0}, {"offline", 0},
    };
    for (const Row& row : rows) {
        Array<Uint16> status;
        status.append(99);
        StoragePool::mapState(row.state, status);
        ASSERT_EQ(status.size(), 1u) << row.state;
        EXPECT_EQ(status[0], row.status) << row.state;
    }
}

class StoragePoolTest : public pooltest::PoolFixture {
protected:
    void SetUp() override {
        PoolFixture::SetUp();
        // The primordial pool comes with the array; made here when the array
        // model does not bring it yet.
        if (!repository->has(PrimordialPool::GetPath(WWN))) {
            DataEventArgs args(context, array, nullptr, WWN);
            PrimordialPool primordial;
            primordial.Create(&args);
        }
    }

    CIMObjectPath Create(PoolRawData* pool) {
        DataEventArgs args(context, pool, nullptr, WWN);
        StoragePool model;
        return model.Create(&args);
    }
    void Modify(PoolRawData* newPool, PoolRawData* oldPool) {
        DataEventArgs args(context, newPool, oldPool, WWN);
        StoragePool model;
        model.Modify(&args);
    }
    CIMInstance allocationOf(const CIMObjectPath& pool) {
        std::vector<CIMInstance> all = repository->of("ORV_Storage_AllocatedFromStoragePool");
        for (const CIMInstance& i : all) {
            CIMObjectPath dependent = prop<CIMObjectPath>(i, "Dependent");
            if (modeltest::canonical(dependent) == modeltest::canonical(pool)) return i;
        }
        ADD_FAILURE() << "no allocation of " << pool.toString().toUtf8();
        return CIMInstance();
    }

    static std::string vendorBrand() {
        ConfigManager* config = Singleton<ConfigManager>::Instance();
        return config->GetVendor() + "." + config->GetBrand();
    }

    static CIMObjectPath lastPath;
    static void rememberPath(ParentArgs& args) { lastPath = args.path; }
};

CIMObjectPath StoragePoolTest::lastPath;

TEST_F(StoragePoolTest, PlainAndThinPoolsReportTheirSpace) {
    PoolRawData* plain = Pool("0001", "RAID6/60(4+PQ)", 600 * GiB, 200 * GiB);
    PoolRawData* thin = Pool("0002", "RAID1", 100 * GiB, 40 * GiB, "virtual");
    thin->actualCapacity = 30 * GiB;
    thin->actualUsedCapacity = 25 * GiB;
    StoragePool model;

    CIMInstance p = model.WrapInstance(plain, WWN);
    EXPECT_EQ(propertyNames(p),
              (std::vector<std::string>{"Name", "Primordial", "PoolID", "InstanceID", "ElementName",
                                        "TotalManagedSpace", "RemainingManagedSpace", "Usage", "OperationalStatus",
                                        "Description", "SpaceLimit", "SpaceLimitDetermination"}));
    EXPECT_EQ(prop<String>(p, "PoolID"), "0001h");
    EXPECT_EQ(prop<String>(p, "InstanceID"), String((vendorBrand() + " : 0001h.in.2000000991000001").c_str()));
    EXPECT_EQ(prop<String>(p, "Description"),
              "A concrete pool whose number is 0001h. Storage volumes can be created from this concrete pool.");
    EXPECT_FALSE(prop<Boolean>(p, "Primordial"));
    EXPECT_EQ(prop<Uint64>(p, "TotalManagedSpace"), 600 * GiB);
    EXPECT_EQ(prop<Uint64>(p, "RemainingManagedSpace"), 200 * GiB);
    EXPECT_EQ(prop<Uint64>(p, "SpaceLimit"), 600 * GiB);
    EXPECT_EQ(prop<Uint16>(p, "SpaceLimitDetermination"), 2);
    EXPECT_EQ(p.getPath().getKeyBindings().size(), 1u);
    EXPECT_EQ(p.findProperty(CIMName("HealthState")), PEG_NOT_FOUND);

    CIMInstance t = model.WrapInstance(thin, WWN);
    EXPECT_EQ(prop<Uint64>(t, "TotalManagedSpace"), 30 * GiB);
    EXPECT_EQ(prop<Uint64>(t, "RemainingManagedSpace"), 75 * GiB);
    EXPECT_EQ(prop<Uint64>(t, "SpaceLimit"), 100 * GiB);
    EXPECT_EQ(prop<Uint16>(t, "SpaceLimitDetermination"), 3);

    EXPECT_EQ(GetPoolIdFromPool(p), "0001");
    EXPECT_EQ(GetArrayIdFromPool(p), WWN);
    EXPECT_FALSE(IsPrimordialPool(p));
    EXPECT_EQ(GetPoolIdFromPool(CIMInstance(CIMName("X"))), "");

    DacRawData dac;
    try {
        model.WrapInstance(&dac, WWN);
        FAIL() << "a controller record made a pool";
    } catch (const CIMException& e) {
        EXPECT_EQ(e.getCode(), CIM_ERR_INVALID_PARAMETER);
    }
}

TEST_F(StoragePoolTest, CreateHostsAllocatesAndGivesCapabilities) {
    AddPd("00-00", 100 * GiB, "pool", "01");
    AddPd("00-01", 100 * GiB, "pool", "01");
    AddPd("00-02", 100 * GiB);
    StoragePool::AfterCreated += &StoragePoolTest::rememberPath;
    EnableIndications(true);

    PoolRawData* pool = Pool("0001", "RAID1", 200 * GiB, 200 * GiB);
    CIMObjectPath path = Create(pool);

    ASSERT_TRUE(repository->has(path));
    EXPECT_EQ(modeltest::canonical(lastPath), modeltest::canonical(path));
    EXPECT_EQ(repository->referring("ORV_Storage_HostedStoragePool", path, "PartComponent"), 1u);
    CIMInstance allocation = allocationOf(path);
    EXPECT_EQ(prop<Uint64>(allocation, "SpaceConsumed"), 200 * GiB);
    EXPECT_EQ(modeltest::canonical(prop<CIMObjectPath>(allocation, "Antecedent")),
              modeltest::canonical(PrimordialPool::GetPath(WWN)));
    EXPECT_TRUE(repository->has(StorageCapability::WrapReference("0001h", 2)));
    EXPECT_EQ(indications.named("CIM_InstCreation").size(), 1u);

    // Gone again: nothing of the pool is left, and the primordial pool stays.
    DataEventArgs args(context, pool, nullptr, WWN);
    StoragePool model;
    model.Delete(&args);
    EXPECT_FALSE(repository->has(path));
    EXPECT_EQ(repository->referring("ORV_Storage_HostedStoragePool", path, "PartComponent"), 0u);
    EXPECT_EQ(repository->referring("ORV_Storage_AllocatedFromStoragePool", path, "Dependent"), 0u);
    EXPECT_FALSE(repository->has(StorageCapability::WrapReference("0001h", 2)));
    EXPECT_TRUE(repository->has(PrimordialPool::GetPath(WWN)));
    EXPECT_EQ(indications.named("CIM_InstDeletion").size(), 1u);
}

TEST_F(StoragePoolTest, DependentsCleanUpWhileThePoolStillStands) {
    static pooltest::FilteringRepository* current = nullptr;
    static bool poolPresent = false;
    current = repository.get();
    StoragePool::BeforeDeleted += [](ParentArgs& args) { poolPresent = current->has(args.path); };
    PoolRawData* pool = Pool("0003", "RAID5", 100 * GiB, 10 * GiB);
    CIMObjectPath path = Create(pool);
    DataEventArgs args(context, pool, nullptr, WWN);
    StoragePool model;
    model.Delete(&args);
    EXPECT_TRUE(poolPresent);
    EXPECT_FALSE(repository->has(path));
}

TEST_F(StoragePoolTest, ModifyFollowsCapacityAndRaisesTheRightIndications) {
    AddPd("00-00", 100 * GiB, "pool", "01");
    AddPd("00-01", 100 * GiB, "pool", "01");
    PoolRawData* before = Pool("0001", "RAID1", 100 * GiB, 60 * GiB);
    CIMObjectPath path = Create(before);
    EnableIndications(true);

    // Only the free space moves: stored, but no indication.
    PoolRawData* lessFree = Pool("0001", "RAID1", 100 * GiB, 50 * GiB);
    Modify(lessFree, before);
    EXPECT_EQ(prop<Uint64>(repository->get(path), "RemainingManagedSpace"), 50 * GiB);
    EXPECT_TRUE(indications.delivered.empty());

    // The pool grew by two disks: a modification, and the allocation follows
    // the disks of the pool.
    AddPd("00-02", 100 * GiB, "pool", "01");
    AddPd("00-03", 100 * GiB, "pool", "01");
    PoolRawData* grown = Pool("0001", "RAID1", 200 * GiB, 150 * GiB);
    Modify(grown, lessFree);
    EXPECT_EQ(prop<Uint64>(repository->get(path), "TotalManagedSpace"), 200 * GiB);
    EXPECT_EQ(indications.named("CIM_InstModification").size(), 1u);
    EXPECT_EQ(prop<Uint64>(allocationOf(path), "SpaceConsumed"), 400 * GiB);
    EXPECT_EQ(repository->count("ORV_Storage_AllocatedFromStoragePool"), 1u);
    EXPECT_EQ(repository->referring("ORV_Storage_HostedStoragePool", path, "PartComponent"), 1u);
    EXPECT_TRUE(indications.named("CIM_AlertIndication").empty());

    // Over capacity and past the threshold each raise the capacity alert,
    // again with every change while they last.
    indications.delivered.clear();
    PoolRawData* over = Pool("0001", "RAID1", 200 * GiB, 0);
    over->poolState = "fault(over capacity)";
    Modify(over, grown);
    PoolRawData* stillOver = Pool("0001", "RAID1", 200 * GiB, 1);
    stillOver->poolState = "fault(over capacity)";
    Modify(stillOver, over);
    PoolRawData* threshold = Pool("0001", "RAID1", 200 * GiB, 2);
    threshold->threshold = "exceeded";
    Modify(threshold, stillOver);
    EXPECT_EQ(indications.named("CIM_AlertIndication").size(), 3u);
    EXPECT_EQ(uint16s(repository->get(path), "OperationalStatus"), (std::vector<Uint16>{2}));
}

TEST_F(StoragePoolTest, PrimordialPoolHoldsAllDisksAndTheUnusedOnes) {
    AddPd("00-00", 100 * GiB);
    AddPd("00-01", 50 * GiB, "not set", "00", "attn.(stop)");
    AddPd("00-02", 70 * GiB, "not set", "00", "fault");
    AddPd("00-03", 30 * GiB, "pool", "01");
    PrimordialPool primordial;
    CIMInstance pool = primordial.warpInstance(WWN);
    EXPECT_EQ(propertyNames(pool),
              (std::vector<std::string>{"Primordial", "InstanceID", "ElementName", "PoolID", "OperationalStatus",
                                        "Description", "TotalManagedSpace", "RemainingManagedSpace", "SpaceLimit",
                                        "SpaceLimitDetermination", "Usage", "Name"}));
    EXPECT_TRUE(IsPrimordialPool(pool));
    EXPECT_EQ(prop<String>(pool, "InstanceID"),
              String((vendorBrand() + " : Primordial Pool.in.2000000991000001").c_str()));
    EXPECT_EQ(prop<String>(pool, "PoolID"), "All PD");
    EXPECT_EQ(prop<Uint64>(pool, "TotalManagedSpace"), 180 * GiB);
    EXPECT_EQ(prop<Uint64>(pool, "SpaceLimit"), 180 * GiB);
    EXPECT_EQ(prop<Uint64>(pool, "RemainingManagedSpace"), 150 * GiB);

    // After each load of disks the stored pool follows the index.
    std::vector<RawData*> none;
    HandleDataArgs loaded(&context, RAWDATA_PD, 0, WWN, &none);
    primordial.UpdateInstance(&loaded);
    CIMInstance stored = repository->get(PrimordialPool::GetPath(WWN));
    EXPECT_EQ(prop<Uint64>(stored, "TotalManagedSpace"), 180 * GiB);

    // Every disk in use: nothing remains, and the pool is still OK.
    PDmanager::Instance()->Destroy();
    AddPd("00-03", 30 * GiB, "pool", "01");
    primordial.UpdateInstance(&loaded);
    stored = repository->get(PrimordialPool::GetPath(WWN));
    EXPECT_EQ(prop<Uint64>(stored, "RemainingManagedSpace"), 0u);
    EXPECT_EQ(uint16s(stored, "OperationalStatus"), (std::vector<Uint16>{2}));

    // An array whose pool is not there yet is no failure of the load.
    HandleDataArgs otherArray(&context, RAWDATA_PD, 0, "2000000991000099", &none);
    EXPECT_NO_THROW(primordial.UpdateInstance(&otherArray));
    EventArgs plain;
    EXPECT_THROW(primordial.UpdateInstance(&plain), CIMException);
}

TEST_F(StoragePoolTest, PrimordialPoolComesAndGoesWithItsCapabilities) {
    CIMObjectPath path = PrimordialPool::GetPath(WWN);
    ASSERT_TRUE(repository->has(path));
    EXPECT_EQ(repository->referring("ORV_Storage_HostedStoragePool", path, "PartComponent"), 1u);
    for (int raid : {2, 6, 8, 10}) EXPECT_TRUE(repository->has(StorageCapability::WrapReference(WWN, raid))) << raid;

    DataEventArgs args(context, array, nullptr, WWN);
    PrimordialPool primordial;
    primordial.Delete(&args);
    EXPECT_FALSE(repository->has(path));
    EXPECT_EQ(repository->referring("ORV_Storage_HostedStoragePool", path, "PartComponent"), 0u);
    for (int raid : {2, 6, 8, 10}) EXPECT_FALSE(repository->has(StorageCapability::WrapReference(WWN, raid))) << raid;
}

TEST_F(StoragePoolTest, DiskExtentsJoinThePrimordialPoolAndLeaveIt) {
    CIMObjectPath used = ExtentPath("00-00");
    CIMObjectPath spare = ExtentPath("00-01");
    PrimordialPool::AssocStorageExtent(context, WWN, used, true);
    PrimordialPool::AssocStorageExtent(context, WWN, spare, false);
    for (const char* cls : {"ORV_Storage_AssociatedComponentExtent", "ORV_Storage_ConcreteComponent"}) {
        EXPECT_EQ(repository->referring(cls, used, "PartComponent"), 1u) << cls;
        EXPECT_EQ(repository->referring(cls, spare, "PartComponent"), 1u) << cls;
    }
    const char* remaining = "ORV_Storage_AssociatedRemainingExtent";
    EXPECT_EQ(repository->referring(remaining, used, "PartComponent"), 0u);
    EXPECT_EQ(repository->referring(remaining, spare, "PartComponent"), 1u);

    // The spare disk goes into a pool, the used one comes free.
    PrimordialPool::UpdateRemainingExtent(context, WWN, spare, true);
    PrimordialPool::UpdateRemainingExtent(context, WWN, used, false);
    EXPECT_EQ(repository->referring(remaining, used, "PartComponent"), 1u);
    EXPECT_EQ(repository->referring(remaining, spare, "PartComponent"), 0u);

    PrimordialPool::UnassocStorageExtent(context, WWN, used);
    for (const char* cls : {"ORV_Storage_AssociatedComponentExtent", "ORV_Storage_ConcreteComponent", remaining})
        EXPECT_EQ(repository->referring(cls, used, "PartComponent"), 0u) << cls;
    EXPECT_EQ(repository->referring("ORV_Storage_ConcreteComponent", spare, "PartComponent"), 1u);
}

}  // namespace
