// Firmware updates and LD growth at the console: what they change, what
// they refuse, and that a refused command leaves the array as it was.

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <stdexcept>
#include <string>

#include "ConsoleCommands.h"
#include "LdCommands.h"
#include "StateStore.h"
#include "StateTestRoot.h"
#include "Templates.h"

using namespace arraysim;

namespace {

const std::string kBin = TEST_BINARY_DIR "/arraysim-bin";

// Runs a line of our own constants with standard error joined; exit status and output.
int run(const std::string& line, std::string* output = nullptr) {
    FILE* pipe = ::popen((line + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return -1;
    char buffer[4096];
    std::size_t got;
    std::string text;
    while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) text.append(buffer, got);
    const int status = ::pclose(pipe);
    if (output != nullptr) *output = text;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string hex4(unsigned value) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%04Xh", value);
    return buffer;
}

class ConsoleGrowthTest : public ::testing::Test {
protected:
    ArrayState s = Templates::Build(TemplateOptions{"medium", "", 2, 1});

    // An LD with no copy or snapshot relation, whose pool has room.
    LogicalDisk* freeLd() {
        for (auto& ld : s.lds) {
            const Pool* pool = s.FindPool(ld.poolNumber);
            if (pool != nullptr && pool->capacity > pool->usedCapacity + (1ULL << 30) &&
                LdCommands::Holder(s, ld.number, false).empty())
                return &ld;
        }
        return nullptr;
    }
};

TEST_F(ConsoleGrowthTest, AnLdNeverShrinksNorOutgrowsItsPool) {
    LogicalDisk* ld = freeLd();
    ASSERT_NE(ld, nullptr);
    const std::string id = hex4(ld->number);
    const Pool& pool = *s.FindPool(ld->poolNumber);
    const std::uint64_t before = ld->capacity;
    const std::uint64_t used = pool.usedCapacity;
    const std::uint64_t tooMuch = before + (pool.capacity - pool.usedCapacity) + 512;
    for (const std::string& bad : {std::to_string(before), std::to_string(before - 512), std::to_string(before + 100),
                                   std::to_string(tooMuch), std::string("1e9"), std::string("-512"), std::string(""),
                                   std::string("99999999999999999999")})
        EXPECT_THROW(ConsoleCommands::SetLdCapacity(s, id, bad), std::invalid_argument) << bad;
    EXPECT_THROW(ConsoleCommands::SetLdCapacity(s, "FFFF", std::to_string(before + 512)), std::invalid_argument);
    EXPECT_EQ(ld->capacity, before);
    EXPECT_EQ(pool.usedCapacity, used);
}

TEST_F(ConsoleGrowthTest, AnLdInACopyRelationKeepsItsSize) {
    ASSERT_FALSE(s.pairs.empty());
    LogicalDisk* mv = s.FindLd(s.pairs[0].mvNumber);
    ASSERT_NE(mv, nullptr);
    const std::uint64_t before = mv->capacity;
    EXPECT_THROW(ConsoleCommands::SetLdCapacity(s, hex4(mv->number), std::to_string(before + 512)),
                 std::invalid_argument);
    EXPECT_EQ(mv->capacity, before);
}

TEST_F(ConsoleGrowthTest, FirmwareTextsAreChecked) {
    ConsoleCommands::SetArrayFirmware(s, "0972");
    ConsoleCommands::SetDiskFirmware(s, "00h-0001h", "B100");
    for (const std::string& bad : {std::string(""), std::string(17, '1'), std::string("09 72"), std::string("0972;"),
                                   std::string("a<b")}) {
        EXPECT_THROW(ConsoleCommands::SetArrayFirmware(s, bad), std::invalid_argument) << bad;
        EXPECT_THROW(ConsoleCommands::SetBaseProductVersion(s, bad), std::invalid_argument) << bad;
        EXPECT_THROW(ConsoleCommands::SetDiskFirmware(s, "00h-0001h", bad), std::invalid_argument) << bad;
    }
    EXPECT_THROW(ConsoleCommands::SetDiskFirmware(s, "09h-0001h", "B200"), std::invalid_argument);
    EXPECT_EQ(s.identity.productFwRevision, "0972");
    EXPECT_EQ(s.FindDisk(0, 1)->productRevision, "B100");
}

class ConsoleGrowthCommandLine : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(run(kBin + "/arraysim init --template small --seed 3"), 0); }
    arraysim_test::TempRoot root;
};

TEST_F(ConsoleGrowthCommandLine, FirmwareReachesTheViewAndABadDiskChangesNothing) {
    EXPECT_EQ(run(kBin + "/arraysim set firmware --array 0972 --base 9.72 --disk 00h-0001h B100 --disk 00-0002 B200"), 0);
    std::string view;
    ASSERT_EQ(run("_OUTFMTSET=xml " + kBin + "/Vexview -all", &view), 0);
    EXPECT_NE(view.find("0972"), std::string::npos);
    EXPECT_NE(view.find("9.72"), std::string::npos);
    EXPECT_NE(view.find("B100"), std::string::npos);
    EXPECT_NE(view.find("B200"), std::string::npos);

    std::string output;
    EXPECT_NE(run(kBin + "/arraysim set firmware --array 0973 --disk 09h-0001h B300", &output), 0);
    EXPECT_NE(output.find("no disk 09h-0001h"), std::string::npos) << output;
    EXPECT_NE(run(kBin + "/arraysim set firmware --disk 00h-0001h", &output), 0);
    EXPECT_NE(run(kBin + "/arraysim set firmware", &output), 0);
    EXPECT_NE(output.find("give --array, --base or --disk"), std::string::npos) << output;
    const ArrayState s = StateStore(root.StateDir()).Read();
    EXPECT_EQ(s.identity.productFwRevision, "0972");
    EXPECT_EQ(s.FindDisk(0, 1)->productRevision, "B100");
}

TEST_F(ConsoleGrowthCommandLine, LdCapacityAndStateFromTheCommandLine) {
    ArrayState before = StateStore(root.StateDir()).Read();
    ASSERT_FALSE(before.lds.empty());
    const LogicalDisk* ld = nullptr;
    for (const auto& candidate : before.lds)
        if (LdCommands::Holder(before, candidate.number, false).empty()) ld = &candidate;
    ASSERT_NE(ld, nullptr);
    const std::string id = hex4(ld->number);
    const std::uint64_t grown = ld->capacity + (1ULL << 20);
    EXPECT_EQ(run(kBin + "/arraysim set ld " + id + " --capacity " + std::to_string(grown) + " --state fault"), 0);
    const ArrayState after = StateStore(root.StateDir()).Read();
    EXPECT_EQ(after.FindLd(ld->number)->capacity, grown);
    EXPECT_EQ(after.FindPool(ld->poolNumber)->usedCapacity, before.FindPool(ld->poolNumber)->usedCapacity + (1ULL << 20));
    EXPECT_EQ(after.FindLd(ld->number)->state, "fault");
    std::string output;
    EXPECT_NE(run(kBin + "/arraysim set ld " + id, &output), 0);
    EXPECT_NE(output.find("give --state or --capacity"), std::string::npos) << output;
}

}  // namespace
