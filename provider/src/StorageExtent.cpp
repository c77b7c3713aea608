#include "StorageExtent.h"

#include <iostream>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "DiskDrive.h"
#include "HealthDispose.h"
#include "MC.h"
#include "Model.h"
#include "PDmanager.h"
#include "PdRawData.h"
#include "PrimordialPool.h"
#include "Property.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

const char* const NOT_SET = "not set";

struct StateRow {
    const char* state;
    Uint16 operationalStatus;
    Uint16 extentStatus;
    Uint16 healthState;
};

const StateRow STATE_ROWS[] = {
    {"ready", 2, 0, 5},
    {"attn.(powering up)", 13, 10, 5},
    {"attn.(rebuilding)", 2, 11, 10},
    {"attn.(formatting)", 2, 10, 10},
    {"attn.(stop)", 13, 0, 5},
    {"fault", 13, 3, 20},
    {"fault(invalid)", 13, 3, 20},
    {"info.(inactive)", 13, 0, 10},
    {"attn.(exchg)", 13, 0, 10},
};

struct UsageRow {
    const char* classification;
    Uint16 usage;
};

const UsageRow USAGE_ROWS[] = {
    {"not set", 2}, {"data", 18}, {"spare", 14}, {"System Volume", 3}, {"L2 Cache", 3},
};

// Each step's failure is told in the trace and to the operator, then passed
// on to the load.
void report(const CIMException& e) {
    const std::string text = "Error[ " + MC::ToStd(cimStatusCodeToString(e.getCode())) + " ] " +
                             MC::ToStd(e.getMessage());
    SMIS_TRACE(LEVEL2, "%s", text.c_str());
    std::cout << text << std::endl;
}

void deleteReferences(const OperationContext& context, const CIMObjectPath& path, const char* shortName) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    Array<CIMObjectPath> references;
    handle->ReferenceNames(context, MC::Namespace(), path, MC::ClassName(shortName), String(), references);
    for (Uint32 i = 0; i < references.size(); ++i) handle->DeleteInstance(context, MC::Namespace(), references[i]);
}

}  // namespace

const PdRawData* StorageExtent::asPd(const RawData* record) {
    const PdRawData* pd = dynamic_cast<const PdRawData*>(record);
    if (pd == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, "Dynamic cast parameter \"param\" failed.");
    return pd;
}

Uint16 StorageExtent::MapUsageProperty(const PdRawData* pd) {
    if (pd == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, "Passed parameter \"pPdRawData\" is NULL.");
    for (const UsageRow& row : USAGE_ROWS)
        if (pd->classification == row.classification) return row.usage;
    SMIS_TRACE(LEVEL3, "%s", ("unknown classification : " + pd->classification).c_str());
    return 65535;
}

void StorageExtent::getPDstatusCimValue(const PdRawData* pd, Uint16& operationalStatus, Uint16& extentStatus,
                                        Uint16& healthState) {
    if (pd == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, "Passed parameter \"pPdRawData\" is NULL.");
    for (const StateRow& row : STATE_ROWS) {
        if (pd->state == row.state) {
            operationalStatus = row.operationalStatus;
            extentStatus = row.extentStatus;
            healthState = row.healthState;
            return;
        }
    }
    operationalStatus = 0;
    extentStatus = 1;
    healthState = 0;
    SMIS_TRACE(LEVEL3, "%s %s", "The physical disk's state maybe illegal",
               ("pPdRawData->state = " + pd->state).c_str());
    std::cout << "The physical disk's state maybe illegal" << std::endl;
}

CIMObjectPath StorageExtent::WrapReference(const std::string& pdn, const std::string& arrayId) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("SystemCreationClassName"), MC::ClassName("ComputerSystem").getString(),
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("SystemName"), MC::ToString(arrayId), CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), MC::ClassName("StorageExtent").getString(),
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("DeviceID"), MC::ToString(DiskDrive::DeviceID(pdn)), CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("StorageExtent"), keys, path);
    return path;
}

CIMObjectPath StorageExtent::WrapReference(ParentArgs& args) {
    return WrapReference(asPd(args.newData)->PDN, args.arrayId);
}

CIMInstance StorageExtent::WrapInstance(ParentArgs& args) {
    const PdRawData* pd = asPd(args.newData);
    const std::string deviceId = DiskDrive::DeviceID(pd->PDN);
    const std::string elementName = "StorageExtent(" + deviceId + ")";
    Uint16 operational = 0;
    Uint16 extent = 0;
    Uint16 health = 0;
    getPDstatusCimValue(pd, operational, extent, health);
    Array<Uint16> operationalStatus;
    operationalStatus.append(operational);
    Array<Uint16> extentStatus;
    extentStatus.append(extent);
    Array<String> discriminator;
    discriminator.append("SNIA:Pool Component");
    discriminator.append("SNIA:DiskDrive");
    const Uint64 blocks = pd->PDCapacity / 512;

    const Property properties[] = {
        Property(CIMName("SystemCreationClassName"), CIMValue(MC::ClassName("ComputerSystem").getString())),
        Property(CIMName("SystemName"), CIMValue(MC::ToString(args.arrayId))),
        Property(CIMName("CreationClassName"), CIMValue(MC::ClassName("StorageExtent").getString())),
        Property(CIMName("DeviceID"), CIMValue(MC::ToString(deviceId))),
        Property(CIMName("BlockSize"), CIMValue(Uint64(512))),
        Property(CIMName("NumberOfBlocks"), CIMValue(blocks)),
        Property(CIMName("ExtentStatus"), CIMValue(extentStatus)),
        Property(CIMName("ConsumableBlocks"), CIMValue(Uint64(pd->classification == NOT_SET ? blocks : 0))),
        Property(CIMName("Primordial"), CIMValue(true)),
        Property(CIMName("OperationalStatus"), CIMValue(operationalStatus)),
        Property(CIMName("ElementName"), CIMValue(MC::ToString(elementName))),
        Property(CIMName("Description"), CIMValue(MC::ToString("A Storage Extent whose number is " + deviceId + "."))),
        Property(CIMName("HealthState"), CIMValue(health)),
        Property(CIMName("SequentialAccess"), CIMValue(false)),
        Property(CIMName("Access"), CIMValue(Uint16(3))),
        Property(CIMName("IsBasedOnUnderlyingRedundancy"), CIMValue(false)),
        Property(CIMName("Usage"), CIMValue(MapUsageProperty(pd))),
        Property(CIMName("ExtentStripeLength"), CIMValue(Uint64(1))),
        Property(CIMName("NoSinglePointOfFailure"), CIMValue(false)),
        Property(CIMName("PackageRedundancy"), CIMValue(Uint16(1))),
        Property(CIMName("Name"), CIMValue(MC::ToString(elementName))),
        Property(CIMName("NameFormat"), CIMValue(Uint16(0))),
        Property(CIMName("NameNamespace"), CIMValue(Uint16(0))),
        Property(CIMName("ExtentDiscriminator"), CIMValue(discriminator)),
    };
    CIMInstance instance(MC::ClassName("StorageExtent"));
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(WrapReference(args));
    return instance;
}

CIMObjectPath StorageExtent::Create(ParentArgs& args) {
    try {
        const PdRawData* pd = asPd(args.newData);
        CIMInstance instance = WrapInstance(args);
        Singleton<CimHandle>::Instance()->CreateInstance(args.context, MC::Namespace(), instance);
        CIMObjectPath path = Model::AdjustObjectPath(WrapReference(args));
        MediaPresent::Create(args.context, Model::AdjustObjectPath(args.path), path);
        PDmanager::Instance()->AddData(pd, path);
        PrimordialPool::AssocStorageExtent(args.context, args.arrayId, path, pd->classification != NOT_SET);
        return path;
    } catch (const CIMException& e) {
        report(e);
        throw;
    }
}

void StorageExtent::Modify(ParentArgs& args) {
    try {
        const PdRawData* pd = asPd(args.newData);
        const PdRawData* old = asPd(args.oldData);
        CimHandle* handle = Singleton<CimHandle>::Instance();
        CIMInstance newInstance = WrapInstance(args);
        CIMObjectPath path = Model::AdjustObjectPath(WrapReference(args));
        CIMInstance stored = handle->GetSmisInstance(args.context, MC::Namespace(), path, false, false, false,
                                                     CIMPropertyList());
        HealthDispose health;
        health.HealthStateChangeOperating(path, stored, newInstance);
        health.OperationalStatusChangeOperating(newInstance, stored);
        handle->ModifyInstance(args.context, MC::Namespace(), newInstance, false, CIMPropertyList());
        PDmanager::Instance()->ModifyData(pd, old, path);

        const bool wasFree = old->classification == NOT_SET;
        const bool isFree = pd->classification == NOT_SET;
        if (wasFree && !isFree) PrimordialPool::UpdateRemainingExtent(args.context, args.arrayId, path, true);
        if (!wasFree && isFree) PrimordialPool::UpdateRemainingExtent(args.context, args.arrayId, path, false);
    } catch (const CIMException& e) {
        report(e);
        throw;
    }
}

void StorageExtent::Delete(ParentArgs& args) {
    try {
        const PdRawData* pd = asPd(args.newData);
        CIMObjectPath path = Model::AdjustObjectPath(WrapReference(args));
        deleteReferences(args.context, path, "MediaPresent");
        deleteReferences(args.context, path, "SystemDevice");
        PrimordialPool::UnassocStorageExtent(args.context, args.arrayId, path);
        Singleton<CimHandle>::Instance()->DeleteInstance(args.context, MC::Namespace(), path);
        PDmanager::Instance()->DeleteData(pd);
    } catch (const CIMException& e) {
        report(e);
        throw;
    }
}

}  // namespace orvsmis
