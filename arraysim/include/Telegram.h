#pragma once
// The telegrams spoken between the polling daemon and its clients (the storage
// module): a 48-byte common head, then a body that depends on the code.
//
// Byte order, as the clients expect it: the head's length and code fields are
// in the machine's own order, the report record's fields in network order.

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace arraysim {

// A telegram that breaks the protocol (bad magic, constants, length or body).
class TelegramError : public std::runtime_error {
public:
    explicit TelegramError(const std::string& what) : std::runtime_error(what) {}
};

// The fields of the common head that vary; the constants are checked on decode.
struct TelegramHead {
    std::uint32_t length = 0;  // whole telegram, head included
    std::uint32_t code = 0;
    char sender = 0;
    char receiver = 0;
    std::uint32_t pid = 0;
    std::uint32_t time = 0;
};

// What an alarm report tells: how far each side of the array has moved, and
// whether the daemon could get the report at all (result 0) or not.
struct AlarmReportContent {
    std::uint64_t logicalGeneration = 0;
    std::uint64_t physicalGeneration = 0;
    std::uint8_t result = 0;
};

class Telegram {
public:
    static constexpr std::size_t kHeadSize = 48;
    static constexpr std::size_t kControlSize = 96;        // login and logout
    static constexpr std::size_t kRequestOffset = 82;      // 1 in login, 0 in logout
    static constexpr std::size_t kResultOffset = 34;       // in the report's body
    static constexpr std::size_t kReportOffset = 160;      // in the report's body
    static constexpr std::size_t kReportSize = 256;
    static constexpr std::size_t kReportBodySize = kReportOffset + kReportSize;
    static constexpr std::size_t kReportTelegramSize = kHeadSize + kReportBodySize;
    // Longest telegram a client may send; anything longer is refused unread.
    static constexpr std::size_t kMaxLength = 4096;

    static constexpr std::uint32_t kCodeLogin = 0x23000002;
    static constexpr std::uint32_t kCodeLogout = 0x23000102;
    static constexpr std::uint32_t kCodeAlarmReport = 0x23000301;

    static constexpr char kProviderId = '$';
    static constexpr char kDaemonId = '#';

    // Where the report record carries each side's generation (8 bytes, network
    // order). Each lies in the fields a client compares for that side alone.
    static constexpr std::size_t kLogicalGenerationOffset = 78;
    static constexpr std::size_t kPhysicalGenerationOffset = 20;

    // The 48-byte head of a telegram.
    static std::vector<std::uint8_t> EncodeHead(const TelegramHead& head);

    // Reads and checks a head (at least kHeadSize bytes at data): magic, the
    // constant fields and a length from kHeadSize to kMaxLength.
    static TelegramHead DecodeHead(const std::uint8_t* data, std::size_t size);

    // A whole login or logout telegram, as a client sends it.
    static std::vector<std::uint8_t> EncodeControl(bool login, std::uint32_t pid, std::uint32_t time);

    // Checks a whole login or logout telegram (head already decoded): its length,
    // the request byte that goes with its code, and that the rest is zero.
    static void CheckControl(const TelegramHead& head, const std::uint8_t* data, std::size_t size);

    // A whole alarm report from the daemon. code is kCodeAlarmReport except when
    // a client is to be shown a code it does not know.
    static std::vector<std::uint8_t> EncodeAlarmReport(const AlarmReportContent& content, std::uint32_t pid,
                                                       std::uint32_t time,
                                                       std::uint32_t code = kCodeAlarmReport);

    // Reads the result and generations back out of a whole alarm report.
    static AlarmReportContent DecodeAlarmReport(const std::uint8_t* data, std::size_t size);

    // Multi-byte values in network byte order.
    static void PutBigEndian(std::uint8_t* at, std::uint64_t value, std::size_t width);
    static std::uint64_t GetBigEndian(const std::uint8_t* at, std::size_t width);
};

}  // namespace arraysim
