#include "CreatePoolAndLdAssistFun.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <set>

#include <Pegasus/Common/Exception.h>

#include "DataConnector.h"
#include "LdRawData.h"
#include "PDmanager.h"
#include "PdRawData.h"
#include "PoolRawData.h"
#include "SmisTrace.h"

namespace orvsmis {

const char* const PD_TYPE_SEARCH_ORDER[11] = {"FC",       "ATA",      "SAS",        "SSD",   "SSD(ATA)",  "NLSAS",
                                              "SAS(SED)", "SSD(SED)", "NLSAS(SED)", "AFSAS", "AFSAS(SED)"};

namespace {

const unsigned long long GIB = 0x40000000ULL;

bool isKnownRaid(int raid) { return raid == 2 || raid == 6 || raid == 8 || raid == 10; }

// Disks of the smallest RAID group of the code; 0 for an unknown code.
unsigned int smallestGroup(int raid) {
    switch (raid) {
    case 2: return 2;
    case 6: return 3;
    case 8: return 6;
    case 10: return 3;
    default: return 0;
    }
}

// Usable bytes of `count` disks of `pdSize` bytes in groups of `group`, less
// the work space the array keeps; false when the group cannot be built or
// the raw size does not fit 64 bits. A result that the work space eats up
// is 0.
bool netUsableSize(int raid, unsigned int group, unsigned int count, unsigned long long pdSize,
                   unsigned long long& out) {
    out = 0;
    if (group < 2) return false;
    if (count != 0 && pdSize > ULLONG_MAX / count) return false;
    unsigned long long usable = 0;
    if (!GetUsableSize(raid, group, pdSize * count, usable)) return false;
    unsigned long long workSpace = 0;
    SubWorkSpaceFromPool(raid, group, count, workSpace);
    out = usable > workSpace ? usable - workSpace : 0;
    return true;
}

std::string diskId(const structPDInfo* disk) {
    return disk != nullptr && disk->pData != nullptr ? disk->pData->PDN : std::string();
}

unsigned long long diskCapacity(const structPDInfo* disk) {
    return disk != nullptr && disk->pData != nullptr ? disk->pData->PDCapacity : 0;
}

// The disk's id as a storage extent names it: "00-0a" is "00h-0ah".
std::string extentStyleId(const std::string& pdn) {
    if (pdn.size() < 4) return std::string();
    return pdn.substr(0, 2) + "h-" + pdn.substr(3, 4) + "h";
}

// The value behind "DeviceID=" in an object path text, up to the first
// blank or comma, without quotes; "" when the path has none.
std::string deviceIdOfPath(const std::string& path) {
    static const std::string key = "DeviceID=";
    std::string::size_type at = path.find(key);
    if (at == std::string::npos) return std::string();
    std::string::size_type begin = at + key.size();
    std::string::size_type end = path.find_first_of(" ,", begin);
    std::string value = path.substr(begin, end == std::string::npos ? std::string::npos : end - begin);
    value.erase(std::remove(value.begin(), value.end(), '"'), value.end());
    return value;
}

bool equalsIgnoringCase(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    }
    return true;
}

// A record number in hexadecimal text; false for text that is not one.
bool parseHex(const std::string& text, unsigned long long& value) {
    if (text.empty() || !std::isxdigit(static_cast<unsigned char>(text[0]))) return false;
    char* end = nullptr;
    value = std::strtoull(text.c_str(), &end, 16);
    return end != nullptr && *end == '\0';
}

// The lowest number from 0 that no record of the list uses, or the count of
// records when all below it are taken; four hexadecimal digits at least.
template <class T>
bool lowestFreeNumber(const std::string& arrayId, char* buffer, size_t length) {
    if (buffer == nullptr || length < 5) return false;
    std::vector<T*> records;
    DataConnector<T>::QueryData(arrayId, records);
    const unsigned long long n = records.size();
    std::set<unsigned long long> used;
    for (T* record : records) {
        unsigned long long number = 0;
        if (parseHex(record->name, number) && number <= n) used.insert(number);
    }
    DataConnector<T>::ReleaseAll(records);
    unsigned long long c = 0;
    while (c < n && used.count(c) != 0) ++c;
    int written = std::snprintf(buffer, length, "%04llx", c);
    if (written < 0 || static_cast<size_t>(written) >= length) {
        SMIS_TRACE(LEVEL1, "Error[ lowestFreeNumber ] : the number %llx does not fit the buffer", c);
        return false;
    }
    return true;
}

}  // namespace

int GetBasePdSize(int raid, unsigned int count) {
    switch (raid) {
    case 2: return count >= 2 ? 2 : 0;
    case 6:
        if (count >= 9) return 9;
        if (count >= 5) return 5;
        return count >= 3 ? 3 : 0;
    case 8:
        if (count >= 10) return 10;
        return count >= 6 ? 6 : 0;
    case 10: return count >= 3 ? 3 : 0;
    default:
        SMIS_TRACE(LEVEL1, "unknown RAID type![GetBasePdSize()]");
        return 0;
    }
}

bool GetUsableSize(int raid, unsigned int base, unsigned long long total, unsigned long long& out) {
    if (base < 2) return false;
    // Multiplied before divided, in 128 bits so that large arrays do not
    // wrap.
    unsigned __int128 wide = total;
    switch (raid) {
    case 2: out = total / 2; return true;
    case 6: out = static_cast<unsigned long long>(wide * (base - 1) / base); return true;
    case 8: out = static_cast<unsigned long long>(wide * (base - 2) / base); return true;
    case 10: out = total / 3; return true;
    default:
        SMIS_TRACE(LEVEL1, "unknown RAID type![GetUsableSize()]");
        return false;
    }
}

void SubWorkSpaceFromPool(int raid, unsigned int base, unsigned int count, unsigned long long& out) {
    if (base == 0) {
        SMIS_TRACE(LEVEL1, "basePD is zero, the size of work space from pool is inaccuracy.");
        throw Pegasus::CIMException(Pegasus::CIM_ERR_FAILED, "SMIS Provider internal error.");
    }
    out = static_cast<unsigned long long>(count / base) * (raid == 2 ? 4 * GIB : 2 * GIB);
}

bool GetUsableSizeList(int raid, unsigned int base, unsigned long long pdSize, unsigned int existing,
                       unsigned int free, std::vector<unsigned long long>& list) {
    if (!isKnownRaid(raid)) {
        SMIS_TRACE(LEVEL1, "unknown RAID type![GetUsableSizeList()]");
        return false;
    }
    const unsigned long long last = static_cast<unsigned long long>(existing) + free;
    const unsigned int start = base != 0 ? base : smallestGroup(raid);
    for (unsigned long long n = start; n <= last; ++n) {
        unsigned int count = static_cast<unsigned int>(n);
        unsigned int group = base != 0 ? base : static_cast<unsigned int>(GetBasePdSize(raid, count));
        unsigned long long usable = 0;
        // A count whose whole size goes to the work space offers nothing.
        if (netUsableSize(raid, group, count, pdSize, usable) && usable > 0) list.push_back(usable);
    }
    return !list.empty();
}

bool GetUsableSizeList(int raid, std::vector<unsigned long long>& list) {
    if (!isKnownRaid(raid)) {
        SMIS_TRACE(LEVEL1, "unknown RAID type![GetUsableSizeList()]");
        return false;
    }
    for (const char* kind : PD_TYPE_SEARCH_ORDER) {
        std::list<structPDInfo*> free;
        if (!PDmanager::Instance()->GetPdListByType(kind, free)) continue;
        GetUsableSizeList(raid, 0, diskCapacity(free.front()), 0, static_cast<unsigned int>(free.size()), list);
    }
    std::sort(list.begin(), list.end());
    list.erase(std::unique(list.begin(), list.end()), list.end());
    return !list.empty();
}

bool getPdList(unsigned long long size, int raid, std::list<structPDInfo*>& disks, std::vector<std::string>& chosen,
               unsigned long long existing, unsigned long long pdSize, unsigned int count) {
    if (disks.empty()) return false;
    if (!isKnownRaid(raid)) {
        SMIS_TRACE(LEVEL1, "[unknown RAID type]not supported this RAID Type!");
        return false;
    }
    unsigned long long start = existing > 0 ? static_cast<unsigned long long>(count) + 1 : smallestGroup(raid);
    // A pool that grows takes at least one disk.
    if (start <= count) start = static_cast<unsigned long long>(count) + 1;
    const unsigned long long last = static_cast<unsigned long long>(count) + disks.size();
    unsigned long long taken = 0;
    for (unsigned long long n = start; n <= last; ++n) {
        unsigned int total = static_cast<unsigned int>(n);
        unsigned long long usable = 0;
        if (!netUsableSize(raid, static_cast<unsigned int>(GetBasePdSize(raid, total)), total, pdSize, usable))
            continue;
        if (usable >= size) {
            taken = n - count;
            break;
        }
    }
    if (taken == 0) return false;
    std::list<structPDInfo*> picked;
    for (structPDInfo* disk : disks) {
        if (picked.size() == taken) break;
        picked.push_back(disk);
    }
    PDmanager::Instance()->MarkBeSelectedPD(picked);
    for (structPDInfo* disk : picked) chosen.push_back(diskId(disk));
    return true;
}

bool getPdList(unsigned long long size, int raid, std::vector<std::string>& chosen) {
    for (const char* kind : PD_TYPE_SEARCH_ORDER) {
        std::list<structPDInfo*> free;
        if (!PDmanager::Instance()->GetPdListByType(kind, free)) continue;
        if (getPdList(size, raid, free, chosen, 0, diskCapacity(free.front()), 0)) return true;
    }
    return false;
}

bool getPdList(const std::vector<std::string>& extents, std::list<structPDInfo*>& disks) {
    if (extents.empty()) return false;
    std::vector<std::string> wanted;
    for (const std::string& path : extents) wanted.push_back(deviceIdOfPath(path));
    std::list<structPDInfo*> matched;
    for (const char* kind : PD_TYPE_SEARCH_ORDER) {
        std::list<structPDInfo*> free;
        if (!PDmanager::Instance()->GetPdListByType(kind, free)) continue;
        for (structPDInfo* disk : free) {
            std::string id = extentStyleId(diskId(disk));
            if (id.empty()) continue;
            bool found = false;
            for (const std::string& w : wanted) {
                if (equalsIgnoringCase(id, w)) {
                    found = true;
                    break;
                }
            }
            if (!found) continue;
            std::list<structPDInfo*> one(1, disk);
            PDmanager::Instance()->MarkBeSelectedPD(one);
            matched.push_back(disk);
            if (matched.size() == extents.size()) {
                disks.insert(disks.end(), matched.begin(), matched.end());
                return true;
            }
        }
    }
    clearPdSelectedFlag(matched);
    return false;
}

void clearPdSelectedFlag(std::list<structPDInfo*>& disks) {
    for (structPDInfo* disk : disks) {
        if (disk != nullptr) disk->selected = false;
    }
}

bool computePoolCapacity(const std::list<const structPDInfo*>& existing, const std::list<structPDInfo*>& added,
                         int raid, unsigned long long& capacity) {
    const unsigned int n = static_cast<unsigned int>(existing.size() + added.size());
    const unsigned int base = static_cast<unsigned int>(GetBasePdSize(raid, n));
    if (base == 0) {
        SMIS_TRACE(LEVEL1, "Specified raid type isn't supported.");
        return false;
    }
    unsigned long long smallest = ULLONG_MAX;
    for (const structPDInfo* disk : existing) smallest = std::min(smallest, diskCapacity(disk));
    unsigned long long addedSum = 0;
    for (const structPDInfo* disk : added) {
        unsigned long long size = diskCapacity(disk);
        if (size < smallest) {
            if (!existing.empty()) {
                SMIS_TRACE(LEVEL1, "Specified PD capacity is smaller than the PD capacity of the pool.");
                return false;
            }
            smallest = size;
        }
        addedSum += size;
    }
    // The disks already in the pool count with the pool's smallest disk;
    // each added disk with its own capacity.
    unsigned __int128 total = static_cast<unsigned __int128>(existing.size()) * smallest + addedSum;
    if (total > ULLONG_MAX) {
        SMIS_TRACE(LEVEL1, "Error[ computePoolCapacity ] : the pool's raw size does not fit 64 bits");
        return false;
    }
    unsigned long long usable = 0;
    if (!GetUsableSize(raid, base, static_cast<unsigned long long>(total), usable)) return false;
    unsigned long long workSpace = 0;
    SubWorkSpaceFromPool(raid, base, n, workSpace);
    capacity = usable > workSpace ? usable - workSpace : 0;
    return true;
}

int ConverPdList(const std::vector<std::string>& ids, std::vector<std::string>& batches, unsigned int size) {
    if (size == 0) return 0;
    int count = 0;
    for (size_t first = 0; first < ids.size(); first += size) {
        std::string batch;
        for (size_t i = first; i < ids.size() && i < first + size; ++i) {
            std::string::size_type dash = ids[i].find('-');
            batch += (dash == std::string::npos ? ids[i] : ids[i].substr(dash + 1)) + "h,";
        }
        batch.erase(batch.size() - 1);
        batches.push_back(batch);
        ++count;
    }
    return count;
}

bool GetLDUID(const std::string& arrayId, char* buffer, size_t length) {
    return lowestFreeNumber<LdRawData>(arrayId, buffer, length);
}

bool GetPLUID(const std::string& arrayId, char* buffer, size_t length) {
    return lowestFreeNumber<PoolRawData>(arrayId, buffer, length);
}

}  // namespace orvsmis
