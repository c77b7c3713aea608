// The volume and settings classes checked by the real CIM server: the
// instances the models write are declared in MOF, and the server refuses to
// start when the schema lacks a class or property they use.

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
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "CompositeExtent.h"
#include "ElementSettingData.h"
#include "MC.h"
#include "StorageCapability.h"
#include "StorageClientSettingData.h"
#include "StorageConfigurationCapability.h"
#include "StoragePool.h"
#include "StorageVolume.h"
#include "VolumeTestSupport.h"
#include "../Model/SchemaServerCheck.h"

using namespace Pegasus;
using namespace orvsmis;
using volumetest::ARRAY_ID;
namespace fs = std::filesystem;

namespace {

using namespace schemacheck;


class VolumeSchema : public volumetest::VolumeFixture {
protected:
    // Every class of volumes and settings as the models write it, with the
    // associations whose two ends are among them.
    std::string modelsAsMof() {
        PoolRawData* pool = MakePool("0001", "RAID1/10", "virtual");
        Store(pool);
        CIMObjectPath poolPath = Model::AdjustObjectPath(StoragePool::WrapReference("0001", ARRAY_ID));
        CIMInstance poolInstance(MC::ClassName("StoragePool"));
        poolInstance.setPath(poolPath);
        walking->createInstance(context, MC::Namespace(), poolInstance);
        AddDisks("0001", 4, 1000);
        DataEventArgs poolEvent(context, pool, nullptr, ARRAY_ID);
        ParentArgs poolArgs(poolEvent, poolPath);
        CompositeExtent::OnCreate(poolArgs);
        StorageCapabilityArgs capabilityArgs(context, pool, 2, poolPath, false, true);
        StorageCapability::Create(&capabilityArgs);

        LdRawData* ld = MakeLd("0010", "0001", "RAID1/10", "ready", "LD Set(FC)");
        ld->RPLAttribute = "RV";
        Store(ld);
        StorageVolume volumes;
        DataEventArgs ldEvent(context, ld, nullptr, ARRAY_ID);
        CIMObjectPath volume = volumes.Create(&ldEvent);
        volumetest::RecordingObjects objects;
        const CIMName assoc = MC::ClassName("ElementSettingData");
        const CIMName result = MC::ClassName("StorageSetting");
        const String noRole;
        const CIMPropertyList properties;
        AssoArgs ask(context, volume, assoc, result, noRole, noRole, false, false, properties, objects);
        ElementSettingData().Associator(ask, "StorageVolume", "StorageSetting");
        EXPECT_EQ(objects.delivered.size(), 1u);

        ArrayRawData* array = MakeArray(ARRAY_ID, "ready");
        DataEventArgs arrayEvent(context, array, nullptr, ARRAY_ID);
        CIMObjectPath service(String(), CIMNamespaceName(), MC::ClassName("StorageConfigurationService"),
                              Array<CIMKeyBinding>());
        ParentArgs serviceArgs(arrayEvent, service);
        StorageConfigurationCapability::Create(&serviceArgs);

        std::set<std::string> written;
        std::string mof = "#pragma namespace (\"root/orv\")\n\n";
        for (const char* cls : {"StorageVolume", "CompositeExtent", "StorageCapabilities", "StorageSettingWithHints",
                                "StorageSetting", "StorageConfigurationCapabilities"}) {
            std::vector<CIMInstance> found = walking->of(MC::ClassNameText(cls));
            EXPECT_FALSE(found.empty()) << cls;
            for (const CIMInstance& instance : found) {
                mof += mofInstance(instance);
                written.insert(modeltest::canonical(instance.getPath()));
            }
        }
        for (const char* cls : {"StorageSettingsAssociatedToCapabilities", "CompositeExtentBasedOn", "BasedOn",
                                "ElementSettingData"}) {
            size_t kept = 0;
            for (const CIMInstance& link : walking->of(MC::ClassNameText(cls))) {
                bool inside = true;
                for (Uint32 i = 0; i < link.getPropertyCount(); ++i) {
                    CIMConstProperty p = link.getProperty(i);
                    if (p.getType() != CIMTYPE_REFERENCE) continue;
                    CIMObjectPath ref;
                    p.getValue().get(ref);
                    if (!written.count(modeltest::canonical(ref))) inside = false;
                }
                if (!inside) continue;
                mof += mofInstance(link);
                ++kept;
            }
            EXPECT_GT(kept, 0u) << cls;
        }
        ArrayRawData* platformArray = array;
        ParentArgs platformArgs(arrayEvent, Model::AdjustObjectPath(ComputerSystem().WrapReference(platformArray)));
        for (unsigned i = 0; i < StorageClientSettingData::m_platformCount; ++i)
            mof += mofInstance(StorageClientSettingData::WrapInstance(platformArgs, StorageClientSettingData::m_platforms[i]));
        pool->Release();
        ld->Release();
        array->Release();
        return mof;
    }
};

TEST_F(VolumeSchema, TheServerTakesEverythingTheModelsWrite) {
    ServerRoot root;
    std::ofstream(root.schema + "/90-volume-instances.mof") << modelsAsMof();
    std::string output;
    EXPECT_TRUE(root.start(output)) << output;
}

}  // namespace
