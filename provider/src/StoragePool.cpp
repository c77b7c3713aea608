#include "StoragePool.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "ComputerSystem.h"
#include "ConfigManager.h"
#include "MC.h"
#include "PDmanager.h"
#include "PoolRawData.h"
#include "PrimordialPool.h"
#include "Property.h"
#include "Singleton.h"
#include "SmisTrace.h"
#include "StorageCapability.h"

using namespace Pegasus;

namespace orvsmis {

ModelEvent StoragePool::AfterCreated;
ModelEvent StoragePool::AfterModified;
ModelEvent StoragePool::BeforeDeleted;

namespace {

struct RaidRow {
    const char* text;
    int code;
};

const RaidRow RAID_ROWS[] = {
    {"RAID1", 2},          {"RAID10", 2},         {"RAID1/10", 2},        {"RAID5", 6},
    {"RAID50", 6},         {"RAID5(2+P)", 6},     {"RAID5(4+P)", 6},      {"RAID5(8+P)", 6},
    {"RAID5/50", 6},       {"RAID5/50(2+P)", 6},  {"RAID5/50(4+P)", 6},   {"RAID5/50(8+P)", 6},
    {"RAID6", 8},          {"RAID60", 8},         {"RAID6(4+PQ)", 8},     {"RAID6(8+PQ)", 8},
    {"RAID6/60", 8},       {"RAID6/60(4+PQ)", 8}, {"RAID6/60(8+PQ)", 8},  {"RAID-TM", 10},
    {"RAID3", 4},          {"RAID3DP", 4},        {"RAID0", 1},
};

void deleteReferences(const OperationContext& context, const CIMObjectPath& path, const char* shortName,
                      const char* role) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    Array<CIMObjectPath> references;
    handle->ReferenceNames(context, MC::Namespace(), path, MC::ClassName(shortName), String(role), references);
    for (Uint32 i = 0; i < references.size(); ++i) handle->DeleteInstance(context, MC::Namespace(), references[i]);
}

Uint64 totalManagedSpace(const CIMInstance& instance) {
    Uint32 index = instance.findProperty(CIMName("TotalManagedSpace"));
    Uint64 value = 0;
    if (index != PEG_NOT_FOUND && !instance.getProperty(index).getValue().isNull() &&
        instance.getProperty(index).getValue().getType() == CIMTYPE_UINT64)
        instance.getProperty(index).getValue().get(value);
    return value;
}

}  // namespace

const PoolRawData* StoragePool::asPool(const RawData* record, const char* failure) {
    const PoolRawData* pool = dynamic_cast<const PoolRawData*>(record);
    if (pool == nullptr) {
        SMIS_TRACE(LEVEL2, "Error[ %s ] : %s ,%s", "CIM_ERR_INVALID_PARAMETER", failure, "StoragePool");
        throw CIMException(CIM_ERR_INVALID_PARAMETER, failure);
    }
    return pool;
}

bool StoragePool::IsVirtual(const PoolRawData* pool) {
    return pool != nullptr && pool->poolType.find("virtual") != std::string::npos;
}

std::string StoragePool::InstanceID(const std::string& poolNo, const std::string& arrayId) {
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    return config->GetVendor() + "." + config->GetBrand() + " : " + poolNo + "h.in." + arrayId;
}

int StoragePool::GetPoolType(const std::string& raidType) {
    for (const RaidRow& row : RAID_ROWS)
        if (raidType == row.text) return row.code;
    SMIS_TRACE(LEVEL3, "%s", (raidType + " not supported the RAID type!").c_str());
    return 0;
}

void StoragePool::mapState(const std::string& poolState, Array<Uint16>& out) {
    out.clear();
    if (poolState.find("ready") != std::string::npos) {
        out.append(2);
    } else if (poolState.find("attn") != std::string::npos) {
        out.append(3);
    } else if (poolState.find("fault") != std::string::npos) {
        out.append(6);
    } else {
        out.append(0);
        SMIS_TRACE(LEVEL3, "%s", ("OperationalStatus is unknown type: " + poolState).c_str());
    }
}

CIMObjectPath StoragePool::WrapReference(const std::string& poolNo, const std::string& arrayId) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), MC::ToString(InstanceID(poolNo, arrayId)),
                              CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("StoragePool"), keys, path);
    return path;
}

CIMObjectPath StoragePool::WrapReference(const RawData* rawData, const std::string& arrayId) {
    const PoolRawData* pool = asPool(rawData, "can not read PoolRawData in [StoragePool::WrapReference]");
    return WrapReference(pool->poolNo, arrayId);
}

CIMInstance StoragePool::WrapInstance(const RawData* rawData, const std::string& arrayId) {
    const PoolRawData* pool = asPool(rawData, "can not read PoolRawData in [StoragePool::WrapInstance]");
    const bool thin = IsVirtual(pool);
    Array<Uint16> operationalStatus;
    mapState(pool->poolState, operationalStatus);
    SMIS_TRACE(LEVEL4, "%s", ("Pool(" + pool->poolNo + "h)" + pool->poolName).c_str());

    // A thin pool manages its backing capacity, while its remaining space is
    // measured against the larger logical capacity.
    const Uint64 total = thin ? pool->actualCapacity : pool->poolCapacity;
    Uint64 remaining = pool->freePoolCapacity;
    if (thin) remaining = pool->poolCapacity > pool->actualUsedCapacity ? pool->poolCapacity - pool->actualUsedCapacity : 0;
    const Property properties[] = {
        Property(CIMName("Name"), CIMValue(MC::ToString(pool->poolName))),
        Property(CIMName("Primordial"), CIMValue(false)),
        Property(CIMName("PoolID"), CIMValue(MC::ToString(pool->poolNo + "h"))),
        Property(CIMName("InstanceID"), CIMValue(MC::ToString(InstanceID(pool->poolNo, arrayId)))),
        Property(CIMName("ElementName"), CIMValue(MC::ToString(pool->poolName))),
        Property(CIMName("TotalManagedSpace"), CIMValue(total)),
        Property(CIMName("RemainingManagedSpace"), CIMValue(remaining)),
        Property(CIMName("Usage"), CIMValue(Uint16(2))),
        Property(CIMName("OperationalStatus"), CIMValue(operationalStatus)),
        Property(CIMName("Description"),
                 CIMValue(MC::ToString("A concrete pool whose number is " + pool->poolNo +
                                       "h. Storage volumes can be created from this concrete pool."))),
        Property(CIMName("SpaceLimit"), CIMValue(Uint64(pool->poolCapacity))),
        Property(CIMName("SpaceLimitDetermination"), CIMValue(Uint16(thin ? 3 : 2))),
    };
    CIMInstance instance(MC::ClassName("StoragePool"));
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(WrapReference(pool->poolNo, arrayId));
    return instance;
}

bool StoragePool::Find(const std::string& poolNo, const std::string& arrayId, CIMObjectPath& out) {
    out = WrapReference(poolNo, arrayId);
    return true;
}

CIMObjectPath StoragePool::Create(DataEventArgs* args) {
    const PoolRawData* pool = asPool(args->newData, "can not read PoolRawData!");
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMInstance instance = WrapInstance(pool, args->arrayId);
    handle->CreateInstance(args->context, MC::Namespace(), instance);
    CIMObjectPath path = Model::AdjustObjectPath(WrapReference(pool->poolNo, args->arrayId));
    ActivateInstCreationIndication(instance);

    HostedStoragePool::Create(args->context, ComputerSystem::GetPath(args->arrayId), path);
    AllocatedFromStoragePool::Create(args->context, PrimordialPool::GetPath(args->arrayId), path,
                                     PDmanager::Instance()->GetSumPDSizeOfPool(pool->poolNo));

    StorageCapabilityArgs capability(args->context, pool, GetPoolType(pool->RAIDType), path, false, IsVirtual(pool));
    StorageCapability::Create(&capability);

    ParentArgs parentArgs(*args, path);
    AfterCreated.Invoke(parentArgs);
    SMIS_TRACE(LEVEL3, "%s process completed.", "create storage pool");
    return path;
}

void StoragePool::Modify(DataEventArgs* args) {
    const PoolRawData* pool = asPool(args->newData, "can not read PoolRawData! [StoragePool::Modify]");
    const PoolRawData* old = asPool(args->oldData, "can not read PoolRawData! [StoragePool::Modify]");
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMObjectPath path = Model::AdjustObjectPath(WrapReference(pool->poolNo, args->arrayId));

    const bool thin = IsVirtual(pool);
    if ((!thin && pool->poolCapacity != old->poolCapacity) || (thin && pool->actualCapacity != old->actualCapacity))
        AllocatedFromStoragePool::Modify(args->context, PrimordialPool::GetPath(args->arrayId), path,
                                         String("Dependent"), String(),
                                         PDmanager::Instance()->GetSumPDSizeOfPool(pool->poolNo));

    CIMInstance oldInstance = WrapInstance(old, args->arrayId);
    CIMInstance newInstance = WrapInstance(pool, args->arrayId);
    handle->ModifyInstance(args->context, MC::Namespace(), newInstance, false, CIMPropertyList());
    ActivateInstModificationIndication(newInstance, oldInstance);

    // Repeats with every change of the record while the condition lasts.
    if (pool->poolState == "fault(over capacity)")
        ActivateInstCapacityAlertIndication(path, true);
    else if (pool->threshold == "exceeded")
        ActivateInstCapacityAlertIndication(path, false);

    ParentArgs parentArgs(*args, path);
    AfterModified.Invoke(parentArgs);
    SMIS_TRACE(LEVEL3, "%s process completed.", "modify storage pool");
}

bool StoragePool::ActivateInstModificationIndication(const CIMInstance& newInstance, const CIMInstance& oldInstance) {
    if (IndicationNeeder::ActivateInstModificationIndication(newInstance, oldInstance)) return true;
    if (totalManagedSpace(newInstance) == totalManagedSpace(oldInstance)) return false;
    return Sender().SendInstModificationIndication(newInstance, oldInstance);
}

void StoragePool::Delete(DataEventArgs* args) {
    const PoolRawData* pool = asPool(args->newData, "can not read PoolRawData! [StoragePool::Delete]");
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMObjectPath path = Model::AdjustObjectPath(WrapReference(pool->poolNo, args->arrayId));

    // The dependent models clean up while the pool still stands.
    ParentArgs parentArgs(*args, path);
    BeforeDeleted.Invoke(parentArgs);

    StorageCapabilityArgs capability(args->context, pool, GetPoolType(pool->RAIDType), path, false, IsVirtual(pool));
    StorageCapability::Delete(&capability);

    deleteReferences(args->context, path, "AllocatedFromStoragePool", "Dependent");
    deleteReferences(args->context, path, "HostedStoragePool", "PartComponent");
    deleteReferences(args->context, path, "AffectedJobElement", "AffectedElement");
    handle->DeleteInstance(args->context, MC::Namespace(), path);

    ActivateInstDeletionIndication(WrapInstance(pool, args->arrayId));
    SMIS_TRACE(LEVEL3, "%s process completed.", "delete storage pool");
}

std::string GetPoolIdFromPool(const CIMInstance& pool) {
    String value;
    if (!MC::GetString(pool, "PoolID", value)) return std::string();
    std::string id = MC::ToStd(value);
    return id.substr(0, id.find('h'));
}

std::string GetArrayIdFromPool(const CIMInstance& pool) {
    String value;
    if (!MC::GetString(pool, "InstanceID", value)) return std::string();
    std::string id = MC::ToStd(value);
    std::string::size_type at = id.find("in.");
    return at == std::string::npos ? std::string() : id.substr(at + 3);
}

bool IsPrimordialPool(const CIMInstance& pool) {
    Uint32 index = pool.findProperty(CIMName("Primordial"));
    if (index == PEG_NOT_FOUND) return false;
    CIMValue value = pool.getProperty(index).getValue();
    if (value.isNull() || value.getType() != CIMTYPE_BOOLEAN || value.isArray()) return false;
    Boolean primordial = false;
    value.get(primordial);
    return primordial;
}

}  // namespace orvsmis
