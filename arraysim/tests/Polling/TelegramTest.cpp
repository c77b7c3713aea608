#include "Telegram.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>

namespace arraysim {
namespace {

std::uint32_t native32(const std::vector<std::uint8_t>& data, std::size_t at) {
    std::uint32_t value;
    std::memcpy(&value, &data[at], 4);
    return value;
}

TEST(TelegramTest, LoginAndLogoutAreByteExact) {
    for (bool login : {true, false}) {
        const auto telegram = Telegram::EncodeControl(login, 4242, 1700000000);
        std::vector<std::uint8_t> expected(96, 0);
        expected[0] = 'S';
        expected[1] = 'G';
        expected[2] = 'M';
        const std::uint32_t length = 96, code = login ? 0x23000002 : 0x23000102, pid = 4242, time = 1700000000;
        const std::uint16_t one = 1;
        std::memcpy(&expected[4], &length, 4);
        std::memcpy(&expected[12], &one, 2);
        std::memcpy(&expected[14], &one, 2);
        std::memcpy(&expected[16], &code, 4);
        expected[20] = 1;
        expected[21] = '$';
        expected[22] = '#';
        expected[23] = 1;
        std::memcpy(&expected[24], &pid, 4);
        std::memcpy(&expected[28], &time, 4);
        expected[82] = login ? 1 : 0;
        EXPECT_EQ(expected, telegram) << (login ? "login" : "logout");

        const TelegramHead head = Telegram::DecodeHead(telegram.data(), telegram.size());
        EXPECT_EQ(code, head.code);
        EXPECT_EQ(96u, head.length);
        EXPECT_EQ(4242u, head.pid);
        EXPECT_NO_THROW(Telegram::CheckControl(head, telegram.data(), telegram.size()));
    }
}

TEST(TelegramTest, AlarmReportLayout) {
    AlarmReportContent content;
    content.logicalGeneration = 0x0102030405060708ull;
    content.physicalGeneration = 0x1112131415161718ull;
    content.result = 0;
    const auto telegram = Telegram::EncodeAlarmReport(content, 77, 1234);

    ASSERT_EQ(48u + 160u + 256u, telegram.size());
    EXPECT_EQ(0, std::memcmp(telegram.data(), "SGM\0", 4));
    EXPECT_EQ(464u, native32(telegram, 4));
    EXPECT_EQ(0x23000301u, native32(telegram, 16));
    EXPECT_EQ('#', telegram[21]);
    EXPECT_EQ('$', telegram[22]);
    EXPECT_EQ(77u, native32(telegram, 24));
    EXPECT_EQ(1234u, native32(telegram, 28));
    EXPECT_EQ(0, telegram[48 + 34]);
    // Generations in network byte order inside the 256-byte record.
    const std::size_t record = 48 + 160;
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(i + 1, telegram[record + 78 + i]);
        EXPECT_EQ(0x11 + i, telegram[record + 20 + i]);
    }

    content.result = 9;
    const auto failed = Telegram::EncodeAlarmReport(content, 77, 1234, 0x23000399);
    EXPECT_EQ(9, failed[48 + 34]);
    EXPECT_EQ(0x23000399u, native32(failed, 16));

    const AlarmReportContent back = Telegram::DecodeAlarmReport(failed.data(), failed.size());
    EXPECT_EQ(content.logicalGeneration, back.logicalGeneration);
    EXPECT_EQ(content.physicalGeneration, back.physicalGeneration);
    EXPECT_EQ(9, back.result);
}

// A client compares a report's logical and physical fields separately; each
// generation must lie wholly in the fields of its own side and in none of the
// other's, or a change would show on the wrong side.
TEST(TelegramTest, GenerationsLieInTheirOwnSideOnly) {
    const std::vector<std::pair<int, int>> logical = {
        {74, 1},  {78, 8},  {86, 2},  {88, 2},  {90, 7},  {98, 10}, {123, 1}, {142, 2}, {140, 2},
        {163, 1}, {108, 2}, {110, 2}, {116, 2}, {120, 2}, {122, 1}, {130, 4}, {136, 2}, {160, 2},
        {162, 1}, {164, 2}, {168, 4}, {174, 2}, {180, 2}, {182, 2}, {184, 2}, {186, 2}, {216, 2}};
    const std::vector<std::pair<int, int>> physical = {
        {4, 1},   {16, 1},  {17, 1},  {20, 8},  {28, 4},  {34, 8},  {58, 1},  {59, 1},
        {62, 1},  {63, 1},  {134, 2}, {123, 1}, {142, 2}, {140, 2}, {163, 1}, {138, 2},
        {129, 1}, {192, 8}, {200, 8}, {208, 8}, {66, 8},  {216, 2}};
    auto bytes = [](const std::vector<std::pair<int, int>>& fields) {
        std::set<std::size_t> covered;
        for (const auto& field : fields)
            for (int i = 0; i < field.second; ++i) covered.insert(field.first + i);
        return covered;
    };
    const auto logicalBytes = bytes(logical), physicalBytes = bytes(physical);
    // Fields converted as 16- or 32-bit values must not be split by a generation.
    const std::set<std::size_t> converted = {0,   86,  88,  98,  100, 102, 104, 106, 108, 116, 120, 130, 132, 134,
                                             136, 138, 140, 142, 160, 164, 174, 180, 182, 184, 186, 216, 254, 44,
                                             112};
    for (std::size_t i = 0; i < 8; ++i) {
        const std::size_t l = Telegram::kLogicalGenerationOffset + i, p = Telegram::kPhysicalGenerationOffset + i;
        EXPECT_TRUE(logicalBytes.count(l) && !physicalBytes.count(l)) << "logical byte " << l;
        EXPECT_TRUE(physicalBytes.count(p) && !logicalBytes.count(p)) << "physical byte " << p;
        EXPECT_FALSE(converted.count(l) || converted.count(p));
    }
}

TEST(TelegramTest, BrokenHeadsAndControlsAreRefused) {
    const auto good = Telegram::EncodeControl(true, 1, 2);
    auto refusedHead = [](std::vector<std::uint8_t> data) {
        EXPECT_THROW(Telegram::DecodeHead(data.data(), data.size()), TelegramError);
    };
    auto broken = good;
    broken[2] = 'X';
    refusedHead(broken);  // magic
    broken = good;
    broken[12] = 2;
    refusedHead(broken);  // constant
    broken = good;
    broken[23] = 0;
    refusedHead(broken);  // constant
    for (std::uint32_t length : {0u, 47u, 4097u, 0xffffffffu}) {
        broken = good;
        std::memcpy(&broken[4], &length, 4);
        refusedHead(broken);
    }
    refusedHead(std::vector<std::uint8_t>(good.begin(), good.begin() + 47));

    auto refusedControl = [](std::vector<std::uint8_t> data) {
        const TelegramHead head = Telegram::DecodeHead(data.data(), data.size());
        EXPECT_THROW(Telegram::CheckControl(head, data.data(), data.size()), TelegramError);
    };
    broken = good;
    broken[82] = 0;  // a login that asks for logout
    refusedControl(broken);
    broken = Telegram::EncodeControl(false, 1, 2);
    broken[82] = 1;
    refusedControl(broken);
    broken = good;
    broken[90] = 5;  // reserved
    refusedControl(broken);
    broken = good;
    const std::uint32_t report = Telegram::kCodeAlarmReport;
    std::memcpy(&broken[16], &report, 4);  // clients do not send reports
    refusedControl(broken);
    broken = good;
    broken.push_back(0);
    const std::uint32_t longer = 97;
    std::memcpy(&broken[4], &longer, 4);
    refusedControl(broken);
}

}  // namespace
}  // namespace arraysim
