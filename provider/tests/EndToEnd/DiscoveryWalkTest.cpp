// A client's discovery of the array from nothing but the server's address:
// the registered profiles in the interop namespace lead to the array in the
// storage namespace, to the sub-profiles, to the provider's software and to
// the object manager with the address the client is talking to. Only
// wbemcli and the paths the server hands out are used.

#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "EndToEndSupport.h"

namespace {

using e2e::Lines;
using e2e::PathOf;
using e2e::Property;
using e2e::RunResult;

class DiscoveryWalkTest : public e2e::EndToEndTest {
protected:
    // wbemcli with an object path the server gave: it goes into the shell
    // line between single quotes, so it must hold none.
    RunResult Follow(const std::string& op, const std::string& path) {
        EXPECT_EQ(std::string::npos, path.find('\'')) << path;
        if (path.find('\'') != std::string::npos) return RunResult();
        return m_box.Wbem(op, path);
    }
    // The line of the registered profile with this name and version.
    std::string ProfileLine(const std::string& name, const std::string& version) {
        RunResult profiles = m_box.Wbem("ei", "root/interop:CIM_RegisteredProfile");
        EXPECT_EQ(0, profiles.status) << profiles.output;
        for (const std::string& line : Lines(profiles.output))
            if (Property(line, "RegisteredName") == name && Property(line, "RegisteredVersion") == version)
                return line;
        ADD_FAILURE() << "no profile " << name << " " << version << " in:\n" << profiles.output;
        return std::string();
    }
};

TEST_F(DiscoveryWalkTest, TheArrayProfileLeadsToTheArrayItsSubProfilesAndTheProvidersSoftware) {
    const std::string arrayProfile = PathOf(ProfileLine("Array", "1.6.0"));
    ASSERT_FALSE(arrayProfile.empty());
    EXPECT_EQ(0u, arrayProfile.find("root/interop:")) << arrayProfile;

    // The array itself, in the storage namespace.
    RunResult conforming = Follow("ain -ac CIM_ElementConformsToProfile", arrayProfile);
    ASSERT_EQ(0, conforming.status) << conforming.output;
    const std::vector<std::string> elements = Lines(conforming.output);
    ASSERT_EQ(1u, elements.size()) << conforming.output;
    const std::string arrayPath = PathOf(elements[0]);
    ASSERT_EQ(0u, arrayPath.find("root/orv:ORV_Storage_ComputerSystem.")) << conforming.output;
    RunResult array = Follow("gi", arrayPath);
    ASSERT_EQ(0, array.status) << array.output;
    EXPECT_EQ("WWN", Property(array.output, "NameFormat")) << "the array, not one of its controllers:\n"
                                                             << array.output;
    const std::string arrays = m_box.Instances("ORV_Storage_ComputerSystem");
    EXPECT_NE(std::string::npos, arrays.find(Property(array.output, "Name"))) << arrays;

    // Its sub-profiles.
    RunResult subs = Follow("ai -ac CIM_SubProfileRequiresProfile", arrayProfile);
    ASSERT_EQ(0, subs.status) << subs.output;
    std::set<std::string> names;
    for (const std::string& line : Lines(subs.output)) names.insert(Property(line, "RegisteredName"));
    const std::set<std::string> expected = {"Disk Drive Lite", "Extent Composition", "Location", "Software",
                                            "Copy Services", "Masking and Mapping", "Block Services",
                                            "Physical Package", "Health", "Multiple Computer System",
                                            "Job Control", "Thin Provisioning", "FC Target Ports",
                                            "iSCSI Target Ports", "Indication"};
    EXPECT_EQ(expected, names) << subs.output;

    // A sub-profile found this way leads on to the ones it requires.
    std::string blockServices;
    for (const std::string& line : Lines(subs.output))
        if (Property(line, "RegisteredName") == "Block Services") blockServices = PathOf(line);
    ASSERT_FALSE(blockServices.empty()) << subs.output;
    RunResult required = Follow("ai -ac CIM_SubProfileRequiresProfile -ar Antecedent", blockServices);
    ASSERT_EQ(0, required.status) << required.output;
    std::set<std::string> requiredNames;
    for (const std::string& line : Lines(required.output)) requiredNames.insert(Property(line, "RegisteredName"));
    EXPECT_EQ((std::set<std::string>{"Job Control", "Extent Composition"}), requiredNames) << required.output;

    // The provider's software identity.
    RunResult software = Follow("ai -ac CIM_ElementSoftwareIdentity", arrayProfile);
    ASSERT_EQ(0, software.status) << software.output;
    const std::vector<std::string> identities = Lines(software.output);
    ASSERT_EQ(1u, identities.size()) << software.output;
    EXPECT_EQ(0u, PathOf(identities[0]).find("root/interop:ORV_Storage_SoftwareIdentity.")) << software.output;
    EXPECT_EQ("1.5.0", Property(identities[0], "VersionString")) << software.output;
}

TEST_F(DiscoveryWalkTest, TheServerProfileLeadsToTheAddressTheClientUses) {
    const std::string serverProfile = PathOf(ProfileLine("Server", "1.6.0"));
    ASSERT_FALSE(serverProfile.empty());
    RunResult managers = Follow("ain -ac CIM_ElementConformsToProfile", serverProfile);
    ASSERT_EQ(0, managers.status) << managers.output;
    const std::vector<std::string> lines = Lines(managers.output);
    ASSERT_EQ(1u, lines.size()) << "one object manager:\n" << managers.output;
    const std::string manager = PathOf(lines[0]);
    ASSERT_EQ(0u, manager.find("root/interop:CIM_ObjectManager.")) << managers.output;

    RunResult host = Follow("ain -ac CIM_HostedService", manager);
    ASSERT_EQ(0, host.status) << host.output;
    EXPECT_EQ(1u, Lines(host.output).size()) << "the manager runs on one host:\n" << host.output;
    EXPECT_NE(std::string::npos, host.output.find("/root/interop:CIM_ComputerSystem.")) << host.output;

    RunResult mechanisms = Follow("ai -ac CIM_CommMechanismForManager", manager);
    ASSERT_EQ(0, mechanisms.status) << mechanisms.output;
    bool http = false;
    const std::string port = ":" + std::to_string(m_box.HttpPort());
    for (const std::string& line : Lines(mechanisms.output)) {
        const std::string address = Property(line, "Description");
        if (address.rfind("http://", 0) == 0 && address.size() > port.size() &&
            address.compare(address.size() - port.size(), port.size(), port) == 0)
            http = true;
    }
    EXPECT_TRUE(http) << "no access point at port " << m_box.HttpPort() << ":\n" << mechanisms.output;

    RunResult namespaces = Follow("ai -ac CIM_NamespaceInManager", manager);
    ASSERT_EQ(0, namespaces.status) << namespaces.output;
    std::set<std::string> names;
    for (const std::string& line : Lines(namespaces.output)) names.insert(Property(line, "Name"));
    EXPECT_EQ(1u, names.count("root/orv")) << namespaces.output;
    EXPECT_EQ(1u, names.count("root/interop")) << namespaces.output;
}

}  // namespace
