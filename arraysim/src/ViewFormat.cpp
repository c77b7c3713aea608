#include "ViewFormat.h"

#include <cstdio>
#include <ctime>

namespace arraysim {

std::string ViewFormat::Hex(std::uint64_t value, int width) {
    char text[32];
    std::snprintf(text, sizeof text, "%0*llX", width, static_cast<unsigned long long>(value));
    return text;
}

std::string ViewFormat::PortNumber(unsigned director, unsigned port) {
    char text[32];
    std::snprintf(text, sizeof text, "%02x-%02x", director, port);
    return text;
}

std::string ViewFormat::DiskNumber(unsigned group, unsigned number) {
    char text[32];
    std::snprintf(text, sizeof text, "%02x-%02x", group, number);
    return text;
}

std::string ViewFormat::WithCommas(std::uint64_t value) {
    std::string digits = std::to_string(value);
    std::string text;
    text.reserve(digits.size() + digits.size() / 3);
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) text += ',';
        text += digits[i];
    }
    return text;
}

std::string ViewFormat::Time(long long secondsSinceEpoch) {
    if (secondsSinceEpoch == 0) return "";
    std::time_t when = static_cast<std::time_t>(secondsSinceEpoch);
    std::tm local{};
    localtime_r(&when, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y/%m/%d %H:%M:%S", &local);
    return text;
}

std::string ViewFormat::DataSize(std::uint64_t bytes) {
    static const char* const units[] = {"KB", "MB", "GB", "TB"};
    double value = static_cast<double>(bytes) / 1024.0;
    int unit = 0;
    while (value >= 1024.0 && unit < 3) {
        value /= 1024.0;
        ++unit;
    }
    char text[48];
    if (value == static_cast<double>(static_cast<std::uint64_t>(value)))
        std::snprintf(text, sizeof text, "%llu%s", static_cast<unsigned long long>(value), units[unit]);
    else
        std::snprintf(text, sizeof text, "%.1f%s", value, units[unit]);
    return text;
}

}  // namespace arraysim
