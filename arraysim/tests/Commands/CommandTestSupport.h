#pragma once
// Shared pieces of the command tests: the small template array in memory and
// lines applied exactly as the module writes them.

#include <string>
#include <vector>

#include "ArrayState.h"
#include "CommandError.h"
#include "CommandLine.h"
#include "ConfigTools.h"
#include "Templates.h"

namespace arraysim_test {

// 2026-03-01 00:00:00 UTC: the simulated clock of the tests.
constexpr long long kNowMillis = 1772323200000LL;

// The small template: pools 0000h and 0001h (RAID6, disks 00-0000 to 00-000B),
// free SAS disks 00-000C to 00-0017, LDs 0000h to 000Fh, LD sets LX:HOST0000,
// WN:HOST0001, VX:HOST0002, CX:HOST0003 (FC, LUNs 0 to 2), BV LD0009 with SVs
// LD000A and LD000B, pairs LD000E/LD000F (rpl/sync) and LD000C/LD000D (separated).
inline arraysim::ArrayState SmallArray() {
    arraysim::TemplateOptions options;
    options.size = "small";
    return arraysim::Templates::Build(options);
}

// Applies one whole line ("Vexcfg ldbind -poolnumber ..."); the first word is the tool.
inline std::string ApplyLine(arraysim::ArrayState& state, const std::string& line, long long nowMillis = kNowMillis) {
    std::vector<std::string> words = arraysim::CommandLine::Split(line);
    if (words.empty()) throw arraysim::CommandError(arraysim::CommandError::Kind::Syntax, "empty line");
    const std::string tool = words.front();
    words.erase(words.begin());
    return arraysim::ConfigTools::Apply(tool, words, state, nowMillis);
}

}  // namespace arraysim_test
