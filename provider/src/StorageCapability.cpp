#include "StorageCapability.h"

#include <vector>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "ConfigManager.h"
#include "MC.h"
#include "Model.h"
#include "Property.h"
#include "RawData.h"
#include "Singleton.h"
#include "SmisTrace.h"
#include "StorageSettingWithHints.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

const StorageCapability::RaidCapability RAID_TABLE[] = {
    {"RAID1/10", 2, 1},
    {"RAID5/50", 1, 1},
    {"RAID6/60", 1, 2},
    {"RAID-TM", 3, 2},
};
const int RAID_CODES[] = {2, 6, 8, 10};
const StorageCapability::RaidCapability UNKNOWN_RAID = {"UnknownRaidType", 0, 0};

}  // namespace

StorageCapability::RaidCapability StorageCapability::LookUp(int raidCode) {
    for (size_t i = 0; i < sizeof(RAID_CODES) / sizeof(RAID_CODES[0]); ++i)
        if (RAID_CODES[i] == raidCode) return RAID_TABLE[i];
    return UNKNOWN_RAID;
}

std::string StorageCapability::instanceId(const std::string& id, int raidCode) {
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    return config->GetVendor() + "." + config->GetBrand() + " : " + LookUp(raidCode).name + ".in." + id;
}

std::string StorageCapability::idOf(StorageCapabilityArgs* args) {
    if (args == nullptr || args->poolData == nullptr)
        throw CIMException(CIM_ERR_FAILED, "the pool's record is missing [StorageCapability]");
    // A primordial pool is named by the array itself, without the "h" of a pool number.
    return args->primordial ? args->poolData->name : args->poolData->name + "h";
}

CIMObjectPath StorageCapability::WrapReference(const std::string& id, int raidCode) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), MC::ToString(instanceId(id, raidCode)), CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("StorageCapabilities"), keys, path);
    return path;
}

CIMInstance StorageCapability::WrapInstance(StorageCapabilityArgs* args) {
    const std::string id = idOf(args);
    const RaidCapability row = LookUp(args->raidCode);
    const String name(row.name);
    const Property properties[] = {
        Property(CIMName("InstanceID"), CIMValue(MC::ToString(instanceId(id, args->raidCode)))),
        Property(CIMName("ElementName"), CIMValue(name)),
        Property(CIMName("ElementType"), CIMValue(Uint16(5))),
        Property(CIMName("NoSinglePointOfFailure"), CIMValue(Boolean(true))),
        Property(CIMName("NoSinglePointOfFailureDefault"), CIMValue(Boolean(true))),
        Property(CIMName("DataRedundancyMax"), CIMValue(row.dataRedundancy)),
        Property(CIMName("DataRedundancyMin"), CIMValue(row.dataRedundancy)),
        Property(CIMName("DataRedundancyDefault"), CIMValue(row.dataRedundancy)),
        Property(CIMName("PackageRedundancyMax"), CIMValue(row.packageRedundancy)),
        Property(CIMName("PackageRedundancyMin"), CIMValue(row.packageRedundancy)),
        Property(CIMName("PackageRedundancyDefault"), CIMValue(row.packageRedundancy)),
        Property(CIMName("DeltaReservationMax"), CIMValue(Uint8(0))),
        Property(CIMName("DeltaReservationMin"), CIMValue(Uint8(0))),
        Property(CIMName("DeltaReservationDefault"), CIMValue(Uint8(0))),
        Property(CIMName("UserDataStripeDepthDefault"), CIMValue(Uint64(1))),
        Property(CIMName("ParityLayoutDefault"), CIMValue(Uint16(2))),
        Property(CIMName("ExtentStripeLengthDefault"), CIMValue(Uint64(1))),
    };
    CIMInstance instance(MC::ClassName("StorageCapabilities"));
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(WrapReference(id, args->raidCode));
    return instance;
}

CIMObjectPath StorageCapability::Create(StorageCapabilityArgs* args) {
    CIMInstance capability = WrapInstance(args);
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMObjectPath path = Model::AdjustObjectPath(capability.getPath());
    try {
        handle->CreateInstance(args->context, MC::Namespace(), capability);
        ElementCapability::Create(args->context, args->elementPath, path);
    } catch (const CIMException& e) {
        // The primordial pool asks for each RAID code twice, plain and thin: both
        // share the one capability, and only the hint differs.
        if (e.getCode() != CIM_ERR_ALREADY_EXISTS) throw;
        SMIS_TRACE(LEVEL4, "%s", ("capability exists already: " + MC::ToStd(path.toString())).c_str());
    }
    StorageSettingWithHints::Create(args->context, capability, true, args->isVirtual);
    SMIS_TRACE(LEVEL3, "%s process completed.", "create storage capability");
    return path;
}

void StorageCapability::Delete(StorageCapabilityArgs* args) {
    CIMObjectPath path = Model::AdjustObjectPath(WrapReference(idOf(args), args->raidCode));
    CimHandle* handle = Singleton<CimHandle>::Instance();
    StorageSettingWithHints::Delete(args->context, path);
    Array<CIMObjectPath> references;
    handle->ReferenceNames(args->context, MC::Namespace(), path, MC::ClassName("ElementCapabilities"),
                           String("Capabilities"), references);
    for (Uint32 i = 0; i < references.size(); ++i)
        handle->DeleteInstance(args->context, MC::Namespace(), references[i]);
    try {
        handle->DeleteInstance(args->context, MC::Namespace(), path);
    } catch (const CIMException& e) {
        // The second of a plain and a thin request for the same code finds it gone.
        if (e.getCode() != CIM_ERR_NOT_FOUND) throw;
    }
    SMIS_TRACE(LEVEL3, "%s process completed.", "delete storage capability");
}

int StorageCapability::ToRaidType(const CIMInstance& instance) {
    Uint16 data = 0;
    Uint16 package = 0;
    Uint16 efficiency = 0;
    bool haveData = MC::GetUint16(instance, "DataRedundancyGoal", data);
    bool havePackage = MC::GetUint16(instance, "PackageRedundancyGoal", package);
    MC::GetUint16(instance, "StorageEfficiencyHint", efficiency);  // read, and of no weight
    if (haveData && havePackage) {
        if (data == 2 && package == 1) return 2;
        if (data == 1 && package == 1) return 6;
        if (data == 1 && package == 2) return 8;
        if (data == 3 && package == 2) return 10;
    }
    SMIS_TRACE(LEVEL3, "[unknown RAID type] DataRedundancy = %u, PackageRedundancy = %u", unsigned(data),
               unsigned(package));
    return 0;
}

}  // namespace orvsmis
