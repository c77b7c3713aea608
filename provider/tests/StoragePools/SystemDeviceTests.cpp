// The associator answers between the array and its volumes.

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMProperty.h>

#include "SystemDevice.h"
#include "PoolTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;

namespace {

class Objects : public ObjectResponseHandler {
public:
    std::vector<CIMObject> delivered;
    bool completed = false;
    void processing() override {}
    void complete() override { completed = true; }
    void deliver(const CIMObject& object) override { delivered.push_back(object); }
};

class Paths : public ObjectPathResponseHandler {
public:
    std::vector<CIMObjectPath> delivered;
    bool completed = false;
    void processing() override {}
    void complete() override { completed = true; }
    void deliver(const CIMObjectPath& path) override { delivered.push_back(path); }
};

class SystemDeviceTest : public pooltest::PoolFixture {
protected:
    void SetUp() override {
        PoolFixture::SetUp();
        AddVolume("0000", WWN);
        AddVolume("0001", WWN);
        AddVolume("0000", "2000000991000099");
        other = AddSystem("2000000991000099");
    }

    CIMObjectPath AddVolume(const std::string& ldn, const std::string& system) {
        CIMInstance volume(CIMName("ORV_Storage_StorageVolume"));
        volume.addProperty(CIMProperty(CIMName("SystemName"), CIMValue(String(system.c_str()))));
        volume.addProperty(CIMProperty(CIMName("DeviceID"), CIMValue(String(ldn.c_str()))));
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding(CIMName("SystemName"), String(system.c_str()), CIMKeyBinding::STRING));
        keys.append(CIMKeyBinding(CIMName("DeviceID"), String(ldn.c_str()), CIMKeyBinding::STRING));
        volume.setPath(CIMObjectPath(String(), CIMNamespaceName(), volume.getClassName(), keys));
        return repository->createInstance(context, CIMNamespaceName("root/orv"), volume);
    }
    CIMObjectPath AddSystem(const std::string& name) {
        CIMInstance system(CIMName("ORV_Storage_ComputerSystem"));
        system.addProperty(CIMProperty(CIMName("Name"), CIMValue(String(name.c_str()))));
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding(CIMName("Name"), String(name.c_str()), CIMKeyBinding::STRING));
        system.setPath(CIMObjectPath(String(), CIMNamespaceName(), system.getClassName(), keys));
        return repository->createInstance(context, CIMNamespaceName("root/orv"), system);
    }

    std::vector<std::string> NamesFrom(const CIMObjectPath& source, const std::string& objectClass,
                                       const std::string& resultClass = "") {
        CIMName assoc("ORV_Storage_SystemDevice");
        CIMName result;
        String role, resultRole;
        Paths paths;
        AssoNameArgs args(context, source, assoc, result, role, resultRole, paths);
        SystemDevice controller;
        controller.AssociatorNames(args, objectClass, resultClass);
        EXPECT_TRUE(paths.completed);
        std::vector<std::string> out;
        for (const CIMObjectPath& p : paths.delivered) out.push_back(modeltest::canonical(p));
        std::sort(out.begin(), out.end());
        return out;
    }

    CIMObjectPath other;
};

TEST_F(SystemDeviceTest, TheArrayLeadsToItsOwnVolumesAndBack) {
    CIMObjectPath array = ComputerSystem::GetPath(WWN);
    std::vector<std::string> volumes = NamesFrom(array, "ComputerSystem");
    ASSERT_EQ(volumes.size(), 2u);
    for (const std::string& v : volumes) EXPECT_NE(v.find(modeltest::lower(WWN)), std::string::npos) << v;
    EXPECT_EQ(NamesFrom(array, "ComputerSystem", "StorageVolume"), volumes);
    EXPECT_TRUE(NamesFrom(array, "ComputerSystem", "DiskDrive").empty());
    EXPECT_EQ(NamesFrom(other, "ComputerSystem").size(), 1u);

    CIMObjectPath volume = AddVolume("0002", "2000000991000099");
    EXPECT_EQ(NamesFrom(volume, "StorageVolume"), std::vector<std::string>{modeltest::canonical(other)});

    // Full instances through Associator.
    CIMName assoc("ORV_Storage_SystemDevice");
    CIMName result;
    String role, resultRole;
    Objects objects;
    CIMPropertyList all;
    AssoArgs args(context, volume, assoc, result, role, resultRole, false, false, all, objects);
    SystemDevice controller;
    controller.Associator(args, "StorageVolume", "");
    ASSERT_EQ(objects.delivered.size(), 1u);
    EXPECT_EQ(objects.delivered[0].getClassName().getString(), "ORV_Storage_ComputerSystem");
    EXPECT_EQ(objects.delivered[0].getPath().getNameSpace().getString(), "root/orv");
}

TEST_F(SystemDeviceTest, OtherSourcesAndLonelyVolumesAnswerNothing) {
    EXPECT_TRUE(NamesFrom(StoragePool::WrapReference("0001", WWN), "StoragePool").empty());
    CIMObjectPath orphan = AddVolume("0003", "2000000991000077");
    EXPECT_TRUE(NamesFrom(orphan, "StorageVolume").empty());
    CIMObjectPath empty = AddSystem("2000000991000077");
    repository->deleteInstance(context, CIMNamespaceName(), orphan);
    EXPECT_TRUE(NamesFrom(empty, "ComputerSystem").empty());
    // A volume the repository does not hold is the client's error.
    EXPECT_THROW(NamesFrom(orphan, "StorageVolume"), CIMException);
}

}  // namespace
