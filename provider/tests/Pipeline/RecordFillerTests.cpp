#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ArrayRawData.h"
#include "DacRawData.h"
#include "DeRawData.h"
#include "LibXML2Filler.h"
#include "PipelineTestSupport.h"
#include "XMLParser.h"

using namespace orvsmis;
using namespace pipelinetest;

namespace {

// Parses a document and holds the records queried from it.
struct Loaded {
    XMLParser parser;
    std::vector<RawData*> out;

    explicit Loaded(const std::string& doc) { parser.LoadChunk(doc.data(), static_cast<int>(doc.size()), 1); }
    ~Loaded() { ReleaseRawDataList(out); }

    int Query(int type) { return parser.QueryData(out, type); }
    template <class T>
    T* At(size_t i) {
        return dynamic_cast<T*>(out.at(i));
    }
};

std::string fullArrayDocument() {
    std::string arrayObject = Object(
        "Disk Array",
        Section("Disk Array Detail Information", {{"Disk Array Name", "Array01"},
                                                  {"Resource State", "ready"},
                                                  {"Monitoring", "running"},
                                                  {"Vendor ID", "ORV"},
                                                  {"Product ID", "ORV-M3000"},
                                                  {"Product FW Revision", "0971"},
                                                  {"Serial Number", "0000001"},
                                                  {"SAA", "2000925"},
                                                  {"World Wide Name", "2000D1E7"},
                                                  {"Number of DE", "1"},
                                                  {"User System Code", "00000"},
                                                  {"Storage Control Software Revision", "097100"},
                                                  {"Configuration Change", "enable"},
                                                  {"Not A Field", "ignored"}}) +
            Section("SNMP Common Information",
                    {{"Unit Name", "unit-a"}, {"Unit Contact", "admin"}, {"Unit Location", "room 1"}}) +
            Section("Floating IP Address Information", {{"IP Address(IPv4)", "10.0.0.10"}, {"IP Address(IPv6)", "---"}}) +
            Section("Admin Port Information", {{"IP Address(IPv4)", "10.0.0.11"}, {"IP Address(IPv6)", "fe80::1"}}) +
            Section("Admin Port Information", {{"IP Address(IPv6)", "fe80::2"}, {"IP Address(IPv4)", "10.0.0.12"}}) +
            Section("Disk Array Maint Information", {{"Max LDNum Of Target", "4096"},
                                                     {"Max Num Of Target", "1024"},
                                                     {"Max LDNum Of OwnerID", "512"}}) +
            Section("Base Product Maint List", {{"Version", "1"}, {"Revision", "A"}, {"PP Additional Data", "x"}}) +
            Section("Base Product Maint List", {{"Version", "2"}, {"Revision", ""}}) +
            Section("Access Control Information", {{"Access Control Mode", "off"}}));
    return Document(Chapter("Disk Array", arrayObject) +
                    Chapter("Controller", HdObject("00", "ready") + HdObject("01", "ready (maintenance)")));
}

}  // namespace

TEST(ArrayFiller, ReadsEveryUnitAndStampsTheArrayId) {
    LibXML2Filler::mArrayId = "stale";
    Loaded doc(fullArrayDocument());
    ASSERT_EQ(doc.Query(RAWDATA_ARRAY), 1);
    ArrayRawData* a = doc.At<ArrayRawData>(0);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->name, "2000D1E7");
    EXPECT_EQ(a->arrayId, "2000D1E7");
    EXPECT_EQ(LibXML2Filler::mArrayId, "2000D1E7");
    EXPECT_EQ(a->type, RAWDATA_ARRAY);
    EXPECT_EQ(a->diskArrayName, "Array01");
    EXPECT_EQ(a->productFWRevision, "0971");
    EXPECT_EQ(a->storageControlSoftwareRevision, "097100");
    EXPECT_EQ(a->configurationChange, "enable");
    EXPECT_EQ(a->unitName, "unit-a");
    EXPECT_EQ(a->unitContact, "admin");
    EXPECT_EQ(a->unitLocation, "room 1");
    EXPECT_EQ(a->floatingIPV4, "10.0.0.10");
    EXPECT_EQ(a->floatingIPV6, "---");
    ASSERT_EQ(a->adminPorts.size(), 2u);
    EXPECT_EQ(a->adminPorts[1].IPV4, "10.0.0.12");
    EXPECT_EQ(a->adminPorts[1].IPV6, "fe80::2");
    EXPECT_EQ(a->maxNumOfTarge, "1024");
    EXPECT_EQ(a->maxLDNumOfOwnerID, "512");
    // The repeated list keeps the last value each unit had; an empty unit
    // does not wipe an earlier one.
    EXPECT_EQ(a->version, "2");
    EXPECT_EQ(a->revision, "A");
    EXPECT_EQ(a->pPAdditionalData, "x");
    EXPECT_EQ(a->accessControlMode, "off");
    EXPECT_EQ(a->protocol, "FC");
    // Both states hold "ready" somewhere in their text.
    EXPECT_EQ(a->hostDirectorCount, 2);
    EXPECT_EQ(a->redundancyStatus, 2);

    // Controllers are stamped with the array id the array filler left.
    ASSERT_EQ(doc.Query(RAWDATA_DAC), 2);
    DacRawData* d = doc.At<DacRawData>(2);
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(d->name, "01");
    EXPECT_EQ(d->number, "01");
    EXPECT_EQ(d->state, "ready (maintenance)");
    EXPECT_EQ(d->arrayId, "2000D1E7");
}

TEST(ArrayFiller, ControllerRedundancyFromHostDirectorStates) {
    struct Case {
        std::vector<std::string> states;
        int count;
        int redundancy;
        int dacResult;
    };
    const std::vector<Case> cases = {
        {{}, 1, 0, -1},                   // no controller chapter
        {{"ready"}, 1, 4, 0},             // one controller: redundancy lost, no records
        {{"ready", "fault"}, 2, 3, 2},    // degraded
        {{"ready", "ready", "ready"}, 3, 2, 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.states.size());
        Loaded doc(ViewDocument("2000AA", c.states));
        ASSERT_EQ(doc.Query(RAWDATA_ARRAY), 1);
        ArrayRawData* a = doc.At<ArrayRawData>(0);
        EXPECT_EQ(a->hostDirectorCount, c.count);
        EXPECT_EQ(a->redundancyStatus, c.redundancy);
        EXPECT_EQ(doc.Query(RAWDATA_DAC), c.dacResult);
        EXPECT_EQ(doc.out.size(), 1u + (c.dacResult > 0 ? c.dacResult : 0));
    }
}

TEST(ArrayFiller, IscsiArrayAlwaysHasAccessControl) {
    std::string doc = Document(
        Chapter("Disk Array", Object("Disk Array", ArraySection("2000BB") +
                                                       Section("Access Control Information",
                                                               {{"Access Control Mode", "off"}}))) +
        Chapter("Controller", HdObject("00", "ready", "iSCSI") + HdObject("01", "ready", "iSCSI")));
    Loaded loaded(doc);
    ASSERT_EQ(loaded.Query(RAWDATA_ARRAY), 1);
    EXPECT_EQ(loaded.At<ArrayRawData>(0)->accessControlMode, "on");
    EXPECT_EQ(loaded.At<ArrayRawData>(0)->protocol, "iSCSI");
}

TEST(ArrayFiller, ObjectWithoutKnownSectionsGivesNoRecord) {
    Loaded doc(Document(Chapter("Disk Array", Object("Disk Array", Section("SNMP Common Information",
                                                                            {{"Unit Name", "u"}})))));
    EXPECT_EQ(doc.Query(RAWDATA_ARRAY), 0);
    EXPECT_TRUE(doc.out.empty());

    // A detail section without the World Wide Name leaves the id empty.
    Loaded nameless(Document(Chapter("Disk Array", Object("Disk Array", Section("Disk Array Detail Information",
                                                                                 {{"Disk Array Name", "n"}})))));
    ASSERT_EQ(nameless.Query(RAWDATA_ARRAY), 1);
    EXPECT_EQ(nameless.out[0]->name, "");
    EXPECT_EQ(LibXML2Filler::mArrayId, "");
}

TEST(ControllerFiller, ObjectWithoutDirectorSectionIsSkipped) {
    std::string doc = Document(Chapter("Disk Array", Object("Disk Array", ArraySection("2000CC"))) +
                               Chapter("Controller", HdObject("00", "ready") +
                                                         Object("HD", Section("Other", {{"Number(h)", "09"}})) +
                                                         HdObject("02", "offline")));
    Loaded loaded(doc);
    loaded.Query(RAWDATA_ARRAY);
    EXPECT_EQ(loaded.Query(RAWDATA_DAC), 2);
    ASSERT_EQ(loaded.out.size(), 3u);
    EXPECT_EQ(loaded.out[2]->name, "02");
    EXPECT_EQ(loaded.out[2]->GetRefCount(), 1u);
}

TEST(EnclosureFiller, CollectsComponentsFromEveryEnclosureObject) {
    Units common = {{"Type", "FAN"}, {"Abbreviated Name", "FAN0"}, {"DE Number(h)", "00"}, {"Number(h)", "00"},
                    {"Node No. (h)", "01"}, {"State", "ready"}, {"Code(h)", "0A"}};
    Units board = common;
    board[0].second = "BB";
    board.push_back({"Maximum number of PDs", "24"});
    board.push_back({"Vertical Number of PDs", "1"});
    board.push_back({"Horizontal Number of PDs", "24"});
    board.push_back({"Insert Direction of PDs", "vertical"});
    board.push_back({"DE Type", "DE-24"});
    std::string enclosure =
        Object("DE_FAN", Section("FAN Information", common) + Section("FAN Information", common)) +
        Object("DE_BB", Section("Back Board Information", board)) +
        // A section stands for its kind in whichever object it is found.
        Object("DE_PS", Section("Power Supply Information", common) + Section("Temperature Information", common)) +
        Object("DE_ADP(S/S)", Section("Adapter Card Information", common)) +
        Object("UNKNOWN", Section("FAN Information", common));
    Loaded doc(Document(Chapter("Disk Array", Object("Disk Array", ArraySection("2000DE"))) +
                        Chapter("Enclosure", enclosure)));
    doc.Query(RAWDATA_ARRAY);
    ASSERT_EQ(doc.Query(RAWDATA_DE), 1);
    DeRawData* de = doc.At<DeRawData>(1);
    ASSERT_NE(de, nullptr);
    EXPECT_EQ(de->name, "DE0");
    EXPECT_EQ(de->arrayId, "2000DE");
    EXPECT_EQ(de->fans.size(), 2u);
    EXPECT_EQ(de->powerSupplies.size(), 1u);
    EXPECT_EQ(de->temperatures.size(), 1u);
    EXPECT_EQ(de->adapterCards.size(), 1u);
    ASSERT_EQ(de->backBoards.size(), 1u);
    EXPECT_EQ(de->backBoards[0].type, "BB");
    EXPECT_EQ(de->backBoards[0].nodeNo, "01");
    EXPECT_EQ(de->backBoards[0].code, "0A");
    EXPECT_EQ(de->backBoards[0].insertDirectionofPDs, "vertical");
    EXPECT_EQ(de->backBoards[0].DEType, "DE-24");

    Loaded none(ViewDocument("2000DE", {"ready"}));
    EXPECT_EQ(none.Query(RAWDATA_DE), 0);
    EXPECT_TRUE(none.out.empty());
}

TEST(RecordComparison, ArrayChangeRules) {
    ArrayRawData stored, fresh;
    stored.name = fresh.name = "W";
    stored.adminPorts.resize(2);
    fresh.adminPorts.resize(2);
    fresh.monitoring = "stop";
    fresh.floatingIPV4 = "1.2.3.4";
    fresh.protocol = "SAS";
    fresh.adminPorts[0].IPV4 = "10.9.9.9";
    EXPECT_FALSE(stored.HasChanged(&fresh));
    // Copy still brings the ignored fields over.
    stored.Copy(&fresh);
    EXPECT_EQ(stored.monitoring, "stop");
    EXPECT_EQ(stored.adminPorts[0].IPV4, "10.9.9.9");

    for (int field = 0; field < 4; ++field) {
        ArrayRawData changed;
        changed.Copy(&stored);
        switch (field) {
            case 0: changed.resourceState = "fault"; break;
            case 1: changed.adminPorts.pop_back(); break;
            case 2: changed.redundancyStatus = 3; break;
            case 3: changed.accessControlMode = "on"; break;
        }
        EXPECT_TRUE(stored.HasChanged(&changed)) << field;
    }
    DacRawData dac;
    dac.name = "W";
    EXPECT_FALSE(stored.IsEqual(&dac));
}

TEST(RecordComparison, ControllerIdentityIncludesItsNumber) {
    DacRawData a, b;
    a.name = b.name = "00";
    a.number = b.number = "00";
    a.state = "ready";
    b.state = "fault";
    EXPECT_TRUE(a.IsEqual(&b));
    EXPECT_TRUE(a.HasChanged(&b));
    b.number = "01";
    EXPECT_FALSE(a.IsEqual(&b));
    a.Copy(&b);
    EXPECT_EQ(a.number, "01");
    EXPECT_EQ(a.state, "fault");
    EXPECT_FALSE(a.HasChanged(&b));
}

TEST(RecordComparison, EnclosureComparesEveryComponentString) {
    DeRawData a, b;
    DE_BBI board;
    board.DEType = "DE-24";
    a.backBoards.push_back(board);
    b.backBoards.push_back(board);
    EXPECT_FALSE(a.HasChanged(&b));
    b.backBoards[0].DEType = "DE-12";
    EXPECT_TRUE(a.HasChanged(&b));
    b.backBoards[0] = board;
    b.fans.push_back(DE_FI());
    EXPECT_TRUE(a.HasChanged(&b));
    a.Copy(&b);
    EXPECT_FALSE(a.HasChanged(&b));
}

TEST(RawDataBasics, FactoryTypeWordsAndReferenceCounts) {
    EXPECT_EQ(RawData::TypeToString(0), "array");
    EXPECT_EQ(RawData::TypeToString(7), "ldset");
    EXPECT_EQ(RawData::TypeToString(9), "replica");
    EXPECT_EQ(RawData::TypeToString(10), "");
    EXPECT_EQ(RawData::TypeToString(-1), "");
    EXPECT_EQ(RawDataFactory::CreateInstance(10), nullptr);

    RawData* record = RawDataFactory::CreateInstance(RAWDATA_DAC);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->type, RAWDATA_DAC);
    EXPECT_EQ(record->GetRefCount(), 1u);
    EXPECT_EQ(record->AddRef(), 2u);
    EXPECT_EQ(record->Release(), 1u);
    EXPECT_EQ(record->Release(), 0u);  // gone
}
