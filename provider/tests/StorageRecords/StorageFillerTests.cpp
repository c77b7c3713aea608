#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LdRawData.h"
#include "PdRawData.h"
#include "PoolRawData.h"
#include "StorageRecordsTestSupport.h"
#include "XMLParser.h"

using namespace orvsmis;
using namespace storagetest;

namespace {

// Loads the document in two chunks, as the command layer pushes it, and
// reads the array first so that the records carry its id.
class LoadedDocument {
public:
    explicit LoadedDocument(const std::string& text) {
        size_t half = text.size() / 2;
        m_parser.LoadChunk(text.data(), static_cast<int>(half), 0);
        m_parser.LoadChunk(text.data() + half, static_cast<int>(text.size() - half), 1);
        std::vector<RawData*> array;
        m_parser.QueryData(array, RAWDATA_ARRAY);
        ReleaseRawDataList(array);
    }
    ~LoadedDocument() { ReleaseRawDataList(records); }

    int Query(int type) { return m_parser.QueryData(records, type); }
    template <class T>
    T* At(size_t i) const {
        return i < records.size() ? dynamic_cast<T*>(records[i]) : nullptr;
    }

    std::vector<RawData*> records;

private:
    XMLParser m_parser;
};

std::string poolDetail(const std::string& number, const Units& extra = {}) {
    Units units = {{"Pool No.(h)", number}, {"Pool Name", "Pool" + number}, {"RAID Type", "RAID6"}};
    units.insert(units.end(), extra.begin(), extra.end());
    return Section("Pool Detail Information", units);
}

std::string ldDetail(const std::string& number, const std::string& pool) {
    return Section("LD Detail Information", {{"LDN(h)", number}, {"Pool No.(h)", pool}, {"LD Capacity", "1024"}});
}

}  // namespace

TEST(StorageFillers, PoolUnitsReachTheirFields) {
    std::string pool = Object(
        "Pool",
        Section("Pool Detail Information",
                {{"Pool No.(h)", "000a"},         {"Pool Name", "Pool000a"},
                 {"Pool Type", "virtual"},        {"RAID Type", "RAID5"},
                 {"Number of RAID5s", "3"},       {"Node No.(h)", "01"},
                 {"PD Type", "SAS"},              {"Pool State", "ready"},
                 {"Expansion State", "---"},      {"Expansion/Rearrangement State", "expanding"},
                 {"Rearrangement", "off"},        {"Progress Ratio", "42"},
                 {"Rebuild Time(hour)", "5"},     {"Expansion Time(hour)", "7"},
                 {"Rearranging Mode", "auto"},    {"Pool Capacity", "107374182400"},
                 {"Used Pool Capacity", "1024"},  {"Free Pool Capacity", "107374181376"},
                 {"Configuration Setting", "on"}, {"Unlisted Unit", "ignored"}}) +
            Section("Pool Maint Information", {{"NoBPD", "02"}}) + Section("RANK List", {{"Strip Size", "1"}}) +
            Section("Virtual Capacity Pool Information", {{"Actual Capacity", "5368709120"},
                                                          {"Actual Used Capacity", "2048"},
                                                          {"Threshold", "80%"},
                                                          {"Actual Capacity Threshold(%)", "85"}}));
    LoadedDocument doc(Document("W-POOL", Chapter("Pool", pool)));
    ASSERT_EQ(doc.Query(RAWDATA_POOL), 1);
    PoolRawData* p = doc.At<PoolRawData>(0);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->name, "000a");
    EXPECT_EQ(p->arrayId, "W-POOL");
    EXPECT_EQ(p->poolNo, "000a");
    EXPECT_EQ(p->poolName, "Pool000a");
    EXPECT_EQ(p->poolType, "virtual");
    EXPECT_EQ(p->RAIDType, "RAID5");
    EXPECT_EQ(p->numberofRAID5s, 3);
    EXPECT_EQ(p->nodeNo, "01");
    EXPECT_EQ(p->PDType, "SAS");
    EXPECT_EQ(p->poolState, "ready");
    EXPECT_EQ(p->expansionState, "---");
    EXPECT_EQ(p->expansion, "expanding");
    EXPECT_EQ(p->rearrangement, "off");
    EXPECT_EQ(p->progressRatio, "42");
    EXPECT_EQ(p->rebuildTime, 5);
    EXPECT_EQ(p->expansionTime, 7);
    EXPECT_EQ(p->rearrangingMode, "auto");
    EXPECT_EQ(p->poolCapacity, 107374182400ULL);
    EXPECT_EQ(p->usedPoolCapacity, 1024ULL);
    EXPECT_EQ(p->freePoolCapacity, 107374181376ULL);
    EXPECT_EQ(p->configurationSetting, "on");
    EXPECT_EQ(p->noBPD, "2");
    EXPECT_EQ(p->stripSize, 65536ULL);
    EXPECT_EQ(p->actualCapacity, 5368709120ULL);
    EXPECT_EQ(p->actualUsedCapacity, 2048ULL);
    EXPECT_EQ(p->threshold, "80%");
    EXPECT_EQ(p->actualCapacityThreshold, 85);
}

TEST(StorageFillers, NoBpdKeepsOneDigitOfTheLowBits) {
    struct Row {
        const char* label;
        std::string section;
        const char* noBPD;
    } rows[] = {
        {"2F", Section("Pool Maint Information", {{"NoBPD", "2F"}}), "1"},
        {"13", Section("Pool Maint Information", {{"NoBPD", "13"}}), "3"},
        {"0a", Section("Pool Maint Information", {{"NoBPD", "0a"}}), "1"},
        {"7", Section("Pool Maint Information", {{"NoBPD", "7"}}), "7"},
        {"not hexadecimal", Section("Pool Maint Information", {{"NoBPD", "zz"}}), "0"},
        {"no unit", Section("Pool Maint Information", {{"Other", "5"}}), "0"},
        {"no section", "", ""},
    };
    for (const Row& row : rows) {
        LoadedDocument doc(Document("W1", Chapter("Pool", Object("Pool", poolDetail("0001") + row.section))));
        ASSERT_EQ(doc.Query(RAWDATA_POOL), 1) << row.label;
        EXPECT_EQ(doc.At<PoolRawData>(0)->noBPD, row.noBPD) << row.label;
    }
}

TEST(StorageFillers, StripSizeFromItsCode) {
    struct Row {
        const char* label;
        std::string sections;
        unsigned long long size;
    } rows[] = {
        {"1", Section("RANK List", {{"Strip Size", "1"}}), 65536ULL},
        {"2", Section("RANK List", {{"Strip Size", "2"}}), 131072ULL},
        {"5", Section("RANK List", {{"Strip Size", "5"}}), 1048576ULL},
        {"16, sign-extended in 32 bits", Section("RANK List", {{"Strip Size", "16"}}), 0xFFFFFFFF80000000ULL},
        {"17, shifted out", Section("RANK List", {{"Strip Size", "17"}}), 0ULL},
        {"0, no size", Section("RANK List", {{"Strip Size", "0"}}), 0ULL},
        {"no unit", Section("RANK List", {{"RANK", "1"}}), 0ULL},
        {"last section wins",
         Section("RANK List", {{"Strip Size", "3"}}) + Section("RANK List", {{"Strip Size", "2"}}), 131072ULL},
    };
    for (const Row& row : rows) {
        LoadedDocument doc(Document("W1", Chapter("Pool", Object("Pool", poolDetail("0001") + row.sections))));
        ASSERT_EQ(doc.Query(RAWDATA_POOL), 1) << row.label;
        EXPECT_EQ(doc.At<PoolRawData>(0)->stripSize, row.size) << row.label;
    }
}

TEST(StorageFillers, CommasInTheUsedCapacity) {
    // Only the logical disk's used capacity is cleaned of separators; the
    // pool's stops reading at the first comma.
    std::string pool = Object("Pool", poolDetail("0001") + Section("Virtual Capacity Pool Information",
                                                                   {{"Actual Used Capacity", "1,234,567"}}));
    std::string ld = Object("Logical Disk", ldDetail("0000", "0001") +
                                                Section("Virtual Capacity Logical Disk Information",
                                                        {{"Threshold", "75"}, {"Actual Used Capacity", "1,234,567"}}));
    LoadedDocument doc(Document("W1", Chapter("Pool", pool) + Chapter("Logical Disk", ld)));
    ASSERT_EQ(doc.Query(RAWDATA_POOL), 1);
    ASSERT_EQ(doc.Query(RAWDATA_LD), 1);
    EXPECT_EQ(doc.At<PoolRawData>(0)->actualUsedCapacity, 1ULL);
    LdRawData* l = doc.At<LdRawData>(1);
    ASSERT_NE(l, nullptr);
    EXPECT_EQ(l->actualUsedCapacity, 1234567ULL);
    EXPECT_EQ(l->threshold, "75");
}

TEST(StorageFillers, LdUnitsReachTheirFields) {
    std::string ld = Object(
        "Logical Disk",
        Section("LD Detail Information", {{"LDN(h)", "001f"},
                                          {"LD Name", "VOL31"},
                                          {"LD Capacity", "2147483648"},
                                          {"Pool No.(h)", "0002"},
                                          {"RaidType", "RAID1"},
                                          {"PD Type", "SSD"},
                                          {"LD State", "ready"},
                                          {"Group", "G1"},
                                          {"Purpose", "RPL"},
                                          {"RPL Attribute", "MV"},
                                          {"Snapshot Attribute", "IV"},
                                          {"OS Type", "LX"},
                                          {"Current Owner", "00"}}));
    LoadedDocument doc(Document("W-LD", Chapter("Logical Disk", ld)));
    ASSERT_EQ(doc.Query(RAWDATA_LD), 1);
    LdRawData* l = doc.At<LdRawData>(0);
    ASSERT_NE(l, nullptr);
    EXPECT_EQ(l->name, "001f");
    EXPECT_EQ(l->arrayId, "W-LD");
    EXPECT_EQ(l->LDName, "VOL31");
    EXPECT_EQ(l->LDCapacity, 2147483648ULL);
    EXPECT_EQ(l->poolNo, "0002");
    EXPECT_EQ(l->raidType, "RAID1");
    EXPECT_EQ(l->PDType, "SSD");
    EXPECT_EQ(l->LDState, "ready");
    EXPECT_EQ(l->group, "G1");
    EXPECT_EQ(l->purpose, "RPL");
    EXPECT_EQ(l->RPLAttribute, "MV");
    EXPECT_EQ(l->snapshotAttribute, "IV");
    EXPECT_EQ(l->GetLdType(), 1);
}

TEST(StorageFillers, PdUnitsReachTheirFields) {
    std::string disk = Object("Physical Disk", Section("PD Detail Information", {{"PDN(h)", "00-0a"},
                                                                                 {"Classification", "not set"},
                                                                                 {"Rank Group Number(h)", "--"},
                                                                                 {"State", "ready"},
                                                                                 {"PD Capacity", "300000000000"},
                                                                                 {"Rotational Speed", "15000rpm"},
                                                                                 {"Node No.(h)", "00"},
                                                                                 {"Type", "SAS"},
                                                                                 {"Vendor ID", "VEND"},
                                                                                 {"Product ID", "PROD"},
                                                                                 {"Product Revision", "A1"},
                                                                                 {"Serial Number", "SN01"},
                                                                                 {"Configuration Change", "---"},
                                                                                 {"Transfer Rate", "6Gbps"}}));
    std::string second = Object("Physical Disk", Section("PD Detail Information", {{"PDN(h)", "00-0b"}}));
    LoadedDocument doc(Document("W-PD", Chapter("Physical Disk", disk + second)));
    ASSERT_EQ(doc.Query(RAWDATA_PD), 2);
    PdRawData* d = doc.At<PdRawData>(0);
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(d->name, "00-0a");
    EXPECT_EQ(d->arrayId, "W-PD");
    EXPECT_EQ(d->classification, "not set");
    EXPECT_EQ(d->rankGroupNumber, "--");
    EXPECT_EQ(d->state, "ready");
    EXPECT_EQ(d->PDCapacity, 300000000000ULL);
    EXPECT_EQ(d->rotationalSpeed, "15000rpm");
    EXPECT_EQ(d->nodeNo, "00");
    EXPECT_EQ(d->type, "SAS");
    EXPECT_EQ(d->vendorID, "VEND");
    EXPECT_EQ(d->productID, "PROD");
    EXPECT_EQ(d->productRevision, "A1");
    EXPECT_EQ(d->serialNumber, "SN01");
    EXPECT_EQ(d->configurationChange, "---");
    EXPECT_EQ(d->transferRate, "6Gbps");
    PdRawData* e = doc.At<PdRawData>(1);
    ASSERT_NE(e, nullptr);
    EXPECT_EQ(e->name, "00-0b");
    EXPECT_EQ(e->PDCapacity, 0ULL);
    EXPECT_EQ(e->state, "");
}

TEST(StorageFillers, ChapterChoiceAndAbsentObjects) {
    std::string pools = Object("Pool", poolDetail("0000")) + Object("Pool", poolDetail("0001"));
    std::string lds = Object("Logical Disk", ldDetail("0000", "0000")) + Object("Logical Disk", ldDetail("0001", "0001")) +
                      Object("Logical Disk", ldDetail("0002", "0001"));
    struct Row {
        const char* label;
        std::string chapters;
        int pools;
        int lds;
        int pds;
    } rows[] = {
        {"own chapters", Chapter("Pool", pools) + Chapter("Logical Disk", lds), 2, 3, -1},
        {"combined chapter", Chapter("Pool-Logical Disk", pools + lds), 2, 3, -1},
        {"nothing", Chapter("Controller", Object("HD", Section("Host Director Information", {}))), 0, 0, -1},
        // Objects whose sections are all unknown give no records.
        {"unknown sections", Chapter("Pool", Object("Pool", Section("Other", {{"Pool No.(h)", "0005"}}))) +
                                 Chapter("Physical Disk", Object("Physical Disk", Section("Other", {}))),
         0, 0, 0},
    };
    for (const Row& row : rows) {
        LoadedDocument doc(Document("W1", row.chapters));
        EXPECT_EQ(doc.Query(RAWDATA_POOL), row.pools) << row.label;
        EXPECT_EQ(doc.Query(RAWDATA_LD), row.lds) << row.label;
        EXPECT_EQ(doc.Query(RAWDATA_PD), row.pds) << row.label;
        ASSERT_EQ(doc.records.size(), static_cast<size_t>(row.pools + row.lds)) << row.label;
        for (int i = 0; i < row.pools; ++i) EXPECT_NE(doc.At<PoolRawData>(i), nullptr) << row.label;
        for (int i = row.pools; i < row.pools + row.lds; ++i) EXPECT_NE(doc.At<LdRawData>(i), nullptr) << row.label;
    }
}

TEST(StorageFillers, CapacitySectionAloneGivesANamelessRecord) {
    std::string pool =
        Object("Pool", Section("Virtual Capacity Pool Information", {{"Actual Capacity", "100"}}));
    LoadedDocument doc(Document("W1", Chapter("Pool", pool)));
    ASSERT_EQ(doc.Query(RAWDATA_POOL), 1);
    PoolRawData* p = doc.At<PoolRawData>(0);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->name, "");
    EXPECT_EQ(p->actualCapacity, 100ULL);
}

TEST(StorageFillers, BrokenNumbersAndEmptyUnitsKeepDefaults) {
    std::string pool = Object("Pool", Section("Pool Detail Information", {{"Pool No.(h)", "0001"},
                                                                        {"Pool Name", ""},
                                                                        {"Pool Capacity", "12abc"},
                                                                        {"Used Pool Capacity", "abc"},
                                                                        {"Rebuild Time(hour)", "x"},
                                                                        {"Number of RAID5s", ""}}));
    LoadedDocument doc(Document("W1", Chapter("Pool", pool)));
    ASSERT_EQ(doc.Query(RAWDATA_POOL), 1);
    PoolRawData* p = doc.At<PoolRawData>(0);
    EXPECT_EQ(p->poolName, "");
    EXPECT_EQ(p->poolCapacity, 12ULL);
    EXPECT_EQ(p->usedPoolCapacity, 0ULL);
    EXPECT_EQ(p->rebuildTime, 0);
    EXPECT_EQ(p->numberofRAID5s, 0);
}
