// The size queries of pools: element types, goals, the sizes a pool can be
// made or grow to, and the range of volume sizes it can give.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMProperty.h>

#include "PrimordialPool.h"
#include "StoragePool.h"
#include "StoragePoolController.h"
#include "PoolTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;

namespace {

const Uint64 GiB = 0x40000000ULL;

class NoResult : public MethodResultResponseHandler {
public:
    void processing() override {}
    void complete() override {}
    void deliverParamValue(const CIMParamValue&) override {}
    void deliver(const CIMValue&) override {}
};

// A call's outcome: the return value and the output parameters by name.
struct Outcome {
    Uint32 result = 9999;
    Array<CIMParamValue> out;

    bool has(const char* name) const {
        for (Uint32 i = 0; i < out.size(); ++i)
            if (out[i].getParameterName() == name) return true;
        return false;
    }
    CIMValue value(const char* name) const {
        for (Uint32 i = 0; i < out.size(); ++i)
            if (out[i].getParameterName() == name) return out[i].getValue();
        ADD_FAILURE() << "no output " << name;
        return CIMValue();
    }
    std::vector<Uint64> sizes() const {
        Array<Uint64> values;
        value("Sizes").get(values);
        return std::vector<Uint64>(values.begin(), values.end());
    }
    Uint64 number(const char* name) const {
        Uint64 v = 0;
        value(name).get(v);
        return v;
    }
};

class SizeQueryTest : public pooltest::PoolFixture {
protected:
    void SetUp() override {
        PoolFixture::SetUp();
        // Pool 0001, RAID1 of two 64 GiB disks; free SAS disks of 32, 64 and
        // 64 GiB.
        AddPd("00-00", 64 * GiB, "pool", "01");
        AddPd("00-01", 64 * GiB, "pool", "01");
        AddPd("00-02", 32 * GiB);
        AddPd("00-03", 64 * GiB);
        AddPd("00-04", 64 * GiB);
        plain = AddPool(Pool("0001", "RAID1", 120 * GiB, 0x20000000ULL));
        // The array's creation made the primordial pool.
        primordialPath = PrimordialPool::GetPath(WWN);
        raid1Goal = Goal("raid1", 2, 1);
        raid5Goal = Goal("raid5", 1, 1);
        oddGoal = Goal("odd", 7, 7);
    }

    CIMObjectPath AddPool(PoolRawData* pool) {
        Store(pool);
        StoragePool model;
        CIMInstance instance = model.WrapInstance(pool, WWN);
        repository->createInstance(context, CIMNamespaceName("root/orv"), instance);
        return instance.getPath();
    }

    CIMObjectPath Goal(const std::string& id, Uint16 data, Uint16 package) {
        CIMInstance goal(CIMName("ORV_Storage_StorageSetting"));
        goal.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(String(id.c_str()))));
        goal.addProperty(CIMProperty(CIMName("DataRedundancyGoal"), CIMValue(data)));
        goal.addProperty(CIMProperty(CIMName("PackageRedundancyGoal"), CIMValue(package)));
        goal.addProperty(CIMProperty(CIMName("StorageEfficiencyHint"), CIMValue(Uint16(5))));
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding(CIMName("InstanceID"), String(id.c_str()), CIMKeyBinding::STRING));
        goal.setPath(CIMObjectPath(String(), CIMNamespaceName(), goal.getClassName(), keys));
        return repository->createInstance(context, CIMNamespaceName("root/orv"), goal);
    }

    static Array<CIMParamValue> Params(const CIMValue& elementType, const CIMObjectPath& goal = CIMObjectPath()) {
        Array<CIMParamValue> in;
        if (!elementType.isNull()) in.append(CIMParamValue(String("ElementType"), elementType));
        if (goal.getKeyBindings().size() > 0) in.append(CIMParamValue(String("Goal"), CIMValue(goal)));
        return in;
    }

    Outcome Call(const char* method, const CIMObjectPath& pool, const Array<CIMParamValue>& in) {
        Outcome outcome;
        CIMName name(method);
        NoResult handler;
        InvokeMethodArgs args(context, pool, name, in, outcome.out, handler);
        StoragePoolController controller;
        CIMValue result = controller.Invoke(args, outcome.out);
        result.get(outcome.result);
        return outcome;
    }
    Outcome Sizes(const CIMObjectPath& pool, Uint16 elementType, const CIMObjectPath& goal = CIMObjectPath()) {
        return Call("GetSupportedSizes", pool, Params(CIMValue(elementType), goal));
    }
    Outcome Range(const CIMObjectPath& pool, Uint16 elementType, const CIMObjectPath& goal = CIMObjectPath()) {
        return Call("GetSupportedSizeRange", pool, Params(CIMValue(elementType), goal));
    }

    CIMObjectPath plain;
    CIMObjectPath primordialPath;
    CIMObjectPath raid1Goal;
    CIMObjectPath raid5Goal;
    CIMObjectPath oddGoal;
};

TEST_F(SizeQueryTest, ElementTypesEachQueryDoesNotServe) {
    struct Row {
        const char* method;
        Uint16 elementType;
        Uint32 result;
    };
    const Row rows[] = {
        {"GetSupportedSizes", 3, 2},     {"GetSupportedSizes", 4, 1},     {"GetSupportedSizes", 5, 2},
        {"GetSupportedSizeRange", 2, 2}, {"GetSupportedSizeRange", 4, 1},
    };
    for (const Row& row : rows) {
        Outcome outcome = Call(row.method, plain, Params(CIMValue(row.elementType)));
        EXPECT_EQ(outcome.result, row.result) << row.method << " " << row.elementType;
        EXPECT_EQ(outcome.out.size(), 0u) << row.method << " " << row.elementType;
    }
    EXPECT_EQ(Call("GetAvailableExtents", plain, Params(CIMValue(Uint16(2)))).result, 1u);
}

TEST_F(SizeQueryTest, UnknownMissingOrMistypedElementTypesAreRefused) {
    const std::vector<std::pair<const char*, CIMValue>> rows = {
        {"GetSupportedSizes", CIMValue(Uint16(0))},      {"GetSupportedSizes", CIMValue(Uint16(6))},
        {"GetSupportedSizes", CIMValue(Uint16(65535))},  {"GetSupportedSizes", CIMValue()},
        {"GetSupportedSizes", CIMValue(String("2"))},    {"GetSupportedSizes", CIMValue(Sint32(-2))},
        {"GetSupportedSizeRange", CIMValue(Uint16(5))},  {"GetSupportedSizeRange", CIMValue(Uint16(1))},
        {"GetSupportedSizeRange", CIMValue()},           {"GetSupportedSizeRange", CIMValue(Boolean(true))},
    };
    for (const auto& row : rows) {
        try {
            Call(row.first, plain, Params(row.second));
            ADD_FAILURE() << row.first << " took " << row.second.toString().toUtf8();
        } catch (const CIMException& e) {
            EXPECT_EQ(e.getCode(), CIM_ERR_INVALID_PARAMETER) << row.first;
        }
    }
    // A Goal that is no reference at all.
    Array<CIMParamValue> in = Params(CIMValue(Uint16(2)));
    in.append(CIMParamValue(String("Goal"), CIMValue(Uint32(7))));
    EXPECT_THROW(Call("GetSupportedSizes", plain, in), CIMException);
}

TEST_F(SizeQueryTest, ConcretePoolsGrowByDisksAsLargeAsTheirOwn) {
    // Base 2 of 64 GiB with the two free 64 GiB disks (the 32 GiB one is too
    // small): 2, 3 and 4 disks, less 4 GiB of work space per group.
    const std::vector<Uint64> expected = {60 * GiB, 92 * GiB, 120 * GiB};
    Outcome outcome = Sizes(plain, 2);
    EXPECT_EQ(outcome.result, 0u);
    EXPECT_EQ(outcome.sizes(), expected);
    // A goal is not needed, but one of a known RAID type is taken.
    EXPECT_EQ(Sizes(plain, 2, raid1Goal).sizes(), expected);
    EXPECT_EQ(Sizes(plain, 2, oddGoal).result, 1u);

    // Disks claimed by a pending job are not offered again; with no free
    // disk left the pool has nothing to grow by.
    std::list<structPDInfo*> free;
    PDmanager::Instance()->GetPdListByType("SAS", free);
    free.pop_front();  // the small disk
    free.pop_front();  // one large disk stays free
    PDmanager::Instance()->MarkBeSelectedPD(free);
    EXPECT_EQ(Sizes(plain, 2).sizes(), (std::vector<Uint64>{60 * GiB, 92 * GiB}));
    free.clear();
    PDmanager::Instance()->GetPdListByType("SAS", free);
    PDmanager::Instance()->MarkBeSelectedPD(free);
    EXPECT_EQ(Sizes(plain, 2).sizes(), (std::vector<Uint64>{0}));
}

TEST_F(SizeQueryTest, PoolsThatCannotGrowAnswerAZero) {
    struct Row {
        const char* what;
        const char* raid;
        const char* noBPD;
        const char* number;
    };
    const Row rows[] = {
        {"unknown RAID text", "RAID 1", "2", "0005"},
        {"no base disks", "RAID1", "0", "0006"},
        {"no disks in the index", "RAID1", "2", "0007"},
    };
    for (const Row& row : rows) {
        PoolRawData* pool = Pool(row.number, row.raid, 10 * GiB, 5 * GiB);
        pool->noBPD = row.noBPD;
        CIMObjectPath path = AddPool(pool);
        Outcome outcome = Sizes(path, 2);
        EXPECT_EQ(outcome.result, 0u) << row.what;
        EXPECT_EQ(outcome.sizes(), (std::vector<Uint64>{0})) << row.what;
    }
    // A pool instance without its record.
    StoragePool model;
    PoolRawData* unstored = Pool("0009", "RAID1", 10 * GiB, 5 * GiB);
    repository->createInstance(context, CIMNamespaceName("root/orv"), model.WrapInstance(unstored, WWN));
    EXPECT_EQ(Sizes(StoragePool::WrapReference("0009", WWN), 2).sizes(), (std::vector<Uint64>{0}));
}

TEST_F(SizeQueryTest, PrimordialPoolSizesNeedAGoal) {
    EXPECT_EQ(Sizes(primordialPath, 2).result, 1u);
    EXPECT_EQ(Sizes(primordialPath, 2, oddGoal).result, 1u);
    // New RAID1 pools over the free disks, sized by the smallest: 2 and 3
    // disks of 32 GiB.
    Outcome outcome = Sizes(primordialPath, 2, raid1Goal);
    EXPECT_EQ(outcome.result, 0u);
    EXPECT_EQ(outcome.sizes(), (std::vector<Uint64>{28 * GiB, 44 * GiB}));

    PDmanager::Instance()->Destroy();
    outcome = Sizes(primordialPath, 2, raid1Goal);
    EXPECT_EQ(outcome.result, 0u);
    EXPECT_EQ(outcome.sizes(), (std::vector<Uint64>{0}));
}

TEST_F(SizeQueryTest, VolumeSizeRangesFollowFreeSpaceAndPoolKind) {
    struct Row {
        const char* what;
        const char* poolType;
        Uint64 freeCapacity;
        Uint64 minimum, maximum, divisor;
    };
    const Row rows[] = {
        {"plain", "dynamic", 0x20000000ULL, 0xFE00000ULL, 0x20000000ULL, 0x100000ULL},
        {"plain, just enough", "dynamic", 0xFE00000ULL, 0xFE00000ULL, 0xFE00000ULL, 0x100000ULL},
        {"plain, too little", "dynamic", 0xFDFFFFFULL, 0, 0, 0},
        {"thin", "virtual", 2 * GiB, 0x40000000ULL, 2 * GiB, 0x100000ULL},
        {"thin, too little", "virtual", 0x20000000ULL, 0, 0, 0},
        {"plain, huge", "dynamic", 0xFFFFFFFFFFFFFFFFULL, 0xFE00000ULL, 0xFFFFFFFFFFFFFFFFULL, 0x100000ULL},
    };
    int n = 0x10;
    for (const Row& row : rows) {
        char number[8];
        snprintf(number, sizeof number, "%04x", n++);
        PoolRawData* pool = Pool(number, "RAID1", 100 * GiB, row.freeCapacity, row.poolType);
        CIMObjectPath path = AddPool(pool);
        Outcome outcome = Range(path, 3);
        EXPECT_EQ(outcome.result, 0u) << row.what;
        ASSERT_EQ(outcome.out.size(), 3u) << row.what;
        EXPECT_EQ(outcome.out[0].getParameterName(), "MinimumVolumeSize");
        EXPECT_EQ(outcome.out[1].getParameterName(), "MaximumVolumeSize");
        EXPECT_EQ(outcome.out[2].getParameterName(), "VolumeSizeDivisor");
        EXPECT_EQ(outcome.number("MinimumVolumeSize"), row.minimum) << row.what;
        EXPECT_EQ(outcome.number("MaximumVolumeSize"), row.maximum) << row.what;
        EXPECT_EQ(outcome.number("VolumeSizeDivisor"), row.divisor) << row.what;
    }
}

TEST_F(SizeQueryTest, VolumeSizeRangesRefuseWhatNoVolumeCanComeFrom) {
    EXPECT_EQ(Range(primordialPath, 3).result, 1u);
    EXPECT_EQ(Range(plain, 3, raid5Goal).result, 1u);
    EXPECT_EQ(Range(plain, 3, oddGoal).result, 1u);
    Outcome matching = Range(plain, 3, raid1Goal);
    EXPECT_EQ(matching.result, 0u);
    EXPECT_TRUE(matching.has("MaximumVolumeSize"));

    StoragePool model;
    PoolRawData* unstored = Pool("0009", "RAID1", 10 * GiB, 5 * GiB);
    repository->createInstance(context, CIMNamespaceName("root/orv"), model.WrapInstance(unstored, WWN));
    Outcome missing = Range(StoragePool::WrapReference("0009", WWN), 3);
    EXPECT_EQ(missing.result, 1u);
    EXPECT_EQ(missing.out.size(), 0u);
    // A pool the repository does not know is the client's error.
    EXPECT_THROW(Range(StoragePool::WrapReference("0abc", WWN), 3), CIMException);
}

}  // namespace
