#pragma once
// What the array accepts as names of pools, LDs and LD sets, and how
// commands write numbers in their messages.

#include <string>

namespace arraysim {

class NameRules {
public:
    static constexpr std::size_t kMaxNameLength = 32;

    // Letters, digits, "_", "-" and "/", 1 to kMaxNameLength characters.
    // Throws CommandError (Rule) naming `what` ("pool name") otherwise.
    static void CheckName(const std::string& what, const std::string& name);

    // An LD set written as the array's tools take it: "<platform>:<name>",
    // the platform two capital letters or digits. Throws CommandError (Rule).
    static void SplitLdSet(const std::string& text, std::string& platform, std::string& name);

    // A number as the commands write it: "001ah".
    static std::string Hex(unsigned number);
};

}  // namespace arraysim
