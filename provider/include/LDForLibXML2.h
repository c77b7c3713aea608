#ifndef ORVSMIS_LDFORLIBXML2_H
#define ORVSMIS_LDFORLIBXML2_H

#include <libxml/xpath.h>

#include "RawDataFiller.h"

namespace orvsmis {

class LdRawData;

// Reads the logical disk records, from the chapter "Logical Disk" or, when
// that gives none, from the chapter "Pool-Logical Disk". Returns the number
// of records (0 when there are none).
class LDForLibXML2 : public RawDataFiller {
public:
    static const char* const objLD;          // chapter "Logical Disk"
    static const char* const objPoolLdLD;    // chapter "Pool-Logical Disk"
    static const char* const secLDDetailInfo;
    static const char* const secVirtualCapacityLDInfo;

    static const char* const LDN;
    static const char* const LDName;
    static const char* const LDCapacity;
    static const char* const poolNo;
    static const char* const raidType;
    static const char* const PDType;
    static const char* const LDState;
    static const char* const group;
    static const char* const purpose;
    static const char* const RPLAttribute;
    static const char* const snapshotAttribute;
    static const char* const threshold;
    static const char* const actualUsedCapacity;
    // Units a document may carry that no record field takes.
    static const char* const partitionName;
    static const char* const partitionNo;
    static const char* const movementState;
    static const char* const dataMigrationState;
    static const char* const bindMode;
    static const char* const configurationChange;
    static const char* const writeCacheMode;
    static const char* const readCacheMode;
    static const char* const segmentName;
    static const char* const segmentNumber;
    static const char* const cacheResident;
    static const char* const defaultOwner;
    static const char* const currentOwner;
    static const char* const expansionState;
    static const char* const accessMode;
    static const char* const capacityAllocation;
    static const char* const poolName;
    static const char* const nodeNo;
    static const char* const RANK;
    static const char* const progressRatio;
    static const char* const OSType;

    explicit LDForLibXML2(xmlXPathContext* context) : m_context(context) {}

    int ToStruct(std::vector<RawData*>& out) override;

private:
    // selector 0: the chapter "Logical Disk"; 1: the chapter
    // "Pool-Logical Disk". -1 when the object is absent, else the number of
    // records appended.
    int toStruct(int selector, std::vector<RawData*>& out);
    void fillLDDetailInfo(xmlNode* section, LdRawData* record);
    void fillVirtualCapacityLDInfo(xmlNode* section, LdRawData* record);

    xmlXPathContext* m_context;
};

}  // namespace orvsmis

#endif
