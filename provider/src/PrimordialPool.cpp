#include "PrimordialPool.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "ComputerSystem.h"
#include "ConfigManager.h"
#include "DataFlow.h"
#include "MC.h"
#include "Model.h"
#include "PDmanager.h"
#include "Property.h"
#include "Singleton.h"
#include "SmisTrace.h"
#include "StorageCapability.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

// The capabilities of the primordial pool: every RAID code the array
// supports, thick and thin.
const int RAID_CODES[] = {2, 6, 8, 10};

void deleteReferences(const OperationContext& context, const CIMObjectPath& path, const char* shortName,
                      const char* role) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    Array<CIMObjectPath> references;
    handle->ReferenceNames(context, MC::Namespace(), path, MC::ClassName(shortName), String(role), references);
    for (Uint32 i = 0; i < references.size(); ++i) handle->DeleteInstance(context, MC::Namespace(), references[i]);
}

}  // namespace

std::string PrimordialPool::InstanceID(const std::string& arrayId) {
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    return config->GetVendor() + "." + config->GetBrand() + " : Primordial Pool.in." + arrayId;
}

CIMObjectPath PrimordialPool::warpReference(const std::string& arrayId) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), MC::ToString(InstanceID(arrayId)), CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("StoragePool"), keys, path);
    return path;
}

CIMObjectPath PrimordialPool::GetPath(const std::string& arrayId) { return warpReference(arrayId); }

CIMInstance PrimordialPool::warpInstance(const std::string& arrayId) {
    PDmanager* disks = PDmanager::Instance();
    const Uint64 total = disks->GetSumPDSize();
    Array<Uint16> operationalStatus;
    operationalStatus.append(2);
    const Property properties[] = {
        Property(CIMName("Primordial"), CIMValue(true)),
        Property(CIMName("InstanceID"), CIMValue(MC::ToString(InstanceID(arrayId)))),
        Property(CIMName("ElementName"), CIMValue(String("Pool(All PD)"))),
        Property(CIMName("PoolID"), CIMValue(String("All PD"))),
        Property(CIMName("OperationalStatus"), CIMValue(operationalStatus)),
        Property(CIMName("Description"),
                 CIMValue(String("A primordial pool containing the disk array's all raw capacity which can be "
                                 "drawn to concrete pools."))),
        Property(CIMName("TotalManagedSpace"), CIMValue(total)),
        Property(CIMName("RemainingManagedSpace"), CIMValue(disks->GetConsumableSumPDSize())),
        Property(CIMName("SpaceLimit"), CIMValue(total)),
        Property(CIMName("SpaceLimitDetermination"), CIMValue(Uint16(2))),
        Property(CIMName("Usage"), CIMValue(Uint16(2))),
        Property(CIMName("Name"), CIMValue(String("Pool(All PD)"))),
    };
    CIMInstance instance(MC::ClassName("StoragePool"));
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(warpReference(arrayId));
    return instance;
}

CIMObjectPath PrimordialPool::Create(DataEventArgs* args) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    handle->CreateInstance(args->context, MC::Namespace(), warpInstance(args->arrayId));
    CIMObjectPath path = Model::AdjustObjectPath(warpReference(args->arrayId));
    HostedStoragePool::Create(args->context, ComputerSystem::GetPath(args->arrayId), path);
    for (int pass = 0; pass < 2; ++pass) {
        const bool thin = pass == 1;
        for (int raid : RAID_CODES) {
            StorageCapabilityArgs capability(args->context, args->newData, raid, path, true, thin);
            StorageCapability::Create(&capability);
        }
    }
    SMIS_TRACE(LEVEL3, "%s process completed.", "create primordial pool");
    return path;
}

void PrimordialPool::Delete(DataEventArgs* args) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMObjectPath path = Model::AdjustObjectPath(warpReference(args->arrayId));
    for (int pass = 0; pass < 2; ++pass) {
        const bool thin = pass == 1;
        for (int raid : RAID_CODES) {
            StorageCapabilityArgs capability(args->context, args->newData, raid, path, true, thin);
            StorageCapability::Delete(&capability);
        }
    }
    Array<CIMObjectPath> hosted;
    handle->ReferenceNames(args->context, MC::Namespace(), path, MC::ClassName("HostedStoragePool"), String(),
                           hosted);
    // What is gone already (a cleaned repository) counts as deleted.
    auto deleteIfThere = [&](const CIMObjectPath& target) {
        try {
            handle->DeleteInstance(args->context, MC::Namespace(), target);
        } catch (const CIMException& e) {
            if (e.getCode() != CIM_ERR_NOT_FOUND) throw;
        }
    };
    if (hosted.size() > 0) deleteIfThere(hosted[0]);
    deleteIfThere(path);
    SMIS_TRACE(LEVEL3, "%s process completed.", "delete primordial pool");
}

void PrimordialPool::UpdateInstance(EventArgs* args) {
    std::string arrayId;
    const OperationContext* context = nullptr;
    if (HandleDataArgs* data = dynamic_cast<HandleDataArgs*>(args)) {
        arrayId = data->arrayId;
        context = data->context;
    } else if (DataEventArgs* data = dynamic_cast<DataEventArgs*>(args)) {
        arrayId = data->arrayId;
        context = &data->context;
    } else {
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "Dynamic cast parameter \"args\" failed.");
    }
    const OperationContext none;
    if (context == nullptr) context = &none;
    try {
        Singleton<CimHandle>::Instance()->ModifyInstance(*context, MC::Namespace(), warpInstance(arrayId), false,
                                                         CIMPropertyList());
    } catch (const CIMException& e) {
        // Disks may be reported before the array's system exists; the pool
        // follows with the system.
        if (e.getCode() != CIM_ERR_NOT_FOUND) throw;
        SMIS_TRACE(LEVEL3, "%s", ("no primordial pool to update for " + arrayId).c_str());
    }
}

void PrimordialPool::AssocStorageExtent(const OperationContext& context, const std::string& arrayId,
                                        const CIMObjectPath& extentPath, bool used) {
    CIMObjectPath pool = GetPath(arrayId);
    CIMObjectPath extent = Model::AdjustObjectPath(extentPath);
    AssociatedComponentExtent::Create(context, pool, extent);
    ConcreteComponent::Create(context, pool, extent);
    if (!used) AssociatedRemainingExtent::Create(context, pool, extent);
}

void PrimordialPool::UpdateRemainingExtent(const OperationContext& context, const std::string& arrayId,
                                           const CIMObjectPath& extentPath, bool used) {
    CIMObjectPath extent = Model::AdjustObjectPath(extentPath);
    if (used)
        deleteReferences(context, extent, "AssociatedRemainingExtent", "PartComponent");
    else
        AssociatedRemainingExtent::Create(context, GetPath(arrayId), extent);
}

void PrimordialPool::UnassocStorageExtent(const OperationContext& context, const std::string& arrayId,
                                          const CIMObjectPath& extentPath) {
    CIMObjectPath extent = Model::AdjustObjectPath(extentPath);
    deleteReferences(context, extent, "AssociatedComponentExtent", "PartComponent");
    deleteReferences(context, extent, "ConcreteComponent", "PartComponent");
    deleteReferences(context, extent, "AssociatedRemainingExtent", "PartComponent");
}

}  // namespace orvsmis
