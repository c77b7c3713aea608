#include "Telegram.h"

#include <cstdio>
#include <cstring>

namespace arraysim {

namespace {

const std::uint8_t kMagic[4] = {'S', 'G', 'M', 0};

// The head's length and code travel in the machine's own byte order.
void putNative32(std::uint8_t* at, std::uint32_t value) { std::memcpy(at, &value, sizeof value); }

std::uint32_t getNative32(const std::uint8_t* at) {
    std::uint32_t value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

std::uint16_t getNative16(const std::uint8_t* at) {
    std::uint16_t value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

std::string hex(std::uint32_t value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", value);
    return text;
}

}  // namespace

void Telegram::PutBigEndian(std::uint8_t* at, std::uint64_t value, std::size_t width) {
    for (std::size_t i = 0; i < width; ++i) at[width - 1 - i] = static_cast<std::uint8_t>(value >> (8 * i));
}

std::uint64_t Telegram::GetBigEndian(const std::uint8_t* at, std::size_t width) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i) value = (value << 8) | at[i];
    return value;
}

std::vector<std::uint8_t> Telegram::EncodeHead(const TelegramHead& head) {
    std::vector<std::uint8_t> out(kHeadSize, 0);
    std::memcpy(out.data(), kMagic, sizeof kMagic);
    putNative32(&out[4], head.length);
    const std::uint16_t one = 1;
    std::memcpy(&out[12], &one, 2);
    std::memcpy(&out[14], &one, 2);
    putNative32(&out[16], head.code);
    out[20] = 1;
    out[21] = static_cast<std::uint8_t>(head.sender);
    out[22] = static_cast<std::uint8_t>(head.receiver);
    out[23] = 1;
    putNative32(&out[24], head.pid);
    putNative32(&out[28], head.time);
    return out;
}

TelegramHead Telegram::DecodeHead(const std::uint8_t* data, std::size_t size) {
    if (size < kHeadSize) throw TelegramError("head of " + std::to_string(size) + " bytes, 48 needed");
    if (std::memcmp(data, kMagic, sizeof kMagic) != 0) throw TelegramError("bad magic in the head");
    if (getNative16(data + 12) != 1 || getNative16(data + 14) != 1 || data[20] != 1 || data[23] != 1)
        throw TelegramError("constant fields of the head are not 1");
    TelegramHead head;
    head.length = getNative32(data + 4);
    head.code = getNative32(data + 16);
    head.sender = static_cast<char>(data[21]);
    head.receiver = static_cast<char>(data[22]);
    head.pid = getNative32(data + 24);
    head.time = getNative32(data + 28);
    if (head.length < kHeadSize || head.length > kMaxLength)
        throw TelegramError("telegram length " + std::to_string(head.length) + " out of range");
    return head;
}

std::vector<std::uint8_t> Telegram::EncodeControl(bool login, std::uint32_t pid, std::uint32_t time) {
    TelegramHead head;
    head.length = kControlSize;
    head.code = login ? kCodeLogin : kCodeLogout;
    head.sender = kProviderId;
    head.receiver = kDaemonId;
    head.pid = pid;
    head.time = time;
    std::vector<std::uint8_t> out = EncodeHead(head);
    out.resize(kControlSize, 0);  // the SMIS head and the event control are zero ...
    out[kRequestOffset] = login ? 1 : 0;  // ... but for the request
    return out;
}

void Telegram::CheckControl(const TelegramHead& head, const std::uint8_t* data, std::size_t size) {
    if (head.code != kCodeLogin && head.code != kCodeLogout)
        throw TelegramError("telegram code " + hex(head.code) + " is neither login nor logout");
    if (head.length != kControlSize || size != kControlSize)
        throw TelegramError(std::string(head.code == kCodeLogin ? "login" : "logout") + " of " +
                            std::to_string(head.length) + " bytes, 96 expected");
    const std::uint8_t expected = head.code == kCodeLogin ? 1 : 0;
    if (data[kRequestOffset] != expected)
        throw TelegramError("request byte " + std::to_string(data[kRequestOffset]) + " in a " +
                            (head.code == kCodeLogin ? "login" : "logout"));
    for (std::size_t i = kHeadSize; i < kControlSize; ++i) {
        if (i != kRequestOffset && data[i] != 0)
            throw TelegramError("reserved byte " + std::to_string(i) + " is not zero");
    }
}

std::vector<std::uint8_t> Telegram::EncodeAlarmReport(const AlarmReportContent& content, std::uint32_t pid,
                                                      std::uint32_t time, std::uint32_t code) {
    TelegramHead head;
    head.length = kReportTelegramSize;
    head.code = code;
    head.sender = kDaemonId;
    head.receiver = kProviderId;
    head.pid = pid;
    head.time = time;
    std::vector<std::uint8_t> out = EncodeHead(head);
    out.resize(kReportTelegramSize, 0);
    std::uint8_t* body = &out[kHeadSize];
    body[kResultOffset] = content.result;
    std::uint8_t* report = body + kReportOffset;
    PutBigEndian(report + kLogicalGenerationOffset, content.logicalGeneration, 8);
    PutBigEndian(report + kPhysicalGenerationOffset, content.physicalGeneration, 8);
    return out;
}

AlarmReportContent Telegram::DecodeAlarmReport(const std::uint8_t* data, std::size_t size) {
    const TelegramHead head = DecodeHead(data, size);
    if (head.length != kReportTelegramSize || size != kReportTelegramSize)
        throw TelegramError("alarm report of " + std::to_string(size) + " bytes, " +
                            std::to_string(kReportTelegramSize) + " expected");
    const std::uint8_t* body = data + kHeadSize;
    AlarmReportContent content;
    content.result = body[kResultOffset];
    content.logicalGeneration = GetBigEndian(body + kReportOffset + kLogicalGenerationOffset, 8);
    content.physicalGeneration = GetBigEndian(body + kReportOffset + kPhysicalGenerationOffset, 8);
    return content;
}

}  // namespace arraysim
