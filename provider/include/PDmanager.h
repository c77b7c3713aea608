#ifndef ORVSMIS_PDMANAGER_H
#define ORVSMIS_PDMANAGER_H

#include <list>
#include <map>
#include <string>
#include <vector>

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>

#include "Mutex.h"

namespace orvsmis {

class PdRawData;

// One disk in the index: the path of the disk's storage extent, the claim of
// a pending configuration job, and the index's own copy of the record.
struct structPDInfo {
    structPDInfo() : selected(false), pData(nullptr) {}
    Pegasus::CIMObjectPath path;
    bool selected;
    PdRawData* pData;
};

// The in-memory index of all physical disks of the array, by enclosure group
// and disk type, and by pool. Pool sizing and disk selection read it instead
// of the repository; the data thread keeps it current through the storage
// extents. One per process: PDmanager::Instance().
class PDmanager {
public:
    typedef std::list<structPDInfo> PDInfoList;
    typedef std::map<std::string, PDInfoList> PDTypeMap;          // type -> disks
    typedef std::map<std::string, PDTypeMap> PDGroupNOMap;         // group -> types
    typedef std::map<std::string, std::list<structPDInfo*> > PDIndexMap;  // pool -> disks

    static PDmanager* Instance();

    PDmanager();
    ~PDmanager();

    // Throw CIMException 4 for a null record.
    void AddData(const PdRawData* data, const Pegasus::CIMObjectPath& path);
    // A missing entry throws CIMException 1.
    void ModifyData(const PdRawData* newData, const PdRawData* oldData, const Pegasus::CIMObjectPath& path);
    void DeleteData(const PdRawData* data);

    // Disks whose state is "ready" or "attn.(stop)".
    int GetHealthPDNum(const std::list<structPDInfo>& disks) const;
    // The RAID codes the disks of one kind in one group could form now.
    void EnumRaidType(std::vector<int>& out) const;
    Pegasus::Uint64 GetSumPDSizeOfPool(const std::string& poolNo) const;
    bool GetPDListByPool(const std::string& poolNo, std::list<Pegasus::CIMObjectPath>& out) const;
    bool GetPDListByPool(const std::string& poolNo, std::list<const structPDInfo*>& out) const;
    // Free healthy disks of the type, not claimed by a job; the smallest so
    // far in front.
    bool GetPdListByType(const std::string& type, std::list<structPDInfo*>& out);
    // The capacities of the same two lists, in the same order, copied under
    // the lock: for readers on other threads than the data thread, which may
    // drop an entry at any time.
    bool GetPDCapacitiesByPool(const std::string& poolNo, std::list<Pegasus::Uint64>& out) const;
    bool GetFreePDCapacitiesByType(const std::string& type, std::list<Pegasus::Uint64>& out) const;
    Pegasus::Uint64 GetSumPDSize() const;
    Pegasus::Uint64 GetConsumableSumPDSize() const;
    void GetSumPDObjectPath(std::list<Pegasus::CIMObjectPath>& out) const;
    void GetConsumableSumPDObjectPath(std::list<Pegasus::CIMObjectPath>& out) const;
    bool MarkBeSelectedPD(std::list<structPDInfo*>& disks);
    void RecycleUnusedPds(const std::vector<std::string>& numbers, const std::string& groupNo);
    bool HasSpecificPDNumberToPool(const std::string& number, const std::string& poolNo) const;
    // Frees every entry; the index is empty afterwards.
    void Destroy();

    // The group part of a PDN (its first two characters) and the number part
    // (behind the "-").
    static std::string GroupOf(const std::string& pdn);
    static std::string NumberOf(const std::string& pdn);

private:
    PDmanager(const PDmanager&) = delete;
    PDmanager& operator=(const PDmanager&) = delete;

    void addLocked(const PdRawData* data, const Pegasus::CIMObjectPath& path);
    bool deleteLocked(const PdRawData* data);
    structPDInfo* findLocked(const std::string& pdn);
    void ModifyIndexMap(structPDInfo* info, const std::string& oldPool, const std::string& newPool);
    static bool isHealthy(const PdRawData* data);

    PDGroupNOMap m_PDGroupNOMap;
    PDIndexMap m_PDIndexMap;
    mutable Mutex m_mutex;
};

}  // namespace orvsmis

#endif
