// The physical side of the array as a client sees it with wbemcli: the
// chassis on the array with its location, a package and a product for each
// disk, the firmware identities; how firmware and location changes at the
// console show after the next load; and the registered profiles when the
// copy service is switched off in the module's configuration.

#include <functional>
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

constexpr double kLoadWait = 60;  // the daemon reports, then the module loads

// The first disk: as the console names it, as the array's view lists it,
// and as the module's tags write it.
constexpr const char* kDiskAtConsole = "00h-0000h";
constexpr const char* kDiskInView = "00-00";
constexpr const char* kDiskInTags = "00h-00h";

class PhysicalViewEndToEndTest : public e2e::EndToEndTest {
protected:
    static std::string Cls(const std::string& shortName) { return "ORV_Storage_" + shortName; }

    // Instance lines of one class of the storage namespace.
    std::vector<std::string> All(const std::string& shortName) const {
        RunResult answer = m_box.Wbem("ei", "root/orv:" + Cls(shortName));
        EXPECT_EQ(0, answer.status) << answer.output;
        std::vector<std::string> lines;
        for (const std::string& line : Lines(answer.output))
            if (line.find("/root/orv:" + Cls(shortName) + ".") != std::string::npos) lines.push_back(line);
        return lines;
    }
    std::set<std::string> Paths(const std::vector<std::string>& lines) const {
        std::set<std::string> paths;
        for (const std::string& line : lines) paths.insert(PathOf(line));
        return paths;
    }

    // wbemcli with an object path the server gave: it goes into the shell
    // line between single quotes, so it must hold none.
    RunResult Follow(const std::string& op, const std::string& path) const {
        EXPECT_EQ(std::string::npos, path.find('\'')) << path;
        if (path.find('\'') != std::string::npos) return RunResult();
        return m_box.Wbem(op, path);
    }
    // The instances associated with path through one association class.
    std::vector<std::string> Associated(const std::string& path, const std::string& association,
                                        const std::string& role = std::string()) const {
        if (path.empty()) return {};  // an earlier step failed and said so
        RunResult answer = Follow("ai -ac " + Cls(association) + (role.empty() ? "" : " -ar " + role), path);
        EXPECT_EQ(0, answer.status) << association << " of " << path << ":\n" << answer.output;
        std::vector<std::string> lines;
        for (const std::string& line : Lines(answer.output))
            if (!PathOf(line).empty()) lines.push_back(line);
        return lines;
    }

    // The one instance associated with path, or "" when there is none or more than one.
    std::string One(const std::string& path, const std::string& association,
                    const std::string& role = std::string()) const {
        const std::vector<std::string> found = Associated(path, association, role);
        return found.size() == 1 ? found.front() : std::string();
    }
    static bool Eventually(const std::function<bool()>& done) { return e2e::WaitFor(kLoadWait, done); }

    void Console(const std::string& arguments) {
        RunResult done = m_box.Tool("arraysim " + arguments);
        ASSERT_EQ(0, done.status) << arguments << ": " << done.output;
    }
    // A figure or a text from the console's summary of the array.
    std::string Shown(const std::string& pattern) const {
        const std::string shown = m_box.Tool("arraysim show").output;
        std::smatch match;
        if (!std::regex_search(shown, match, std::regex(pattern))) return "<not shown>: " + shown;
        return match[1].str();
    }

    std::string Chassis() const {
        const std::vector<std::string> chassis = All("Chassis");
        EXPECT_EQ(1u, chassis.size());
        return chassis.empty() ? std::string() : chassis.front();
    }
    // The package of one disk, found by its tag.
    std::string PackageOf(const std::string& disk) const {
        for (const std::string& line : All("PhysicalPackage"))
            if (Property(line, "Tag").rfind(std::string("PD:") + disk + "(", 0) == 0) return line;
        return std::string();
    }
};

TEST_F(PhysicalViewEndToEndTest, ChassisPackagesProductsAndSoftwareHangOnTheArray) {
    // The chassis, on the array and at the unit's location.
    const std::string chassis = Chassis();
    ASSERT_FALSE(chassis.empty());
    const std::string chassisPath = PathOf(chassis);
    const std::string serial = Shown("serial ([0-9]+)");
    EXPECT_EQ(serial, Property(chassis, "Tag")) << chassis;
    EXPECT_EQ(serial, Property(chassis, "SerialNumber")) << chassis;
    EXPECT_EQ("0971", Property(chassis, "Version")) << chassis;
    EXPECT_EQ("ORV ORV-M3000(" + serial + ")", Property(chassis, "ElementName")) << chassis;

    const std::vector<std::string> systems = Associated(chassisPath, "ComputerSystemPackage");
    ASSERT_EQ(1u, systems.size()) << "the chassis belongs to the array alone";
    EXPECT_EQ(0u, PathOf(systems[0]).find("root/orv:" + Cls("ComputerSystem") + ".")) << systems[0];
    EXPECT_EQ("WWN", Property(systems[0], "NameFormat")) << "the array, not a controller: " << systems[0];
    const std::string arrayPath = PathOf(systems[0]);

    const std::vector<std::string> locations = Associated(chassisPath, "PhysicalElementLocation");
    ASSERT_EQ(1u, locations.size());
    EXPECT_EQ("Server room 1", Property(locations[0], "PhysicalPosition")) << locations[0];
    EXPECT_EQ("Server room 1", Property(locations[0], "Address")) << locations[0];
    EXPECT_EQ(Shown("location \"([^\"]*)\""), Property(locations[0], "PhysicalPosition"));
    EXPECT_EQ(1u, All("Location").size());

    // One package and one product for each disk the console shows.
    const std::string shownDisks = Shown("Disks: ([0-9]+)");
    ASSERT_TRUE(std::regex_match(shownDisks, std::regex("[0-9]+"))) << shownDisks;
    const unsigned disks = static_cast<unsigned>(std::stoul(shownDisks));
    EXPECT_EQ(24u, disks);
    EXPECT_EQ(disks, All("DiskDrive").size());
    const std::vector<std::string> packages = All("PhysicalPackage");
    EXPECT_EQ(disks, packages.size());
    EXPECT_EQ(disks + 1, All("Product").size()) << "the disks' products and the array's";
    EXPECT_EQ(disks, Associated(chassisPath, "Container").size()) << "the chassis holds every disk's package";

    // The array's product stands for the chassis and is the parent of the disks' products.
    const std::vector<std::string> arrayProducts = Associated(chassisPath, "ProductPhysicalComponent");
    ASSERT_EQ(1u, arrayProducts.size());
    EXPECT_EQ("ORV-M3000", Property(arrayProducts[0], "Name")) << arrayProducts[0];
    EXPECT_EQ("0971", Property(arrayProducts[0], "Version")) << arrayProducts[0];
    EXPECT_EQ(serial, Property(arrayProducts[0], "IdentifyingNumber")) << arrayProducts[0];
    const std::vector<std::string> children =
        Associated(PathOf(arrayProducts[0]), "ProductParentChild", "Parent");
    EXPECT_EQ(disks, children.size());

    // One disk followed all the way: disk -> package -> product -> array's product, and its firmware.
    const std::string package = PackageOf(kDiskInTags);
    ASSERT_FALSE(package.empty()) << "no package tagged PD:" << kDiskInTags << "(...)";
    const std::string tag = Property(package, "Tag");
    ASSERT_EQ(')', tag.back()) << tag;
    const std::string arrayId = tag.substr(tag.find('(') + 1, tag.size() - tag.find('(') - 2);
    EXPECT_FALSE(arrayId.empty()) << tag;
    EXPECT_EQ("A3C0", Property(package, "Version")) << package;
    const std::vector<std::string> drives = Associated(PathOf(package), "Realizes");
    ASSERT_EQ(1u, drives.size());
    EXPECT_EQ(0u, PathOf(drives[0]).find("root/orv:" + Cls("DiskDrive") + ".")) << drives[0];
    const std::vector<std::string> diskProducts = Associated(PathOf(package), "ProductPhysicalComponent");
    ASSERT_EQ(1u, diskProducts.size());
    EXPECT_EQ(Property(package, "Tag"), Property(diskProducts[0], "Name")) << diskProducts[0];
    EXPECT_EQ("A3C0", Property(diskProducts[0], "Version")) << diskProducts[0];
    const std::vector<std::string> parents = Associated(PathOf(diskProducts[0]), "ProductParentChild", "Child");
    ASSERT_EQ(1u, parents.size());
    EXPECT_EQ(PathOf(arrayProducts[0]), PathOf(parents[0]));

    const std::vector<std::string> diskSoftware = Associated(PathOf(drives[0]), "ElementSoftwareIdentity");
    ASSERT_EQ(1u, diskSoftware.size());
    EXPECT_EQ("A3C0", Property(diskSoftware[0], "VersionString")) << diskSoftware[0];
    // The brand in the name is the array's model once the array has been read.
    EXPECT_EQ(std::string("ORV.ORV-M3000 : ") + kDiskInView + ".in." + arrayId,
              Property(diskSoftware[0], "InstanceID"));

    const std::vector<std::string> arraySoftware = Associated(arrayPath, "InstalledSoftwareIdentity");
    ASSERT_EQ(1u, arraySoftware.size());
    EXPECT_EQ("9.71.0001", Property(arraySoftware[0], "VersionString")) << arraySoftware[0];
    EXPECT_EQ(disks + 1, All("SoftwareIdentity").size()) << "the array's firmware and each disk's";
}

TEST_F(PhysicalViewEndToEndTest, AFirmwareUpdateReplacesTheProductsAndModifiesTheChassis) {
    const std::string chassisBefore = Chassis();
    ASSERT_FALSE(chassisBefore.empty());
    const std::string chassisPath = PathOf(chassisBefore);
    const std::set<std::string> productsBefore = Paths(All("Product"));
    const std::string packageBefore = PackageOf(kDiskInTags);
    ASSERT_FALSE(packageBefore.empty());
    const std::string packagePath = PathOf(packageBefore);
    const std::string diskProductBefore = One(packagePath, "ProductPhysicalComponent");
    const std::string arrayProductBefore = One(chassisPath, "ProductPhysicalComponent");
    const std::string drive = PathOf(One(packagePath, "Realizes"));
    const std::string arraySystem = PathOf(One(chassisPath, "ComputerSystemPackage"));
    ASSERT_FALSE(diskProductBefore.empty() || arrayProductBefore.empty() || drive.empty() || arraySystem.empty());
    const std::string diskSoftwareBefore = One(drive, "ElementSoftwareIdentity");
    const std::string arraySoftwareBefore = One(arraySystem, "InstalledSoftwareIdentity");
    ASSERT_FALSE(diskSoftwareBefore.empty() || arraySoftwareBefore.empty());

    Console(std::string("set firmware --array 0972 --base 9.72 --disk ") + kDiskAtConsole + " B1D0");

    // The chassis keeps its name and takes the new revision.
    ASSERT_TRUE(Eventually([&] { return Property(Chassis(), "Version") == "0972"; })) << Chassis();
    const std::string chassis = Chassis();
    EXPECT_EQ(chassisPath, PathOf(chassis));
    EXPECT_EQ(Property(chassisBefore, "ElementName"), Property(chassis, "ElementName"));

    // The array's product and the disk's are new instances with the new
    // version, on the chassis and the package as before; the others stay.
    std::string arrayProduct;
    std::string diskProduct;
    EXPECT_TRUE(Eventually([&] {
        const std::set<std::string> products = Paths(All("Product"));
        arrayProduct = One(chassisPath, "ProductPhysicalComponent");
        diskProduct = One(packagePath, "ProductPhysicalComponent");
        return products.size() == productsBefore.size() && products.count(PathOf(arrayProductBefore)) == 0 &&
               products.count(PathOf(diskProductBefore)) == 0 && Property(arrayProduct, "Version") == "0972" &&
               Property(diskProduct, "Version") == "B1D0";
    })) << "products now:\n" << m_box.Instances(Cls("Product"));
    const std::set<std::string> products = Paths(All("Product"));
    unsigned kept = 0;
    for (const std::string& path : productsBefore) kept += products.count(path) ? 1u : 0u;
    EXPECT_EQ(productsBefore.size() - 2, kept) << "only the array's and one disk's product are replaced";
    EXPECT_EQ("ORV-M3000 0972", Property(arrayProduct, "ElementName")) << arrayProduct;
    EXPECT_EQ(Property(diskProductBefore, "Name"), Property(diskProduct, "Name")) << diskProduct;

    // The disks' products, the replaced one among them, hang on the new array product.
    EXPECT_TRUE(Eventually([&] {
        return Associated(PathOf(arrayProduct), "ProductParentChild", "Parent").size() == productsBefore.size() - 1 &&
               PathOf(One(PathOf(diskProduct), "ProductParentChild", "Child")) == PathOf(arrayProduct);
    })) << "children of " << PathOf(arrayProduct);

    // The package is modified, not replaced.
    EXPECT_TRUE(Eventually([&] { return Property(PackageOf(kDiskInTags), "Version") == "B1D0"; }))
        << PackageOf(kDiskInTags);
    EXPECT_EQ(packagePath, PathOf(PackageOf(kDiskInTags)));

    // The firmware identities keep their names and take the new versions.
    std::string diskSoftware;
    EXPECT_TRUE(Eventually([&] {
        diskSoftware = One(drive, "ElementSoftwareIdentity");
        return Property(diskSoftware, "VersionString") == "B1D0";
    })) << diskSoftware;
    EXPECT_EQ(PathOf(diskSoftwareBefore), PathOf(diskSoftware));
    std::string arraySoftware;
    EXPECT_TRUE(Eventually([&] {
        arraySoftware = One(arraySystem, "InstalledSoftwareIdentity");
        return Property(arraySoftware, "VersionString") == "9.72.0001";
    })) << arraySoftware;
    EXPECT_EQ(PathOf(arraySoftwareBefore), PathOf(arraySoftware));
    EXPECT_EQ(productsBefore.size(), All("SoftwareIdentity").size()) << "the array's firmware and each disk's";
}

TEST_F(PhysicalViewEndToEndTest, AMoveOfTheUnitReplacesItsLocation) {
    const std::vector<std::string> before = All("Location");
    ASSERT_EQ(1u, before.size());
    const std::string chassisPath = PathOf(Chassis());
    Console("set unit --location 'Hall B, rack 7'");
    ASSERT_TRUE(Eventually([&] {
        const std::vector<std::string> now = All("Location");
        return now.size() == 1 && Property(now[0], "PhysicalPosition") == "Hall B, rack 7";
    })) << m_box.Instances(Cls("Location"));

    const std::vector<std::string> after = All("Location");
    ASSERT_EQ(1u, after.size());
    EXPECT_NE(PathOf(before[0]), PathOf(after[0]));
    EXPECT_EQ("Hall B, rack 7", Property(after[0], "Address")) << after[0];
    EXPECT_EQ(Property(before[0], "Name"), Property(after[0], "Name"));
    EXPECT_TRUE(Eventually([&] { return PathOf(One(chassisPath, "PhysicalElementLocation")) == PathOf(after[0]); }))
        << "the chassis links to the new location alone:\n"
        << m_box.Instances(Cls("PhysicalElementLocation"));
    EXPECT_EQ(1, m_box.InstanceCount(Cls("PhysicalElementLocation")));
}

// The module started with the copy service switched off.
class PhysicalViewWithoutCopyServiceTest : public e2e::EndToEndTest {
protected:
    std::vector<std::pair<std::string, std::string>> ModuleSettings() const override {
        return {{"enableCopyService", "false"}};
    }
};

TEST_F(PhysicalViewWithoutCopyServiceTest, TheCopyServicesProfileIsNotRegisteredAndTheOthersAre) {
    RunResult profiles = m_box.Wbem("ei", "root/interop:CIM_RegisteredProfile");
    ASSERT_EQ(0, profiles.status) << profiles.output;
    std::set<std::string> names;
    std::string blockServices;
    std::string array;
    for (const std::string& line : Lines(profiles.output)) {
        const std::string name = Property(line, "RegisteredName");
        names.insert(name);
        if (name == "Block Services") blockServices = PathOf(line);
        if (name == "Array") array = PathOf(line);
    }
    const std::set<std::string> expected = {
        "SMI-S", "Profile Registration", "Array", "Server", "Disk Drive Lite", "Extent Composition", "Location",
        "Software", "Masking and Mapping", "Block Services", "Physical Package", "Health",
        "Multiple Computer System", "Job Control", "Thin Provisioning", "FC Target Ports", "iSCSI Target Ports",
        "Indication"};
    EXPECT_EQ(expected, names) << profiles.output;

    // The pairs that named it are left out; the others stand.
    ASSERT_FALSE(blockServices.empty());
    RunResult related = m_box.Wbem("ai -ac CIM_SubProfileRequiresProfile", blockServices);
    ASSERT_EQ(0, related.status) << related.output;
    std::set<std::string> relatedNames;
    for (const std::string& line : Lines(related.output)) relatedNames.insert(Property(line, "RegisteredName"));
    EXPECT_EQ((std::set<std::string>{"Array", "Job Control", "Extent Composition"}), relatedNames) << related.output;

    // The array is still found, and the provider's software hangs on every profile there is.
    ASSERT_FALSE(array.empty());
    RunResult conforming = m_box.Wbem("ain -ac CIM_ElementConformsToProfile", array);
    EXPECT_NE(std::string::npos, conforming.output.find("/root/orv:ORV_Storage_ComputerSystem.")) << conforming.output;
    RunResult provider = m_box.Wbem("ain -ac CIM_ElementSoftwareIdentity", array);
    ASSERT_EQ(0, provider.status) << provider.output;
    const std::vector<std::string> identities = Lines(provider.output);
    ASSERT_EQ(1u, identities.size()) << provider.output;
    const std::string identity = PathOf(identities[0]);
    ASSERT_EQ(0u, identity.find("root/interop:ORV_Storage_SoftwareIdentity.")) << provider.output;
    ASSERT_EQ(std::string::npos, identity.find('\'')) << identity;
    RunResult software = m_box.Wbem("ain -ac CIM_ElementSoftwareIdentity", identity);
    ASSERT_EQ(0, software.status) << software.output;
    EXPECT_EQ(static_cast<int>(expected.size()), e2e::CountOf(software.output, "/root/interop:")) << software.output;
    EXPECT_EQ(std::string::npos, software.output.find("Copy Services")) << software.output;
}

}  // namespace
