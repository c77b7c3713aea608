// The checks of the pool and volume methods: what each answers at once, and
// that a refused call leaves no job and no disk claimed.

#include <limits>
#include <string>

#include <gtest/gtest.h>

#include <Pegasus/Common/Exception.h>

#include "ServiceFixture.h"

using namespace Pegasus;
using blocktest::Outcome;
using blocktest::P;

namespace {

class ConfigurationController : public blocktest::ServiceFixture {
protected:
    Outcome CreateLd(const CIMValue& size, const CIMObjectPath& inPool, const CIMObjectPath& goal = CIMObjectPath(),
                     Uint16 type = 2) {
        Array<CIMParamValue> in;
        in.append(P("ElementType", CIMValue(type)));
        if (!size.isNull()) in.append(P("Size", size));
        in.append(P("InPool", CIMValue(inPool)));
        if (goal.getKeyBindings().size() > 0) in.append(P("Goal", CIMValue(goal)));
        return Call("CreateOrModifyElementFromStoragePool", in);
    }
    Outcome ModifyLd(Uint64 size, const char* name) {
        Array<CIMParamValue> in;
        in.append(P("ElementType", CIMValue(Uint16(2))));
        in.append(P("Size", CIMValue(size)));
        in.append(P("TheElement", CIMValue(volume)));
        if (name != nullptr) in.append(P("ElementName", CIMValue(String(name))));
        return Call("CreateOrModifyElementFromStoragePool", in);
    }
    Outcome PoolByExtents(const std::vector<std::string>& pdns) {
        Array<String> extents;
        for (const std::string& pdn : pdns) extents.append(Extent(pdn));
        Array<CIMParamValue> in;
        in.append(P("InExtents", CIMValue(extents)));
        return Call("CreateOrModifyStoragePool", in);
    }
    Outcome PoolBySize(Uint64 size, const CIMObjectPath& goal) {
        Array<CIMParamValue> in;
        in.append(P("Goal", CIMValue(goal)));
        in.append(P("Size", CIMValue(size)));
        in.append(P("InPools", CIMValue(Array<String>(1, primordial.toString()))));
        return Call("CreateOrModifyStoragePool", in);
    }
    size_t FreeDisks() {
        std::list<orvsmis::structPDInfo*> free;
        orvsmis::PDmanager::Instance()->GetPdListByType("SAS", free);
        return free.size();
    }
};

TEST_F(ConfigurationController, MethodsAreMatchedExactlyAndReplicationWaitsForItsService) {
    for (const char* method : {"CreateReplica", "ModifySynchronization", "createOrModifyStoragePool", "Nonsense"}) {
        SCOPED_TRACE(method);
        EXPECT_EQ(Call(method, Array<CIMParamValue>()).result, 1u);
    }
    EXPECT_EQ(Queued(), 0);
}

TEST_F(ConfigurationController, WrongTypesAndDanglingReferencesAreInvalidParameters) {
    const CIMObjectPath missingPool = orvsmis::StoragePool::WrapReference("00aa", WWN);
    const CIMObjectPath missingVolume = orvsmis::StorageVolume::WrapReference(WWN, "0abc");
    struct Row {
        const char* what;
        const char* method;
        Array<CIMParamValue> in;
    };
    std::vector<Row> rows;
    auto row = [&rows](const char* what, const char* method, std::initializer_list<CIMParamValue> in) {
        Array<CIMParamValue> params;
        for (const CIMParamValue& p : in) params.append(p);
        rows.push_back(Row{what, method, params});
    };
    row("Size as text", "CreateOrModifyElementFromStoragePool",
        {P("ElementType", CIMValue(Uint16(2))), P("Size", CIMValue(String("1G"))), P("InPool", CIMValue(pool))});
    row("negative Size", "CreateOrModifyElementFromStoragePool",
        {P("ElementType", CIMValue(Uint16(2))), P("Size", CIMValue(Sint64(-1))), P("InPool", CIMValue(pool))});
    row("ElementType as text", "CreateOrModifyElementFromStoragePool",
        {P("ElementType", CIMValue(String("2"))), P("Size", CIMValue(Uint64(GiB))), P("InPool", CIMValue(pool))});
    row("InPool as a number", "CreateOrModifyElementFromStoragePool",
        {P("ElementType", CIMValue(Uint16(2))), P("Size", CIMValue(Uint64(GiB))), P("InPool", CIMValue(Uint32(1)))});
    row("InPool that names nothing", "CreateOrModifyElementFromStoragePool",
        {P("ElementType", CIMValue(Uint16(2))), P("Size", CIMValue(Uint64(GiB))), P("InPool", CIMValue(missingPool))});
    row("no InPool and no element", "CreateOrModifyElementFromStoragePool",
        {P("ElementType", CIMValue(Uint16(2))), P("Size", CIMValue(Uint64(GiB)))});
    row("TheElement that names nothing", "CreateOrModifyElementFromStoragePool",
        {P("ElementType", CIMValue(Uint16(2))), P("ElementName", CIMValue(String("x"))),
         P("TheElement", CIMValue(missingVolume))});
    row("name with a NUL", "CreateOrModifyElementFromStoragePool",
        {P("ElementType", CIMValue(Uint16(2))), P("Size", CIMValue(Uint64(GiB))), P("InPool", CIMValue(pool)),
         P("ElementName", CIMValue(String("ab\0cd", 5)))});
    row("InExtents not an array", "CreateOrModifyStoragePool", {P("InExtents", CIMValue(Extent("00-02")))});
    row("InExtents holding no reference", "CreateOrModifyStoragePool",
        {P("InExtents", CIMValue(Array<String>(2, String("not a path"))))});
    row("InExtents naming no disk", "CreateOrModifyStoragePool",
        {P("InExtents", CIMValue(Array<String>(2, orvsmis::StorageExtent::WrapReference("0f-0f", WWN).toString())))});
    row("Goal as a boolean", "CreateOrModifyStoragePool",
        {P("Goal", CIMValue(Boolean(true))), P("InPools", CIMValue(Array<String>(1, primordial.toString())))});
    row("no Pool", "DeleteStoragePool", {});
    row("Pool that names nothing", "DeleteStoragePool", {P("Pool", CIMValue(missingPool))});
    row("no element", "ReturnToStoragePool", {});
    row("element as text that is no path", "ReturnToStoragePool", {P("TheElement", CIMValue(String("volume 1")))});
    for (const Row& r : rows) {
        SCOPED_TRACE(r.what);
        Outcome outcome = Call(r.method, r.in);
        EXPECT_EQ(outcome.result, 5u);
        EXPECT_EQ(outcome.out.size(), 0u);
    }
    EXPECT_EQ(Queued(), 0);
    EXPECT_EQ(FreeDisks(), 7u);
}

TEST_F(ConfigurationController, VolumeSizesAreCheckedAgainstThePool) {
    struct Row {
        const char* what;
        Uint64 size;
        Uint32 result;
        Uint64 offered;  // the output Size of 4097
    };
    const Row rows[] = {
        {"exactly the free space", 20 * GiB, 4096, 0},
        {"exactly the smallest", 0xFE00000ULL, 4096, 0},
        {"one byte more than free", 20 * GiB + 1, 4097, 20 * GiB},
        {"absurdly large", std::numeric_limits<Uint64>::max(), 4097, 20 * GiB},
        {"below the smallest", 0xFE00000ULL - MiB, 4097, 0xFE00000ULL},
        {"no size", 0, 4097, 0xFE00000ULL},
        {"not whole MiB", 300 * MiB + 7, 4097, 301 * MiB},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        orvsmis::Singleton<orvsmis::JobManager>::Instance()->Clean();
        Outcome outcome = CreateLd(CIMValue(row.size), pool);
        EXPECT_EQ(outcome.result, row.result);
        if (row.result == 4097) {
            EXPECT_EQ(outcome.size(), row.offered);
            EXPECT_EQ(Queued(), 0);
        } else {
            EXPECT_TRUE(outcome.has("Job"));
            EXPECT_EQ(Queued(), 1);
        }
    }
}

TEST_F(ConfigurationController, VolumeRequestsThatMakeNoSense) {
    EXPECT_EQ(CreateLd(CIMValue(Uint64(GiB)), primordial).result, 1u) << "volume from the primordial pool";
    EXPECT_EQ(CreateLd(CIMValue(Uint64(GiB)), pool, CIMObjectPath(), 3).result, 1u) << "ElementType 3";
    EXPECT_EQ(CreateLd(CIMValue(Uint64(GiB)), pool, raid5Goal).result, 1u) << "goal of another RAID";
    EXPECT_EQ(ModifyLd(0, nullptr).result, 1u) << "nothing to change";
    EXPECT_EQ(ModifyLd(100 * GiB, nullptr).result, 1u) << "the current size and no name";
    EXPECT_EQ(Queued(), 0);
    EXPECT_EQ(CreateLd(CIMValue(Uint64(GiB)), pool, raid1Goal).result, 4096u) << "goal of the pool's RAID";
}

TEST_F(ConfigurationController, GrowingAndRenamingAVolume) {
    Outcome big = ModifyLd(120 * GiB + 1, nullptr);
    EXPECT_EQ(big.result, 4097u);
    EXPECT_EQ(big.size(), 120 * GiB);
    Outcome small = ModifyLd(100 * GiB + 1, nullptr);
    EXPECT_EQ(small.result, 4097u);
    EXPECT_EQ(small.size(), 100 * GiB + MiB);
    EXPECT_EQ(Queued(), 0);
    EXPECT_EQ(ModifyLd(100 * GiB, "renamed").result, 4096u) << "rename at the current size";
    EXPECT_EQ(ModifyLd(120 * GiB, nullptr).result, 4096u) << "grow to all the pool holds";
    EXPECT_EQ(Queued(), 2);
}

TEST_F(ConfigurationController, PoolsFromExtents) {
    EXPECT_EQ(PoolByExtents({"00-02"}).result, 5u) << "one disk";
    EXPECT_EQ(PoolByExtents({"00-02", "01-00"}).result, 5u) << "two groups";
    EXPECT_EQ(PoolByExtents({"00-02", "00-02"}).result, 5u) << "one disk twice";
    EXPECT_EQ(PoolByExtents({"00-00", "00-02"}).result, 5u) << "a disk of a pool";
    EXPECT_EQ(Queued(), 0);
    EXPECT_EQ(FreeDisks(), 7u);

    EXPECT_EQ(PoolByExtents({"00-02", "00-03"}).result, 4096u) << "RAID1";
    EXPECT_EQ(FreeDisks(), 5u) << "the job holds its disks";
    // The same disks again: another call has them.
    EXPECT_EQ(PoolByExtents({"00-02", "00-03"}).result, 5u) << "disks claimed by a queued job";
    EXPECT_EQ(FreeDisks(), 5u);
    EXPECT_EQ(PoolByExtents({"00-04", "00-05", "00-06", "00-07"}).result, 4096u) << "RAID1 of four";
    EXPECT_EQ(Queued(), 2);
}

TEST_F(ConfigurationController, PoolsBySizeAndGoal) {
    const CIMObjectPath odd = Goal("odd", 7, 7);
    EXPECT_EQ(PoolBySize(10 * GiB, odd).result, 1u) << "a RAID the array has not";
    Array<CIMParamValue> noGoal;
    noGoal.append(P("Size", CIMValue(Uint64(10 * GiB))));
    noGoal.append(P("InPools", CIMValue(Array<String>(1, primordial.toString()))));
    EXPECT_EQ(Call("CreateOrModifyStoragePool", noGoal).result, 5u) << "no goal";
    Array<CIMParamValue> twoSources;
    twoSources.append(P("Goal", CIMValue(raid1Goal)));
    twoSources.append(P("InPools", CIMValue(Array<String>(2, primordial.toString()))));
    EXPECT_EQ(Call("CreateOrModifyStoragePool", twoSources).result, 1u) << "two source pools";
    Array<CIMParamValue> concrete;
    concrete.append(P("Goal", CIMValue(raid1Goal)));
    concrete.append(P("InPools", CIMValue(Array<String>(1, pool.toString()))));
    EXPECT_EQ(Call("CreateOrModifyStoragePool", concrete).result, 1u) << "a concrete pool as source";

    Outcome none = PoolBySize(0, raid1Goal);
    EXPECT_EQ(none.result, 4097u) << "no size";
    EXPECT_GT(none.size(), 0u);
    Outcome huge = PoolBySize(std::numeric_limits<Uint64>::max(), raid1Goal);
    EXPECT_EQ(huge.result, 4097u);
    EXPECT_LT(huge.size(), 7 * 64 * GiB);
    EXPECT_EQ(Queued(), 0);
    EXPECT_EQ(FreeDisks(), 7u);

    EXPECT_EQ(PoolBySize(huge.size(), raid1Goal).result, 4096u) << "the size offered";
    EXPECT_EQ(Queued(), 1);
}

TEST_F(ConfigurationController, DeletingPoolsAndReturningVolumes) {
    Array<CIMParamValue> deleteUsed;
    deleteUsed.append(P("pool", CIMValue(pool)));
    EXPECT_EQ(Call("DeleteStoragePool", deleteUsed).result, 4u) << "a pool with a volume";
    Array<CIMParamValue> deletePrimordial;
    deletePrimordial.append(P("Pool", CIMValue(primordial)));
    EXPECT_EQ(Call("DeleteStoragePool", deletePrimordial).result, 1u);

    const CIMObjectPath shared = AddVolume("0001", "0001", GiB, "LD Set(FC)");
    Array<CIMParamValue> returnShared;
    returnShared.append(P("TheElement", CIMValue(shared)));
    EXPECT_EQ(Call("ReturnToStoragePool", returnShared).result, 1u) << "a volume in an LD set";
    EXPECT_EQ(Queued(), 0);

    Array<CIMParamValue> returnPlain;
    returnPlain.append(P("theelement", CIMValue(volume)));
    Outcome outcome = Call("ReturnToStoragePool", returnPlain);
    EXPECT_EQ(outcome.result, 4096u);
    EXPECT_TRUE(outcome.has("Job"));

    const CIMObjectPath empty = AddPool(Pool("0002", "RAID1", 60 * GiB, 60 * GiB));
    Array<CIMParamValue> deleteEmpty;
    deleteEmpty.append(P("Pool", CIMValue(empty)));
    EXPECT_EQ(Call("DeleteStoragePool", deleteEmpty).result, 4096u);
    EXPECT_EQ(Queued(), 2);
}

}  // namespace
