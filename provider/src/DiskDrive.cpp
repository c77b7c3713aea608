#include "DiskDrive.h"

#include <cstdlib>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "ComputerSystem.h"
#include "Exception.h"
#include "HealthDispose.h"
#include "MC.h"
#include "PdRawData.h"
#include "Property.h"
#include "Singleton.h"
#include "SmisTrace.h"
#include "SoftwareIdentityPD.h"
#include "StorageExtent.h"

using namespace Pegasus;

namespace orvsmis {

ModelEvent DiskDrive::AfterCreated;
ModelEvent DiskDrive::AfterModified;
ModelEvent DiskDrive::BeforeDeleted;

namespace {

const char* const CAST_FAILURE = "Dynamic cast parameter \"param\" failed.";

struct StateRow {
    const char* state;
    Uint16 operationalStatus;
    Uint16 healthState;
    Uint16 availability;
};

const StateRow STATE_ROWS[] = {
    {"ready", 2, 5, 3},
    {"attn.(powering up)", 8, 5, 19},
    {"attn.(rebuilding)", 2, 10, 19},
    {"attn.(formatting)", 2, 10, 19},
    {"attn.(stop)", 10, 5, 7},
    {"fault", 6, 20, 10},
    {"fault(invalid)", 6, 20, 10},
    {"info.(inactive)", 5, 10, 4},
    {"attn.(exchg)", 5, 10, 4},
};

struct TypeRow {
    const char* type;
    Uint16 diskType;
    Uint16 interconnectType;
};

const TypeRow TYPE_ROWS[] = {
    {"ATA", 2, 3},        {"SSD(ATA)", 3, 4},   {"SAS", 2, 5},   {"NLSAS", 2, 5},
    {"SAS(SED)", 2, 5},   {"NLSAS(SED)", 2, 5}, {"AFSAS", 2, 5}, {"AFSAS(SED)", 2, 5},
    {"SSD", 3, 5},        {"SSD(SED)", 3, 5},
};

void checkRecord(const PdRawData* data) {
    if (data == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, "Passed parameter \"pRawData\" is NULL.");
}


}  // namespace

std::string DiskDrive::DeviceID(const std::string& pdn) {
    if (pdn.size() < 4) throw InvalidParamException("Invalid physical disk number: \"" + pdn + "\"");
    return pdn.substr(0, 2) + "h-" + pdn.substr(3) + "h";
}

const PdRawData* DiskDrive::asPd(const RawData* record) {
    const PdRawData* pd = dynamic_cast<const PdRawData*>(record);
    if (pd == nullptr) {
        SMIS_TRACE(LEVEL2, "Error[ %s ] : %s ,%s", "CIM_ERR_INVALID_PARAMETER", CAST_FAILURE, "DiskDrive");
        throw CIMException(CIM_ERR_INVALID_PARAMETER, CAST_FAILURE);
    }
    return pd;
}

void DiskDrive::getPDstatusCimValue(const PdRawData* data, Array<Uint16>& operationalStatus, Uint16& healthState,
                                    Uint16& availability) {
    checkRecord(data);
    operationalStatus.clear();
    for (const StateRow& row : STATE_ROWS) {
        if (data->state == row.state) {
            operationalStatus.append(row.operationalStatus);
            healthState = row.healthState;
            availability = row.availability;
            return;
        }
    }
    operationalStatus.append(0);
    healthState = 0;
    availability = 2;
    SMIS_TRACE(LEVEL3, "%s", "The physical disk's state maybe illegal");
    SMIS_TRACE(LEVEL3, "%s", ("pPdRawData->state = " + data->state).c_str());
}

void DiskDrive::getPDtypeCimValue(const PdRawData* data, Uint16& diskType, Uint16& interconnectType) {
    checkRecord(data);
    for (const TypeRow& row : TYPE_ROWS) {
        if (data->type == row.type) {
            diskType = row.diskType;
            interconnectType = row.interconnectType;
            return;
        }
    }
    diskType = 0;
    interconnectType = 0;
    SMIS_TRACE(LEVEL3, "%s", "The physical disk's type maybe illegal");
}

Uint32 DiskDrive::getPDrpmCimValue(const PdRawData* data) {
    checkRecord(data);
    const Uint32 unknown = static_cast<Uint32>(-1);
    if (data->rotationalSpeed == "---") {
        const std::string& type = data->type;
        return (type == "SSD" || type == "SSD(ATA)" || type == "SSD(SED)") ? 0 : unknown;
    }
    if (data->rotationalSpeed.find("rpm") == std::string::npos) {
        SMIS_TRACE(LEVEL3, "%s", "The physical disk's rotationalSpeed maybe illegal");
        return unknown;
    }
    return static_cast<Uint32>(atol(data->rotationalSpeed.c_str()));
}

CIMObjectPath DiskDrive::WrapReference(DataEventArgs* args) {
    const PdRawData* pd = asPd(args->newData);
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("SystemCreationClassName"), MC::ClassName("ComputerSystem").getString(),
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("SystemName"), MC::ToString(args->arrayId), CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), MC::ClassName("DiskDrive").getString(),
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("DeviceID"), MC::ToString(DeviceID(pd->PDN)), CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("DiskDrive"), keys, path);
    return path;
}

CIMInstance DiskDrive::WrapInstance(DataEventArgs* args) {
    const PdRawData* pd = asPd(args->newData);
    const std::string deviceId = DeviceID(pd->PDN);
    Array<Uint16> operationalStatus;
    Uint16 healthState = 0;
    Uint16 availability = 0;
    getPDstatusCimValue(pd, operationalStatus, healthState, availability);
    Uint16 enabledState = 3;
    if (operationalStatus[0] == 2)
        enabledState = 2;
    else if (operationalStatus[0] == 8)
        enabledState = 10;
    Uint16 diskType = 0;
    Uint16 interconnectType = 0;
    getPDtypeCimValue(pd, diskType, interconnectType);
    Array<Uint16> capabilities;
    capabilities.append(0);

    const Property properties[] = {
        Property(CIMName("SystemCreationClassName"), CIMValue(MC::ClassName("ComputerSystem").getString())),
        Property(CIMName("SystemName"), CIMValue(MC::ToString(args->arrayId))),
        Property(CIMName("CreationClassName"), CIMValue(MC::ClassName("DiskDrive").getString())),
        Property(CIMName("DeviceID"), CIMValue(MC::ToString(deviceId))),
        Property(CIMName("Name"), CIMValue(MC::ToString("PD:" + deviceId))),
        Property(CIMName("OperationalStatus"), CIMValue(operationalStatus)),
        Property(CIMName("EnabledState"), CIMValue(enabledState)),
        Property(CIMName("HealthState"), CIMValue(healthState)),
        Property(CIMName("MinBlockSize"), CIMValue(Uint64(512))),
        Property(CIMName("MaxBlockSize"), CIMValue(Uint64(512))),
        Property(CIMName("DefaultBlockSize"), CIMValue(Uint64(512))),
        Property(CIMName("MaxMediaSize"), CIMValue(Uint64(pd->PDCapacity / 1000))),
        Property(CIMName("ElementName"), CIMValue(MC::ToString("Disk Drive(DeviceID=" + deviceId + ")"))),
        Property(CIMName("Description"), CIMValue(MC::ToString("A disk drive whose number is " + deviceId))),
        Property(CIMName("Availability"), CIMValue(availability)),
        Property(CIMName("Capabilities"), CIMValue(capabilities)),
        Property(CIMName("DiskType"), CIMValue(diskType)),
        Property(CIMName("InterconnectType"), CIMValue(interconnectType)),
        Property(CIMName("RPM"), CIMValue(getPDrpmCimValue(pd))),
    };
    CIMInstance instance(MC::ClassName("DiskDrive"));
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(WrapReference(args));
    return instance;
}

bool DiskDrive::Find(const std::string& key, const std::string& arrayId, CIMObjectPath& out) {
    if (key.size() < 4) return false;
    PdRawData pd;
    pd.PDN = key;
    const OperationContext context;
    DataEventArgs args(context, &pd, nullptr, arrayId);
    out = Model::AdjustObjectPath(WrapReference(&args));
    return true;
}

CIMObjectPath DiskDrive::Create(DataEventArgs* args) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMInstance instance = WrapInstance(args);
    CIMObjectPath path = Model::AdjustObjectPath(handle->CreateInstance(args->context, MC::Namespace(), instance));
    if (path.getKeyBindings().size() == 0) path = Model::AdjustObjectPath(WrapReference(args));
    ParentArgs parentArgs(*args, path);

    CIMObjectPath array;
    ComputerSystem system;
    if (!system.Find("", args->arrayId, array) || array.getKeyBindings().size() == 0)
        throw CIMException(CIM_ERR_NOT_FOUND, "Find CIM_ComputerSystem failed.");
    SystemDevicePD::Create(args->context, array, path);

    StorageExtent extent;
    CIMObjectPath extentPath = extent.Create(parentArgs);
    SystemDevicePD::Create(args->context, array, Model::AdjustObjectPath(extentPath));
    SoftwareIdentityPD softwareIdentity;
    softwareIdentity.Create(parentArgs);

    ActivateInstCreationIndication(instance);
    AfterCreated.Invoke(parentArgs);
    SMIS_TRACE(LEVEL4, "%s", "Add One PD's CIM_Instance to repository successfully.");
    return path;
}

void DiskDrive::Delete(DataEventArgs* args) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMInstance instance = WrapInstance(args);
    CIMObjectPath path = Model::AdjustObjectPath(WrapReference(args));
    ParentArgs parentArgs(*args, path);
    BeforeDeleted.Invoke(parentArgs);

    StorageExtent extent;
    extent.Delete(parentArgs);
    SoftwareIdentityPD softwareIdentity;
    softwareIdentity.Delete(parentArgs);

    Array<CIMObjectPath> references;
    handle->ReferenceNames(args->context, MC::Namespace(), path, MC::ClassName("SystemDevice"), String(),
                           references);
    for (Uint32 i = 0; i < references.size(); ++i)
        handle->DeleteInstance(args->context, MC::Namespace(), references[i]);

    handle->DeleteInstance(args->context, MC::Namespace(), path);
    ActivateInstDeletionIndication(instance);
    SMIS_TRACE(LEVEL4, "%s", "Delete One PD's CIM_Instance successfully.");
}

void DiskDrive::Modify(DataEventArgs* args) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMInstance newInstance = WrapInstance(args);
    CIMObjectPath path = Model::AdjustObjectPath(WrapReference(args));
    CIMInstance stored = handle->GetSmisInstance(args->context, MC::Namespace(), path, false, false, false,
                                                 CIMPropertyList());

    // A change of health is an alert; a change of status alone a modification.
    HealthDispose health;
    health.HealthStateChangeOperating(path, stored, newInstance);
    health.OperationalStatusChangeOperating(newInstance, stored);

    handle->ModifyInstance(args->context, MC::Namespace(), newInstance, false, CIMPropertyList());

    ParentArgs parentArgs(*args, path);
    StorageExtent extent;
    extent.Modify(parentArgs);
    SoftwareIdentityPD softwareIdentity;
    softwareIdentity.Modify(parentArgs);
    AfterModified.Invoke(parentArgs);
    SMIS_TRACE(LEVEL4, "%s", "Modify One PD's CIM_Instance successfully.");
}

}  // namespace orvsmis
