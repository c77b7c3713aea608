#ifndef ORVSMIS_POOLRAWDATA_H
#define ORVSMIS_POOLRAWDATA_H

#include <string>

#include "RawData.h"

namespace orvsmis {

// One pool of the array. Its name is the pool number (hexadecimal text).
// Text units are stored as they stand; capacities are bytes.
class PoolRawData : public RawData {
public:
    std::string poolNo;
    std::string poolName;
    std::string poolType;
    std::string RAIDType;
    int numberofRAID5s;
    std::string nodeNo;
    std::string PDType;
    std::string poolState;
    std::string expansionState;
    std::string expansion;
    std::string rearrangement;
    std::string progressRatio;
    int rebuildTime;
    int expansionTime;
    std::string rearrangingMode;
    unsigned long long poolCapacity;
    unsigned long long usedPoolCapacity;
    unsigned long long freePoolCapacity;
    std::string configurationSetting;
    // Low bits of the maintenance bit set "NoBPD", printed as one digit.
    std::string noBPD;
    // Strip size in bytes, worked out from the code the array reports.
    unsigned long long stripSize;
    unsigned long long actualCapacity;
    unsigned long long actualUsedCapacity;
    std::string threshold;
    int actualCapacityThreshold;

    PoolRawData();

    static int GetType() { return RAWDATA_POOL; }

    // Same name, same type code, and same pool type, RAID type and disk
    // type: a pool that changes one of these is a new pool.
    bool IsEqual(const RawData* other) const override;
    bool HasChanged(const RawData* newData) const override;
    void Copy(const RawData* other) override;

    // RAID code of RAIDType: 2 RAID1, 6 RAID5, 8 RAID6, 10 RAID-TM, 0 else.
    int FromRaidType() const;
};

}  // namespace orvsmis

#endif
