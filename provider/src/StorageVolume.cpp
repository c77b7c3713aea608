#include "StorageVolume.h"

#include <cctype>

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "CompositeExtent.h"
#include "ComputerSystem.h"
#include "DataConnector.h"
#include "HealthDispose.h"
#include "LdRawData.h"
#include "MC.h"
#include "PoolRawData.h"
#include "Property.h"
#include "RecordRef.h"
#include "Singleton.h"
#include "SmisTrace.h"
#include "StoragePool.h"
#include "StorageSetting.h"

using namespace Pegasus;

namespace orvsmis {

ModelEvent StorageVolume::AfterCreated;
ModelEvent StorageVolume::AfterModified;
ModelEvent StorageVolume::BeforeDeleted;

namespace {

struct StateRow {
    const char* state;
    Uint16 operational;
    Uint16 extent;
    Uint16 health;
};

const StateRow STATE_TABLE[] = {
    {"ready", 2, 0, 5},
    {"ready(formatting)", 2, 0, 5},
    {"attn.(preventive copy)", 2, 0, 5},
    {"attn.(copy back)", 2, 0, 5},
    {"attn.(expanding)", 2, 0, 5},
    {"attn.(expand-fail)", 2, 0, 5},
    {"attn.(erasing)", 2, 0, 5},
    {"attn.(erase-cancel)", 2, 0, 5},
    {"attn.(erase-fail)", 2, 0, 5},
    {"attn.(erase-end)", 2, 0, 5},
    {"attn.(reduce)", 3, 0, 10},
    {"attn.(over capacity)", 3, 0, 10},
    {"fault(over quota)", 3, 0, 10},
    {"fault(over capacity)", 3, 0, 10},
    {"attn.(rebuilding)", 3, 11, 10},
    {"attn.(unformatted)", 8, 10, 10},
    {"attn.(formatting)", 8, 10, 10},
    {"attn.(format-fail)", 6, 3, 20},
    {"fault", 6, 3, 20},
    {"fault(media error)", 6, 3, 20},
    {"fault(system area fault)", 6, 3, 20},
    {"attn.(stop)", 15, 0, 0},
};

const char* const LD_SET_GROUPS[] = {"LD Set(iSCSI)", "LD Set(FC)", "LD Set(SAS)", "LD Set",
                                     "LD Set(FC), LD Set(iSCSI)"};

const PoolRawData* queryPool(const std::string& arrayId, const std::string& poolNo, RecordRef<PoolRawData>& ref,
                             const char* failure) {
    if (!DataConnector<PoolRawData>::QueryData(arrayId, poolNo, ref.Out())) throw CIMException(CIM_ERR_FAILED, failure);
    return ref.Get();
}

Uint64 spaceConsumed(const LdRawData* ld, const PoolRawData* pool) {
    return StoragePool::IsVirtual(pool) ? ld->actualUsedCapacity : ld->LDCapacity;
}

}  // namespace

const LdRawData* StorageVolume::asLd(const RawData* raw, const char* failure) {
    const LdRawData* ld = dynamic_cast<const LdRawData*>(raw);
    if (ld == nullptr) throw CIMException(CIM_ERR_FAILED, failure);
    return ld;
}

void StorageVolume::mapState(const std::string& ldState, Array<Uint16>& operationalStatus,
                             Array<Uint16>& extentStatus, Uint16& healthState) {
    operationalStatus.clear();
    extentStatus.clear();
    for (const StateRow& row : STATE_TABLE) {
        if (ldState == row.state) {
            operationalStatus.append(row.operational);
            extentStatus.append(row.extent);
            healthState = row.health;
            return;
        }
    }
    operationalStatus.append(0);
    extentStatus.append(1);
    healthState = 0;
    SMIS_TRACE(LEVEL3, "%s", ("OperationalStatus is unknown type: " + ldState).c_str());
}

void StorageVolume::mapRedundancy(int raidCode, Uint16& dataRedundancy, Uint16& packageRedundancy) {
    switch (raidCode) {
    case 2: dataRedundancy = 2; packageRedundancy = 1; break;
    case 6: dataRedundancy = 1; packageRedundancy = 1; break;
    case 8: dataRedundancy = 1; packageRedundancy = 2; break;
    case 10: dataRedundancy = 3; packageRedundancy = 2; break;
    default: dataRedundancy = 0; packageRedundancy = 0; break;
    }
}

bool StorageVolume::IsInBandAccessGranted(const LdRawData* ld) {
    if (ld == nullptr) return false;
    for (const char* group : LD_SET_GROUPS)
        if (ld->group == group) return true;
    return false;
}

std::string StorageVolume::volumeName(const std::string& arrayId, const std::string& ldn) {
    std::string name = (arrayId.size() > 4 ? arrayId.substr(4) : std::string()) + ldn;
    for (char& c : name) c = char(std::toupper(static_cast<unsigned char>(c)));
    return name;
}

std::string StorageVolume::CreateElementName(const std::string& ldn, const std::string& name) {
    return "LD" + ldn + "h:[" + name + "]";
}

CIMObjectPath StorageVolume::WrapReference(const std::string& arrayId, const std::string& ldn) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), MC::ClassName("StorageVolume").getString(),
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("DeviceID"), MC::ToString(ldn + "h"), CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("SystemCreationClassName"), MC::ClassName("ComputerSystem").getString(),
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("SystemName"), MC::ToString(arrayId), CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("StorageVolume"), keys, path);
    return path;
}

CIMObjectPath StorageVolume::Find(const std::string& arrayId, const std::string& ldn) {
    return Model::AdjustObjectPath(WrapReference(arrayId, ldn));
}

bool StorageVolume::Find(const std::string& key, const std::string& arrayId, CIMObjectPath& out) {
    CIMObjectPath system = ComputerSystem::GetPath(arrayId);
    if (system.getKeyBindings().size() == 0) return false;
    Array<CIMObject> volumes;
    Singleton<CimHandle>::Instance()->Associators(
        OperationContext(), MC::Namespace(), system, MC::ClassName("SystemDevice"), MC::ClassName("StorageVolume"),
        String("GroupComponent"), String("PartComponent"), false, false, CIMPropertyList(), volumes);
    for (Uint32 i = 0; i < volumes.size(); ++i) {
        CIMInstance volume(volumes[i]);
        String name;
        if (MC::GetString(volume, "Name", name) && MC::ToStd(name) == key) {
            out = Model::AdjustObjectPath(volumes[i].getPath());
            return true;
        }
    }
    return false;
}

CIMInstance StorageVolume::WrapInstance(const RawData* raw, const std::string& arrayId) {
    const LdRawData* ld = asLd(raw, "can not read LdRawData! [StorageVolume::WrapInstance]");
    RecordRef<PoolRawData> poolRef;
    const PoolRawData* pool =
        queryPool(arrayId, ld->poolNo, poolRef, "can not get PoolRawData! [StorageVolume::WrapInstance]");

    const int raidCode = StoragePool::GetPoolType(ld->raidType);
    Uint16 dataRedundancy = 0;
    Uint16 packageRedundancy = 0;
    mapRedundancy(raidCode, dataRedundancy, packageRedundancy);
    Array<Uint16> operationalStatus;
    Array<Uint16> extentStatus;
    Uint16 healthState = 0;
    mapState(ld->LDState, operationalStatus, extentStatus, healthState);
    if (IsInBandAccessGranted(ld)) extentStatus.append(15);

    const String name = MC::ToString(volumeName(arrayId, ld->LDN));
    const Uint64 blocks = ld->LDCapacity / 512;
    Array<String> identifying;
    identifying.append("EUI64");
    Array<String> otherInfo;
    otherInfo.append(name);
    Array<String> discriminator;
    discriminator.append("SNIA:Allocated");
    Array<String> statusDescriptions;
    statusDescriptions.append(MC::ToString(ld->LDState));

    const Property properties[] = {
        Property(CIMName("DeviceID"), CIMValue(MC::ToString(ld->LDN + "h"))),
        Property(CIMName("CreationClassName"), CIMValue(MC::ClassName("StorageVolume").getString())),
        Property(CIMName("SystemCreationClassName"), CIMValue(MC::ClassName("ComputerSystem").getString())),
        Property(CIMName("SystemName"), CIMValue(MC::ToString(arrayId))),
        Property(CIMName("Name"), CIMValue(name)),
        Property(CIMName("NameFormat"), CIMValue(Uint16(10))),
        Property(CIMName("NameNamespace"), CIMValue(Uint16(3))),
        Property(CIMName("BlockSize"), CIMValue(Uint64(512))),
        Property(CIMName("NumberOfBlocks"), CIMValue(blocks)),
        Property(CIMName("ConsumableBlocks"), CIMValue(blocks)),
        Property(CIMName("DataRedundancy"), CIMValue(dataRedundancy)),
        Property(CIMName("PackageRedundancy"), CIMValue(packageRedundancy)),
        Property(CIMName("DeltaReservation"), CIMValue(Uint8(0))),
        Property(CIMName("ElementName"), CIMValue(MC::ToString(ld->LDName))),
        Property(CIMName("IsBasedOnUnderlyingRedundancy"), CIMValue(Boolean(false))),
        Property(CIMName("NoSinglePointOfFailure"), CIMValue(Boolean(raidCode != 1))),
        Property(CIMName("ExtentStatus"), CIMValue(extentStatus)),
        Property(CIMName("OperationalStatus"), CIMValue(operationalStatus)),
        Property(CIMName("HealthState"), CIMValue(healthState)),
        Property(CIMName("Description"), CIMValue(MC::ToString("A Storage Volume whose number is " + ld->LDN + "h"))),
        Property(CIMName("Purpose"), CIMValue(String("LUN"))),
        Property(CIMName("IdentifyingDescriptions"), CIMValue(identifying)),
        Property(CIMName("OtherIdentifyingInfo"), CIMValue(otherInfo)),
        Property(CIMName("SequentialAccess"), CIMValue(Boolean(false))),
        Property(CIMName("Access"), CIMValue(Uint16(3))),
        Property(CIMName("DataOrganization"), CIMValue(Uint16(2))),
        Property(CIMName("ExtentStripeLength"), CIMValue(Uint64(1))),
        Property(CIMName("ThinlyProvisioned"), CIMValue(Boolean(StoragePool::IsVirtual(pool)))),
        Property(CIMName("ExtentDiscriminator"), CIMValue(discriminator)),
        Property(CIMName("Primordial"), CIMValue(Boolean(false))),
        Property(CIMName("StatusDescriptions"), CIMValue(statusDescriptions)),
    };
    CIMInstance instance(MC::ClassName("StorageVolume"));
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(WrapReference(arrayId, ld->LDN));
    return instance;
}

CIMObjectPath StorageVolume::Create(DataEventArgs* args) {
    const LdRawData* ld = asLd(args->newData, "can not read LdRawData! [StorageVolume::Create]");
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMInstance instance = WrapInstance(ld, args->arrayId);
    handle->CreateInstance(args->context, MC::Namespace(), instance);
    CIMObjectPath path = Model::AdjustObjectPath(instance.getPath());
    ActivateInstCreationIndication(instance);

    RecordRef<PoolRawData> poolRef;
    const PoolRawData* pool =
        queryPool(args->arrayId, ld->poolNo, poolRef, "can not get PoolRawData! [StorageVolume::Create]");
    AllocatedFromStoragePool::Create(args->context, StoragePool::WrapReference(ld->poolNo, args->arrayId), path,
                                     spaceConsumed(ld, pool));
    BasedOn::Create(args->context, CompositeExtent::WrapReference(ld->poolNo, args->arrayId), path, 0xFFFF, ~0ULL,
                    ~0ULL);
    ParentArgs parentArgs(*args, path);
    AfterCreated.Invoke(parentArgs);
    SMIS_TRACE(LEVEL3, "%s process completed.", "create storage volume");
    return path;
}

void StorageVolume::Modify(DataEventArgs* args) {
    const LdRawData* newLd = asLd(args->newData, "can not read LdRawData! [StorageVolume::Modify]");
    const LdRawData* oldLd = asLd(args->oldData, "can not read LdRawData! [StorageVolume::Modify]");
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMInstance oldInstance = WrapInstance(oldLd, args->arrayId);
    CIMInstance newInstance = WrapInstance(newLd, args->arrayId);
    handle->ModifyInstance(args->context, MC::Namespace(), newInstance, false, CIMPropertyList());
    ActivateInstModificationIndication(newInstance, oldInstance);
    CIMObjectPath path = Model::AdjustObjectPath(newInstance.getPath());

    RecordRef<PoolRawData> poolRef;
    const PoolRawData* pool =
        queryPool(args->arrayId, newLd->poolNo, poolRef, "can not get PoolRawData! [StorageVolume::Modify]");
    const bool isVirtual = StoragePool::IsVirtual(pool);
    if ((!isVirtual && newLd->LDCapacity != oldLd->LDCapacity) ||
        (isVirtual && newLd->actualUsedCapacity != oldLd->actualUsedCapacity))
        AllocatedFromStoragePool::Modify(args->context, StoragePool::WrapReference(newLd->poolNo, args->arrayId),
                                         path, String("Dependent"), String(), spaceConsumed(newLd, pool));

    HealthDispose health;
    health.HealthStateChangeOperating(path, oldInstance, newInstance);
    if (newLd->LDState == "fault(over capacity)")
        ActivateInstCapacityAlertIndication(path, true);
    else if (newLd->threshold == "exceeded")
        ActivateInstCapacityAlertIndication(path, false);
    ParentArgs parentArgs(*args, path);
    AfterModified.Invoke(parentArgs);
    SMIS_TRACE(LEVEL3, "%s process completed.", "modify storage volume");
}

void StorageVolume::Delete(DataEventArgs* args) {
    const LdRawData* ld = asLd(args->newData, "can not read LdRawData! [StorageVolume::Delete]");
    CimHandle* handle = Singleton<CimHandle>::Instance();
    const CIMNamespaceName ns = MC::Namespace();
    CIMObjectPath path = Find(args->arrayId, ld->LDN);
    ParentArgs parentArgs(*args, path);
    BeforeDeleted.Invoke(parentArgs);
    StorageSetting::Delete(parentArgs);

    Array<CIMObjectPath> references;
    handle->ReferenceNames(args->context, ns, path, MC::ClassName("AllocatedFromStoragePool"), String(), references);
    for (Uint32 i = 0; i < references.size(); ++i) handle->DeleteInstance(args->context, ns, references[i]);
    references.clear();
    handle->ReferenceNames(args->context, ns, path, MC::ClassName("BasedOn"), String(), references);
    for (Uint32 i = 0; i < references.size(); ++i) handle->DeleteInstance(args->context, ns, references[i]);
    references.clear();
    handle->ReferenceNames(args->context, ns, path, MC::ClassName("StorageSynchronized"), String(), references);
    for (Uint32 i = 0; i < references.size(); ++i) {
        // A pair's own job links go before the pair.
        Array<CIMObjectPath> jobLinks;
        handle->ReferenceNames(args->context, ns, references[i], MC::ClassName("AffectedJobElement"),
                               String("AffectedElement"), jobLinks);
        for (Uint32 j = 0; j < jobLinks.size(); ++j) handle->DeleteInstance(args->context, ns, jobLinks[j]);
        handle->DeleteInstance(args->context, ns, references[i]);
    }
    references.clear();
    handle->ReferenceNames(args->context, ns, path, MC::ClassName("AffectedJobElement"), String(), references);
    for (Uint32 i = 0; i < references.size(); ++i) handle->DeleteInstance(args->context, ns, references[i]);
    handle->DeleteInstance(args->context, ns, path);

    // The instance announced is made after the repository has lost it; the
    // volume is gone either way, so a pool record missing now costs only the
    // indication.
    try {
        CIMInstance instance = WrapInstance(ld, args->arrayId);
        ActivateInstDeletionIndication(instance);
    } catch (const CIMException& e) {
        SMIS_TRACE(LEVEL2, "%s", ("no deletion indication for the volume: " + MC::ToStd(e.getMessage())).c_str());
    }
    SMIS_TRACE(LEVEL3, "%s process completed.", "delete storage volume");
}

}  // namespace orvsmis
