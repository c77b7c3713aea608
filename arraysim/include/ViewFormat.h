#pragma once
// How the array writes numbers, times and sizes in its result documents.

#include <cstdint>
#include <string>

namespace arraysim {

class ViewFormat {
public:
    // Hexadecimal digits without prefix, in capitals, at least `width` wide: Hex(26, 4) is "001A".
    static std::string Hex(std::uint64_t value, int width);
    // "Port No.(h)": two groups of two digits, "00-01".
    static std::string PortNumber(unsigned director, unsigned port);
    // "PDN(h)": group and disk number, "00-1a"; a number above ff takes more digits.
    static std::string DiskNumber(unsigned group, unsigned number);
    // Decimal with a comma every three digits: 1234567 is "1,234,567".
    static std::string WithCommas(std::uint64_t value);
    // "2026/11/23 02:45:07" in local time; empty for 0.
    static std::string Time(long long secondsSinceEpoch);
    // A size with its unit, one decimal place: 13421772800 is "12.5GB", 2048 is "2KB";
    // a whole number is written without its decimal place.
    static std::string DataSize(std::uint64_t bytes);
};

}  // namespace arraysim
