// Capabilities, hints, settings made on demand, the configuration
// capabilities, the host platforms and CreateSetting.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ElementSettingData.h"
#include "MC.h"
#include "StorageCapability.h"
#include "StorageCapabilityController.h"
#include "StorageClientSettingData.h"
#include "StorageConfigurationCapability.h"
#include "StoragePool.h"
#include "StorageSetting.h"
#include "StorageSettingWithHints.h"
#include "StorageVolume.h"
#include "VolumeTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;
using modeltest::prop;
using modeltest::propertyNames;
using modeltest::uint16s;
using volumetest::ARRAY_ID;

namespace {

class Settings : public volumetest::VolumeFixture {
protected:
    void TearDown() override {
        for (RawData* record : records) record->Release();
        VolumeFixture::TearDown();
    }
    PoolRawData* Pool(const std::string& no, const std::string& raid, const std::string& type = "dynamic") {
        PoolRawData* pool = MakePool(no, raid, type);
        records.push_back(pool);
        return pool;
    }
    // A stored pool with its capability and hint, as the pool model leaves it.
    CIMObjectPath PoolWithCapability(const std::string& no, const std::string& raid, const std::string& type) {
        PoolRawData* pool = Pool(no, raid, type);
        Store(pool);
        CIMObjectPath path = Model::AdjustObjectPath(StoragePool::WrapReference(no, ARRAY_ID));
        CIMInstance instance(MC::ClassName("StoragePool"));
        instance.addProperty(CIMProperty(CIMName("InstanceID"), path.getKeyBindings()[0].getValue()));
        instance.setPath(path);
        walking->createInstance(context, MC::Namespace(), instance);
        StorageCapabilityArgs args(context, pool, StoragePool::GetPoolType(raid), path, false,
                                   StoragePool::IsVirtual(pool));
        return StorageCapability::Create(&args);
    }
    CIMObjectPath Volume(const std::string& ldn, const std::string& poolNo, const std::string& raid,
                         const std::string& rpl = "IV") {
        LdRawData* ld = MakeLd(ldn, poolNo, raid);
        ld->RPLAttribute = rpl;
        records.push_back(ld);
        Store(ld);
        StorageVolume model;
        DataEventArgs args(context, ld, nullptr, ARRAY_ID);
        return model.Create(&args);
    }
    std::vector<CIMObject> AskSetting(const CIMObjectPath& volume) {
        volumetest::RecordingObjects objects;
        const CIMName assoc = MC::ClassName("ElementSettingData");
        const CIMName result = MC::ClassName("StorageSetting");
        const String noRole;
        const CIMPropertyList properties;
        AssoArgs args(context, volume, assoc, result, noRole, noRole, false, false, properties, objects);
        ElementSettingData controller;
        controller.Associator(args, "StorageVolume", "StorageSetting");
        EXPECT_EQ(objects.completed, 1);
        return objects.delivered;
    }
    std::vector<RawData*> records;
};

TEST_F(Settings, CapabilityAndHintFollowTheRaidCode) {
    struct Row {
        int code;
        const char* name;
        Uint16 data;
        Uint16 package;
        Uint16 efficiency;
        int roundTrip;
    };
    const Row rows[] = {
        {2, "RAID1/10", 2, 1, 5, 2}, {6, "RAID5/50", 1, 1, 5, 6},       {8, "RAID6/60", 1, 2, 5, 8},
        {10, "RAID-TM", 3, 2, 2, 10}, {1, "UnknownRaidType", 0, 0, 5, 0}, {0, "UnknownRaidType", 0, 0, 5, 0},
    };
    PoolRawData* pool = Pool("0001", "RAID1");
    for (const Row& row : rows) {
        StorageCapabilityArgs args(context, pool, row.code, CIMObjectPath(), false, false);
        CIMInstance capability = StorageCapability::WrapInstance(&args);
        EXPECT_EQ(prop<String>(capability, "InstanceID").toUtf8(), std::string("ORV.ORV : ") + row.name + ".in.0001h");
        EXPECT_EQ(prop<String>(capability, "ElementName").toUtf8(), row.name);
        for (const char* suffix : {"Max", "Min", "Default"}) {
            EXPECT_EQ(prop<Uint16>(capability, (std::string("DataRedundancy") + suffix).c_str()), row.data);
            EXPECT_EQ(prop<Uint16>(capability, (std::string("PackageRedundancy") + suffix).c_str()), row.package);
        }
        CIMInstance hint = StorageSettingWithHints::WrapInstance(capability, true, false);
        EXPECT_EQ(prop<String>(hint, "InstanceID").toUtf8(),
                  std::string("ORV.ORV : StorageSetting.in. ") + row.name + ".in.0001h");
        EXPECT_EQ(prop<Uint16>(hint, "StorageEfficiencyHint"), row.efficiency) << row.code;
        EXPECT_EQ(prop<Uint16>(hint, "DataRedundancyGoal"), row.data);
        EXPECT_EQ(StorageCapability::ToRaidType(hint), row.roundTrip) << row.code;
        EXPECT_EQ(hint.findProperty(CIMName("ThinProvisionedPoolType")), PEG_NOT_FOUND);
    }
    // A primordial pool is named by the array's record without "h".
    StorageCapabilityArgs primordial(context, pool, 6, CIMObjectPath(), true, false);
    EXPECT_EQ(prop<String>(StorageCapability::WrapInstance(&primordial), "InstanceID").toUtf8(),
              "ORV.ORV : RAID5/50.in.0001");
}

TEST_F(Settings, GoalsOutsideTheTableGiveNoRaidCode) {
    const int rows[][3] = {{2, 1, 2}, {1, 1, 6}, {1, 2, 8}, {3, 2, 10}, {2, 2, 0}, {0, 0, 0}, {3, 1, 0}};
    for (const auto& row : rows) {
        CIMInstance goal(CIMName("CIM_StorageSetting"));
        goal.addProperty(CIMProperty(CIMName("DataRedundancyGoal"), CIMValue(Uint16(row[0]))));
        goal.addProperty(CIMProperty(CIMName("PackageRedundancyGoal"), CIMValue(Uint16(row[1]))));
        EXPECT_EQ(StorageCapability::ToRaidType(goal), row[2]) << row[0] << "," << row[1];
    }
    CIMInstance partial(CIMName("CIM_StorageSetting"));
    partial.addProperty(CIMProperty(CIMName("DataRedundancyGoal"), CIMValue(Uint16(2))));
    EXPECT_EQ(StorageCapability::ToRaidType(partial), 0);
    CIMInstance wrongType(CIMName("CIM_StorageSetting"));
    wrongType.addProperty(CIMProperty(CIMName("DataRedundancyGoal"), CIMValue(String("2"))));
    wrongType.addProperty(CIMProperty(CIMName("PackageRedundancyGoal"), CIMValue(Uint16(1))));
    EXPECT_EQ(StorageCapability::ToRaidType(wrongType), 0);
}

TEST_F(Settings, ThinHintAndHintWithoutRange) {
    PoolRawData* pool = Pool("0002", "RAID6(4+PQ)", "virtual");
    StorageCapabilityArgs args(context, pool, 8, CIMObjectPath(), false, true);
    CIMInstance capability = StorageCapability::WrapInstance(&args);
    CIMInstance thin = StorageSettingWithHints::WrapInstance(capability, false, true);
    EXPECT_EQ(prop<String>(thin, "InstanceID").toUtf8(), "ORV.ORV : StorageSetting.in. RAID6/60.in.0002h.virtual");
    EXPECT_EQ(prop<Uint16>(thin, "ThinProvisionedPoolType"), 8);
    EXPECT_EQ(prop<Uint16>(thin, "PackageRedundancyMax"), prop<Uint16>(thin, "PackageRedundancyGoal"));
    EXPECT_EQ(uint16s(thin, "AccessSizeHint"), (std::vector<Uint16>{512}));

    CIMInstance broken(MC::ClassName("StorageCapabilities"));
    broken.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(String("no colon here"))));
    EXPECT_THROW(StorageSettingWithHints::WrapInstance(broken, true, false), CIMException);
}

TEST_F(Settings, PrimordialPlainAndThinShareOneCapability) {
    PoolRawData* arrayLike = Pool(ARRAY_ID, "RAID1");
    CIMObjectPath primordialPool = Model::AdjustObjectPath(StoragePool::WrapReference("ffff", ARRAY_ID));
    for (bool thin : {false, true}) {
        StorageCapabilityArgs args(context, arrayLike, 2, primordialPool, true, thin);
        StorageCapability::Create(&args);
    }
    EXPECT_EQ(walking->count("ORV_Storage_StorageCapabilities"), 1u);
    EXPECT_EQ(walking->count("ORV_Storage_ElementCapabilities"), 1u);
    EXPECT_EQ(walking->count("ORV_Storage_StorageSettingWithHints"), 2u);
    EXPECT_EQ(walking->count("ORV_Storage_StorageSettingsAssociatedToCapabilities"), 2u);
    for (bool thin : {false, true}) {
        StorageCapabilityArgs args(context, arrayLike, 2, primordialPool, true, thin);
        StorageCapability::Delete(&args);
    }
    EXPECT_TRUE(walking->instances.empty()) << walking->instances.begin()->first;
}

TEST_F(Settings, VolumeSettingIsMadeOnFirstRequestOnly) {
    PoolWithCapability("0001", "RAID5(4+P)", "dynamic");
    CIMObjectPath volume = Volume("0010", "0001", "RAID5(4+P)");
    std::vector<CIMObject> first = AskSetting(volume);
    ASSERT_EQ(first.size(), 1u);
    CIMInstance setting(first[0]);
    const std::vector<std::string> order = {
        "InstanceID", "ElementName", "NoSinglePointOfFailure", "DataRedundancyMin", "DataRedundancyMax",
        "DataRedundancyGoal", "PackageRedundancyMin", "PackageRedundancyMax", "PackageRedundancyGoal",
        "ExtentStripeLength", "ExtentStripeLengthMin", "ExtentStripeLengthMax", "ParityLayout", "ChangeableType"};
    EXPECT_EQ(propertyNames(setting), order);
    EXPECT_EQ(prop<String>(setting, "InstanceID").toUtf8(), std::string(ARRAY_ID) + ":0010h");
    EXPECT_EQ(prop<String>(setting, "ElementName"), "RAID5/50");
    EXPECT_EQ(walking->count("ORV_Storage_StorageSetting"), 1u);
    EXPECT_EQ(walking->count("ORV_Storage_ElementSettingData"), 1u);
    EXPECT_TRUE(AskSetting(volume).empty());
    EXPECT_EQ(walking->count("ORV_Storage_StorageSetting"), 1u);

    // Other pairs are not served, and a volume unknown to the repository gets nothing.
    volumetest::RecordingPaths paths;
    const CIMName assoc = MC::ClassName("ElementSettingData");
    const CIMName result = MC::ClassName("StorageClientSettingData");
    const String noRole;
    AssoNameArgs other(context, volume, assoc, result, noRole, noRole, paths);
    ElementSettingData controller;
    controller.AssociatorNames(other, "StorageVolume", "StorageClientSettingData");
    EXPECT_TRUE(paths.delivered.empty());
    EXPECT_TRUE(AskSetting(StorageVolume::Find(ARRAY_ID, "0fff")).empty());

    // The volume's deletion takes the setting and its link along.
    LdRawData* ld = MakeLd("0010", "0001", "RAID5(4+P)");
    records.push_back(ld);
    StorageVolume model;
    DataEventArgs deleted(context, ld, nullptr, ARRAY_ID);
    model.Delete(&deleted);
    EXPECT_EQ(walking->count("ORV_Storage_StorageSetting"), 0u);
    EXPECT_EQ(walking->count("ORV_Storage_ElementSettingData"), 0u);
    // A volume nobody asked about has no setting, and goes all the same.
    CIMObjectPath quiet = Volume("0011", "0001", "RAID5(4+P)");
    LdRawData* quietLd = MakeLd("0011", "0001", "RAID5(4+P)");
    records.push_back(quietLd);
    DataEventArgs quietDelete(context, quietLd, nullptr, ARRAY_ID);
    EXPECT_NO_THROW(model.Delete(&quietDelete));
    EXPECT_FALSE(walking->has(quiet));
}

TEST_F(Settings, ThinAndReplicaVolumeSettings) {
    PoolWithCapability("0002", "RAID1", "virtual");
    CIMObjectPath thin = Volume("0020", "0002", "RAID1", "RV");
    std::vector<CIMObject> delivered = AskSetting(thin);
    ASSERT_EQ(delivered.size(), 1u);
    CIMInstance setting(delivered[0]);
    // The property says ".virtual", the key does not.
    EXPECT_EQ(prop<String>(setting, "InstanceID").toUtf8(), std::string(ARRAY_ID) + ":0020h.virtual");
    EXPECT_EQ(prop<Uint16>(setting, "ThinProvisionedPoolType"), 8);
    EXPECT_TRUE(walking->has(StorageSetting::WarpReference(ARRAY_ID, "0020")));
    EXPECT_EQ(prop<Uint8>(setting, "DeltaReservationMax"), 100);
    EXPECT_EQ(prop<Uint8>(setting, "DeltaReservationGoal"), 100);
    EXPECT_EQ(prop<Uint8>(setting, "DeltaReservationMin"), 0);

    CIMObjectPath plain = Volume("0021", "0002", "RAID1", "MV");
    CIMInstance other(AskSetting(plain).at(0));
    EXPECT_EQ(other.findProperty(CIMName("DeltaReservationMax")), PEG_NOT_FOUND);
}

TEST_F(Settings, ConfigurationCapabilitiesFollowTheCopyService) {
    ArrayRawData* array = MakeArray(ARRAY_ID, "ready");
    records.push_back(array);
    for (bool copyService : {true, false}) {
        SMISProvider::m_bEnableCopyService = copyService;
        DataEventArgs args(context, array, nullptr, ARRAY_ID);
        CIMInstance capability = StorageConfigurationCapability::WrapInstance(&args);
        EXPECT_EQ(prop<String>(capability, "InstanceID").toUtf8(),
                  std::string("ORV.ORV : default capabilities of storage configuration service.in.") + ARRAY_ID);
        std::vector<Uint16> actions = copyService ? std::vector<Uint16>{2, 3, 4, 5, 6, 7, 8, 9}
                                                  : std::vector<Uint16>{2, 3, 4, 5, 6, 7};
        EXPECT_EQ(uint16s(capability, "SupportedAsynchronousActions"), actions);
        const std::vector<Uint16> copyTypes = copyService ? std::vector<Uint16>{2, 3, 5} : std::vector<Uint16>();
        EXPECT_EQ(uint16s(capability, "SupportedCopyTypes"), copyTypes);
        EXPECT_EQ(capability.findProperty(CIMName("InitialReplicationState")) != PEG_NOT_FOUND, copyService);
        EXPECT_EQ(uint16s(capability, "SupportedStorageElementFeatures"), (std::vector<Uint16>{3, 5, 6, 12}));
    }
    PoolRawData* pool = Pool("0003", "RAID1");
    DataEventArgs poolArgs(context, pool, nullptr, ARRAY_ID);
    EXPECT_EQ(prop<String>(StorageConfigurationCapability::WrapInstance(&poolArgs), "ElementName").toUtf8(),
              "ORV.ORV : configuration of pool.in.0003");
    LdRawData* ld = MakeLd("0001", "0003", "RAID1");
    records.push_back(ld);
    DataEventArgs wrong(context, ld, nullptr, ARRAY_ID);
    try {
        StorageConfigurationCapability::WrapInstance(&wrong);
        FAIL() << "a logical disk made configuration capabilities";
    } catch (const CIMException& e) {
        EXPECT_EQ(e.getMessage(), "Error : raw data typemiss");
    }

    CIMObjectPath service(String(), CIMNamespaceName(), MC::ClassName("StorageConfigurationService"),
                          Array<CIMKeyBinding>());
    DataEventArgs event(context, array, nullptr, ARRAY_ID);
    ParentArgs parent(event, service);
    StorageConfigurationCapability::Create(&parent);
    EXPECT_EQ(walking->count("ORV_Storage_StorageConfigurationCapabilities"), 1u);
    EXPECT_EQ(walking->count("ORV_Storage_ElementCapabilities"), 1u);
    StorageConfigurationCapability::Delete(&parent);
    EXPECT_TRUE(walking->instances.empty());
}

TEST_F(Settings, HostPlatformsOneInstanceEach) {
    ArrayRawData* array = MakeArray(ARRAY_ID, "ready");
    records.push_back(array);
    CIMObjectPath system = Model::AdjustObjectPath(ComputerSystem().WrapReference(array));
    DataEventArgs event(context, array, nullptr, ARRAY_ID);
    ParentArgs parent(event, system);
    StorageClientSettingData::OnCreate(parent);
    ASSERT_EQ(walking->count("ORV_Storage_StorageClientSettingData"), 11u);
    EXPECT_EQ(walking->count("ORV_Storage_ElementSettingData"), 11u);
    // The array comes back while its platforms still stand.
    EXPECT_NO_THROW(StorageClientSettingData::OnCreate(parent));
    EXPECT_EQ(walking->count("ORV_Storage_StorageClientSettingData"), 11u);

    struct Row {
        const char* code;
        std::vector<Uint16> types;
        const char* description;
    };
    const Row rows[] = {
        {"M4", {1}, "MAINOS-4"}, {"M2", {1}, "MAINOS-2"}, {"WN", {15, 21, 22}, ""}, {"CX", {3}, ""},
        {"LX", {14}, ""},        {"AX", {9}, ""},         {"NX", {4}, ""},          {"G8", {1}, "GCOS8"},
        {"VX", {1}, "VECTOR-UX"}, {"DF", {1}, "DEFAULT"}, {"VW", {19}, ""},
    };
    for (const Row& row : rows) {
        CIMInstance platform = walking->get(StorageClientSettingData::GetObjectPath(row.code));
        EXPECT_EQ(prop<String>(platform, "InstanceID").toUtf8(), std::string("ORV.ORV : ") + ARRAY_ID + "-" + row.code);
        EXPECT_EQ(uint16s(platform, "ClientTypes"), row.types) << row.code;
        Array<String> descriptions = prop<Array<String>>(platform, "OtherClientTypeDescriptions");
        ASSERT_EQ(descriptions.size(), 1u);
        EXPECT_EQ(descriptions[0].toUtf8(), row.description);
    }
    try {
        StorageClientSettingData::GetObjectPath("ZZ");
        FAIL() << "an unknown platform had a path";
    } catch (const CIMException& e) {
        EXPECT_EQ(e.getMessage(), "GetObjectPath fail.");
    }
    StorageClientSettingData::OnDelete(parent);
    EXPECT_TRUE(walking->instances.empty());
    EXPECT_THROW(StorageClientSettingData::GetObjectPath("WN"), CIMException);

    LdRawData* ld = MakeLd("0001", "0001", "RAID1");
    records.push_back(ld);
    DataEventArgs wrong(context, ld, nullptr, ARRAY_ID);
    ParentArgs wrongParent(wrong, system);
    EXPECT_THROW(StorageClientSettingData::WrapInstance(wrongParent, StorageClientSettingData::m_platforms[0]),
                 CIMException);
}

TEST_F(Settings, CreateSettingHandsBackThePoolsHint) {
    CIMObjectPath capability = PoolWithCapability("0001", "RAID-TM", "dynamic");
    auto call = [&](const char* method, const Array<CIMParamValue>& in, Array<CIMParamValue>& out) {
        volumetest::RecordingResults results;
        const CIMName name(method);
        Array<CIMParamValue> unused;
        InvokeMethodArgs args(context, capability, name, in, unused, results);
        StorageCapabilityController controller;
        return controller.Invoke(args, out);
    };
    CIMObjectPath first;
    for (Uint16 type : {2, 3}) {
        Array<CIMParamValue> in;
        in.append(CIMParamValue("settingtype", CIMValue(type)));
        Array<CIMParamValue> out;
        out.append(CIMParamValue("Stale", CIMValue(Uint16(1))));
        CIMValue result = call("CreateSetting", in, out);
        EXPECT_EQ(result, CIMValue(Uint32(0)));
        ASSERT_EQ(out.size(), 1u);
        EXPECT_EQ(out[0].getParameterName(), "NewSetting");
        CIMObjectPath setting;
        out[0].getValue().get(setting);
        EXPECT_EQ(setting.getClassName(), MC::ClassName("StorageSettingWithHints"));
        if (type == 2) first = setting;
        EXPECT_EQ(setting, first);
    }
    std::vector<Array<CIMParamValue>> refused(4);
    refused[0].append(CIMParamValue("SettingType", CIMValue(Uint16(4))));
    refused[1].append(CIMParamValue("SettingType", CIMValue(String("2"))));
    refused[2].append(CIMParamValue("Other", CIMValue(Uint16(2))));
    refused[3].append(CIMParamValue("SettingType", CIMValue()));
    for (const Array<CIMParamValue>& in : refused) {
        Array<CIMParamValue> out;
        try {
            call("CreateSetting", in, out);
            ADD_FAILURE() << "a bad SettingType was accepted";
        } catch (const CIMException& e) {
            EXPECT_EQ(e.getCode(), CIM_ERR_FAILED);
            EXPECT_EQ(e.getMessage(), "unknown SettingType");
        }
    }
    Array<CIMParamValue> none;
    Array<CIMParamValue> out;
    EXPECT_EQ(call("GetSupportedStripeDepths", none, out), CIMValue(Uint32(0)));

    // A capability without a hint has nothing to hand back.
    walking->instances.clear();
    Array<CIMParamValue> in;
    in.append(CIMParamValue("SettingType", CIMValue(Uint16(2))));
    try {
        call("createsetting", in, out);
        FAIL() << "a setting came from nowhere";
    } catch (const CIMException& e) {
        EXPECT_EQ(e.getMessage(), "can not find StorageSettingwithHints on the StorageCapabilities!");
    }
}

}  // namespace
