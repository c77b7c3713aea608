// The physical view on what the simulated array reports: its view document
// through the parser into the array and disk models, then a firmware update
// and a move made at the array's console, carried into the repository as a
// load carries them (only the records that changed are modified).

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ArrayRawData.h"
#include "PdRawData.h"
#include "XMLParser.h"
#include "../Pipeline/SimulatorRun.h"
#include "PhysicalViewTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;
using physicaltest::WWN;

namespace {

class SimulatorPhysical : public physicaltest::PhysicalFixture {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/physical-sim-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        root = pattern;
        ::setenv("SMIS_ROOT", root.c_str(), 1);
        PhysicalFixture::SetUp();
        ASSERT_EQ(simrun::sim("init --template small"), 0) << "simulator at " << simrun::SIM_BIN;
    }
    void TearDown() override {
        PhysicalFixture::TearDown();
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
        ::unsetenv("SMIS_ROOT");
    }

    // The records of one type from the simulator's view, under the test's
    // array id; the fixture releases them.
    std::vector<RawData*> View(int type) {
        XMLParser parser;
        EXPECT_TRUE(simrun::runView(parser, false));
        std::vector<RawData*> out;
        parser.QueryData(out, type);
        for (RawData* record : out) {
            record->arrayId = WWN;
            held.push_back(record);
        }
        return out;
    }
    ArrayRawData* ViewArray() {
        std::vector<RawData*> arrays = View(RAWDATA_ARRAY);
        EXPECT_EQ(arrays.size(), 1u);
        return arrays.empty() ? nullptr : static_cast<ArrayRawData*>(arrays[0]);
    }
    std::map<std::string, PdRawData*> ViewDisks() {
        std::map<std::string, PdRawData*> out;
        for (RawData* record : View(RAWDATA_PD)) out[record->name] = static_cast<PdRawData*>(record);
        return out;
    }
    CIMInstance withText(const char* cls, const char* name, const std::string& value) {
        for (const CIMInstance& i : repository->of(cls))
            if (text(i, name) == value) return i;
        ADD_FAILURE() << "no " << cls << " with " << name << " " << value;
        return CIMInstance(CIMName(cls));
    }

    std::string root;
};

TEST_F(SimulatorPhysical, AConsoleFirmwareUpdateAndMoveReachTheRepository) {
    ArrayRawData* array = ViewArray();
    ASSERT_NE(array, nullptr);
    CreateArray(array);
    std::map<std::string, PdRawData*> disks = ViewDisks();
    ASSERT_FALSE(disks.empty());
    for (auto& entry : disks) CreateDisk(entry.second);

    EXPECT_EQ(repository->count("ORV_Storage_PhysicalPackage"), disks.size());
    EXPECT_EQ(repository->count("ORV_Storage_Product"), disks.size() + 1);
    CIMInstance chassis = only("ORV_Storage_Chassis");
    EXPECT_EQ(text(chassis, "Version"), array->productFWRevision);
    EXPECT_FALSE(array->productFWRevision.empty());
    EXPECT_EQ(text(chassis, "SerialNumber"), array->serialNumber);
    EXPECT_EQ(text(only("ORV_Storage_Location"), "PhysicalPosition"), array->unitLocation);
    EXPECT_FALSE(array->unitLocation.empty());
    CIMInstance firmware = arrayFirmware();
    EXPECT_EQ(text(firmware, "VersionString"), array->version + "." + array->revision);
    const std::string oldVersion = text(firmware, "VersionString");

    ASSERT_EQ(simrun::sim("set firmware --array 0972 --base 9.72 --disk 00-01 B100"), 0);
    ASSERT_EQ(simrun::sim("set unit --location 'Room 2, rack 4'"), 0);
    ArrayRawData* updated = ViewArray();
    ASSERT_NE(updated, nullptr);
    ASSERT_TRUE(array->HasChanged(updated));
    repository->log.clear();
    ModifyArray(updated, array);
    std::map<std::string, PdRawData*> updatedDisks = ViewDisks();
    size_t changed = 0;
    for (auto& entry : updatedDisks) {
        PdRawData* before = disks[entry.first];
        ASSERT_NE(before, nullptr) << entry.first;
        if (!before->HasChanged(entry.second)) continue;
        ++changed;
        ModifyDisk(entry.second, before);
    }
    EXPECT_EQ(changed, 1u);

    chassis = only("ORV_Storage_Chassis");
    EXPECT_EQ(text(chassis, "Version"), "0972");
    EXPECT_EQ(std::count(repository->log.begin(), repository->log.end(), "delete ORV_Storage_Chassis"), 0);
    CIMInstance arrayProduct = withText("ORV_Storage_Product", "Name", updated->productID);
    EXPECT_EQ(text(arrayProduct, "Version"), "0972");
    EXPECT_EQ(repository->count("ORV_Storage_Product"), disks.size() + 1);
    EXPECT_EQ(linksOf("ORV_Storage_ProductParentChild", arrayProduct.getPath()).size(), disks.size());

    CIMInstance location = only("ORV_Storage_Location");
    EXPECT_EQ(text(location, "PhysicalPosition"), "Room 2, rack 4");
    EXPECT_EQ(linksOf("ORV_Storage_PhysicalElementLocation", location.getPath()).size(), 1u);

    firmware = arrayFirmware();
    EXPECT_NE(text(firmware, "VersionString"), oldVersion);
    EXPECT_EQ(text(firmware, "VersionString").substr(0, 5), "9.72.");

    const std::string tag = PhysicalPackage::Tag("00-01", WWN);
    EXPECT_EQ(text(withText("ORV_Storage_PhysicalPackage", "Tag", tag), "Version"), "B100");
    EXPECT_EQ(text(withText("ORV_Storage_Product", "Name", tag), "Version"), "B100");
}

}  // namespace
