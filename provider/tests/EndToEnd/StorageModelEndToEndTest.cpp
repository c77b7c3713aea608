// Disks, pools and volumes of the simulator's medium array as a client sees
// them, and what console changes at the array make the module tell a
// subscribed listener.

#include "EndToEndSupport.h"

#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace e2e;

class StorageModelEndToEndTest : public IndicationEndToEndTest {
protected:
    std::string ArrayTemplate() const override { return "medium"; }

    // Instance paths wbemcli printed, one per line, without the address.
    std::vector<std::string> Names(const std::string& className) const {
        std::vector<std::string> names;
        std::istringstream lines(m_box.Wbem("ein", "root/orv:" + className).output);
        std::string line;
        while (std::getline(lines, line)) {
            const std::string::size_type at = line.find("/root/orv:");
            if (at != std::string::npos) names.push_back(line.substr(at + 1));
        }
        return names;
    }

    // Associated instance names of one object through one association.
    std::string AssociatorNames(const std::string& path, const std::string& association) const {
        return Shell("wbemcli ain -ac " + association + " '" + m_box.Url() + "/" + path + "'").output;
    }

    // The lines the listener printed for alerts with one message id.
    std::vector<std::string> Alerts(const std::string& messageId) const {
        std::vector<std::string> found;
        std::istringstream lines(ReadFile(m_out));
        std::string line;
        while (std::getline(lines, line))
            if (line.rfind("CIM_AlertIndication ", 0) == 0 && line.find("MessageID=" + messageId) != std::string::npos)
                found.push_back(line);
        return found;
    }
    std::vector<std::string> Lines(const std::string& prefix, const std::string& containing) const {
        std::vector<std::string> found;
        std::istringstream lines(ReadFile(m_out));
        std::string line;
        while (std::getline(lines, line))
            if (line.rfind(prefix, 0) == 0 && line.find(containing) != std::string::npos) found.push_back(line);
        return found;
    }

    void Console(const std::string& arguments) {
        RunResult done = m_box.Tool("arraysim " + arguments);
        ASSERT_EQ(0, done.status) << arguments << ": " << done.output;
    }
};

TEST_F(StorageModelEndToEndTest, DisksPoolsAndVolumesComeWithTheirAssociations) {
    // 96 disks, each with its extent; eight pools and the primordial one; 128 volumes.
    const std::vector<std::string> disks = Names("ORV_Storage_DiskDrive");
    EXPECT_EQ(96u, disks.size());
    ASSERT_FALSE(disks.empty());
    EXPECT_NE(std::string::npos, AssociatorNames(disks.front(), "ORV_Storage_MediaPresent").find("ORV_Storage_StorageExtent"));
    EXPECT_EQ(9, m_box.InstanceCount("ORV_Storage_StoragePool"));
    const std::string pools = m_box.Instances("ORV_Storage_StoragePool");
    EXPECT_EQ(1, CountOf(pools, "Primordial=TRUE")) << pools;

    const std::vector<std::string> volumes = Names("ORV_Storage_StorageVolume");
    ASSERT_EQ(128u, volumes.size());
    EXPECT_NE(std::string::npos,
              AssociatorNames(volumes.front(), "ORV_Storage_AllocatedFromStoragePool").find("ORV_Storage_StoragePool"));
    EXPECT_NE(std::string::npos, AssociatorNames(volumes.front(), "ORV_Storage_BasedOn").find("ORV_Storage_CompositeExtent"));

    // The volume's setting is made on the first request and then read back.
    const int settingsBefore = m_box.InstanceCount("ORV_Storage_StorageSetting");
    const std::string first = AssociatorNames(volumes.front(), "ORV_Storage_ElementSettingData");
    EXPECT_NE(std::string::npos, first.find("ORV_Storage_StorageSetting")) << first;
    EXPECT_EQ(settingsBefore + 1, m_box.InstanceCount("ORV_Storage_StorageSetting"));
    EXPECT_EQ(first, AssociatorNames(volumes.front(), "ORV_Storage_ElementSettingData"));
    EXPECT_EQ(settingsBefore + 1, m_box.InstanceCount("ORV_Storage_StorageSetting"));

    // The size queries answer through the method interface.
    std::string concrete;
    for (const std::string& pool : Names("ORV_Storage_StoragePool"))
        if (pool.find("Primordial") == std::string::npos && concrete.empty()) concrete = pool;
    ASSERT_FALSE(concrete.empty());
    const RunResult range =
        Shell("wbemcli cm '" + m_box.Url() + "/" + concrete + "' 'GetSupportedSizeRange.ElementType=3'");
    EXPECT_NE(std::string::npos, range.output.find("GetSupportedSizeRange: 0")) << range.output;
    EXPECT_NE(std::string::npos, range.output.find("MaximumVolumeSize (uint64): ")) << range.output;
    const RunResult sizes = Shell("wbemcli cm '" + m_box.Url() + "/" + concrete + "' 'GetSupportedSizes.ElementType=2'");
    EXPECT_NE(std::string::npos, sizes.output.find("GetSupportedSizes: 0")) << sizes.output;
    const RunResult wrong =
        Shell("wbemcli cm '" + m_box.Url() + "/" + concrete + "' 'GetSupportedSizeRange.ElementType=77'");
    EXPECT_EQ(std::string::npos, wrong.output.find("GetSupportedSizeRange: 0")) << wrong.output;
}

TEST_F(StorageModelEndToEndTest, ConsoleChangesGiveModificationsAndAlerts) {
    // A disk fails: the disk and its extent are modified.
    Console("set disk 00-00 --state fault");
    ASSERT_TRUE(WaitFor(60, [&] { return !Lines("CIM_InstModification", "ORV_Storage_DiskDrive").empty(); }))
        << ReadFile(m_out);
    // Both the disk and its extent tell the change, the new health first.
    EXPECT_TRUE(WaitFor(20, [&] {
        return Lines("CIM_AlertIndication", "The HealthState of ").size() >= 2;
    })) << ReadFile(m_out);
    for (const std::string& alert : Lines("CIM_AlertIndication", "The HealthState of ")) {
        EXPECT_NE(std::string::npos, alert.find("has changed from 20 to 5\"")) << alert;
        EXPECT_NE(std::string::npos, alert.find("PerceivedSeverity=2")) << alert;
    }

    // A virtual pool used past its threshold, then a pool over capacity.
    Console("set pool 3 --used 95%");
    EXPECT_TRUE(WaitFor(60, [&] { return !Alerts("DRM28").empty(); })) << ReadFile(m_out);
    for (const std::string& alert : Alerts("DRM28")) {
        EXPECT_NE(std::string::npos, alert.find("PerceivedSeverity=4")) << alert;
        EXPECT_NE(std::string::npos, alert.find("Threshold of the capacity is exceeded.")) << alert;
    }
    // A volume grows at the console: the client sees its new size.
    const std::string volumes = m_box.Instances("ORV_Storage_StorageVolume");
    std::smatch blocks;
    ASSERT_TRUE(std::regex_search(volumes, blocks, std::regex("DeviceID=\"0000h\"[^\n]*NumberOfBlocks=([0-9]+)")))
        << volumes;
    const unsigned long long grown = std::stoull(blocks[1].str()) * 512 + (1ULL << 30);
    // A size change alone is no state change, so no modification indication goes out for it.
    Console("set ld 0000 --capacity " + std::to_string(grown));
    EXPECT_TRUE(WaitFor(60, [&] {
        return m_box.Instances("ORV_Storage_StorageVolume").find("NumberOfBlocks=" + std::to_string(grown / 512)) !=
               std::string::npos;
    })) << m_box.Instances("ORV_Storage_StorageVolume");
    EXPECT_NE(std::string::npos,
              m_box.Instances("ORV_Storage_AllocatedFromStoragePool").find("SpaceConsumed=" + std::to_string(grown)))
        << m_box.Instances("ORV_Storage_AllocatedFromStoragePool");
    EXPECT_TRUE(Lines("CIM_InstModification", "ORV_Storage_StorageVolume").empty()) << ReadFile(m_out);

    Console("set pool 0 --state 'fault(over capacity)'");
    EXPECT_TRUE(WaitFor(60, [&] { return !Alerts("DRM29").empty(); })) << ReadFile(m_out);
    for (const std::string& alert : Alerts("DRM29")) {
        EXPECT_NE(std::string::npos, alert.find("PerceivedSeverity=5")) << alert;
        EXPECT_NE(std::string::npos, alert.find("Capacity is over.")) << alert;
    }
}

}  // namespace
