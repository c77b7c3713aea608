// Disks and pools as the simulated array reports them: its view document
// through the parser into the disk and pool models, and the size queries on
// the result.

#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "DataFlow.h"
#include "DiskDrive.h"
#include "PrimordialPool.h"
#include "StoragePool.h"
#include "StoragePoolController.h"
#include "XMLParser.h"
#include "../Pipeline/SimulatorRun.h"
#include "PoolTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;

namespace {

using simrun::SIM_BIN;

class NoResult : public MethodResultResponseHandler {
public:
    void processing() override {}
    void complete() override {}
    void deliverParamValue(const CIMParamValue&) override {}
    void deliver(const CIMValue&) override {}
};

class SimulatorPools : public pooltest::PoolFixture, public ::testing::WithParamInterface<const char*> {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/pool-sim-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        root = pattern;
        const char* before = ::getenv("SMIS_ROOT");
        hadRoot = before != nullptr;
        if (hadRoot) previousRoot = before;
        ::setenv("SMIS_ROOT", root.c_str(), 1);
        ASSERT_EQ(::system((SIM_BIN + "/arraysim init --template " + GetParam() + " >/dev/null 2>&1").c_str()), 0)
            << "simulator at " << SIM_BIN;
        PoolFixture::SetUp();
    }
    void TearDown() override {
        PoolFixture::TearDown();
        for (RawData* record : records) record->Release();
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
        if (hadRoot)
            ::setenv("SMIS_ROOT", previousRoot.c_str(), 1);
        else
            ::unsetenv("SMIS_ROOT");
    }

    // The records of one type from the simulator's view, the array's id put
    // where the models look for it.
    std::vector<RawData*> View(int type) {
        XMLParser parser;
        EXPECT_TRUE(simrun::runView(parser, false));
        std::vector<RawData*> out;
        parser.QueryData(out, type);
        for (RawData* record : out) {
            record->arrayId = WWN;
            records.push_back(record);
        }
        return out;
    }

    std::string root;
    std::string previousRoot;
    bool hadRoot = false;
    std::vector<RawData*> records;
};

TEST_P(SimulatorPools, PoolsTakeTheirDisksAndTheirSizes) {
    DataEventArgs arrayArgs(context, array, nullptr, WWN);
    if (!repository->has(PrimordialPool::GetPath(WWN))) {
        PrimordialPool primordial;
        primordial.Create(&arrayArgs);
    }
    // Disks before pools, as a load adds them.
    std::vector<RawData*> disks = View(RAWDATA_PD);
    ASSERT_FALSE(disks.empty());
    unsigned long long all = 0;
    DiskDrive diskModel;
    for (RawData* record : disks) {
        all += static_cast<PdRawData*>(record)->PDCapacity;
        DataEventArgs args(context, record, nullptr, WWN);
        diskModel.Create(&args);
    }
    std::vector<RawData*> pools = View(RAWDATA_POOL);
    ASSERT_FALSE(pools.empty());
    StoragePool poolModel;
    for (RawData* record : pools) {
        Store(record);
        DataEventArgs args(context, record, nullptr, WWN);
        poolModel.Create(&args);
    }
    PrimordialPool primordial;
    std::vector<RawData*> none;
    HandleDataArgs loaded(&context, RAWDATA_PD, 0, WWN, &none);
    primordial.UpdateInstance(&loaded);

    EXPECT_EQ(repository->count("ORV_Storage_DiskDrive"), disks.size());
    EXPECT_EQ(repository->count("ORV_Storage_StorageExtent"), disks.size());
    CIMInstance primordialPool = repository->get(PrimordialPool::GetPath(WWN));
    EXPECT_EQ(modeltest::prop<Uint64>(primordialPool, "TotalManagedSpace"), all);

    // Each pool's allocation is the sum of the disks that report its number,
    // and it can say to what sizes it can grow.
    for (RawData* record : pools) {
        PoolRawData* pool = static_cast<PoolRawData*>(record);
        unsigned long long own = 0;
        int freeOfItsType = 0;
        for (RawData* d : disks) {
            PdRawData* pd = static_cast<PdRawData*>(d);
            if (pd->classification != "not set" &&
                std::stoul(pd->rankGroupNumber, nullptr, 16) == std::stoul(pool->poolNo, nullptr, 16))
                own += pd->PDCapacity;
            if (pd->classification == "not set" && pd->type == pool->PDType && pd->state == "ready") ++freeOfItsType;
        }
        ASSERT_GT(own, 0u) << pool->poolNo;
        CIMObjectPath path = Model::AdjustObjectPath(StoragePool::WrapReference(pool->poolNo, WWN));
        bool found = false;
        for (const CIMInstance& a : repository->of("ORV_Storage_AllocatedFromStoragePool")) {
            if (modeltest::canonical(modeltest::prop<CIMObjectPath>(a, "Dependent")) != modeltest::canonical(path))
                continue;
            found = true;
            EXPECT_EQ(modeltest::prop<Uint64>(a, "SpaceConsumed"), own) << pool->poolNo;
        }
        EXPECT_TRUE(found) << pool->poolNo;

        Array<CIMParamValue> in, out;
        in.append(CIMParamValue(String("ElementType"), CIMValue(Uint16(2))));
        CIMName method("GetSupportedSizes");
        NoResult handler;
        InvokeMethodArgs call(context, path, method, in, out, handler);
        StoragePoolController controller;
        Uint32 result = 99;
        controller.Invoke(call, out).get(result);
        EXPECT_EQ(result, 0u);
        Array<Uint64> sizes;
        ASSERT_EQ(out.size(), 1u);
        out[0].getValue().get(sizes);
        ASSERT_FALSE(sizes.size() == 0);
        // A pool grows only by free disks of its own kind.
        EXPECT_EQ(sizes[0] > 0, freeOfItsType > 0) << pool->poolNo << " of " << pool->PDType;
    }
}

INSTANTIATE_TEST_SUITE_P(Templates, SimulatorPools, ::testing::Values("small", "medium"));

}  // namespace
