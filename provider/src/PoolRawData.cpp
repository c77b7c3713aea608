#include "PoolRawData.h"

namespace orvsmis {

PoolRawData::PoolRawData()
    : RawData(GetType()),
      numberofRAID5s(0),
      rebuildTime(0),
      expansionTime(0),
      poolCapacity(0),
      usedPoolCapacity(0),
      freePoolCapacity(0),
      stripSize(0),
      actualCapacity(0),
      actualUsedCapacity(0),
      actualCapacityThreshold(0) {}

bool PoolRawData::IsEqual(const RawData* other) const {
    if (!RawData::IsEqual(other)) return false;
    const PoolRawData* o = dynamic_cast<const PoolRawData*>(other);
    return o != nullptr && poolType == o->poolType && RAIDType == o->RAIDType && PDType == o->PDType;
}

// Progress, expansion state and the threshold percentage move all the time
// during an expansion and are deliberately left out.
bool PoolRawData::HasChanged(const RawData* newData) const {
    const PoolRawData* o = dynamic_cast<const PoolRawData*>(newData);
    if (o == nullptr) return true;
    return poolName != o->poolName || poolState != o->poolState || expansion != o->expansion ||
           poolCapacity != o->poolCapacity || usedPoolCapacity != o->usedPoolCapacity ||
           freePoolCapacity != o->freePoolCapacity || noBPD != o->noBPD || stripSize != o->stripSize ||
           actualCapacity != o->actualCapacity || actualUsedCapacity != o->actualUsedCapacity ||
           threshold != o->threshold;
}

void PoolRawData::Copy(const RawData* other) {
    RawData::Copy(other);
    const PoolRawData* o = dynamic_cast<const PoolRawData*>(other);
    if (o == nullptr || o == this) return;
    poolNo = o->poolNo;
    poolName = o->poolName;
    poolType = o->poolType;
    RAIDType = o->RAIDType;
    numberofRAID5s = o->numberofRAID5s;
    nodeNo = o->nodeNo;
    PDType = o->PDType;
    poolState = o->poolState;
    expansionState = o->expansionState;
    expansion = o->expansion;
    rearrangement = o->rearrangement;
    progressRatio = o->progressRatio;
    rebuildTime = o->rebuildTime;
    expansionTime = o->expansionTime;
    rearrangingMode = o->rearrangingMode;
    poolCapacity = o->poolCapacity;
    usedPoolCapacity = o->usedPoolCapacity;
    freePoolCapacity = o->freePoolCapacity;
    configurationSetting = o->configurationSetting;
    noBPD = o->noBPD;
    stripSize = o->stripSize;
    actualCapacity = o->actualCapacity;
    actualUsedCapacity = o->actualUsedCapacity;
    threshold = o->threshold;
    actualCapacityThreshold = o->actualCapacityThreshold;
}

int PoolRawData::FromRaidType() const {
    if (RAIDType == "RAID1") return 2;
    if (RAIDType == "RAID5") return 6;
    if (RAIDType == "RAID6") return 8;
    if (RAIDType == "RAIDTM") return 10;
    return 0;
}

}  // namespace orvsmis
