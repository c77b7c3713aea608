// The documents of Vexview, Vexrc_query and Vexsc_query, written as XML and
// read back with XPath by the name attributes, as the module reads them.

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "ReplicaQueryCommand.h"
#include "SampleRecords.h"
#include "SnapshotQueryCommand.h"
#include "ViewCommand.h"
#include "ViewError.h"
#include "XmlDocWriter.h"
#include "XmlProbe.h"

using namespace arraysim;

namespace {

const std::string kView = "/REQUEST/CMD_REQUEST/CHAPTER";

struct ExpectedSection {
    std::string path;  // the sections, each of which must hold every unit below
    std::vector<std::string> units;
};

// Every unit the reader looks for in each section, spelled as it reads them.
const std::vector<ExpectedSection> kViewSections = {
    {kView + "[@name='Disk Array']/OBJECT[@name='Disk Array']/SECTION[@name='Disk Array Detail Information']",
     {"Disk Array Name", "Resource State", "Monitoring", "Vendor ID", "Product ID", "Product FW Revision",
      "Serial Number", "SAA", "World Wide Name", "Number of DE", "User System Code",
      "Storage Control Software Revision", "Configuration Change"}},
    {kView + "[@name='Disk Array']/OBJECT[@name='Disk Array']/SECTION[@name='SNMP Common Information']",
     {"Unit Name", "Unit Contact", "Unit Location"}},
    {kView + "[@name='Disk Array']/OBJECT[@name='Disk Array']/SECTION[@name='Floating IP Address Information']",
     {"IP Address(IPv4)", "IP Address(IPv6)"}},
    {kView + "[@name='Disk Array']/OBJECT[@name='Disk Array']/SECTION[@name='Admin Port Information']",
     {"IP Address(IPv4)", "IP Address(IPv6)"}},
    {kView + "[@name='Disk Array']/OBJECT[@name='Disk Array']/SECTION[@name='Access Control Information']",
     {"Access Control Mode"}},
    {kView + "[@name='Disk Array']/OBJECT[@name='Disk Array']/SECTION[@name='Disk Array Maint Information']",
     {"Max LDNum Of Target", "Max Num Of Target", "Max LDNum Of OwnerID"}},
    {kView + "[@name='Disk Array']/OBJECT[@name='Disk Array']/SECTION[@name='Base Product Maint List']",
     {"Version", "Revision", "PP Additional Data"}},
    {kView + "[@name='Controller']/OBJECT[@name='HD']/SECTION[@name='Host Director Information']",
     {"Number(h)", "State", "Protocol"}},
    {kView + "[@name='Controller']/OBJECT[@name='Host Port']/SECTION[@name='Host Director/Host Port Information']",
     {"Port No.(h)", "Port Name", "Port Type", "State", "HPE No.(h)", "Mode", "Protocol"}},
    {kView + "[@name='Controller']/OBJECT[@name='Host Port']/SECTION[@name='iSCSI Session List']",
     {"Session", "Initiator Name", "Initiator Alias", "Target Name", "Target Alias", "Target Portal Group Tag",
      "Authentication Method", "Header Digest", "Data Digest", "Max Connections", "Max Burst Length(Bytes)",
      "First Burst Length(Bytes)", "Target Max Recv Data Segment Length(Bytes)",
      "Initiator Max Recv Data Segment Length(Bytes) #0", "Initiator Max Recv Data Segment Length(Bytes) #1",
      "Default Time2Wait(s)", "Default Time2Retain(s)", "Max Outstanding R2T", "Error Recovery Level",
      "Session Status Flag"}},
    {kView + "[@name='Enclosure']/OBJECT/SECTION",
     {"Type", "Abbreviated Name", "DE Number(h)", "Number(h)", "Node No. (h)", "State", "Code(h)"}},
    {kView + "[@name='Enclosure']/OBJECT[@name='DE_BB']/SECTION[@name='Back Board Information']",
     {"Maximum number of PDs", "Vertical Number of PDs", "Horizontal Number of PDs", "Insert Direction of PDs",
      "DE Type"}},
    {kView + "[@name='Physical Disk']/OBJECT[@name='Physical Disk']/SECTION[@name='PD Detail Information']",
     {"PDN(h)", "Classification", "Rank Group Number(h)", "State", "PD Capacity", "Rotational Speed", "Node No.(h)",
      "Type", "Vendor ID", "Product ID", "Product Revision", "Serial Number", "Configuration Change",
      "Transfer Rate"}},
    {kView + "[@name='Pool']/OBJECT[@name='Pool']/SECTION[@name='Pool Detail Information']",
     {"Pool No.(h)", "Pool Name", "Pool Type", "RAID Type", "Number of RAID5s", "Node No.(h)", "PD Type",
      "Pool State", "Expansion State", "Expansion/Rearrangement State", "Rearrangement", "Progress Ratio",
      "Rebuild Time(hour)", "Expansion Time(hour)", "Rearranging Mode", "Pool Capacity", "Used Pool Capacity",
      "Free Pool Capacity", "Configuration Setting"}},
    {kView + "[@name='Pool']/OBJECT[@name='Pool']/SECTION[@name='Pool Maint Information']", {"NoBPD"}},
    {kView + "[@name='Pool']/OBJECT[@name='Pool']/SECTION[@name='RANK List']", {"Strip Size"}},
    {kView + "[@name='Pool']/OBJECT[@name='Pool']/SECTION[@name='Virtual Capacity Pool Information']",
     {"Actual Capacity", "Actual Used Capacity", "Threshold", "Actual Capacity Threshold(%)"}},
    {kView + "[@name='Logical Disk']/OBJECT[@name='Logical Disk']/SECTION[@name='LD Detail Information']",
     {"LDN(h)", "LD Name", "LD Capacity", "Pool No.(h)", "RaidType", "PD Type", "LD State", "Group", "Purpose",
      "RPL Attribute", "Snapshot Attribute"}},
    {kView +
         "[@name='Logical Disk']/OBJECT[@name='Logical Disk']/SECTION[@name='Virtual Capacity Logical Disk "
         "Information']",
     {"Threshold", "Actual Used Capacity"}},
    {kView + "[@name='Access Control']/OBJECT[@name='LD Set(FC)']/SECTION[@name='LD Set(FC) Information']",
     {"Platform", "LD Set Name", "Configuration Change", "Action mode"}},
    {kView + "[@name='Access Control']/OBJECT[@name='LD Set(SAS)']/SECTION[@name='LD Set(SAS) Information']",
     {"Platform", "LD Set Name", "Configuration Change", "Action mode"}},
    {kView + "[@name='Access Control']/OBJECT[@name='LD Set']/SECTION[@name='LD Set Information']",
     {"Platform", "LD Set Name", "Configuration Change", "Action mode"}},
    {kView + "[@name='Access Control']/OBJECT[@name='LD Set(iSCSI)']/SECTION[@name='LD Set(iSCSI) Information']",
     {"Platform", "LD Set Name", "Configuration Change", "Action mode", "Target Mode", "Target Name",
      "Initiator Count", "Authentication Method"}},
    {kView + "[@name='Access Control']/OBJECT/SECTION[@name='Path List']", {"Path"}},
    {kView + "[@name='Access Control']/OBJECT/SECTION[@name='Portal']", {"Portal"}},
    {kView + "[@name='Access Control']/OBJECT/SECTION[@name='Initiator List']", {"Initiator List"}},
    {kView + "[@name='Access Control']/OBJECT/SECTION[@name='LUN/LD List']", {"LUN(h)", "LDN(h)"}},
};

// Each section the path selects exists and holds every expected unit.
void ExpectUnits(const XmlProbe& doc, const ExpectedSection& expected) {
    const size_t sections = doc.Count(expected.path);
    ASSERT_GT(sections, 0u) << expected.path;
    for (const std::string& unit : expected.units)
        EXPECT_EQ(doc.Count(expected.path + "[UNIT[@name='" + unit + "']]"), sections)
            << expected.path << " lacks \"" << unit << "\"";
}

std::string Xml(const ViewDocument& doc) { return XmlDocWriter::ToString(doc); }

class QueryDocument : public ::testing::Test {
protected:
    void SetUp() override {
        const char* tz = std::getenv("TZ");
        m_saved = tz ? tz : "";
        m_had = tz != nullptr;
        ::setenv("TZ", "UTC", 1);
        ::tzset();
    }
    void TearDown() override {
        if (m_had) ::setenv("TZ", m_saved.c_str(), 1);
        else ::unsetenv("TZ");
        ::tzset();
    }

private:
    std::string m_saved;
    bool m_had = false;
};

}  // namespace

TEST(VexviewDocument, AllHoldsEveryChapterAndEveryUnitTheReaderLooksFor) {
    const XmlProbe doc(Xml(ViewCommand::Build(arraysim_test::SampleRecords(), ViewCommand::Scope::All)));
    ASSERT_TRUE(doc.Ok());
    EXPECT_EQ(doc.First("/REQUEST/CMD_REQUEST/RETURN_CODE"), "0");
    EXPECT_EQ(doc.All(kView + "/@name"),
              (std::vector<std::string>{"Disk Array", "Controller", "Enclosure", "Physical Disk", "Pool",
                                        "Logical Disk", "Access Control"}));
    for (const ExpectedSection& expected : kViewSections) ExpectUnits(doc, expected);
    EXPECT_EQ(doc.All(kView + "[@name='Enclosure']/OBJECT/@name"),
              (std::vector<std::string>{"DE_ADP(S/S)", "DE_BB", "DE_FAN", "DE_PS", "DE_TEMP_ALM"}));
    EXPECT_EQ(doc.All(kView + "[@name='Enclosure']/OBJECT/SECTION/@name"),
              (std::vector<std::string>{"Adapter Card Information", "Back Board Information", "FAN Information",
                                        "Power Supply Information", "Temperature Information"}));
}

TEST(VexviewDocument, PortsNameTheirRatesAndAddressesByProtocol) {
    const XmlProbe doc(Xml(ViewCommand::Build(arraysim_test::SampleRecords(), ViewCommand::Scope::All)));
    const std::string port = kView + "[@name='Controller']/OBJECT[@name='Host Port']";
    const std::string fc = port + "[1]/SECTION[@name='Host Director/Host Port Information']";
    const std::string sas = port + "[2]/SECTION[@name='Host Director/Host Port Information']";
    const std::string iscsi = port + "[3]/SECTION[@name='Host Director/Host Port Information']";

    EXPECT_EQ(doc.First(fc + "/UNIT[@name='Port No.(h)']"), "00-1a");
    EXPECT_EQ(doc.First(fc + "/UNIT[@name='HPE No.(h)']"), "1F");
    EXPECT_EQ(doc.All(fc + "/UNIT[@name='WWPN']"), std::vector<std::string>{"2100004CAB000001"});
    EXPECT_EQ(doc.First(fc + "/UNIT[@name='Data Rate']"), "16Gbps");
    for (const char* unit : {"WWNN", "Topology", "N_Port_ID/Switch", "Data Rate(Setting)", "Login Error Code",
                             "Physical Port Maint"})
        EXPECT_EQ(doc.Count(fc + "/UNIT[@name='" + std::string(unit) + "']"), 1u) << unit;

    // A SAS port numbers its four links; the plain names must not appear, or
    // the reader would count a fifth.
    EXPECT_EQ(doc.Count(sas + "/UNIT[@name='WWPN']"), 0u);
    EXPECT_EQ(doc.Count(sas + "/UNIT[@name='Data Rate']"), 0u);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(doc.Count(sas + "/UNIT[@name='WWPN #" + std::to_string(i) + "']"), 1u);
        EXPECT_EQ(doc.Count(sas + "/UNIT[@name='Data Rate #" + std::to_string(i) + "(Current)']"), 1u);
    }
    EXPECT_EQ(doc.First(sas + "/UNIT[@name='Data Rate #2(Current)']"), "6Gbps");
    EXPECT_EQ(doc.Count(sas + "/UNIT[@name='Saved Data Rate']"), 1u);

    for (const char* unit : {"IP Address", "Subnet Mask", "Default Gateway", "IP Address(IPv6)",
                             "Default Router IP Address", "MTU", "Link Speed and Duplex (Setting)",
                             "Link Speed and Duplex (Current)", "Link Status", "MAC Address"})
        EXPECT_EQ(doc.Count(iscsi + "/UNIT[@name='" + std::string(unit) + "']"), 1u) << unit;
    EXPECT_EQ(doc.Count(iscsi + "/UNIT[@name='WWPN']"), 0u);
    EXPECT_EQ(doc.First(iscsi + "/UNIT[@name='Number of iSCSI Session']"), "2");
    EXPECT_EQ(doc.All(port + "[3]/SECTION[@name='iSCSI Session List']/UNIT[@name='Initiator Name']"),
              (std::vector<std::string>{"iqn.host0", "iqn.host1"}));
    EXPECT_EQ(doc.Count(port + "[1]/SECTION[@name='iSCSI Session List']"), 0u);
}

TEST(VexviewDocument, NumbersAreWrittenAsTheReaderConvertsThem) {
    const XmlProbe doc(Xml(ViewCommand::Build(arraysim_test::SampleRecords(), ViewCommand::Scope::All)));
    const std::string hd = kView + "[@name='Controller']/OBJECT[@name='HD']/SECTION/UNIT";
    EXPECT_EQ(doc.All(hd + "[@name='Number(h)']"), (std::vector<std::string>{"00", "01"}));
    EXPECT_EQ(doc.All(hd + "[@name='State']"), (std::vector<std::string>{"ready", "fault"}));

    const std::string pd = kView + "[@name='Physical Disk']/OBJECT/SECTION/UNIT";
    EXPECT_EQ(doc.First(pd + "[@name='PDN(h)']"), "01-1a");
    EXPECT_EQ(doc.First(pd + "[@name='PD Capacity']"), "1200000000000");

    const std::string bb = kView + "[@name='Enclosure']/OBJECT[@name='DE_BB']/SECTION/UNIT";
    EXPECT_EQ(doc.First(bb + "[@name='Number(h)']"), "0B");
    EXPECT_EQ(doc.First(bb + "[@name='Code(h)']"), "0012");

    // Pool capacities are plain digits (a comma would end the number read);
    // "NoBPD" is hexadecimal and read by its low four bits; "Strip Size" is a code.
    const std::string pool = kView + "[@name='Pool']/OBJECT[@name='Pool'][1]/SECTION";
    EXPECT_EQ(doc.First(pool + "/UNIT[@name='Pool No.(h)']"), "001B");
    EXPECT_EQ(doc.First(pool + "/UNIT[@name='Pool Capacity']"), "4000000000000");
    EXPECT_EQ(doc.First(pool + "/UNIT[@name='Used Pool Capacity']"), "1000000000000");
    EXPECT_EQ(doc.First(pool + "/UNIT[@name='Free Pool Capacity']"), "3000000000000");
    EXPECT_EQ(std::strtoul(doc.First(pool + "/UNIT[@name='NoBPD']").c_str(), nullptr, 16) & 0xF, 6u);
    EXPECT_EQ(doc.First(pool + "/UNIT[@name='Strip Size']"), "2");
    EXPECT_EQ(doc.Count(pool + "[@name='Virtual Capacity Pool Information']"), 0u);
    const std::string vpool = kView + "[@name='Pool']/OBJECT[@name='Pool'][2]/SECTION";
    EXPECT_EQ(doc.First(vpool + "[@name='Virtual Capacity Pool Information']/UNIT[@name='Actual Used Capacity']"),
              "1234567");

    // An LD on a virtual pool reports its used capacity with commas, which
    // the reader takes out; one on a dynamic pool has no such section.
    const std::string ld = kView + "[@name='Logical Disk']/OBJECT[@name='Logical Disk']";
    EXPECT_EQ(doc.First(ld + "[1]/SECTION/UNIT[@name='LDN(h)']"), "000A");
    EXPECT_EQ(doc.First(ld + "[1]/SECTION/UNIT[@name='Pool No.(h)']"), "001B");
    EXPECT_EQ(doc.Count(ld + "[1]/SECTION[@name='Virtual Capacity Logical Disk Information']"), 0u);
    EXPECT_EQ(doc.First(ld + "[3]/SECTION[@name='Virtual Capacity Logical Disk Information']/UNIT[@name='Actual "
                             "Used Capacity']"),
              "1,234,567");
}

TEST(VexviewDocument, ArrayAndLdSetValuesSurviveTheRoundTrip) {
    const XmlProbe doc(Xml(ViewCommand::Build(arraysim_test::SampleRecords(), ViewCommand::Scope::All)));
    const std::string array = kView + "[@name='Disk Array']/OBJECT[@name='Disk Array']/SECTION";
    EXPECT_EQ(doc.First(array + "[@name='Disk Array Detail Information']/UNIT[@name='World Wide Name']"),
              "2000004CAB000001");
    EXPECT_EQ(doc.First(array + "[@name='SNMP Common Information']/UNIT[@name='Unit Name']"), "unit & co");
    EXPECT_EQ(doc.First(array + "[@name='SNMP Common Information']/UNIT[@name='Unit Location']"), "room <1>");
    EXPECT_EQ(doc.All(array + "[@name='Admin Port Information']/UNIT[@name='IP Address(IPv6)']"),
              (std::vector<std::string>{"---", "fe80::3"}));
    EXPECT_EQ(doc.All(array + "[@name='Base Product Maint List']/UNIT[@name='Version']"),
              (std::vector<std::string>{"9.71", "9.72"}));

    const std::string ac = kView + "[@name='Access Control']";
    EXPECT_EQ(doc.All(ac + "/OBJECT/@name"),
              (std::vector<std::string>{"LD Set(FC)", "LD Set(iSCSI)", "LD Set(SAS)", "LD Set"}));
    const std::string fc = ac + "/OBJECT[@name='LD Set(FC)']";
    EXPECT_EQ(doc.All(fc + "/SECTION[@name='Path List']/UNIT[@name='Path']"),
              (std::vector<std::string>{"2100-0000-0000-0001", "2100-0000-0000-0002"}));
    EXPECT_EQ(doc.Count(fc + "/SECTION[@name='LUN/LD List']"), 2u);
    EXPECT_EQ(doc.All(fc + "/SECTION[@name='LUN/LD List']/UNIT[@name='LDN(h)']"),
              (std::vector<std::string>{"000A", "000B"}));
    const std::string iscsi = ac + "/OBJECT[@name='LD Set(iSCSI)']";
    EXPECT_EQ(doc.First(iscsi + "/SECTION/UNIT[@name='Initiator Count']"), "2");
    EXPECT_EQ(doc.All(iscsi + "/SECTION[@name='Initiator List']/UNIT[@name='Initiator List']"),
              (std::vector<std::string>{"iqn.host0", "iqn.host1"}));
    EXPECT_EQ(doc.First(iscsi + "/SECTION[@name='LUN/LD List']/UNIT[@name='LUN(h)']"), "0010");
    EXPECT_EQ(doc.Count(iscsi + "/SECTION[@name='Path List']"), 0u);
    EXPECT_EQ(doc.Count(ac + "/OBJECT[@name='LD Set']/SECTION[@name='Path List']"), 0u);
}

TEST(VexviewDocument, PhysicalAndCombinedScopes) {
    const arraysim::ViewRecords records = arraysim_test::SampleRecords();
    const XmlProbe dpi(Xml(ViewCommand::Build(records, ViewCommand::Scope::PhysicalDisks)));
    EXPECT_EQ(dpi.All(kView + "/@name"), std::vector<std::string>{"Physical Disk"});

    // Pools each followed by their own LDs, in one chapter the reader falls back to.
    const XmlProbe dli(Xml(ViewCommand::Build(records, ViewCommand::Scope::PoolLogicalDisks)));
    EXPECT_EQ(dli.All(kView + "/@name"), std::vector<std::string>{"Pool-Logical Disk"});
    EXPECT_EQ(dli.All(kView + "/OBJECT/@name"),
              (std::vector<std::string>{"Pool", "Logical Disk", "Logical Disk", "Logical Disk", "Logical Disk",
                                        "Logical Disk", "Pool", "Logical Disk", "Logical Disk"}));
    EXPECT_EQ(dli.All(kView + "/OBJECT[@name='Logical Disk']/SECTION/UNIT[@name='LD Name']"),
              (std::vector<std::string>{"MV1", "RV1", "BV1", "SV1", "SV2", "RV2", "LONE"}));
}

TEST(VexviewArguments, OneOfTheThreeOptions) {
    EXPECT_EQ(ViewCommand::ParseArguments({"-all"}), ViewCommand::Scope::All);
    EXPECT_EQ(ViewCommand::ParseArguments({"-dpi"}), ViewCommand::Scope::PhysicalDisks);
    EXPECT_EQ(ViewCommand::ParseArguments({"-dli"}), ViewCommand::Scope::PoolLogicalDisks);
    const std::vector<std::vector<std::string>> refused = {{}, {"-all", "-dpi"}, {"-ALL"}, {""}, {"all"}};
    for (const auto& args : refused) {
        try {
            ViewCommand::ParseArguments(args);
            ADD_FAILURE() << "accepted " << ::testing::PrintToString(args);
        } catch (const ViewError& e) {
            EXPECT_EQ(e.ReturnCode(), ViewError::kBadArguments);
        }
    }
}

TEST_F(QueryDocument, PairCopyStateShowsTheTimesOfThePresentState) {
    arraysim::ViewRecords records = arraysim_test::SampleRecords();
    const std::string rv = "/CMD_REQUEST/CHAPTER[@name='Pair Copy State']/OBJECT[@name='Pair Copy State']";

    const XmlProbe both(Xml(ReplicaQueryCommand::BuildForVolumes(records, {"LONE", "MV1"})));
    ASSERT_EQ(both.RootName(), "CMD_REQUEST");
    EXPECT_EQ(both.First("/CMD_REQUEST/RETURN_CODE"), "0");
    EXPECT_EQ(both.All(rv + "/SECTION[@name='MV Detail Information']/UNIT[@name='LD Name']"),
              (std::vector<std::string>{"LONE", "MV1"}));
    EXPECT_EQ(both.Count(rv + "[1]/SECTION[@name='RV Detail Information']"), 0u);
    EXPECT_EQ(both.All(rv + "[2]/SECTION[@name='RV Detail Information']/UNIT[@name='LD Name']"),
              (std::vector<std::string>{"RV1", "RV2"}));
    for (const char* unit : {"Sync State", "Copy Control State", "Previous Active", "Copy Diff", "Separate Diff",
                             "RV Access", "Connection"})
        EXPECT_EQ(both.Count(rv + "[2]/SECTION[@name='RV Detail Information']/UNIT[@name='" + std::string(unit) +
                             "']"),
                  2u)
            << unit;

    struct Case {
        std::string syncState;
        bool forced;
        std::vector<std::string> timeUnits;
    };
    const std::vector<Case> cases = {
        {"rpl/sync", false, {"Replicate Start Time", "Replicate End Time"}},
        {"rst/exec (protect)", false, {"Restore Start Time", "Restore End Time"}},
        {"separated", false, {"Separate Start Time", "Separate End Time"}},
        {"separated", true, {"Separate Start Time", "Forced Separate Time"}},
        {"fault", false, {"Separate Start Time", "Fault Time"}},
    };
    for (const Case& c : cases) {
        records.pairs[0].syncState = c.syncState;
        records.pairs[0].forcedSeparate = c.forced;
        const XmlProbe doc(Xml(ReplicaQueryCommand::BuildForReplica(records, "RV1")));
        const std::string section = rv + "/SECTION[@name='RV Detail Information']";
        EXPECT_EQ(doc.Count(rv), 1u);
        EXPECT_EQ(doc.First(rv + "/SECTION[@name='MV Detail Information']/UNIT[@name='LD Name']"), "MV1");
        EXPECT_EQ(doc.First(section + "/UNIT[@name='Sync State']"), c.syncState);
        EXPECT_EQ(doc.First(section + "/UNIT[@name='" + c.timeUnits[0] + "']"), "2026/01/01 00:00:00") << c.syncState;
        // The sample pair has no end time: no end unit at all rather than an empty one.
        EXPECT_EQ(doc.Count(section + "/UNIT[contains(@name,'Time')]"), 1u) << c.syncState;
    }
    records.pairs[1].syncState = "separated";
    const XmlProbe separated(Xml(ReplicaQueryCommand::BuildForReplica(records, "RV2")));
    EXPECT_EQ(separated.First(rv + "/SECTION/UNIT[@name='Separate End Time']"), "2026/01/01 01:00:00");
}

TEST(PairCopyState, UnknownVolumesAndArgumentsAreRefused) {
    const arraysim::ViewRecords records = arraysim_test::SampleRecords();
    auto codeOf = [](auto&& call) {
        try {
            call();
        } catch (const ViewError& e) {
            return e.ReturnCode();
        }
        return 0;
    };
    EXPECT_EQ(codeOf([&] { ReplicaQueryCommand::BuildForVolumes(records, {"MV1", "NOSUCH"}); }),
              ViewError::kNotFound);
    EXPECT_EQ(codeOf([&] { ReplicaQueryCommand::BuildForReplica(records, "NOSUCH"); }), ViewError::kNotFound);
    EXPECT_EQ(codeOf([&] { ReplicaQueryCommand::BuildForReplica(records, "MV1"); }), ViewError::kNotFound);

    EXPECT_EQ(ReplicaQueryCommand::ParseArguments({"-file", "/opt/x.txt"}).file, "/opt/x.txt");
    EXPECT_EQ(ReplicaQueryCommand::ParseArguments({"-rv", "RV1", "-rvflg", "ld"}).rv, "RV1");
    const std::vector<std::vector<std::string>> refused = {
        {}, {"-file"}, {"-file", ""}, {"-file", "-rv"}, {"-rv", "RV1"}, {"-rv", "RV1", "-rvflg", "sv"},
        {"-rv", "RV1", "-rvflg", "ld", "-x"}, {"-rv", "", "-rvflg", "ld"}, {"-mv", "MV1", "-mvflg", "ld"}};
    for (const auto& args : refused)
        EXPECT_EQ(codeOf([&] { ReplicaQueryCommand::ParseArguments(args); }), ViewError::kBadArguments)
            << ::testing::PrintToString(args);
}

TEST_F(QueryDocument, SnapshotQueryListsBasesAndWithDetailTheirGenerations) {
    const arraysim::ViewRecords records = arraysim_test::SampleRecords();
    const std::string chapter = "/CMD_REQUEST/CHAPTER[@name='Vexsc_query_Info']";

    const XmlProbe plain(Xml(SnapshotQueryCommand::Build(records, {"BV1", "BV1"}, false)));
    ASSERT_EQ(plain.RootName(), "CMD_REQUEST");
    EXPECT_EQ(plain.Count(chapter), 2u);
    EXPECT_EQ(plain.Count(chapter + "/OBJECT[@name='Pair Information']"), 0u);

    const XmlProbe doc(Xml(SnapshotQueryCommand::Build(records, {"BV1"}, true)));
    const std::string bv = chapter + "/OBJECT[@name='BV Information']/SECTION[@name='BV']";
    ExpectUnits(doc, {bv, {"LD Number", "LD Name", "Type", "Special File", "State"}});
    EXPECT_EQ(doc.First(bv + "/UNIT[@name='LD Number']"), "000D");
    EXPECT_EQ(doc.First(bv + "/UNIT[@name='Type']"), "BV");
    const std::string sv = chapter + "/OBJECT[@name='Pair Information']/SECTION[@name='SV']";
    ExpectUnits(doc, {sv, {"LD Number", "LD Name", "Type", "Generation", "Generation(Attribute)", "Snap State",
                           "Creation Time", "Processing Data Size", "Snapshot Data Size", "LV Link Status"}});
    EXPECT_EQ(doc.All(sv + "/UNIT[@name='LD Name']"), (std::vector<std::string>{"SV1", "SV2"}));
    EXPECT_EQ(doc.All(sv + "/UNIT[@name='Generation']"), (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(doc.All(sv + "/UNIT[@name='Creation Time']"),
              (std::vector<std::string>{"2026/01/02 00:00:00", "2026/01/02 00:00:00"}));
    // The start time is named by what the generation is doing.
    EXPECT_EQ(doc.First(sv + "[1]/UNIT[@name='Create Start Time']"), "2026/01/02 00:00:00");
    EXPECT_EQ(doc.First(sv + "[2]/UNIT[@name='Restore Start Time']"), "2026/01/02 00:00:00");
    EXPECT_EQ(doc.Count(sv + "[2]/UNIT[@name='Create Start Time']"), 0u);
    // Sizes with a unit the reader multiplies out again.
    EXPECT_EQ(doc.All(sv + "/UNIT[@name='Snapshot Data Size']"), (std::vector<std::string>{"12.5GB", "2KB"}));
    EXPECT_EQ(doc.All(sv + "/UNIT[@name='Processing Data Size']"), (std::vector<std::string>{"0", "4096"}));

    try {
        SnapshotQueryCommand::Build(records, {"BV1", "MV1"}, true);
        ADD_FAILURE() << "a volume that is no base was accepted";
    } catch (const ViewError& e) {
        EXPECT_EQ(e.ReturnCode(), ViewError::kNotFound);
        EXPECT_NE(std::string(e.what()).find("MV1"), std::string::npos);
    }
}

TEST(SnapshotQueryArguments, FileRequiredDetailOptional) {
    auto request = SnapshotQueryCommand::ParseArguments({"-file", "/opt/f", "-detail"});
    EXPECT_EQ(request.file, "/opt/f");
    EXPECT_TRUE(request.detail);
    request = SnapshotQueryCommand::ParseArguments({"-detail", "-file", "f"});
    EXPECT_TRUE(request.detail);
    EXPECT_FALSE(SnapshotQueryCommand::ParseArguments({"-file", "f"}).detail);
    const std::vector<std::vector<std::string>> refused = {
        {}, {"-detail"}, {"-file"}, {"-file", "-detail"}, {"-file", "f", "-detail", "-detail"},
        {"-file", "f", "-file", "g"}, {"-file", "f", "-x"}};
    for (const auto& args : refused) {
        try {
            SnapshotQueryCommand::ParseArguments(args);
            ADD_FAILURE() << "accepted " << ::testing::PrintToString(args);
        } catch (const ViewError& e) {
            EXPECT_EQ(e.ReturnCode(), ViewError::kBadArguments);
        }
    }
}
