// Volumes and settings on what the simulated array reports: its view
// document through the parser into the disk, pool and volume models, with
// the composite extents following the pools as the provider wires them.

#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CompositeExtent.h"
#include "ComputerSystem.h"
#include "DiskDrive.h"
#include "ElementSettingData.h"
#include "MC.h"
#include "PrimordialPool.h"
#include "StoragePool.h"
#include "StorageVolume.h"
#include "XMLParser.h"
#include "../Pipeline/SimulatorRun.h"
#include "VolumeTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;
using modeltest::prop;
using volumetest::ARRAY_ID;

namespace {

using simrun::SIM_BIN;

class SimulatorVolumes : public volumetest::VolumeFixture {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/volume-sim-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        root = pattern;
        ::setenv("SMIS_ROOT", root.c_str(), 1);
        VolumeFixture::SetUp();
        StoragePool::AfterCreated += &CompositeExtent::OnCreate;
        StoragePool::AfterModified += &CompositeExtent::OnModify;
        StoragePool::BeforeDeleted += &CompositeExtent::OnDelete;
    }
    void TearDown() override {
        StoragePool::AfterCreated.Clear();
        StoragePool::AfterModified.Clear();
        StoragePool::BeforeDeleted.Clear();
        for (RawData* record : records) record->Release();
        VolumeFixture::TearDown();
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
        ::unsetenv("SMIS_ROOT");
    }

    // The records of one type from the simulator's view, under the test's
    // array id.
    std::vector<RawData*> View(int type) {
        XMLParser parser;
        EXPECT_TRUE(simrun::runView(parser, false));
        std::vector<RawData*> out;
        parser.QueryData(out, type);
        for (RawData* record : out) {
            record->arrayId = ARRAY_ID;
            records.push_back(record);
        }
        return out;
    }

    std::string root;
    std::vector<RawData*> records;

    void LoadAndCheck(const std::string& name);
};

void SimulatorVolumes::LoadAndCheck(const std::string& name) {
    ASSERT_EQ(::system((SIM_BIN + "/arraysim init --template " + name + " >/dev/null 2>&1").c_str()), 0)
        << "simulator at " << SIM_BIN;
    ArrayRawData* array = MakeArray(ARRAY_ID, "ready");
    records.push_back(array);
    DataEventArgs arrayArgs(context, array, nullptr, ARRAY_ID);
    ComputerSystem system;
    system.Create(&arrayArgs);   // with the array comes its primordial pool

    // Disks, pools, volumes: the order of a load.
    DiskDrive disks;
    for (RawData* record : View(RAWDATA_PD)) {
        Store(record);
        DataEventArgs args(context, record, nullptr, ARRAY_ID);
        disks.Create(&args);
    }
    std::vector<RawData*> poolRecords = View(RAWDATA_POOL);
    ASSERT_FALSE(poolRecords.empty());
    StoragePool pools;
    for (RawData* record : poolRecords) {
        Store(record);
        DataEventArgs args(context, record, nullptr, ARRAY_ID);
        pools.Create(&args);
    }
    std::vector<RawData*> lds = View(RAWDATA_LD);
    ASSERT_FALSE(lds.empty());
    StorageVolume volumes;
    std::vector<CIMObjectPath> volumePaths;
    for (RawData* record : lds) {
        Store(record);
        DataEventArgs args(context, record, nullptr, ARRAY_ID);
        volumePaths.push_back(volumes.Create(&args));
    }

    for (RawData* record : poolRecords) {
        const PoolRawData* pool = static_cast<const PoolRawData*>(record);
        CIMObjectPath master = CompositeExtent::WrapReference(pool->poolNo, ARRAY_ID);
        ASSERT_TRUE(walking->has(master)) << pool->poolNo << " " << pool->RAIDType;
        EXPECT_GT(prop<Uint64>(walking->get(master), "NumberOfBlocks"), 0u) << pool->RAIDType;
    }
    EXPECT_EQ(walking->count("ORV_Storage_StorageVolume"), lds.size());
    std::map<std::string, int> volumeLinks;
    for (const char* cls : {"ORV_Storage_AllocatedFromStoragePool", "ORV_Storage_BasedOn"})
        for (const CIMInstance& link : walking->of(cls)) {
            CIMObjectPath dependent = prop<CIMObjectPath>(link, "Dependent");
            if (dependent.getClassName().equal(MC::ClassName("StorageVolume"))) ++volumeLinks[cls];
        }
    EXPECT_EQ(volumeLinks["ORV_Storage_AllocatedFromStoragePool"], int(lds.size()));
    EXPECT_EQ(volumeLinks["ORV_Storage_BasedOn"], int(lds.size()));

    // A volume's setting comes from its pool's hint on the first request.
    volumetest::RecordingObjects objects;
    const CIMName assoc = MC::ClassName("ElementSettingData");
    const CIMName result = MC::ClassName("StorageSetting");
    const String noRole;
    const CIMPropertyList properties;
    AssoArgs ask(context, volumePaths[0], assoc, result, noRole, noRole, false, false, properties, objects);
    ElementSettingData().Associator(ask, "StorageVolume", "StorageSetting");
    ASSERT_EQ(objects.delivered.size(), 1u);
    const LdRawData* first = static_cast<const LdRawData*>(lds[0]);
    EXPECT_EQ(prop<Uint16>(CIMInstance(objects.delivered[0]), "DataRedundancyGoal") != 0,
              StoragePool::GetPoolType(first->raidType) != 0);
}

TEST_F(SimulatorVolumes, SmallTemplate) { LoadAndCheck("small"); }

TEST_F(SimulatorVolumes, MediumTemplate) { LoadAndCheck("medium"); }

}  // namespace
