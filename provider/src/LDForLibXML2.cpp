#include "LDForLibXML2.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "LdRawData.h"
#include "LibXML2Filler.h"

namespace orvsmis {

#define LD_CHAPTER(CHAPTER) "/REQUEST/CMD_REQUEST/CHAPTER[@name='" CHAPTER "']/OBJECT[@name='Logical Disk']"
const char* const LDForLibXML2::objLD = LD_CHAPTER("Logical Disk");
const char* const LDForLibXML2::objPoolLdLD = LD_CHAPTER("Pool-Logical Disk");
#undef LD_CHAPTER

const char* const LDForLibXML2::secLDDetailInfo = "LD Detail Information";
const char* const LDForLibXML2::secVirtualCapacityLDInfo = "Virtual Capacity Logical Disk Information";

const char* const LDForLibXML2::LDN = "LDN(h)";
const char* const LDForLibXML2::LDName = "LD Name";
const char* const LDForLibXML2::LDCapacity = "LD Capacity";
const char* const LDForLibXML2::poolNo = "Pool No.(h)";
const char* const LDForLibXML2::raidType = "RaidType";
const char* const LDForLibXML2::PDType = "PD Type";
const char* const LDForLibXML2::LDState = "LD State";
const char* const LDForLibXML2::group = "Group";
const char* const LDForLibXML2::purpose = "Purpose";
const char* const LDForLibXML2::RPLAttribute = "RPL Attribute";
const char* const LDForLibXML2::snapshotAttribute = "Snapshot Attribute";
const char* const LDForLibXML2::threshold = "Threshold";
const char* const LDForLibXML2::actualUsedCapacity = "Actual Used Capacity";
const char* const LDForLibXML2::partitionName = "Partition Name";
const char* const LDForLibXML2::partitionNo = "Partition No.(h)";
const char* const LDForLibXML2::movementState = "Movement State";
const char* const LDForLibXML2::dataMigrationState = "Data Migration State";
const char* const LDForLibXML2::bindMode = "Bind Mode";
const char* const LDForLibXML2::configurationChange = "Configuration Change";
const char* const LDForLibXML2::writeCacheMode = "Write Cache Mode";
const char* const LDForLibXML2::readCacheMode = "Read Cache Mode";
const char* const LDForLibXML2::segmentName = "Segment Name";
const char* const LDForLibXML2::segmentNumber = "Segment Number(h)";
const char* const LDForLibXML2::cacheResident = "Cache Resident";
const char* const LDForLibXML2::defaultOwner = "Default Owner";
const char* const LDForLibXML2::currentOwner = "Current Owner";
const char* const LDForLibXML2::expansionState = "Expansion State";
const char* const LDForLibXML2::accessMode = "Access Mode";
const char* const LDForLibXML2::capacityAllocation = "Capacity Allocation";
const char* const LDForLibXML2::poolName = "Pool Name";
const char* const LDForLibXML2::nodeNo = "Node No.(h)";
const char* const LDForLibXML2::RANK = "RANK";
const char* const LDForLibXML2::progressRatio = "Progress Ratio";
const char* const LDForLibXML2::OSType = "OS Type";


int LDForLibXML2::ToStruct(std::vector<RawData*>& out) {
    // An array reports its logical disks either in a chapter of their own
    // or together with the pools, never both.
    int count = toStruct(0, out);
    if (count < 1) count = toStruct(1, out);
    return count < 0 ? 0 : count;
}

int LDForLibXML2::toStruct(int selector, std::vector<RawData*>& out) {
    return CollectRecords<LdRawData>(m_context, selector == 0 ? objLD : objPoolLdLD, RAWDATA_LD, out,
        [this](xmlNode* section, LdRawData* record) {
            std::string spill;
            const char* name = LibXML2Filler::nameText(section, spill);
            if (std::strcmp(name, secLDDetailInfo) == 0) fillLDDetailInfo(section, record);
            else if (std::strcmp(name, secVirtualCapacityLDInfo) == 0) fillVirtualCapacityLDInfo(section, record);
            else return false;
            return true;
        });
}

void LDForLibXML2::fillLDDetailInfo(xmlNode* section, LdRawData* record) {
    const TextUnit fields[] = {
        {LDN, &record->LDN},
        {LDName, &record->LDName},
        {poolNo, &record->poolNo},
        {raidType, &record->raidType},
        {PDType, &record->PDType},
        {LDState, &record->LDState},
        {group, &record->group},
        {purpose, &record->purpose},
        {RPLAttribute, &record->RPLAttribute},
        {snapshotAttribute, &record->snapshotAttribute},
    };
    FillTextUnits(section, fields);
    for (xmlNode* unit = section->children; unit != nullptr; unit = unit->next) {
        if (LibXML2Filler::fillAtr(unit, record->LDCapacity, LDCapacity)) break;
    }
    record->name = record->LDN;
    record->arrayId = LibXML2Filler::mArrayId;
}

// The array prints the used capacity of a logical disk with thousands
// separators; they are taken out before the number is read.
void LDForLibXML2::fillVirtualCapacityLDInfo(xmlNode* section, LdRawData* record) {
    const TextUnit fields[] = {{threshold, &record->threshold}};
    FillTextUnits(section, fields);
    for (xmlNode* unit = section->children; unit != nullptr; unit = unit->next) {
        if (unit->type != XML_ELEMENT_NODE || !LibXML2Filler::nameIs(unit, actualUsedCapacity)) continue;
        std::string text = LibXML2Filler::contentOf(unit);
        text.erase(std::remove(text.begin(), text.end(), ','), text.end());
        if (text.empty()) break;
        record->actualUsedCapacity = LibXML2Filler::decimalOf(text.c_str());
        break;
    }
}

}  // namespace orvsmis
