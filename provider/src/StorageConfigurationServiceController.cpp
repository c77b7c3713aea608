#include "StorageConfigurationServiceController.h"

#include <algorithm>
#include <cstdlib>
#include <list>
#include <memory>

#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/Exception.h>

#include "CimHandle.h"
#include "CommandTextCheck.h"
#include "ConfigManager.h"
#include "CreateLdJobDetail.h"
#include "CreatePoolAndLdAssistFun.h"
#include "CreatePoolJobDetail.h"
#include "DataConnector.h"
#include "DeleteLdJobDetail.h"
#include "DeletePoolJobDetail.h"
#include "DeleteSRAJobDetail.h"
#include "JobArgs.h"
#include "JobManager.h"
#include "LdRawData.h"
#include "MC.h"
#include "Model.h"
#include "ModifyLdJobDetail.h"
#include "ModifyPoolJobDetail.h"
#include "PDmanager.h"
#include "PdRawData.h"
#include "PoolRawData.h"
#include "PrimordialPool.h"
#include "RecordRef.h"
#include "Singleton.h"
#include "SmisTrace.h"
#include "StorageCapability.h"
#include "StoragePool.h"
#include "StorageVolume.h"

using namespace Pegasus;

namespace orvsmis {

const char* const StorageConfigurationServiceController::m_className = "StorageConfigurationService";

namespace {

const Uint32 RC_DONE = JOB_RC_DONE;
const Uint32 RC_NOT_SUPPORTED = JOB_RC_NOT_SUPPORTED;
const Uint32 RC_FAILED = JOB_RC_FAILED;
const Uint32 RC_INVALID = JOB_RC_INVALID_PARAMETER;
const Uint32 RC_SIZE = JOB_RC_SIZE_NOT_SUPPORTED;

const Uint64 MiB = 0x100000ULL;
const Uint64 GiB = 0x40000000ULL;
const Uint64 THIN_LD_MINIMUM = 0x40000000ULL;
const Uint64 THICK_LD_MINIMUM = 0xFE00000ULL;

void traceError(const char* method, const std::string& text) {
    SMIS_TRACE(LEVEL1, "Error[ %s ] : %s ,%s", "CIM_ERR_INVALID_PARAMETER", method, text.c_str());
}

void traceInfo(const char* text) { SMIS_TRACE(LEVEL2, "%s", text); }

// A parameter that had the wrong type for its name.
class BadParameter {
public:
    explicit BadParameter(const std::string& what) : text(what) {}
    std::string text;
};

bool integerValue(const CIMValue& value, Uint64& out) {
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

// A reference given as a reference or as its text.
bool pathValue(const CIMValue& value, CIMObjectPath& out) {
    if (value.getType() == CIMTYPE_REFERENCE) {
        value.get(out);
        return true;
    }
    if (value.getType() != CIMTYPE_STRING) return false;
    String text;
    value.get(text);
    if (text.size() == 0) {
        out = CIMObjectPath();
        return true;
    }
    try {
        out = CIMObjectPath(text);
    } catch (const Exception&) {
        return false;
    }
    return true;
}

bool hasPath(const CIMObjectPath& path) { return !path.getClassName().isNull() && path.getKeyBindings().size() > 0; }

// The input parameters of one call, read by name with their types checked.
// A parameter of the wrong type throws BadParameter; a missing or null one
// leaves the default.
class Parameters {
public:
    Parameters(const Array<CIMParamValue>& in, bool ignoreCase) : m_in(in), m_ignoreCase(ignoreCase) {}

    bool Has(const char* name) const { return find(name) != nullptr; }

    Uint64 Integer(const char* name) const {
        const std::unique_ptr<CIMValue> value = find(name);
        Uint64 out = 0;
        if (value == nullptr) return 0;
        if (value->isArray() || !integerValue(*value, out))
            throw BadParameter(std::string(name) + " is not a non-negative integer");
        return out;
    }

    std::string Text(const char* name) const {
        const std::unique_ptr<CIMValue> value = find(name);
        if (value == nullptr) return std::string();
        if (value->isArray() || value->getType() != CIMTYPE_STRING) throw BadParameter(std::string(name) + " is not a string");
        String text;
        value->get(text);
        // A NUL inside would cut the text short wherever it is used as C text.
        for (Uint32 i = 0; i < text.size(); ++i)
            if (text[i] == Char16(0)) throw BadParameter(std::string(name) + " holds a NUL character");
        return MC::ToStd(text);
    }

    CIMObjectPath Path(const char* name) const {
        const std::unique_ptr<CIMValue> value = find(name);
        CIMObjectPath out;
        if (value == nullptr) return out;
        if (value->isArray() || !pathValue(*value, out)) throw BadParameter(std::string(name) + " is not a reference");
        if (out.getKeyBindings().size() == 0 && !out.getClassName().isNull())
            throw BadParameter(std::string(name) + " names no instance");
        return out;
    }

    // The path texts of an array of references or of reference texts.
    std::vector<std::string> PathList(const char* name) const {
        const std::unique_ptr<CIMValue> value = find(name);
        std::vector<std::string> out;
        if (value == nullptr) return out;
        if (!value->isArray()) throw BadParameter(std::string(name) + " is not an array");
        if (value->getType() == CIMTYPE_REFERENCE) {
            Array<CIMObjectPath> paths;
            value->get(paths);
            for (Uint32 i = 0; i < paths.size(); ++i) out.push_back(MC::ToStd(paths[i].toString()));
        } else if (value->getType() == CIMTYPE_STRING) {
            Array<String> texts;
            value->get(texts);
            for (Uint32 i = 0; i < texts.size(); ++i) {
                CIMObjectPath check;
                if (!pathValue(CIMValue(texts[i]), check) || !hasPath(check))
                    throw BadParameter(std::string(name) + " holds a text that is no reference");
                out.push_back(MC::ToStd(texts[i]));
            }
        } else {
            throw BadParameter(std::string(name) + " is not an array of references");
        }
        return out;
    }

private:
    // The value of the parameter (a copy), null when it is missing or null.
    std::unique_ptr<CIMValue> find(const char* name) const {
        for (Uint32 i = 0; i < m_in.size(); ++i) {
            const String parameter = m_in[i].getParameterName();
            const bool same = m_ignoreCase ? String::equalNoCase(parameter, name) : parameter == name;
            if (same) {
                CIMValue value = m_in[i].getValue();
                if (value.isNull()) return nullptr;
                return std::unique_ptr<CIMValue>(new CIMValue(value));
            }
        }
        return nullptr;
    }

    const Array<CIMParamValue>& m_in;
    bool m_ignoreCase;
};

void putSize(Array<CIMParamValue>& out, Uint64 size) { out.append(CIMParamValue("Size", CIMValue(size))); }

// The text behind key= in a path's text, up to a blank or a comma, without
// its quotes.
std::string keyText(const std::string& path, const char* key) {
    std::string::size_type at = path.find(key);
    if (at == std::string::npos) return std::string();
    at += std::string(key).size();
    if (at < path.size() && path[at] == '"') ++at;
    std::string::size_type end = path.find_first_of(" ,\"", at);
    return path.substr(at, end == std::string::npos ? std::string::npos : end - at);
}

std::string lowerText(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

// The disk numbers behind the "-" of disk ids.
std::vector<std::string> diskNumbers(const std::vector<std::string>& ids) {
    std::vector<std::string> numbers;
    for (const std::string& id : ids) numbers.push_back(PDmanager::NumberOf(id));
    return numbers;
}

std::vector<std::string> diskIds(const std::list<structPDInfo*>& disks) {
    std::vector<std::string> ids;
    for (const structPDInfo* disk : disks)
        if (disk != nullptr && disk->pData != nullptr) ids.push_back(disk->pData->PDN);
    return ids;
}

// Gives the disks a refused or failed call had claimed back.
void releaseDisks(const std::vector<std::string>& ids) {
    if (ids.empty()) return;
    PDmanager::Instance()->RecycleUnusedPds(diskNumbers(ids), PDmanager::GroupOf(ids.front()));
}

// A name the array is to carry: empty, or one of the array's names.
bool nameFits(const char* method, const std::string& name) {
    if (name.empty() || CommandTextCheck::IsArrayName(name)) return true;
    traceError(method, "ElementName \"" + CommandTextCheck::Printable(name) +
                           "\" is not a name the array takes (1 to 32 letters, digits, \"_\", \"-\" or \"/\")");
    return false;
}

// A number read from the repository that a job writes into a command line.
bool numberFits(const char* method, const char* what, const std::string& number) {
    if (CommandTextCheck::IsHexNumber(number)) return true;
    traceError(method, std::string(what) + " \"" + CommandTextCheck::Printable(number) + "\" is not a number");
    return false;
}

// The LD records of the array on the pool.
int GetLdNumOnPool(const std::string& arrayId, const std::string& poolNo) {
    std::vector<LdRawData*> lds;
    DataConnector<LdRawData>::QueryData(arrayId, lds);
    int count = 0;
    for (const LdRawData* ld : lds)
        if (ld->poolNo == poolNo) ++count;
    DataConnector<LdRawData>::ReleaseAll(lds);
    return count;
}

Uint32 startJob(JobArgs& jobArgs, Array<CIMParamValue>& out) {
    return Singleton<JobManager>::Instance()->StartJob(jobArgs, out);
}

}  // namespace

CIMValue StorageConfigurationServiceController::Invoke(InvokeMethodArgs& args, Array<CIMParamValue>& out) {
    const String method = args.methodName.getString();
    Uint32 result = RC_NOT_SUPPORTED;
    try {
        if (method == "CreateOrModifyStoragePool") {
            result = createOrModifyStoragePool(args, out);
        } else if (method == "CreateOrModifyElementFromStoragePool") {
            result = createOrModifyElementFromStoragePool(args, out);
        } else if (method == "DeleteStoragePool") {
            result = deleteStoragePool(args, out);
        } else if (method == "ReturnToStoragePool") {
            result = returnToStoragePool(args, out);
        } else {
            // The replication methods of this service are answered by the
            // replication service; until it is there they are unknown here.
            SMIS_TRACE(LEVEL2, "Not suppotred method!");
            result = RC_NOT_SUPPORTED;
        }
    } catch (const BadParameter& bad) {
        traceError(MC::ToStd(method).c_str(), bad.text);
        out.clear();
        result = RC_INVALID;
    }
    args.returnValue = CIMValue(result);
    return CIMValue(result);
}

bool StorageConfigurationServiceController::ReplaceLDNameInConfParameter(std::string& name) {
    std::list<std::string> pairs;
    if (!Singleton<ConfigManager>::Instance()->GetReplacementCharListOfLDName(pairs)) return true;
    // A list that maps characters onto each other in a circle would never
    // end: after one round per entry nothing new can come of it.
    for (size_t round = 0; round <= pairs.size(); ++round) {
        bool replaced = false;
        for (const std::string& pair : pairs) {
            if (pair.size() < 2) continue;
            for (char& c : name)
                if (c == pair[0]) {
                    c = pair[1];
                    replaced = true;
                }
        }
        if (!replaced) return true;
    }
    SMIS_TRACE(LEVEL1, "Error : the replacement list of LD names replaces characters in a circle");
    return false;
}

CIMInstance StorageConfigurationServiceController::fetch(InvokeMethodArgs& args, const CIMObjectPath& path,
                                                         const char* const* names, int count) {
    Array<CIMName> list;
    for (int i = 0; i < count; ++i) list.append(CIMName(names[i]));
    CIMObjectPath target = path;
    target.setHost(String());
    target.setNameSpace(CIMNamespaceName());
    try {
        return Singleton<CimHandle>::Instance()->GetSmisInstance(args.context, MC::Namespace(), target, false, false,
                                                                 false, CIMPropertyList(list));
    } catch (const CIMException& e) {
        if (e.getCode() != CIM_ERR_NOT_FOUND) throw;
        throw BadParameter(MC::ToStd(path.toString()) + " does not exist");
    }
}

CIMObjectPath StorageConfigurationServiceController::parentPool(InvokeMethodArgs& args, const CIMObjectPath& element,
                                                                const char* assocClass, const char* resultClass) {
    Array<CIMObjectPath> pools;
    CIMObjectPath target = element;
    target.setHost(String());
    target.setNameSpace(CIMNamespaceName());
    Singleton<CimHandle>::Instance()->AssociatorNames(args.context, MC::Namespace(), target, MC::ClassName(assocClass),
                                                      MC::ClassName(resultClass), String("Dependent"),
                                                      String("Antecedent"), pools);
    return pools.size() == 0 ? CIMObjectPath() : pools[0];
}

bool StorageConfigurationServiceController::goalFitsPool(InvokeMethodArgs& args, const CIMObjectPath& pool,
                                                         const CIMObjectPath& goal, int recordRaid) {
    static const char* const goalProperties[] = {"DataRedundancyGoal", "PackageRedundancyGoal",
                                                 "StorageEfficiencyHint"};
    CIMInstance goalInstance = fetch(args, goal, goalProperties, 3);
    // The pool's own setting: its capabilities' setting with hints.
    CIMObjectPath target = pool;
    target.setHost(String());
    target.setNameSpace(CIMNamespaceName());
    CimHandle* handle = Singleton<CimHandle>::Instance();
    Array<CIMObject> capabilities;
    handle->Associators(args.context, MC::Namespace(), target, MC::ClassName("ElementCapabilities"),
                        MC::ClassName("StorageCapabilities"), String(), String(), false, false, CIMPropertyList(),
                        capabilities);
    int poolRaid = 0;
    for (Uint32 i = 0; i < capabilities.size() && poolRaid == 0; ++i) {
        Array<CIMObject> settings;
        CIMObjectPath capability = capabilities[i].getPath();
        capability.setHost(String());
        capability.setNameSpace(CIMNamespaceName());
        handle->Associators(args.context, MC::Namespace(), capability,
                            MC::ClassName("StorageSettingsAssociatedToCapabilities"),
                            MC::ClassName("StorageSettingWithHints"), String(), String(), false, false,
                            CIMPropertyList(), settings);
        if (settings.size() > 0) poolRaid = StorageCapability::ToRaidType(CIMInstance(settings[0]));
    }
    // A pool whose setting is not (yet) in the repository goes by its record.
    if (poolRaid == 0) poolRaid = recordRaid;
    if (poolRaid == 0 || poolRaid != StorageCapability::ToRaidType(goalInstance)) {
        SMIS_TRACE(LEVEL2, "Goal different Pool's RAID type!");
        return false;
    }
    return true;
}

namespace {

// Checks that the extents name distinct free disks of one group, none
// claimed by another call; traced and false otherwise.
bool extentsFit(const char* method, const std::vector<std::string>& extents) {
    // The free disks not claimed by another call, named as their extents
    // name them: "00h-0ah" for the disk 00-0a.
    std::vector<std::string> freeIds;
    for (const char* kind : PD_TYPE_SEARCH_ORDER) {
        std::list<structPDInfo*> free;
        if (!PDmanager::Instance()->GetPdListByType(kind, free)) continue;
        for (const structPDInfo* disk : free) {
            const std::string& pdn = disk->pData->PDN;
            freeIds.push_back(lowerText(PDmanager::GroupOf(pdn) + "h-" + PDmanager::NumberOf(pdn) + "h"));
        }
    }
    std::vector<std::string> seen;
    std::string group;
    for (const std::string& extent : extents) {
        const std::string id = lowerText(keyText(extent, "DeviceID="));
        if (id.empty() || std::find(freeIds.begin(), freeIds.end(), id) == freeIds.end()) {
            traceError(method, "InExtents holds \"" + CommandTextCheck::Printable(extent) +
                                   "\", which is not a free disk of the array");
            return false;
        }
        if (std::find(seen.begin(), seen.end(), id) != seen.end()) {
            traceError(method, "InExtents names the disk " + id + " twice");
            return false;
        }
        seen.push_back(id);
        const std::string pdg = id.substr(0, 2);
        if (!group.empty() && pdg != group) {
            SMIS_TRACE(LEVEL2, "pdg is mismatch!");
            return false;
        }
        group = pdg;
    }
    return true;
}

}  // namespace

Uint32 StorageConfigurationServiceController::createOrModifyStoragePool(InvokeMethodArgs& args,
                                                                        Array<CIMParamValue>& out) {
    const char* method = "CreateOrModifyStoragePool";
    Parameters in(args.inParameters, false);
    Uint64 size = in.Integer("Size");
    const CIMObjectPath goal = in.Path("Goal");
    const std::vector<std::string> inExtents = in.PathList("InExtents");
    const std::vector<std::string> inPools = in.PathList("InPools");
    const CIMObjectPath pool = in.Path("Pool");
    const std::string name = in.Text("ElementName");
    out.clear();

    if (!nameFits(method, name)) return RC_INVALID;
    const bool creating = !hasPath(pool);
    if (inPools.size() > 1 || (inPools.empty() && inExtents.empty() && creating)) {
        SMIS_TRACE(LEVEL2, "not supported multiple inpool!");
        return RC_NOT_SUPPORTED;
    }

    std::string arrayId;
    CIMObjectPath inPool;
    if (inPools.size() == 1) {
        static const char* const names[] = {"Primordial", "InstanceID"};
        inPool = CIMObjectPath(MC::ToString(inPools.front()));
        CIMInstance instance = fetch(args, inPool, names, 2);
        if (!IsPrimordialPool(instance)) {
            SMIS_TRACE(LEVEL2, "inPool is not a primordial pool!");
            return RC_NOT_SUPPORTED;
        }
        arrayId = GetArrayIdFromPool(instance);
        if (arrayId.empty()) SMIS_TRACE(LEVEL2, "CIM_ERR_NOT_FOUND InstanceID");
    } else if (!inExtents.empty()) {
        std::string first = inExtents.front();
        arrayId = keyText(first, "SystemName=");
        if (arrayId.empty()) {
            SMIS_TRACE(LEVEL2, "ArrayID can not be found from InExtents.");
            return RC_INVALID;
        }
        inPool = PrimordialPool::GetPath(arrayId);
    } else {
        // A change of a pool alone (its name, its size) needs no more than
        // the pool: the array's primordial pool stands for the source.
        static const char* const names[] = {"InstanceID"};
        arrayId = GetArrayIdFromPool(fetch(args, pool, names, 1));
        inPool = PrimordialPool::GetPath(arrayId);
    }
    if (arrayId.empty()) {
        traceError(method, "the array of the pool can not be read");
        return RC_INVALID;
    }

    int raid = 0;
    bool thin = false;
    if (hasPath(goal)) {
        static const char* const names[] = {"DataRedundancyGoal", "PackageRedundancyGoal", "StorageEfficiencyHint",
                                            "ThinProvisionedPoolType"};
        CIMInstance goalInstance = fetch(args, goal, names, 4);
        raid = StorageCapability::ToRaidType(goalInstance);
        if (raid != 2 && raid != 6 && raid != 8 && raid != 10) {
            SMIS_TRACE(LEVEL2, "not supported, just suppotred RAID1 RAID5 RAID6 RAID-TM");
            return RC_NOT_SUPPORTED;
        }
        Uint16 thinType = 0;
        thin = MC::GetUint16(goalInstance, "ThinProvisionedPoolType", thinType) && thinType == 8;
    } else if (creating && !inExtents.empty()) {
        if (inExtents.size() < 2) {
            SMIS_TRACE(LEVEL2, "Required number of extents is 2 or more.");
            return RC_INVALID;
        }
        raid = inExtents.size() <= 5 ? 2 : 8;
    } else if (creating) {
        SMIS_TRACE(LEVEL2, "must input Goal when create a pool!");
        return RC_INVALID;
    }

    if (!creating) return modifyPool(args, out, name, raid, size, inExtents, pool);
    if (inExtents.empty()) return createPool(args, out, name, raid, size, arrayId, inPool, thin);
    return createPool(args, out, name, raid, size, arrayId, inExtents, inPool, thin);
}

Uint32 StorageConfigurationServiceController::createPool(InvokeMethodArgs& args, Array<CIMParamValue>& out,
                                                         const std::string& name, int raid, Uint64 size,
                                                         const std::string& arrayId, const CIMObjectPath& inPool,
                                                         bool thin) {
    std::vector<unsigned long long> sizes;
    if (!GetUsableSizeList(raid, sizes)) {
        putSize(out, 0);
        SMIS_TRACE(LEVEL2, "have not pd can use!");
        return RC_SIZE;
    }
    std::vector<std::string> ids;
    unsigned long long capacity = size;
    if (!thin) {
        if (size == 0) {
            // No size is no request: the smallest pool is offered instead of
            // being made unasked.
            putSize(out, sizes.front());
            SMIS_TRACE(LEVEL2, "size parameter is required.");
            return RC_SIZE;
        }
        if (sizes.back() < size) {
            putSize(out, sizes.back());
            SMIS_TRACE(LEVEL2, "request size too big!");
            return RC_SIZE;
        }
        if (!getPdList(size, raid, ids))
            throw CIMException(CIM_ERR_FAILED, "Other client is under way to build operating!");
    } else {
        if (size == 0) {
            putSize(out, (sizes.front() / GiB + 1) * GiB);
            SMIS_TRACE(LEVEL2, "size parameter is required.");
            return RC_SIZE;
        }
        std::vector<unsigned long long>::const_iterator fit = std::lower_bound(sizes.begin(), sizes.end(), size);
        if (fit != sizes.end()) {
            putSize(out, *fit);
            SMIS_TRACE(LEVEL2, "virtual capacity is less than actual capacity.");
            return RC_INVALID;
        }
        if (size % GiB != 0) {
            // The array takes a virtual capacity in whole GiB.
            putSize(out, (size / GiB + 1) * GiB);
            SMIS_TRACE(LEVEL2, "virtual capacity is not a multiple of 1 GiB.");
            return RC_SIZE;
        }
        if (!getPdList(sizes.front(), raid, ids))
            throw CIMException(CIM_ERR_FAILED, "Other client is under way to build operating!");
    }

    CreatePoolDetailArgs* detail = new CreatePoolDetailArgs();
    detail->arrayId = arrayId;
    detail->poolName = name;
    detail->poolType = thin ? "virtual" : "dynamic";
    detail->raidCode = raid;
    detail->basePd = GetBasePdSize(raid, static_cast<unsigned int>(ids.size()));
    detail->pdg = ids.front().substr(0, 2);
    detail->pdList = diskNumbers(ids);
    detail->capacity = capacity;
    JobArgs jobArgs(new CreatePoolJobDetail(detail), InvokeArgs(args));
    jobArgs.affectedElements.push_back(inPool);
    Uint32 result;
    try {
        result = startJob(jobArgs, out);
    } catch (...) {
        releaseDisks(ids);
        throw;
    }
    SMIS_TRACE(LEVEL2, "CreateOrModifyStoragePool method executed successfully!");
    return result;
}

Uint32 StorageConfigurationServiceController::createPool(InvokeMethodArgs& args, Array<CIMParamValue>& out,
                                                         const std::string& name, int raid, Uint64 size,
                                                         const std::string& arrayId,
                                                         const std::vector<std::string>& inExtents,
                                                         const CIMObjectPath& inPool, bool thin) {
    const int basePd = GetBasePdSize(raid, static_cast<unsigned int>(inExtents.size()));
    if (basePd == 0) {
        SMIS_TRACE(LEVEL2, "PD needed for RAID construction is not enough.");
        return RC_INVALID;
    }
    if (!extentsFit("CreateOrModifyStoragePool", inExtents)) return RC_INVALID;
    std::list<structPDInfo*> disks;
    if (!getPdList(inExtents, disks))
        throw CIMException(CIM_ERR_FAILED, "Other client is under way to build operating!");
    unsigned long long capacity = 0;
    if (!computePoolCapacity(std::list<const structPDInfo*>(), disks, raid, capacity)) {
        clearPdSelectedFlag(disks);
        throw CIMException(CIM_ERR_FAILED, "Error! computePoolCapacity function.");
    }
    if (thin && capacity >= size) {
        clearPdSelectedFlag(disks);
        putSize(out, capacity);
        SMIS_TRACE(LEVEL2, "virtual capacity is less than actual capacity.");
        return RC_INVALID;
    }
    if (thin && size % GiB != 0) {
        clearPdSelectedFlag(disks);
        putSize(out, (size / GiB + 1) * GiB);
        SMIS_TRACE(LEVEL2, "virtual capacity is not a multiple of 1 GiB.");
        return RC_SIZE;
    }
    const std::vector<std::string> ids = diskIds(disks);
    CreatePoolDetailArgs* detail = new CreatePoolDetailArgs();
    detail->arrayId = arrayId;
    detail->poolName = name;
    detail->poolType = thin ? "virtual" : "dynamic";
    detail->raidCode = raid;
    detail->basePd = basePd;
    detail->pdg = ids.front().substr(0, 2);
    detail->pdList = diskNumbers(ids);
    detail->capacity = size;
    JobArgs jobArgs(new CreatePoolJobDetail(detail), InvokeArgs(args));
    jobArgs.affectedElements.push_back(inPool);
    Uint32 result;
    try {
        result = startJob(jobArgs, out);
    } catch (...) {
        clearPdSelectedFlag(disks);
        throw;
    }
    SMIS_TRACE(LEVEL2, "CreateOrModifyStoragePool method executed successfully!");
    return result;
}

Uint32 StorageConfigurationServiceController::modifyPool(InvokeMethodArgs& args, Array<CIMParamValue>& out,
                                                         const std::string& name, int raid, Uint64 size,
                                                         const std::vector<std::string>& inExtents,
                                                         const CIMObjectPath& pool) {
    const char* method = "CreateOrModifyStoragePool";
    static const char* const names[] = {"PoolID", "InstanceID", "Primordial"};
    CIMInstance instance = fetch(args, pool, names, 3);
    if (IsPrimordialPool(instance)) {
        SMIS_TRACE(LEVEL2, "can not modify primordial pool!");
        return RC_NOT_SUPPORTED;
    }
    const std::string poolNo = GetPoolIdFromPool(instance);
    const std::string arrayId = GetArrayIdFromPool(instance);
    if (!numberFits(method, "PoolID", poolNo)) return RC_INVALID;
    RecordRef<PoolRawData> record;
    if (!DataConnector<PoolRawData>::QueryData(arrayId, poolNo, record.Out())) {
        traceError(method, "the pool " + poolNo + " is not in the array's records");
        return RC_INVALID;
    }
    const bool isVirtual = record->poolType.find("virtual") != std::string::npos;
    const int poolRaid = StoragePool::GetPoolType(record->RAIDType);
    if (poolRaid == 0) {
        SMIS_TRACE(LEVEL2, "Unknown RAID type!");
        return RC_NOT_SUPPORTED;
    }
    if (raid != 0 && raid != poolRaid) {
        SMIS_TRACE(LEVEL2, "can not modify the raid type!");
        return RC_NOT_SUPPORTED;
    }
    const int basePd = std::atoi(record->noBPD.c_str());
    if (basePd <= 0) {
        SMIS_TRACE(LEVEL1, "can not get inPool RAID type!");
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "can not get inPool RAID type!");
    }

    ModifyPoolDetailArgs* detail = new ModifyPoolDetailArgs();
    std::unique_ptr<ModifyPoolDetailArgs> owned(detail);
    detail->arrayId = arrayId;
    detail->poolNumber = poolNo;
    detail->poolName = name;
    detail->raidCode = poolRaid;
    detail->basePd = basePd;
    std::list<structPDInfo*> claimed;  // disks taken by this call
    std::vector<std::string> chosen;

    if (inExtents.empty() && !isVirtual) {
        std::list<const structPDInfo*> poolDisks;
        if (!PDmanager::Instance()->GetPDListByPool(poolNo, poolDisks) || poolDisks.empty()) {
            SMIS_TRACE(LEVEL2, "can not get pd info on the pool!");
            return RC_NOT_SUPPORTED;
        }
        const unsigned long long diskSize = poolDisks.front()->pData->PDCapacity;
        std::list<structPDInfo*> free;
        if (!PDmanager::Instance()->GetPdListByType(record->PDType, free)) free.clear();
        // Disks smaller than those of the pool can not join it.
        free.remove_if([diskSize](const structPDInfo* disk) { return disk->pData->PDCapacity < diskSize; });
        if (size != 0 && size < record->poolCapacity) {
            putSize(out, record->poolCapacity);
            SMIS_TRACE(LEVEL2, "request size too small!");
            return RC_SIZE;
        }
        std::vector<unsigned long long> sizes;
        unsigned long long maximum = record->poolCapacity;
        if (!free.empty() &&
            GetUsableSizeList(poolRaid, static_cast<unsigned int>(basePd), diskSize,
                              static_cast<unsigned int>(poolDisks.size()), static_cast<unsigned int>(free.size()),
                              sizes) &&
            !sizes.empty())
            maximum = std::max<unsigned long long>(maximum, sizes.back());
        if (size > maximum) {
            putSize(out, maximum);
            SMIS_TRACE(LEVEL2, free.empty() ? "have not pd can use!" : "request size too big!");
            return RC_SIZE;
        }
        if ((size == 0 || size == record->poolCapacity) && name.empty()) {
            SMIS_TRACE(LEVEL2, "can not get element name information!");
            return RC_NOT_SUPPORTED;
        }
        if (size > record->poolCapacity) {
            if (!getPdList(size, poolRaid, free, chosen, 1, diskSize, static_cast<unsigned int>(poolDisks.size())))
                throw CIMException(CIM_ERR_FAILED, "Other client is under way to build operating!");
        }
        detail->poolType = "dynamic";
    } else if (inExtents.empty()) {
        if (size != 0 && size <= record->poolCapacity) {
            putSize(out, record->poolCapacity);
            SMIS_TRACE(LEVEL2, "request size too small!");
            return RC_SIZE;
        }
        if (size == 0 && name.empty()) {
            SMIS_TRACE(LEVEL2, "can not get element name and size information!");
            return RC_NOT_SUPPORTED;
        }
        if (size % GiB != 0) {
            putSize(out, (size / GiB + 1) * GiB);
            SMIS_TRACE(LEVEL2, "virtual capacity is not a multiple of 1 GiB.");
            return RC_SIZE;
        }
        detail->poolType = "virtual";
        detail->capacity = size;
    } else {
        if (!extentsFit(method, inExtents)) return RC_INVALID;
        if (!getPdList(inExtents, claimed))
            throw CIMException(CIM_ERR_FAILED, "Other client is under way to build operating!");
        if (isVirtual) {
            std::list<const structPDInfo*> poolDisks;
            if (!PDmanager::Instance()->GetPDListByPool(poolNo, poolDisks)) {
                clearPdSelectedFlag(claimed);
                SMIS_TRACE(LEVEL2, "can not get pd info on the pool!");
                return RC_NOT_SUPPORTED;
            }
            unsigned long long capacity = 0;
            if (!computePoolCapacity(poolDisks, claimed, poolRaid, capacity)) {
                clearPdSelectedFlag(claimed);
                throw CIMException(CIM_ERR_FAILED, "Error! computePoolCapacity function.");
            }
            if (size == 0 && record->poolCapacity < capacity) {
                clearPdSelectedFlag(claimed);
                putSize(out, record->poolCapacity);
                SMIS_TRACE(LEVEL2, "request size too big!");
                return RC_SIZE;
            }
            if (size != 0 && capacity >= size) {
                clearPdSelectedFlag(claimed);
                putSize(out, capacity);
                SMIS_TRACE(LEVEL2, "request size too small!");
                return RC_SIZE;
            }
            if (size % GiB != 0) {
                clearPdSelectedFlag(claimed);
                putSize(out, (size / GiB + 1) * GiB);
                SMIS_TRACE(LEVEL2, "virtual capacity is not a multiple of 1 GiB.");
                return RC_SIZE;
            }
            detail->poolType = "virtual";
            detail->capacity = size;
        } else {
            detail->poolType = "dynamic";
        }
        chosen = diskIds(claimed);
    }

    if (!chosen.empty()) {
        detail->pdg = chosen.front().substr(0, 2);
        detail->rebuild = static_cast<int>(chosen.size()) < basePd ? "on" : "off";
        detail->pdList = diskNumbers(chosen);
    }
    owned.release();
    JobArgs jobArgs(new ModifyPoolJobDetail(detail), InvokeArgs(args));
    jobArgs.affectedElements.push_back(pool);
    jobArgs.affectedElements.push_back(PrimordialPool::GetPath(arrayId));
    Uint32 result;
    try {
        result = startJob(jobArgs, out);
    } catch (...) {
        releaseDisks(chosen);
        throw;
    }
    SMIS_TRACE(LEVEL2, "CreateOrModifyStoragePool method executed successfully!");
    return result;
}

Uint32 StorageConfigurationServiceController::createOrModifyElementFromStoragePool(InvokeMethodArgs& args,
                                                                                   Array<CIMParamValue>& out) {
    const char* method = "CreateOrModifyElementFromStoragePool";
    Parameters in(args.inParameters, false);
    std::string name = in.Text("ElementName");
    const Uint64 elementType = in.Integer("ElementType");
    const CIMObjectPath goal = in.Path("Goal");
    const Uint64 size = in.Integer("Size");
    const CIMObjectPath inPool = in.Path("InPool");
    const CIMObjectPath element = in.Path("TheElement");
    out.clear();

    if (!ReplaceLDNameInConfParameter(name) || !nameFits(method, name)) return RC_INVALID;
    if (elementType != 2 && elementType != 5 && elementType != 7) {
        SMIS_TRACE(LEVEL2, "not suppotred, ElementType = %d.", static_cast<int>(std::min<Uint64>(elementType, 0x7fffffff)));
        return RC_NOT_SUPPORTED;
    }
    if (hasPath(element)) return modifyLd(args, out, name, size, element, goal);
    if (!hasPath(inPool)) {
        traceError(method, "InPool is required to create an element");
        return RC_INVALID;
    }
    return createLd(args, out, name, size, inPool, goal);
}

Uint32 StorageConfigurationServiceController::createLd(InvokeMethodArgs& args, Array<CIMParamValue>& out,
                                                       const std::string& name, Uint64 size,
                                                       const CIMObjectPath& inPool, const CIMObjectPath& goal) {
    const char* method = "CreateOrModifyElementFromStoragePool";
    static const char* const names[] = {"Primordial", "PoolID", "InstanceID"};
    CIMInstance pool = fetch(args, inPool, names, 3);
    if (IsPrimordialPool(pool)) {
        SMIS_TRACE(LEVEL2, "can not create ld from primordial pool! [createLd()]");
        return RC_NOT_SUPPORTED;
    }
    const std::string poolNo = GetPoolIdFromPool(pool);
    const std::string arrayId = GetArrayIdFromPool(pool);
    if (!numberFits(method, "PoolID", poolNo)) return RC_INVALID;
    RecordRef<PoolRawData> record;
    if (!DataConnector<PoolRawData>::QueryData(arrayId, poolNo, record.Out())) {
        traceError(method, "the pool " + poolNo + " is not in the array's records");
        return RC_INVALID;
    }
    const bool isVirtual = record->poolType.find("virtual") != std::string::npos;
    const Uint64 minimum = isVirtual ? THIN_LD_MINIMUM : THICK_LD_MINIMUM;
    if (size > record->freePoolCapacity) {
        putSize(out, record->freePoolCapacity);
        SMIS_TRACE(LEVEL2, "request size too big!");
        return RC_SIZE;
    }
    if (size < minimum) {
        putSize(out, minimum);
        SMIS_TRACE(LEVEL2, "request size too small!");
        return RC_SIZE;
    }
    if (size % MiB != 0) {
        // The array sizes its disks in whole MiB.
        const Uint64 down = size / MiB * MiB;
        const Uint64 up = down + MiB;
        putSize(out, up <= record->freePoolCapacity ? up : down);
        SMIS_TRACE(LEVEL2, "request size is not a multiple of 1 MiB!");
        return RC_SIZE;
    }
    if (hasPath(goal) && !goalFitsPool(args, inPool, goal, StoragePool::GetPoolType(record->RAIDType))) return RC_NOT_SUPPORTED;

    CreateLdDetailArgs* detail = new CreateLdDetailArgs();
    detail->arrayId = arrayId;
    detail->poolNumber = poolNo;
    char number[16] = {0};
    if (GetLDUID(arrayId, number, sizeof number)) detail->ldNumber = number;
    detail->ldName = name;
    detail->size = size;
    detail->threshold = isVirtual ? record->actualCapacityThreshold : 0;
    JobArgs jobArgs(new CreateLdJobDetail(detail), InvokeArgs(args));
    jobArgs.affectedElements.push_back(inPool);
    Uint32 result = startJob(jobArgs, out);
    SMIS_TRACE(LEVEL2, "CreateOrModifyElementFromStoragePool method executed successfully!");
    return result;
}

Uint32 StorageConfigurationServiceController::modifyLd(InvokeMethodArgs& args, Array<CIMParamValue>& out,
                                                       const std::string& name, Uint64 size,
                                                       const CIMObjectPath& element, const CIMObjectPath& goal) {
    const char* method = "CreateOrModifyElementFromStoragePool";
    static const char* const names[] = {"SystemName", "DeviceID", "ConsumableBlocks"};
    CIMInstance volume = fetch(args, element, names, 3);
    String text;
    std::string arrayId, ldn;
    if (MC::GetString(volume, "SystemName", text)) arrayId = MC::ToStd(text);
    if (MC::GetString(volume, "DeviceID", text)) ldn = MC::ToStd(text).substr(0, MC::ToStd(text).find('h'));
    Uint64 blocks = 0;
    Uint32 at = volume.findProperty(CIMName("ConsumableBlocks"));
    if (at != PEG_NOT_FOUND && !volume.getProperty(at).getValue().isNull() &&
        volume.getProperty(at).getValue().getType() == CIMTYPE_UINT64)
        volume.getProperty(at).getValue().get(blocks);
    if (!numberFits(method, "DeviceID", ldn)) return RC_INVALID;
    const Uint64 current = blocks * 512;

    const CIMObjectPath poolPath = parentPool(args, element, "AllocatedFromStoragePool", "StoragePool");
    if (!hasPath(poolPath)) {
        traceError(method, "the pool of the element " + ldn + " can not be found");
        return RC_INVALID;
    }
    static const char* const poolNames[] = {"InstanceID", "PoolID"};
    CIMInstance pool = fetch(args, poolPath, poolNames, 2);
    RecordRef<PoolRawData> record;
    if (!DataConnector<PoolRawData>::QueryData(GetArrayIdFromPool(pool), GetPoolIdFromPool(pool), record.Out())) {
        traceError(method, "the pool of the element " + ldn + " is not in the array's records");
        return RC_INVALID;
    }
    if (hasPath(goal) && !goalFitsPool(args, poolPath, goal, StoragePool::GetPoolType(record->RAIDType)))
        return RC_NOT_SUPPORTED;

    const Uint64 maximum = current + record->freePoolCapacity;
    const Uint64 minimum = current + MiB;
    if (size > maximum) {
        putSize(out, maximum);
        SMIS_TRACE(LEVEL2, "request size too big!");
        return RC_SIZE;
    }
    if (size < minimum && size != 0 && size != current) {
        putSize(out, minimum);
        SMIS_TRACE(LEVEL2, "request size too small!");
        return RC_SIZE;
    }
    bool expand = true;
    if (size == 0 || size == current) {
        if (name.empty()) {
            SMIS_TRACE(LEVEL2, "The client only rename operation but did not specify the name");
            return RC_NOT_SUPPORTED;
        }
        expand = false;
    } else if (size % MiB != 0) {
        const Uint64 down = size / MiB * MiB;
        const Uint64 up = down + MiB;
        putSize(out, up <= maximum ? up : down);
        SMIS_TRACE(LEVEL2, "request size is not a multiple of 1 MiB!");
        return RC_SIZE;
    }

    ModifyLdDetailArgs* detail = new ModifyLdDetailArgs();
    detail->arrayId = arrayId;
    detail->ldNumber = ldn;
    detail->ldName = name;
    detail->expand = expand;
    detail->size = size;
    JobArgs jobArgs(new ModifyLdJobDetail(detail), InvokeArgs(args));
    jobArgs.affectedElements.push_back(element);
    jobArgs.affectedElements.push_back(poolPath);
    Uint32 result = startJob(jobArgs, out);
    SMIS_TRACE(LEVEL2, "CreateOrModifyElementFromStoragePool method executed successfully!");
    return result;
}

Uint32 StorageConfigurationServiceController::deleteStoragePool(InvokeMethodArgs& args, Array<CIMParamValue>& out) {
    const char* method = "DeleteStoragePool";
    Parameters in(args.inParameters, true);
    const CIMObjectPath pool = in.Path("Pool");
    out.clear();
    if (!hasPath(pool)) {
        traceError(method, "Pool is required");
        return RC_INVALID;
    }
    static const char* const names[] = {"Primordial", "PoolID", "InstanceID"};
    CIMInstance instance = fetch(args, pool, names, 3);
    if (IsPrimordialPool(instance)) {
        SMIS_TRACE(LEVEL2, "can not delete primordial pool!");
        return RC_NOT_SUPPORTED;
    }
    const std::string poolNo = GetPoolIdFromPool(instance);
    const std::string arrayId = GetArrayIdFromPool(instance);
    if (!numberFits(method, "PoolID", poolNo)) return RC_INVALID;

    CIMObjectPath target = pool;
    target.setHost(String());
    target.setNameSpace(CIMNamespaceName());
    Array<CIMObjectPath> volumes;
    Singleton<CimHandle>::Instance()->ReferenceNames(args.context, MC::Namespace(), target,
                                                     MC::ClassName("AllocatedFromStoragePool"), String("Antecedent"),
                                                     volumes);
    if (volumes.size() > 0 || GetLdNumOnPool(arrayId, poolNo) > 0) {
        SMIS_TRACE(LEVEL2, "have StorageVolume in the pool! can not delete the pool!");
        return RC_FAILED;
    }
    CIMObjectPath parent = parentPool(args, pool, "AllocatedFromStoragePool", "StoragePool");
    if (!hasPath(parent)) parent = PrimordialPool::GetPath(arrayId);

    DeletePoolDetailArgs* detail = new DeletePoolDetailArgs();
    detail->arrayId = arrayId;
    detail->poolNumber = poolNo;
    JobArgs jobArgs(new DeletePoolJobDetail(detail), InvokeArgs(args));
    jobArgs.affectedElements.push_back(parent);
    Uint32 result = startJob(jobArgs, out);
    SMIS_TRACE(LEVEL2, "deleteStoragePool method executed successfully!");
    return result;
}

Uint32 StorageConfigurationServiceController::returnToStoragePool(InvokeMethodArgs& args, Array<CIMParamValue>& out) {
    const char* method = "ReturnToStoragePool";
    Parameters in(args.inParameters, true);
    const CIMObjectPath element = in.Path("TheElement");
    out.clear();
    if (!hasPath(element)) {
        traceError(method, "TheElement is required");
        return RC_INVALID;
    }
    static const char* const names[] = {"SystemName", "DeviceID"};
    CIMInstance volume = fetch(args, element, names, 2);
    String text;
    std::string arrayId, ldn;
    if (MC::GetString(volume, "SystemName", text)) arrayId = MC::ToStd(text);
    if (MC::GetString(volume, "DeviceID", text)) ldn = MC::ToStd(text).substr(0, MC::ToStd(text).find('h'));
    if (!numberFits(method, "DeviceID", ldn)) return RC_INVALID;
    RecordRef<LdRawData> ld;
    if (!DataConnector<LdRawData>::QueryData(arrayId, ldn, ld.Out())) {
        SMIS_TRACE(LEVEL1, "can not find ld raw data!");
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "can not find ld raw data!");
    }
    if (StorageVolume::IsInBandAccessGranted(ld.Get())) {
        SMIS_TRACE(LEVEL2, "can not delete, StorageVolume in LD Set!");
        return RC_NOT_SUPPORTED;
    }
    CIMObjectPath parent = parentPool(args, element, "AllocatedFromStoragePool", "StoragePool");

    JobDetail* job = nullptr;
    if (ld->GetLdType() == 7) {
        SMIS_TRACE(LEVEL2, "The be deleted LD is SDV.");
        if (!numberFits(method, "pool number", ld->poolNo)) return RC_INVALID;
        DeleteSRADetailArgs* detail = new DeleteSRADetailArgs();
        detail->poolNumber = ld->poolNo;
        job = new DeleteSRAJobDetail(detail);
    } else if (ld->RPLAttribute == "RV") {
        // A replica is given back through its pair, by the replication
        // service: unbinding it here would break the pair.
        SMIS_TRACE(LEVEL2, "can not delete, StorageVolume is a replication volume!");
        return RC_FAILED;
    } else {
        DeleteLdDetailArgs* detail = new DeleteLdDetailArgs();
        detail->arrayId = arrayId;
        detail->ldNumber = ldn;
        job = new DeleteLdJobDetail(detail);
    }
    JobArgs jobArgs(job, InvokeArgs(args));
    if (hasPath(parent)) jobArgs.affectedElements.push_back(parent);
    Uint32 result = startJob(jobArgs, out);
    SMIS_TRACE(LEVEL2, "ReturnToStoragePool method executed successfully!");
    return result;
}

}  // namespace orvsmis
