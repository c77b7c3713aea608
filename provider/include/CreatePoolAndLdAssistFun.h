#ifndef ORVSMIS_CREATEPOOLANDLDASSISTFUN_H
#define ORVSMIS_CREATEPOOLANDLDASSISTFUN_H

#include <cstddef>
#include <list>
#include <string>
#include <vector>

namespace orvsmis {

struct structPDInfo;

// Capacity arithmetic and disk selection for pool and volume configuration.
// RAID codes: 2 RAID1, 6 RAID5, 8 RAID6, 10 RAID-TM; anything else is
// unknown. Sizes are bytes.

// The disk kinds, in the order in which free disks are searched.
extern const char* const PD_TYPE_SEARCH_ORDER[11];

// Disks of one RAID group for `count` disks in all; 0 when the RAID code is
// unknown or the count is too small for it.
int GetBasePdSize(int raid, unsigned int count);

// Usable bytes of `total` raw bytes in groups of `base` disks. False for a
// base below 2 or an unknown RAID code.
bool GetUsableSize(int raid, unsigned int base, unsigned long long total, unsigned long long& out);

// Work space the array keeps back for the RAID groups of `count` disks in
// groups of `base`. A base of 0 throws CIMException.
void SubWorkSpaceFromPool(int raid, unsigned int base, unsigned int count, unsigned long long& out);

// The sizes a pool could reach, one per disk count from the smallest group
// (or from `base` when it is not 0) up to existing + free disks of `pdSize`
// bytes each. Counts whose usable bytes do not exceed the work space are left
// out. True when the list holds anything.
bool GetUsableSizeList(int raid, unsigned int base, unsigned long long pdSize, unsigned int existing,
                       unsigned int free, std::vector<unsigned long long>& list);
// The sizes a new pool of that RAID code could have over the free disks of
// each kind, ascending and without duplicates.
bool GetUsableSizeList(int raid, std::vector<unsigned long long>& list);

// Chooses from `disks` (free disks of one kind, `pdSize` bytes each) the
// fewest that give at least `size` usable bytes together with the `count`
// disks a pool already has; marks them selected and appends their ids
// (group "-" number) to `chosen`. `existing` above 0 means the pool exists,
// so at least count + 1 disks are looked at. True when `chosen` holds
// anything.
bool getPdList(unsigned long long size, int raid, std::list<structPDInfo*>& disks, std::vector<std::string>& chosen,
               unsigned long long existing, unsigned long long pdSize, unsigned int count);
// The same for a new pool over the disk kinds in search order; the first
// kind that can give the size is taken.
bool getPdList(unsigned long long size, int raid, std::vector<std::string>& chosen);
// Finds the free disk of each extent path (its DeviceID is "00h-0ah" for the
// disk 00-0a), marks them selected and appends them to `disks`. False, with
// the claims of the matched disks given back, when not all are found.
bool getPdList(const std::vector<std::string>& extents, std::list<structPDInfo*>& disks);

// Gives back the claim of every disk in the list.
void clearPdSelectedFlag(std::list<structPDInfo*>& disks);

// Usable bytes of a pool of the `existing` disks with the `added` ones. False
// (traced) when the RAID code does not fit the disk count or an added disk is
// smaller than the pool's smallest.
bool computePoolCapacity(const std::list<const structPDInfo*>& existing, const std::list<structPDInfo*>& added,
                         int raid, unsigned long long& capacity);

// Cuts disk ids (group "-" number) into command-line lists of up to `size`
// numbers, each as "<number>h," without the last comma. Returns the number of
// batches appended.
int ConverPdList(const std::vector<std::string>& ids, std::vector<std::string>& batches, unsigned int size);

// The lowest LD number (pool number) not in use on the array, written as
// four hexadecimal digits. False when `length` is below 5 or the buffer is
// null.
bool GetLDUID(const std::string& arrayId, char* buffer, size_t length);
bool GetPLUID(const std::string& arrayId, char* buffer, size_t length);

}  // namespace orvsmis

#endif
