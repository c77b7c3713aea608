#include "NameRules.h"

#include <cstdio>

#include "CommandError.h"

namespace arraysim {

namespace {

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-' ||
           c == '/';
}

}  // namespace

void NameRules::CheckName(const std::string& what, const std::string& name) {
    if (name.empty()) throw CommandError(CommandError::Kind::Rule, "the " + what + " is empty");
    if (name.size() > kMaxNameLength)
        throw CommandError(CommandError::Kind::Rule, "the " + what + " \"" + name + "\" is longer than " +
                                                         std::to_string(kMaxNameLength) + " characters");
    for (char c : name)
        if (!isNameCharacter(c))
            throw CommandError(CommandError::Kind::Rule,
                               "the " + what + " \"" + name +
                                   "\" holds a character other than letters, digits, \"_\", \"-\" and \"/\"");
}

void NameRules::SplitLdSet(const std::string& text, std::string& platform, std::string& name) {
    const auto colon = text.find(':');
    if (colon == std::string::npos)
        throw CommandError(CommandError::Kind::Rule,
                           "the LD set \"" + text + "\" is not written as <platform>:<name>");
    platform = text.substr(0, colon);
    name = text.substr(colon + 1);
    bool platformGood = platform.size() == 2;
    for (char c : platform) platformGood &= (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    if (!platformGood)
        throw CommandError(CommandError::Kind::Rule, "the platform \"" + platform + "\" of the LD set \"" + text +
                                                         "\" is not two capital letters or digits");
    CheckName("LD set name", name);
}

std::string NameRules::Hex(unsigned number) {
    char text[16];
    std::snprintf(text, sizeof text, "%04xh", number);
    return text;
}

}  // namespace arraysim
