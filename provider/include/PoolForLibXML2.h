#ifndef ORVSMIS_POOLFORLIBXML2_H
#define ORVSMIS_POOLFORLIBXML2_H

#include <libxml/xpath.h>

#include "RawDataFiller.h"

namespace orvsmis {

class PoolRawData;

// Reads the pool records, from the chapter "Pool" or, when that gives none,
// from the chapter "Pool-Logical Disk". Returns the number of records (0
// when there are none).
class PoolForLibXML2 : public RawDataFiller {
public:
    static const char* const objPool;         // chapter "Pool"
    static const char* const objPoolLdPool;   // chapter "Pool-Logical Disk"
    static const char* const secPoolDetailInfo;
    static const char* const secPoolMaintInfo;
    static const char* const secRankList;
    static const char* const secVirtualCapacityPoolInfo;

    static const char* const poolNo;
    static const char* const poolName;
    static const char* const poolType;
    static const char* const RAIDType;
    static const char* const numberofRAID5s;
    static const char* const nodeNo;
    static const char* const PDType;
    static const char* const poolState;
    static const char* const expansionState;
    static const char* const expansion;
    static const char* const rearrangement;
    static const char* const progressRatio;
    static const char* const rebuildTime;
    static const char* const expansionTime;
    static const char* const rearrangingMode;
    static const char* const poolCapacity;
    static const char* const usedPoolCapacity;
    static const char* const freePoolCapacity;
    static const char* const configurationSetting;
    static const char* const noBPD;
    static const char* const stripSize;
    static const char* const actualCapacity;
    static const char* const actualUsedCapacity;
    static const char* const threshold;
    static const char* const actualCapacityThreshold;

    explicit PoolForLibXML2(xmlXPathContext* context) : m_context(context) {}

    int ToStruct(std::vector<RawData*>& out) override;

private:
    // selector 0: the chapter "Pool"; 1: the chapter "Pool-Logical Disk".
    // -1 when the object is absent, else the number of records appended.
    int toStruct(int selector, std::vector<RawData*>& out);
    void fillPoolDetailInfo(xmlNode* section, PoolRawData* record);
    void fillPoolMaintinfo(xmlNode* section, PoolRawData* record);
    void fillRankListinfo(xmlNode* section, PoolRawData* record);
    void fillVirtualCapacityPoolInfo(xmlNode* section, PoolRawData* record);

    xmlXPathContext* m_context;
};

}  // namespace orvsmis

#endif
