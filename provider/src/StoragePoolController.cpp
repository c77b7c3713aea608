#include "StoragePoolController.h"

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/Exception.h>

#include "CimHandle.h"
#include "CreatePoolAndLdAssistFun.h"
#include "DataConnector.h"
#include "MC.h"
#include "PDmanager.h"
#include "PoolRawData.h"
#include "RecordRef.h"
#include "Singleton.h"
#include "SmisTrace.h"
#include "StorageCapability.h"
#include "StoragePool.h"

using namespace Pegasus;

namespace orvsmis {

const char* const StoragePoolController::m_className = "StoragePool";

namespace {

const Uint32 DONE = 0;
const Uint32 NOT_SUPPORTED = 1;
const Uint32 USE_OTHER_METHOD = 2;

const Uint64 THIN_MINIMUM = 0x40000000ULL;
const Uint64 THICK_MINIMUM = 0xFE00000ULL;
const Uint64 SIZE_DIVISOR = 0x100000ULL;

void trace(const char* method, const char* text) { SMIS_TRACE(LEVEL3, "Info[ %s ] : %s", method, text); }

// The parameters both size queries share. ElementType must be an integer;
// Goal, when given, a reference (or the text of one).
struct SizeQuery {
    bool hasElementType = false;
    Uint64 elementType = 0;
    CIMObjectPath goal;
    bool hasGoal = false;
};

bool integerValue(const CIMValue& value, Uint64& out) {
    if (value.isNull() || value.isArray()) return false;
    switch (value.getType()) {
        case CIMTYPE_UINT8: { Uint8 v; value.get(v); out = v; return true; }
        case CIMTYPE_UINT16: { Uint16 v; value.get(v); out = v; return true; }
        case CIMTYPE_UINT32: { Uint32 v; value.get(v); out = v; return true; }
        case CIMTYPE_UINT64: { Uint64 v; value.get(v); out = v; return true; }
        case CIMTYPE_SINT8: { Sint8 v; value.get(v); if (v < 0) return false; out = Uint64(v); return true; }
        case CIMTYPE_SINT16: { Sint16 v; value.get(v); if (v < 0) return false; out = Uint64(v); return true; }
        case CIMTYPE_SINT32: { Sint32 v; value.get(v); if (v < 0) return false; out = Uint64(v); return true; }
        case CIMTYPE_SINT64: { Sint64 v; value.get(v); if (v < 0) return false; out = Uint64(v); return true; }
        default: return false;
    }
}

SizeQuery readParameters(const Array<CIMParamValue>& in, const char* method) {
    SizeQuery query;
    for (Uint32 i = 0; i < in.size(); ++i) {
        const String name = in[i].getParameterName();
        const CIMValue value = in[i].getValue();
        if (String::equalNoCase(name, "ElementType")) {
            query.hasElementType = integerValue(value, query.elementType);
            if (!query.hasElementType && !value.isNull()) {
                SMIS_TRACE(LEVEL2, "Error[ %s ] : %s ,%s", "CIM_ERR_INVALID_PARAMETER", method,
                           "ElementType is not an integer");
                throw CIMException(CIM_ERR_INVALID_PARAMETER, "unknown request ElementType!");
            }
        } else if (String::equalNoCase(name, "Goal")) {
            if (value.isNull()) continue;
            if (value.isArray()) throw CIMException(CIM_ERR_INVALID_PARAMETER, "Goal is not a reference!");
            if (value.getType() == CIMTYPE_REFERENCE) {
                value.get(query.goal);
            } else if (value.getType() == CIMTYPE_STRING) {
                String text;
                value.get(text);
                if (text.size() == 0) continue;
                try {
                    query.goal = CIMObjectPath(text);
                } catch (const Exception&) {
                    throw CIMException(CIM_ERR_INVALID_PARAMETER, "Goal is not a reference!");
                }
            } else {
                throw CIMException(CIM_ERR_INVALID_PARAMETER, "Goal is not a reference!");
            }
            query.hasGoal = !query.goal.getClassName().isNull() && query.goal.getKeyBindings().size() > 0;
        }
    }
    return query;
}

CIMInstance readPool(const OperationContext& context, const CIMObjectPath& path) {
    Array<CIMName> names;
    names.append(CIMName("Primordial"));
    names.append(CIMName("PoolID"));
    names.append(CIMName("InstanceID"));
    return Singleton<CimHandle>::Instance()->GetSmisInstance(context, MC::Namespace(), path, false, false, false,
                                                             CIMPropertyList(names));
}

int goalRaidType(const OperationContext& context, const CIMObjectPath& goal) {
    Array<CIMName> names;
    names.append(CIMName("DataRedundancyGoal"));
    names.append(CIMName("PackageRedundancyGoal"));
    names.append(CIMName("StorageEfficiencyHint"));
    CIMInstance setting = Singleton<CimHandle>::Instance()->GetSmisInstance(context, MC::Namespace(), goal, false,
                                                                            false, false, CIMPropertyList(names));
    return StorageCapability::ToRaidType(setting);
}

// The decimal count at the start of the text; 0 when there is none.
unsigned int leadingCount(const std::string& text) {
    unsigned long value = 0;
    for (char c : text) {
        if (c < '0' || c > '9') break;
        value = value * 10 + unsigned(c - '0');
        if (value > 0xFFFF) return 0;
    }
    return static_cast<unsigned int>(value);
}

}  // namespace

CIMValue StoragePoolController::Invoke(InvokeMethodArgs& args, Array<CIMParamValue>& outParameters) {
    const String method = args.methodName.getString();
    if (String::equalNoCase(method, "GetSupportedSizes")) return CIMValue(GetSupportedSizes(args, outParameters));
    if (String::equalNoCase(method, "GetSupportedSizeRange"))
        return CIMValue(GetSupportedSizeRange(args, outParameters));
    SMIS_TRACE(LEVEL3, "not supported method : %s", MC::ToStd(method).c_str());
    return CIMValue(NOT_SUPPORTED);
}

Uint32 StoragePoolController::GetSupportedSizes(InvokeMethodArgs& args, Array<CIMParamValue>& outParameters) {
    const char* method = "GetSupportedSizes";
    SizeQuery query = readParameters(args.inParameters, method);
    outParameters.clear();
    switch (query.hasElementType ? query.elementType : 0) {
        case 2:
            break;
        case 3:
            trace(method, "[Storage Volume]not supported, can use GetSupportedSizeRange()!");
            return USE_OTHER_METHOD;
        case 4:
            trace(method, "not supported the element type [Logical Disk]!");
            return NOT_SUPPORTED;
        case 5:
            trace(method, "[Thin Provisioned Volume]not supported, can use GetSupportedSizeRange()!");
            return USE_OTHER_METHOD;
        default:
            SMIS_TRACE(LEVEL2, "Error[ %s ] : %s ,%s", "CIM_ERR_INVALID_PARAMETER", method,
                       "unknown request ElementType!");
            throw CIMException(CIM_ERR_INVALID_PARAMETER, "unknown request ElementType!");
    }

    CIMInstance pool = readPool(args.context, args.objectPath);
    const bool primordial = IsPrimordialPool(pool);
    int raid = 0;
    if (query.hasGoal) {
        raid = goalRaidType(args.context, query.goal);
        if (raid == 0) {
            trace(method, "Unknown RAID type!");
            return NOT_SUPPORTED;
        }
    } else if (primordial) {
        trace(method, "InPool is primordial pool, Goal is null, have no RAID type to compute!");
        return NOT_SUPPORTED;
    }

    std::list<Uint64> sizes;
    if (primordial) {
        std::vector<unsigned long long> list;
        GetUsableSizeList(raid, list);
        sizes.assign(list.begin(), list.end());
    } else {
        fillSupportedModifySizes(pool, sizes);
    }
    if (sizes.empty()) {
        trace(method, "has not physical disk can use!");
        sizes.push_back(0);
    }
    Array<Uint64> out;
    for (Uint64 size : sizes) out.append(size);
    outParameters.append(CIMParamValue(String("Sizes"), CIMValue(out)));
    trace(method, "GetSupportedSizes method executed successfully!");
    return DONE;
}

void StoragePoolController::fillSupportedModifySizes(const CIMInstance& pool, std::list<Uint64>& out) {
    const char* method = "fillSupportedModifySizes";
    const std::string poolNo = GetPoolIdFromPool(pool);
    const std::string arrayId = GetArrayIdFromPool(pool);
    RecordRef<PoolRawData> record;
    if (poolNo.empty() || !DataConnector<PoolRawData>::QueryData(arrayId, poolNo, record.Out())) {
        trace(method, "can not find pool raw data!");
        return;
    }
    const unsigned int base = leadingCount(record->noBPD);
    if (base == 0) {
        trace(method, "can not read pool' base pd size!");
        return;
    }
    const int raid = StoragePool::GetPoolType(record->RAIDType);
    if (raid == 0) {
        trace(method, "Error: can not get raid type from pool!");
        return;
    }
    // Capacities, not entries: the data thread may drop a disk meanwhile.
    PDmanager* disks = PDmanager::Instance();
    std::list<Uint64> poolDisks;
    if (!disks->GetPDCapacitiesByPool(poolNo, poolDisks) || poolDisks.empty()) {
        trace(method, "Error: can not get pd info from pool!");
        return;
    }
    std::list<Uint64> freeDisks;
    if (!disks->GetFreePDCapacitiesByType(record->PDType, freeDisks)) return;

    // A pool grows only by disks at least as large as its own.
    const Uint64 pdCapacity = poolDisks.front();
    if (freeDisks.front() < pdCapacity)
        freeDisks.remove_if([pdCapacity](Uint64 capacity) { return capacity < pdCapacity; });

    std::vector<unsigned long long> sizes;
    GetUsableSizeList(raid, base, pdCapacity, static_cast<unsigned int>(poolDisks.size()),
                      static_cast<unsigned int>(freeDisks.size()), sizes);
    out.assign(sizes.begin(), sizes.end());
}

Uint32 StoragePoolController::GetSupportedSizeRange(InvokeMethodArgs& args, Array<CIMParamValue>& outParameters) {
    const char* method = "GetSupportedSizeRange";
    SizeQuery query = readParameters(args.inParameters, method);
    outParameters.clear();
    switch (query.hasElementType ? query.elementType : 0) {
        case 3:
            break;
        case 2:
            trace(method, "[Storage Pool]not supported, can use getSupportedSizes()!");
            return USE_OTHER_METHOD;
        case 4:
            trace(method, "not supported the element type [Logical Disk]!");
            return NOT_SUPPORTED;
        default:
            SMIS_TRACE(LEVEL2, "Error[ %s ] : %s ,%s", "CIM_ERR_INVALID_PARAMETER", method,
                       "unknown request ElementType!");
            throw CIMException(CIM_ERR_INVALID_PARAMETER, "unknown request ElementType!");
    }

    CIMInstance pool = readPool(args.context, args.objectPath);
    if (IsPrimordialPool(pool)) {
        trace(method, "can not create or modify storage volume in primordial pool!");
        return NOT_SUPPORTED;
    }
    RecordRef<PoolRawData> record;
    const std::string poolNo = GetPoolIdFromPool(pool);
    if (poolNo.empty() || !DataConnector<PoolRawData>::QueryData(GetArrayIdFromPool(pool), poolNo, record.Out())) {
        trace(method, "can not find poolRawData!");
        return NOT_SUPPORTED;
    }
    if (query.hasGoal && goalRaidType(args.context, query.goal) != StoragePool::GetPoolType(record->RAIDType)) {
        trace(method, "goal raid type different pool raid type!");
        return NOT_SUPPORTED;
    }

    Uint64 minimum = StoragePool::IsVirtual(record.Get()) ? THIN_MINIMUM : THICK_MINIMUM;
    Uint64 maximum = record->freePoolCapacity;
    Uint64 divisor = SIZE_DIVISOR;
    if (record->freePoolCapacity < minimum) {
        minimum = maximum = divisor = 0;
        trace(method, "not supported the size!");
    }
    outParameters.append(CIMParamValue(String("MinimumVolumeSize"), CIMValue(minimum)));
    outParameters.append(CIMParamValue(String("MaximumVolumeSize"), CIMValue(maximum)));
    outParameters.append(CIMParamValue(String("VolumeSizeDivisor"), CIMValue(divisor)));
    trace(method, "GetSupportedSizeRange method executed successfully!");
    return DONE;
}

}  // namespace orvsmis
