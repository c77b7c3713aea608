// The classes of disks and pools, checked by the real CIM server: every
// instance the models write for an array with disks and pools is loaded
// from MOF, and the server refuses to start when the schema lacks a class
// or property the models use.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMProperty.h>

#include "DataFlow.h"
#include "DiskDrive.h"
#include "PrimordialPool.h"
#include "StoragePool.h"
#include "PoolTestSupport.h"
#include "../Model/SchemaServerCheck.h"

using namespace Pegasus;
using namespace orvsmis;
namespace fs = std::filesystem;

namespace {

using namespace schemacheck;


class PoolSchema : public pooltest::PoolFixture {
protected:
    // The disk, pool and link instances the models leave after an array with
    // a free disk, a pool disk and a plain and a thin pool has been loaded.
    std::string loadedPoolsAsMof() {
        DataEventArgs arrayArgs(context, array, nullptr, WWN);
        if (!repository->has(PrimordialPool::GetPath(WWN))) {
            PrimordialPool primordial;
            primordial.Create(&arrayArgs);
        }
        DiskDrive disks;
        for (PdRawData* pd : {Pd("00-00", 1200000000000ULL), Pd("00-01", 1200000000000ULL, "data", "01")}) {
            DataEventArgs args(context, pd, nullptr, WWN);
            disks.Create(&args);
        }
        StoragePool pools;
        PoolRawData* thin = Pool("0002", "RAID6", 10000000000ULL, 5000000000ULL, "virtual");
        for (PoolRawData* pool : {Pool("0001", "RAID1", 1000000000ULL, 500000000ULL), thin}) {
            DataEventArgs args(context, pool, nullptr, WWN);
            pools.Create(&args);
        }
        PrimordialPool primordial;
        std::vector<RawData*> none;
        HandleDataArgs loaded(&context, RAWDATA_PD, 0, WWN, &none);
        primordial.UpdateInstance(&loaded);

        std::string mof = "#pragma namespace (\"root/orv\")\n\n";
        // Referenced instances first.
        for (const char* cls : {"ORV_Storage_ComputerSystem", "ORV_Storage_DiskDrive", "ORV_Storage_StorageExtent",
                                "ORV_Storage_StoragePool", "ORV_Storage_SystemDevice", "ORV_Storage_MediaPresent",
                                "ORV_Storage_HostedStoragePool", "ORV_Storage_AllocatedFromStoragePool",
                                "ORV_Storage_AssociatedComponentExtent", "ORV_Storage_AssociatedRemainingExtent",
                                "ORV_Storage_ConcreteComponent"}) {
            std::vector<CIMInstance> found = repository->of(cls);
            EXPECT_FALSE(found.empty()) << cls;
            for (const CIMInstance& instance : found) mof += mofInstance(instance);
        }
        return mof;
    }
};

TEST_F(PoolSchema, TheServerTakesEveryDiskAndPoolInstance) {
    ServerRoot root;
    std::ofstream(root.schema + "/90-pool-instances.mof") << loadedPoolsAsMof();
    std::string output;
    EXPECT_TRUE(root.start(output)) << output;
}

TEST_F(PoolSchema, TheServerRefusesAPropertyTheSchemaLacks) {
    ServerRoot root;
    std::string mof = loadedPoolsAsMof();
    const std::string anchor = "    PoolID = \"All PD\";\n";
    size_t at = mof.find(anchor);
    ASSERT_NE(std::string::npos, at);
    mof.insert(at + anchor.size(), "    PoolColour = \"blue\";\n");
    std::ofstream(root.schema + "/90-pool-instances.mof") << mof;
    std::string output;
    EXPECT_FALSE(root.start(output));
    EXPECT_NE(std::string::npos, output.find("PoolColour")) << output;
}

}  // namespace
