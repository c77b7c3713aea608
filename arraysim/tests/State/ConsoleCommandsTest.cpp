// What "arraysim set" and "time" change, and what they refuse.

#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>

#include "ConsoleCommands.h"
#include "Templates.h"

using namespace arraysim;

namespace {

std::string hexText(unsigned value) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%04Xh", value);
    return buffer;
}

class ConsoleCommandsTest : public ::testing::Test {
protected:
    ArrayState s = Templates::Build(TemplateOptions{"medium", "", 2, 1});
};

TEST_F(ConsoleCommandsTest, HexNumbersWithOrWithoutSuffix) {
    EXPECT_EQ(ConsoleCommands::ParseHex("0005h", "LD"), 5u);
    EXPECT_EQ(ConsoleCommands::ParseHex("1F", "LD"), 31u);
    EXPECT_EQ(ConsoleCommands::ParseHex("00aH", "LD"), 10u);
    for (const char* bad : {"", "h", "x5", "-1", "123456789", "5 "})
        EXPECT_THROW(ConsoleCommands::ParseHex(bad, "LD"), std::invalid_argument) << bad;
}

TEST_F(ConsoleCommandsTest, ComponentStates) {
    ConsoleCommands::SetDiskState(s, "00h-0005h", "failure");
    EXPECT_EQ(s.FindDisk(0, 5)->state, "failure");
    ConsoleCommands::SetLdState(s, "000Ah", "fault");
    EXPECT_EQ(s.FindLd(10)->state, "fault");
    ConsoleCommands::SetControllerState(s, "1", "offline");
    EXPECT_EQ(s.FindController(1)->state, "offline");
    ConsoleCommands::SetPortState(s, "01-02", "offline");
    EXPECT_EQ(s.FindPort(1, 2)->state, "offline");
    ConsoleCommands::SetEnclosureState(s, "fan", "00-01", "failure");
    ConsoleCommands::SetPoolState(s, "0001h", "degenerated");
    EXPECT_EQ(s.FindPool(1)->state, "degenerated");
    ConsoleCommands::SetPairState(s, hexText(s.pairs[0].mvNumber), "fault");
    EXPECT_EQ(s.pairs[0].syncState, "fault");
    const std::string summary = ConsoleCommands::Show(s);
    EXPECT_NE(summary.find("disk 00h-0005h failure"), std::string::npos) << summary;
    EXPECT_NE(summary.find("fan 0-1 failure"), std::string::npos) << summary;

    EXPECT_THROW(ConsoleCommands::SetDiskState(s, "07h-0005h", "failure"), std::invalid_argument);
    EXPECT_THROW(ConsoleCommands::SetDiskState(s, "0005", "failure"), std::invalid_argument);
    EXPECT_THROW(ConsoleCommands::SetDiskState(s, "00-0005", ""), std::invalid_argument);
    EXPECT_THROW(ConsoleCommands::SetLdState(s, "FFFF", "fault"), std::invalid_argument);
    EXPECT_THROW(ConsoleCommands::SetEnclosureState(s, "fan", "09-01", "failure"), std::invalid_argument);
    EXPECT_THROW(ConsoleCommands::SetPortState(s, "05-00", "ready"), std::invalid_argument);
}

TEST_F(ConsoleCommandsTest, PoolFill) {
    Pool& dynamicPool = *s.FindPool(0);
    ConsoleCommands::SetPoolUsed(s, "0000h", "90%");
    EXPECT_EQ(dynamicPool.usedCapacity, dynamicPool.capacity / 10 * 9 + (dynamicPool.capacity % 10) * 9 / 10);
    ConsoleCommands::SetPoolUsed(s, "0", "0");
    EXPECT_EQ(dynamicPool.usedCapacity, 0u);
    const Pool* virtualPool = nullptr;
    for (const auto& p : s.pools)
        if (p.poolType == "virtual") virtualPool = &p;
    ASSERT_NE(virtualPool, nullptr);
    ConsoleCommands::SetPoolUsed(s, hexText(virtualPool->number), "100%");
    EXPECT_EQ(virtualPool->actualUsedCapacity, virtualPool->actualCapacity);
    for (const char* bad : {"101%", "%", "ninety", "-5", "99999999999999999999"})
        EXPECT_THROW(ConsoleCommands::SetPoolUsed(s, "0", bad), std::invalid_argument) << bad;
    EXPECT_THROW(ConsoleCommands::SetPoolUsed(s, "0", std::to_string(dynamicPool.capacity + 1)), std::invalid_argument);
}

TEST_F(ConsoleCommandsTest, IdentityAccessControlAndTime) {
    ConsoleCommands::SetUnitLocation(s, "Room 2");
    ConsoleCommands::SetUnitName(s, "Array-A");
    ConsoleCommands::SetUnitContact(s, "ops@example.com");
    EXPECT_EQ(s.identity.unitLocation, "Room 2");
    EXPECT_EQ(s.identity.unitName, "Array-A");
    EXPECT_THROW(ConsoleCommands::SetUnitLocation(s, std::string(65, 'x')), std::invalid_argument);
    EXPECT_THROW(ConsoleCommands::SetUnitName(s, "a<b"), std::invalid_argument);
    EXPECT_THROW(ConsoleCommands::SetUnitContact(s, "tab\there"), std::invalid_argument);
    EXPECT_EQ(s.identity.unitName, "Array-A");

    ConsoleCommands::SetAccessControl(s, "off");
    EXPECT_FALSE(s.identity.accessControl);
    EXPECT_THROW(ConsoleCommands::SetAccessControl(s, "yes"), std::invalid_argument);

    ConsoleCommands::SetTiming(s, "realistic", 50);
    EXPECT_EQ(s.timing.mode, "realistic");
    EXPECT_EQ(s.timing.rateMBps, 50);
    EXPECT_THROW(ConsoleCommands::SetTiming(s, "fast", 50), std::invalid_argument);
    EXPECT_THROW(ConsoleCommands::SetTiming(s, "instant", 0), std::invalid_argument);
}

}  // namespace
