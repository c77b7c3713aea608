#include "PDmanager.h"

#include <algorithm>
#include <cctype>

#include <Pegasus/Common/Exception.h>

#include "AutoLock.h"
#include "PdRawData.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

const char* const NOT_SET = "not set";

bool isFree(const PdRawData* data) { return data->classification == NOT_SET; }

// Pool numbers are hexadecimal and come in different widths: a pool record
// says "0001", its disks "01". Both are keyed without leading zeros.
std::string canonicalPool(const std::string& number) {
    std::string out;
    for (char c : number) out.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
    std::string::size_type first = out.find_first_not_of('0');
    if (first == std::string::npos) return out.empty() ? out : "0";
    return out.substr(first);
}

// The index key of a disk: its pool, or none for a disk of no pool, whatever
// group number the array reports for it.
std::string indexKey(const PdRawData* data) { return isFree(data) ? std::string() : canonicalPool(data->rankGroupNumber); }

// The smallest disk so far goes to the front, every other one to the end.
template <class List, class Item>
void placeBySize(List& out, Item item, Uint64 capacity, Uint64 frontCapacity) {
    if (!out.empty() && capacity < frontCapacity)
        out.push_front(item);
    else
        out.push_back(item);
}

}  // namespace

PDmanager* PDmanager::Instance() { return Singleton<PDmanager>::Instance(); }

PDmanager::PDmanager() {}

PDmanager::~PDmanager() { Destroy(); }

std::string PDmanager::GroupOf(const std::string& pdn) { return pdn.substr(0, 2); }

std::string PDmanager::NumberOf(const std::string& pdn) {
    std::string::size_type dash = pdn.find('-');
    return dash == std::string::npos ? std::string() : pdn.substr(dash + 1);
}

bool PDmanager::isHealthy(const PdRawData* data) {
    return data->state == "ready" || data->state == "attn.(stop)";
}

void PDmanager::addLocked(const PdRawData* data, const CIMObjectPath& path) {
    structPDInfo info;
    info.path = path;
    info.selected = false;
    info.pData = new PdRawData();
    info.pData->AddRef();
    info.pData->Copy(data);
    PDInfoList& list = m_PDGroupNOMap[GroupOf(data->PDN)][data->type];
    list.push_back(info);
    m_PDIndexMap[indexKey(data)].push_back(&list.back());
}

void PDmanager::AddData(const PdRawData* data, const CIMObjectPath& path) {
    if (data == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, "Passed parameter \"pRawData\" is NULL.");
    AutoLock lock(m_mutex);
    addLocked(data, path);
    SMIS_TRACE(LEVEL4, "%s", "Add One PD's information to PDmanager successfully.");
}

structPDInfo* PDmanager::findLocked(const std::string& pdn) {
    PDGroupNOMap::iterator group = m_PDGroupNOMap.find(GroupOf(pdn));
    if (group == m_PDGroupNOMap.end()) return nullptr;
    for (PDTypeMap::iterator type = group->second.begin(); type != group->second.end(); ++type)
        for (PDInfoList::iterator it = type->second.begin(); it != type->second.end(); ++it)
            if (it->pData->PDN == pdn) return &*it;
    return nullptr;
}

void PDmanager::ModifyIndexMap(structPDInfo* info, const std::string& oldPool, const std::string& newPool) {
    PDIndexMap::iterator old = m_PDIndexMap.find(oldPool);
    if (old != m_PDIndexMap.end()) {
        old->second.remove(info);
        if (old->second.empty()) m_PDIndexMap.erase(old);
    }
    m_PDIndexMap[newPool].push_back(info);
}

void PDmanager::ModifyData(const PdRawData* newData, const PdRawData* oldData, const CIMObjectPath& path) {
    if (newData == nullptr || oldData == nullptr)
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "Passed parameter \"pRawData\" is NULL.");
    if (newData->type != oldData->type) {
        // The disk moves to another type list of its group.
        DeleteData(oldData);
        AddData(newData, path);
        return;
    }
    AutoLock lock(m_mutex);
    structPDInfo* info = findLocked(newData->PDN);
    if (info == nullptr) {
        SMIS_TRACE(LEVEL2, "Error[ %s ] : %s ,%s", "PDmanager::ModifyData",
                   "Can not find the physical disk's information in PDmanager.", newData->PDN.c_str());
        throw CIMException(CIM_ERR_FAILED, "Can not find the physical disk's information in PDmanager.");
    }
    // The job that claimed the disk has seen it land in its pool.
    if (!isFree(newData)) info->selected = false;
    if (indexKey(info->pData) != indexKey(newData)) ModifyIndexMap(info, indexKey(info->pData), indexKey(newData));
    info->pData->Copy(newData);
    info->path = path;
    SMIS_TRACE(LEVEL4, "%s", "Modify One PD's information of PDmanager successfully.");
}

bool PDmanager::deleteLocked(const PdRawData* data) {
    PDGroupNOMap::iterator group = m_PDGroupNOMap.find(GroupOf(data->PDN));
    if (group == m_PDGroupNOMap.end()) return false;
    for (PDTypeMap::iterator type = group->second.begin(); type != group->second.end(); ++type) {
        for (PDInfoList::iterator it = type->second.begin(); it != type->second.end(); ++it) {
            if (it->pData->PDN != data->PDN) continue;
            structPDInfo* info = &*it;
            PDIndexMap::iterator pool = m_PDIndexMap.find(indexKey(info->pData));
            if (pool != m_PDIndexMap.end()) {
                pool->second.remove(info);
                if (pool->second.empty()) m_PDIndexMap.erase(pool);
            }
            it->pData->Release();
            type->second.erase(it);
            if (type->second.empty()) group->second.erase(type);
            if (group->second.empty()) m_PDGroupNOMap.erase(group);
            return true;
        }
    }
    return false;
}

void PDmanager::DeleteData(const PdRawData* data) {
    if (data == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, "Passed parameter \"pRawData\" is NULL.");
    AutoLock lock(m_mutex);
    if (!deleteLocked(data)) {
        SMIS_TRACE(LEVEL2, "Error[ %s ] : %s ,%s", "PDmanager::DeleteData",
                   "Can not find the physical disk's information in PDmanager when delete data.", data->PDN.c_str());
        throw CIMException(CIM_ERR_FAILED,
                           "Can not find the physical disk's information in PDmanager when delete data.");
    }
    SMIS_TRACE(LEVEL4, "%s", "Delete One PD's information of PDmanager successfully.");
}

int PDmanager::GetHealthPDNum(const std::list<structPDInfo>& disks) const {
    int count = 0;
    for (const structPDInfo& info : disks)
        if (info.pData != nullptr && isHealthy(info.pData)) ++count;
    return count;
}

void PDmanager::EnumRaidType(std::vector<int>& out) const {
    AutoLock lock(m_mutex);
    int most = 0;
    for (const auto& group : m_PDGroupNOMap)
        for (const auto& type : group.second) most = std::max(most, GetHealthPDNum(type.second));
    if (most >= 2) out.push_back(2);
    if (most >= 3) {
        out.push_back(6);
        out.push_back(10);
    }
    if (most >= 6) out.push_back(8);
}

Uint64 PDmanager::GetSumPDSizeOfPool(const std::string& poolNo) const {
    if (poolNo.empty()) return 0;
    AutoLock lock(m_mutex);
    PDIndexMap::const_iterator pool = m_PDIndexMap.find(canonicalPool(poolNo));
    if (pool == m_PDIndexMap.end()) return 0;
    Uint64 sum = 0;
    for (const structPDInfo* info : pool->second) sum += info->pData->PDCapacity;
    return sum;
}

bool PDmanager::GetPDListByPool(const std::string& poolNo, std::list<CIMObjectPath>& out) const {
    std::list<const structPDInfo*> disks;
    if (!GetPDListByPool(poolNo, disks)) return false;
    for (const structPDInfo* info : disks) out.push_back(info->path);
    return true;
}

bool PDmanager::GetPDListByPool(const std::string& poolNo, std::list<const structPDInfo*>& out) const {
    AutoLock lock(m_mutex);
    PDIndexMap::const_iterator pool = poolNo.empty() ? m_PDIndexMap.end() : m_PDIndexMap.find(canonicalPool(poolNo));
    if (pool == m_PDIndexMap.end()) {
        SMIS_TRACE(LEVEL3, "%s pool=%s", "The specified pool not exist in PDmanager's PDIndexMap.", poolNo.c_str());
        return false;
    }
    for (const structPDInfo* info : pool->second) {
        Uint64 front = out.empty() ? 0 : out.front()->pData->PDCapacity;
        placeBySize(out, info, info->pData->PDCapacity, front);
    }
    return true;
}

bool PDmanager::GetPdListByType(const std::string& type, std::list<structPDInfo*>& out) {
    AutoLock lock(m_mutex);
    for (auto& group : m_PDGroupNOMap) {
        PDTypeMap::iterator disks = group.second.find(type);
        if (disks == group.second.end()) continue;
        for (structPDInfo& info : disks->second) {
            if (info.selected || !isFree(info.pData) || !isHealthy(info.pData)) continue;
            Uint64 front = out.empty() ? 0 : out.front()->pData->PDCapacity;
            placeBySize(out, &info, info.pData->PDCapacity, front);
        }
    }
    return !out.empty();
}

bool PDmanager::GetPDCapacitiesByPool(const std::string& poolNo, std::list<Uint64>& out) const {
    AutoLock lock(m_mutex);
    PDIndexMap::const_iterator pool = poolNo.empty() ? m_PDIndexMap.end() : m_PDIndexMap.find(canonicalPool(poolNo));
    if (pool == m_PDIndexMap.end()) return false;
    for (const structPDInfo* info : pool->second) {
        Uint64 front = out.empty() ? 0 : out.front();
        placeBySize(out, info->pData->PDCapacity, info->pData->PDCapacity, front);
    }
    return true;
}

bool PDmanager::GetFreePDCapacitiesByType(const std::string& type, std::list<Uint64>& out) const {
    AutoLock lock(m_mutex);
    for (const auto& group : m_PDGroupNOMap) {
        PDTypeMap::const_iterator disks = group.second.find(type);
        if (disks == group.second.end()) continue;
        for (const structPDInfo& info : disks->second) {
            if (info.selected || !isFree(info.pData) || !isHealthy(info.pData)) continue;
            Uint64 front = out.empty() ? 0 : out.front();
            placeBySize(out, info.pData->PDCapacity, info.pData->PDCapacity, front);
        }
    }
    return !out.empty();
}

Uint64 PDmanager::GetSumPDSize() const {
    AutoLock lock(m_mutex);
    Uint64 sum = 0;
    for (const auto& group : m_PDGroupNOMap)
        for (const auto& type : group.second)
            for (const structPDInfo& info : type.second)
                if (isHealthy(info.pData)) sum += info.pData->PDCapacity;
    return sum;
}

Uint64 PDmanager::GetConsumableSumPDSize() const {
    AutoLock lock(m_mutex);
    Uint64 sum = 0;
    for (const auto& group : m_PDGroupNOMap)
        for (const auto& type : group.second)
            for (const structPDInfo& info : type.second)
                if (isHealthy(info.pData) && isFree(info.pData)) sum += info.pData->PDCapacity;
    return sum;
}

void PDmanager::GetSumPDObjectPath(std::list<CIMObjectPath>& out) const {
    AutoLock lock(m_mutex);
    for (const auto& group : m_PDGroupNOMap)
        for (const auto& type : group.second)
            for (const structPDInfo& info : type.second)
                if (isHealthy(info.pData)) out.push_back(info.path);
}

void PDmanager::GetConsumableSumPDObjectPath(std::list<CIMObjectPath>& out) const {
    AutoLock lock(m_mutex);
    for (const auto& group : m_PDGroupNOMap)
        for (const auto& type : group.second)
            for (const structPDInfo& info : type.second)
                if (isHealthy(info.pData) && isFree(info.pData)) out.push_back(info.path);
}

bool PDmanager::MarkBeSelectedPD(std::list<structPDInfo*>& disks) {
    AutoLock lock(m_mutex);
    for (structPDInfo* info : disks)
        if (info != nullptr) info->selected = true;
    return true;
}

void PDmanager::RecycleUnusedPds(const std::vector<std::string>& numbers, const std::string& groupNo) {
    if (numbers.empty() || groupNo.empty()) return;
    AutoLock lock(m_mutex);
    PDGroupNOMap::iterator group = m_PDGroupNOMap.find(groupNo);
    if (group == m_PDGroupNOMap.end()) return;
    for (auto& type : group->second)
        for (structPDInfo& info : type.second)
            if (std::find(numbers.begin(), numbers.end(), NumberOf(info.pData->PDN)) != numbers.end())
                info.selected = false;
}

bool PDmanager::HasSpecificPDNumberToPool(const std::string& number, const std::string& poolNo) const {
    if (poolNo.empty()) return false;
    AutoLock lock(m_mutex);
    PDIndexMap::const_iterator pool = m_PDIndexMap.find(canonicalPool(poolNo));
    if (pool == m_PDIndexMap.end()) return false;
    for (const structPDInfo* info : pool->second)
        if (NumberOf(info->pData->PDN) == number) return true;
    return false;
}

void PDmanager::Destroy() {
    AutoLock lock(m_mutex);
    m_PDIndexMap.clear();
    for (auto& group : m_PDGroupNOMap)
        for (auto& type : group.second)
            for (structPDInfo& info : type.second)
                if (info.pData != nullptr) info.pData->Release();
    m_PDGroupNOMap.clear();
}

}  // namespace orvsmis
