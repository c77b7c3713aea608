#include "CompositeExtent.h"

#include <list>
#include <sstream>

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "HealthDispose.h"
#include "MC.h"
#include "Model.h"
#include "PDmanager.h"
#include "PoolRawData.h"
#include "Singleton.h"
#include "SmisTrace.h"
#include "StoragePool.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

const unsigned long long NOT_GIVEN = ~0ULL;

struct LayoutRow {
    const char* raid;
    Uint32 twoLevelsFrom;  // 0: always one level
};

const LayoutRow LAYOUTS[] = {
    {"RAID5(2+P)", 0},      {"RAID5(4+P)", 0},      {"RAID5(8+P)", 0},     {"RAID6(4+PQ)", 0},
    {"RAID6(8+PQ)", 0},     {"RAID1", 0},           {"RAID-TMC", 0},       {"RAID0", 0},
    {"RAID5/50(2+P)", 6},   {"RAID5/50(4+P)", 10},  {"RAID5/50(8+P)", 18}, {"RAID6/60(4+PQ)", 12},
    {"RAID6/60(8+PQ)", 20}, {"RAID1/10", 4},        {"RAID-TM", 6},
};

bool oneOf(const std::string& text, std::initializer_list<const char*> texts) {
    for (const char* t : texts)
        if (text == t) return true;
    return false;
}

// The numbers of one composite extent by its RAID text.
struct Geometry {
    Uint64 numberOfBlocks;
    Uint64 stripeLength;
    Uint16 dataRedundancy;
    Uint16 packageRedundancy;
    bool noSinglePointOfFailure;
    bool basedOnUnderlyingRedundancy;
    std::string raidText;  // as it stands in Name and Description
};

Geometry geometryOf(const std::string& raid, Uint64 n, Uint64 B, Sint64 b) {
    const bool parity5 = oneOf(raid, {"RAID5(2+P)", "RAID5(4+P)", "RAID5(8+P)", "RAID5/50(2+P)", "RAID5/50(4+P)",
                                      "RAID5/50(8+P)"});
    const bool parity6 = oneOf(raid, {"RAID6(4+PQ)", "RAID6(8+PQ)", "RAID6/60(4+PQ)", "RAID6/60(8+PQ)"});
    if (raid == "RAID0") return {n * B, n, 1, 0, false, false, raid};
    if (raid == "RAID1") return {n * B / 2, 1, 2, 1, true, true, raid};
    if (raid == "RAID1/10") return {n * B / 2, n / 2, 2, 1, true, true, raid};
    if (raid == "RAID-TM") return {n * B / 3, n / 3, 3, 2, true, true, raid};
    if (raid == "RAID-TMC") return {n * B / 3, 1, 3, 2, true, true, "RAID-TM"};
    if (parity5 || parity6) {
        const Uint64 parity = parity6 ? 2 : 1;
        const Uint16 package = parity6 ? 2 : 1;
        // A base set no larger than its parity holds no data: nothing to divide.
        if (b <= Sint64(parity)) return {0, 0, 1, package, true, true, raid};
        const Uint64 base = Uint64(b);
        const bool twoLevels = raid.find('/') != std::string::npos;
        return {(n * (base - parity) / base) * B, twoLevels ? n / base : n, 1, package, true, true, raid};
    }
    return {n * B, 0, 1, 0, true, true, "UNKOWN"};
}

void poolStateOf(const std::string& poolState, Array<Uint16>& extentStatus, Uint16& health) {
    extentStatus.clear();
    if (poolState == "ready") {
        health = 5;
    } else if (oneOf(poolState, {"attn.(reduce)", "attn.(preventive copy)", "attn.(copy back)", "attn.(stop)"})) {
        health = 10;
    } else if (poolState == "attn.(rebuilding)") {
        extentStatus.append(11);
        health = 10;
    } else if (oneOf(poolState, {"fault", "fault(over capacity)"})) {
        extentStatus.append(4);
        health = 20;
    } else {
        extentStatus.append(1);
        health = 0;
    }
}

std::string nameOf(const std::string& raid, const std::string& deviceId) {
    return "Composite Extent(RAID=" + raid + ", DeviceID=" + deviceId + ")";
}

std::string descriptionOf(const std::string& raid, const std::string& deviceId) {
    return "A composite extent of " + raid + " with DeviceID=" + deviceId;
}

CIMObjectPath pathWithDeviceId(const std::string& deviceId, const std::string& arrayId) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("SystemName"), MC::ToString(arrayId), CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("SystemCreationClassName"), MC::ClassName("ComputerSystem").getString(),
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("DeviceID"), MC::ToString(deviceId), CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), MC::ClassName("CompositeExtent").getString(),
                              CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("CompositeExtent"), keys, path);
    return path;
}

void setString(CIMInstance& instance, const char* name, const std::string& value) {
    Uint32 index = instance.findProperty(CIMName(name));
    if (index != PEG_NOT_FOUND) instance.getProperty(index).setValue(CIMValue(MC::ToString(value)));
}

std::string deviceIdOf(const CIMObjectPath& path) {
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i)
        if (keys[i].getName().equal(CIMName("DeviceID"))) return MC::ToStd(keys[i].getValue());
    return std::string();
}

bool dependentIsVolume(const CIMObjectPath& association) {
    const Array<CIMKeyBinding>& keys = association.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i) {
        if (!keys[i].getName().equal(CIMName("Dependent"))) continue;
        CIMObjectPath dependent(keys[i].getValue());
        return dependent.getClassName().equal(MC::ClassName("StorageVolume"));
    }
    return false;
}

void deleteTolerant(const OperationContext& context, const CIMObjectPath& path) {
    try {
        Singleton<CimHandle>::Instance()->DeleteInstance(context, MC::Namespace(), path);
    } catch (const CIMException& e) {
        // Reached twice over two association classes, or gone with its extent.
        if (e.getCode() != CIM_ERR_NOT_FOUND) throw;
    }
}

}  // namespace

int CompositeExtent::getNumberOfLayout(const std::string& raid, Uint32 n) {
    for (const LayoutRow& row : LAYOUTS)
        if (raid == row.raid) return (row.twoLevelsFrom != 0 && n >= row.twoLevelsFrom) ? 2 : 1;
    return -1;
}

int CompositeExtent::getPdOfBaseNum(const std::string& raid) {
    if (oneOf(raid, {"RAID5(2+P)", "RAID5/50(2+P)"})) return 3;
    if (oneOf(raid, {"RAID5(4+P)", "RAID5/50(4+P)"})) return 5;
    if (oneOf(raid, {"RAID5(8+P)", "RAID5/50(8+P)"})) return 9;
    if (oneOf(raid, {"RAID6(4+PQ)", "RAID6/60(4+PQ)"})) return 6;
    if (oneOf(raid, {"RAID6(8+PQ)", "RAID6/60(8+PQ)"})) return 10;
    return -1;
}

std::string CompositeExtent::getSlaveRaidType(const std::string& raid) {
    if (raid == "RAID-TM") return "RAID-TMC";
    std::string slave = raid;
    const std::string::size_type slash = slave.find('/');
    if (slash != std::string::npos) slave.erase(slash, 3);
    return slave;
}

CIMObjectPath CompositeExtent::WrapReference(const std::string& poolNo, const std::string& arrayId) {
    return pathWithDeviceId(poolNo + "h", arrayId);
}

CIMInstance CompositeExtent::WrapInstance(const CompositeExtentArgs& args) {
    const std::string deviceId = args.poolNo + "h";
    const Geometry g = geometryOf(args.raidType, args.pdCount, args.pdBlocks, args.pdsPerBase);
    const std::string name = nameOf(g.raidText, deviceId);
    Array<Uint16> extentStatus;
    Uint16 health = 0;
    poolStateOf(args.poolState, extentStatus, health);
    Array<String> discriminator;
    discriminator.append("SNIA:Pool Component");
    discriminator.append("SNIA:Composite");

    CIMInstance instance(MC::ClassName("CompositeExtent"));
    instance.addProperty(CIMProperty(CIMName("CreationClassName"), CIMValue(MC::ClassName("CompositeExtent").getString())));
    instance.addProperty(CIMProperty(CIMName("DeviceID"), CIMValue(MC::ToString(deviceId))));
    instance.addProperty(
        CIMProperty(CIMName("SystemCreationClassName"), CIMValue(MC::ClassName("ComputerSystem").getString())));
    instance.addProperty(CIMProperty(CIMName("SystemName"), CIMValue(MC::ToString(args.arrayId))));
    instance.addProperty(CIMProperty(CIMName("Name"), CIMValue(MC::ToString(name))));
    instance.addProperty(CIMProperty(CIMName("Primordial"), CIMValue(Boolean(false))));
    instance.addProperty(CIMProperty(CIMName("ExtentStatus"), CIMValue(extentStatus)));
    instance.addProperty(CIMProperty(CIMName("DataRedundancy"), CIMValue(g.dataRedundancy)));
    instance.addProperty(CIMProperty(CIMName("PackageRedundancy"), CIMValue(g.packageRedundancy)));
    instance.addProperty(CIMProperty(CIMName("NoSinglePointOfFailure"), CIMValue(Boolean(g.noSinglePointOfFailure))));
    instance.addProperty(
        CIMProperty(CIMName("IsBasedOnUnderlyingRedundancy"), CIMValue(Boolean(g.basedOnUnderlyingRedundancy))));
    instance.addProperty(CIMProperty(CIMName("IsConcatenated"), CIMValue(Boolean(false))));
    instance.addProperty(CIMProperty(CIMName("ExtentStripeLength"), CIMValue(g.stripeLength)));
    instance.addProperty(CIMProperty(CIMName("NumberOfBlocks"), CIMValue(g.numberOfBlocks)));
    instance.addProperty(CIMProperty(CIMName("ConsumableBlocks"), CIMValue(args.consumableBlocks)));
    instance.addProperty(CIMProperty(CIMName("BlockSize"), CIMValue(Uint64(512))));
    instance.addProperty(CIMProperty(CIMName("Description"), CIMValue(MC::ToString(descriptionOf(g.raidText, deviceId)))));
    instance.addProperty(CIMProperty(CIMName("HealthState"), CIMValue(health)));
    instance.addProperty(CIMProperty(CIMName("ElementName"), CIMValue(MC::ToString(name))));
    instance.addProperty(CIMProperty(CIMName("ExtentDiscriminator"), CIMValue(discriminator)));
    instance.setPath(pathWithDeviceId(deviceId, args.arrayId));
    return instance;
}

CIMInstance CompositeExtent::getSlaveInstance(const CompositeExtentArgs& args, int index) {
    CompositeExtentArgs slaveArgs(args);
    slaveArgs.raidType = getSlaveRaidType(args.raidType);
    CIMInstance slave = WrapInstance(slaveArgs);
    std::ostringstream id;
    id << args.poolNo << "h:" << index << "h";
    const std::string deviceId = id.str();
    const Geometry g = geometryOf(slaveArgs.raidType, 0, 0, 0);
    setString(slave, "DeviceID", deviceId);
    setString(slave, "Name", nameOf(g.raidText, deviceId));
    setString(slave, "ElementName", nameOf(g.raidText, deviceId));
    setString(slave, "Description", descriptionOf(g.raidText, deviceId));
    slave.setPath(pathWithDeviceId(deviceId, args.arrayId));
    return slave;
}

void CompositeExtent::fillArgs(ParentArgs& parent, CompositeExtentArgs& args) {
    const PoolRawData* pool = dynamic_cast<const PoolRawData*>(parent.newData);
    if (pool == nullptr) throw CIMException(CIM_ERR_FAILED, "can not read PoolRawData! [CompositeExtent]");
    args.poolNo = pool->poolNo;
    args.poolState = pool->poolState;
    if (StoragePool::IsVirtual(pool))
        args.consumableBlocks =
            pool->poolCapacity > pool->actualUsedCapacity ? (pool->poolCapacity - pool->actualUsedCapacity) / 512 : 0;
    else
        args.consumableBlocks = pool->freePoolCapacity / 512;
    args.raidType = pool->RAIDType;
    args.poolPath = Model::AdjustObjectPath(parent.path);
    args.stripSize = pool->stripSize;

    std::list<CIMObjectPath> disks;
    PDmanager::Instance()->GetPDListByPool(pool->poolNo, disks);
    if (disks.empty()) throw CIMException(CIM_ERR_FAILED, "An pool can't based on zero PDs.");
    if (disks.size() > 0xFFFE) throw CIMException(CIM_ERR_FAILED, "An pool can't based on too many PDs.");
    args.pdList.assign(disks.begin(), disks.end());
    args.pdCount = Uint32(args.pdList.size());
    args.pdsPerBase = getPdOfBaseNum(args.raidType);
    args.slaveRaidType =
        getNumberOfLayout(args.raidType, args.pdCount) == 1 ? args.raidType : getSlaveRaidType(args.raidType);

    CIMInstance firstDisk = Singleton<CimHandle>::Instance()->GetSmisInstance(
        parent.context, MC::Namespace(), Model::AdjustObjectPath(args.pdList.front()), false, false, false,
        CIMPropertyList());
    Uint32 index = firstDisk.findProperty(CIMName("NumberOfBlocks"));
    if (index == PEG_NOT_FOUND || firstDisk.getProperty(index).getValue().isNull() ||
        firstDisk.getProperty(index).getValue().getType() != CIMTYPE_UINT64)
        throw CIMException(CIM_ERR_FAILED, "the pool's first disk extent has no NumberOfBlocks [CompositeExtent]");
    firstDisk.getProperty(index).getValue().get(args.pdBlocks);
}

void CompositeExtent::OnCreate(ParentArgs& args) {
    CompositeExtentArgs ceArgs(args);
    fillArgs(args, ceArgs);
    CompositeExtent extent;
    extent.Create(ceArgs);
}

void CompositeExtent::OnModify(ParentArgs& args) {
    const PoolRawData* newPool = dynamic_cast<const PoolRawData*>(args.newData);
    const PoolRawData* oldPool = dynamic_cast<const PoolRawData*>(args.oldData);
    if (newPool == nullptr || oldPool == nullptr)
        throw CIMException(CIM_ERR_FAILED, "can not read PoolRawData! [CompositeExtent::OnModify]");
    if (newPool->RAIDType != oldPool->RAIDType) throw CIMException(CIM_ERR_FAILED, "An pool can't change the raidType.");
    if (newPool->poolCapacity == oldPool->poolCapacity && newPool->poolState == oldPool->poolState &&
        newPool->freePoolCapacity == oldPool->freePoolCapacity && newPool->actualCapacity == oldPool->actualCapacity &&
        newPool->stripSize == oldPool->stripSize) {
        SMIS_TRACE(LEVEL4, "%s", "CE:OnModify no Data has changed...");
        return;
    }
    CompositeExtentArgs ceArgs(args);
    fillArgs(args, ceArgs);
    CompositeExtent extent;
    extent.Modify(ceArgs);
}

void CompositeExtent::OnDelete(ParentArgs& args) {
    const PoolRawData* pool = dynamic_cast<const PoolRawData*>(args.newData);
    if (pool == nullptr) throw CIMException(CIM_ERR_FAILED, "can not read PoolRawData! [CompositeExtent::OnDelete]");
    CompositeExtentArgs ceArgs(args);
    ceArgs.poolNo = pool->poolNo;
    ceArgs.poolPath = Model::AdjustObjectPath(args.path);
    CompositeExtent extent;
    extent.Delete(ceArgs);
}

void CompositeExtent::Create(CompositeExtentArgs& args) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMInstance master = WrapInstance(args);
    handle->CreateInstance(args.context, MC::Namespace(), master);
    const CIMObjectPath masterPath = Model::AdjustObjectPath(master.getPath());
    const int layout = getNumberOfLayout(args.raidType, args.pdCount);
    SMIS_TRACE(LEVEL4, "composite extent layout %d of %s", layout, args.raidType.c_str());

    CIMObjectPath connection = masterPath;
    if (layout == -1) {
        SMIS_TRACE(LEVEL3, "%s", "the RaidType is not supported.");
    } else if (layout == 2) {
        CIMInstance slave = getSlaveInstance(args, 1);
        handle->CreateInstance(args.context, MC::Namespace(), slave);
        connection = Model::AdjustObjectPath(slave.getPath());
        CompositeExtentBasedOn::Create(args.context, masterPath, connection, 1, 0, NOT_GIVEN, NOT_GIVEN);
    }
    const bool mirrored = args.raidType == "RAID1/10" || args.raidType == "RAID1";
    unsigned short index = 1;
    for (const CIMObjectPath& disk : args.pdList) {
        if (mirrored)
            BasedOn::Create(args.context, connection, disk, index, NOT_GIVEN, NOT_GIVEN);
        else
            CompositeExtentBasedOn::Create(args.context, connection, disk, index, args.stripSize, NOT_GIVEN, NOT_GIVEN);
        ++index;
    }
    ConcreteComponent::Create(args.context, args.poolPath, masterPath);
    AssociatedComponentExtent::Create(args.context, args.poolPath, masterPath);
    SMIS_TRACE(LEVEL3, "%s process completed.", "create composite extent");
}

void CompositeExtent::getAllCEInstances(const CompositeExtentArgs& args, Array<CIMInstance>& out) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    const CIMObjectPath masterPath = Model::AdjustObjectPath(WrapReference(args.poolNo, args.arrayId));
    try {
        out.append(handle->GetSmisInstance(args.context, MC::Namespace(), masterPath, false, false, false,
                                           CIMPropertyList()));
    } catch (const CIMException& e) {
        if (e.getCode() != CIM_ERR_NOT_FOUND) throw;
        return;
    }
    Array<CIMObject> slaves;
    handle->Associators(args.context, MC::Namespace(), masterPath, MC::ClassName("CompositeExtentBasedOn"),
                        MC::ClassName("CompositeExtent"), String(), String(), false, false, CIMPropertyList(), slaves);
    for (Uint32 i = 0; i < slaves.size(); ++i) out.append(CIMInstance(slaves[i]));
}

void CompositeExtent::Modify(CompositeExtentArgs& args) {
    Array<CIMInstance> before;
    getAllCEInstances(args, before);
    Delete(args);
    Create(args);
    Array<CIMInstance> after;
    getAllCEInstances(args, after);
    HealthDispose health;
    for (Uint32 i = 0; i < after.size(); ++i) {
        const std::string id = deviceIdOf(after[i].getPath());
        for (Uint32 j = 0; j < before.size(); ++j) {
            if (deviceIdOf(before[j].getPath()) != id) continue;
            ActivateInstModificationIndication(after[i], before[j]);
            health.HealthStateChangeOperating(Model::AdjustObjectPath(after[i].getPath()), before[j], after[i]);
        }
    }
    SMIS_TRACE(LEVEL3, "%s process completed.", "modify composite extent");
}

void CompositeExtent::Delete(CompositeExtentArgs& args) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    const CIMNamespaceName ns = MC::Namespace();
    const CIMObjectPath masterPath = Model::AdjustObjectPath(WrapReference(args.poolNo, args.arrayId));

    Array<CIMObjectPath> slaves;
    handle->AssociatorNames(args.context, ns, masterPath, MC::ClassName("CompositeExtentBasedOn"),
                            MC::ClassName("CompositeExtent"), String(), String(), slaves);
    Array<CIMObjectPath> extents;
    for (Uint32 i = 0; i < slaves.size(); ++i) extents.append(Model::AdjustObjectPath(slaves[i]));
    if (extents.size() == 0) extents.append(masterPath);

    const char* linkClasses[] = {"BasedOn", "CompositeExtentBasedOn"};
    for (Uint32 i = 0; i < extents.size(); ++i) {
        for (const char* linkClass : linkClasses) {
            Array<CIMObjectPath> links;
            handle->ReferenceNames(args.context, ns, extents[i], MC::ClassName(linkClass), String(), links);
            // The volumes keep their BasedOn: the volume's own deletion removes it.
            for (Uint32 j = 0; j < links.size(); ++j)
                if (!dependentIsVolume(links[j])) deleteTolerant(args.context, links[j]);
        }
    }
    if (slaves.size() > 0) {
        for (Uint32 i = 0; i < extents.size(); ++i) deleteTolerant(args.context, extents[i]);
        Array<CIMObjectPath> links;
        handle->ReferenceNames(args.context, ns, masterPath, MC::ClassName("CompositeExtentBasedOn"), String(), links);
        for (Uint32 j = 0; j < links.size(); ++j)
            if (!dependentIsVolume(links[j])) deleteTolerant(args.context, links[j]);
    }
    deleteTolerant(args.context, masterPath);
    const char* poolLinks[] = {"ConcreteComponent", "AssociatedComponentExtent"};
    for (const char* linkClass : poolLinks) {
        Array<CIMObjectPath> links;
        handle->ReferenceNames(args.context, ns, masterPath, MC::ClassName(linkClass), String(), links);
        for (Uint32 j = 0; j < links.size(); ++j) deleteTolerant(args.context, links[j]);
    }
    SMIS_TRACE(LEVEL3, "%s process completed.", "delete composite extent");
}

}  // namespace orvsmis
