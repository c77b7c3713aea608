#include "PoolForLibXML2.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "LibXML2Filler.h"
#include "PoolRawData.h"

namespace orvsmis {

#define POOL_CHAPTER(CHAPTER) "/REQUEST/CMD_REQUEST/CHAPTER[@name='" CHAPTER "']/OBJECT[@name='Pool']"
const char* const PoolForLibXML2::objPool = POOL_CHAPTER("Pool");
const char* const PoolForLibXML2::objPoolLdPool = POOL_CHAPTER("Pool-Logical Disk");
#undef POOL_CHAPTER

const char* const PoolForLibXML2::secPoolDetailInfo = "Pool Detail Information";
const char* const PoolForLibXML2::secPoolMaintInfo = "Pool Maint Information";
const char* const PoolForLibXML2::secRankList = "RANK List";
const char* const PoolForLibXML2::secVirtualCapacityPoolInfo = "Virtual Capacity Pool Information";

const char* const PoolForLibXML2::poolNo = "Pool No.(h)";
const char* const PoolForLibXML2::poolName = "Pool Name";
const char* const PoolForLibXML2::poolType = "Pool Type";
const char* const PoolForLibXML2::RAIDType = "RAID Type";
const char* const PoolForLibXML2::numberofRAID5s = "Number of RAID5s";
const char* const PoolForLibXML2::nodeNo = "Node No.(h)";
const char* const PoolForLibXML2::PDType = "PD Type";
const char* const PoolForLibXML2::poolState = "Pool State";
const char* const PoolForLibXML2::expansionState = "Expansion State";
const char* const PoolForLibXML2::expansion = "Expansion/Rearrangement State";
const char* const PoolForLibXML2::rearrangement = "Rearrangement";
const char* const PoolForLibXML2::progressRatio = "Progress Ratio";
const char* const PoolForLibXML2::rebuildTime = "Rebuild Time(hour)";
const char* const PoolForLibXML2::expansionTime = "Expansion Time(hour)";
const char* const PoolForLibXML2::rearrangingMode = "Rearranging Mode";
const char* const PoolForLibXML2::poolCapacity = "Pool Capacity";
const char* const PoolForLibXML2::usedPoolCapacity = "Used Pool Capacity";
const char* const PoolForLibXML2::freePoolCapacity = "Free Pool Capacity";
const char* const PoolForLibXML2::configurationSetting = "Configuration Setting";
const char* const PoolForLibXML2::noBPD = "NoBPD";
const char* const PoolForLibXML2::stripSize = "Strip Size";
const char* const PoolForLibXML2::actualCapacity = "Actual Capacity";
const char* const PoolForLibXML2::actualUsedCapacity = "Actual Used Capacity";
const char* const PoolForLibXML2::threshold = "Threshold";
const char* const PoolForLibXML2::actualCapacityThreshold = "Actual Capacity Threshold(%)";

namespace {

// Where one unit's text goes: a string as it stands, an int read with atoi,
// or a decimal number read up to the first non-digit.
struct PoolUnit {
    const char* unit;
    std::string* text;
    int* integer;
    unsigned long long* number;
};

void fillUnits(xmlNode* section, const PoolUnit* fields, size_t count) {
    std::string spill;
    for (xmlNode* unit = section->children; unit != nullptr; unit = unit->next) {
        if (unit->type != XML_ELEMENT_NODE) continue;
        const char* unitName = LibXML2Filler::nameText(unit, spill);
        if (*unitName == '\0') continue;
        for (size_t i = 0; i < count; ++i) {
            if (std::strcmp(unitName, fields[i].unit) != 0) continue;
            std::string text = LibXML2Filler::contentOf(unit);
            if (!text.empty()) {
                if (fields[i].text != nullptr) *fields[i].text = text;
                if (fields[i].integer != nullptr) *fields[i].integer = std::atoi(text.c_str());
                if (fields[i].number != nullptr) LibXML2Filler::fillAtr(unit, *fields[i].number, fields[i].unit);
            }
            break;
        }
    }
}


}  // namespace

int PoolForLibXML2::ToStruct(std::vector<RawData*>& out) {
    // An array reports its pools either in a chapter of their own or
    // together with the logical disks, never both.
    int count = toStruct(0, out);
    if (count < 1) count = toStruct(1, out);
    return count < 0 ? 0 : count;
}

int PoolForLibXML2::toStruct(int selector, std::vector<RawData*>& out) {
    return CollectRecords<PoolRawData>(m_context, selector == 0 ? objPool : objPoolLdPool, RAWDATA_POOL, out,
        [this](xmlNode* section, PoolRawData* record) {
            const std::string name = LibXML2Filler::nameOf(section);
            if (name == secPoolDetailInfo) fillPoolDetailInfo(section, record);
            else if (name == secPoolMaintInfo) fillPoolMaintinfo(section, record);
            else if (name == secRankList) fillRankListinfo(section, record);
            else if (name == secVirtualCapacityPoolInfo) fillVirtualCapacityPoolInfo(section, record);
            else return false;
            return true;
        });
}

void PoolForLibXML2::fillPoolDetailInfo(xmlNode* section, PoolRawData* record) {
    const PoolUnit fields[] = {
        {poolNo, &record->poolNo, nullptr, nullptr},
        {poolName, &record->poolName, nullptr, nullptr},
        {poolType, &record->poolType, nullptr, nullptr},
        {RAIDType, &record->RAIDType, nullptr, nullptr},
        {numberofRAID5s, nullptr, &record->numberofRAID5s, nullptr},
        {nodeNo, &record->nodeNo, nullptr, nullptr},
        {PDType, &record->PDType, nullptr, nullptr},
        {poolState, &record->poolState, nullptr, nullptr},
        {expansionState, &record->expansionState, nullptr, nullptr},
        {expansion, &record->expansion, nullptr, nullptr},
        {rearrangement, &record->rearrangement, nullptr, nullptr},
        {progressRatio, &record->progressRatio, nullptr, nullptr},
        {rebuildTime, nullptr, &record->rebuildTime, nullptr},
        {expansionTime, nullptr, &record->expansionTime, nullptr},
        {rearrangingMode, &record->rearrangingMode, nullptr, nullptr},
        {poolCapacity, nullptr, nullptr, &record->poolCapacity},
        {usedPoolCapacity, nullptr, nullptr, &record->usedPoolCapacity},
        {freePoolCapacity, nullptr, nullptr, &record->freePoolCapacity},
        {configurationSetting, &record->configurationSetting, nullptr, nullptr},
    };
    fillUnits(section, fields, sizeof(fields) / sizeof(fields[0]));
    record->name = record->poolNo;
    record->arrayId = LibXML2Filler::mArrayId;
}

// "NoBPD" is a hexadecimal bit set; the low four bits are kept and printed
// as a single character, so 10 to 15 all read as "1".
void PoolForLibXML2::fillPoolMaintinfo(xmlNode* section, PoolRawData* record) {
    std::string text = UnitText(section, noBPD);
    unsigned int bits = 0;
    if (std::sscanf(text.c_str(), "%x", &bits) != 1) bits = 0;
    record->noBPD = std::to_string(bits & 0xF).substr(0, 1);
}

// "Strip Size" holds a code n; the size is 64 KiB doubled n-1 times, worked
// out in 32 bits as the array does (so codes from 17 on give 0, and 16 the
// sign-extended 2 GiB). Codes below 1 name no size.
void PoolForLibXML2::fillRankListinfo(xmlNode* section, PoolRawData* record) {
    for (xmlNode* unit : ElementChildren(section)) {
        if (LibXML2Filler::nameOf(unit) != stripSize) continue;
        int code = std::atoi(LibXML2Filler::contentOf(unit).c_str());
        if (code < 1 || code > 32) {
            record->stripSize = 0;
            continue;
        }
        unsigned long long wide = (64ULL << (code - 1)) * 1024ULL;
        int32_t narrow = static_cast<int32_t>(static_cast<uint32_t>(wide & 0xFFFFFFFFULL));
        record->stripSize = static_cast<unsigned long long>(static_cast<long long>(narrow));
    }
}

void PoolForLibXML2::fillVirtualCapacityPoolInfo(xmlNode* section, PoolRawData* record) {
    const PoolUnit fields[] = {
        {actualCapacity, nullptr, nullptr, &record->actualCapacity},
        {actualUsedCapacity, nullptr, nullptr, &record->actualUsedCapacity},
        {threshold, &record->threshold, nullptr, nullptr},
        {actualCapacityThreshold, nullptr, &record->actualCapacityThreshold, nullptr},
    };
    fillUnits(section, fields, sizeof(fields) / sizeof(fields[0]));
}

}  // namespace orvsmis
