#include "CommandLine.h"

#include <algorithm>
#include <cstdio>
#include <set>

#include "CommandError.h"

namespace arraysim {

namespace {

CommandError syntax(const std::string& command, const std::string& text) {
    return CommandError(CommandError::Kind::Syntax, command + ": " + text);
}

bool isBlank(char c) { return c == ' ' || c == '\t'; }

// Characters a shell would treat specially; none of them has a place in the
// tools' arguments, so a line holding one was not written for the array.
bool isShellCharacter(char c) {
    static const std::string special = "\"'`$\\;&|<>(){}*?![]~#";
    return special.find(c) != std::string::npos;
}

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

}  // namespace

std::vector<std::string> CommandLine::Split(const std::string& line) {
    std::vector<std::string> words;
    std::string word;
    for (char c : line) {
        const auto byte = static_cast<unsigned char>(c);
        if (isBlank(c)) {
            if (!word.empty()) words.push_back(word);
            word.clear();
            continue;
        }
        if (byte < 0x20 || byte == 0x7f)
            throw CommandError(CommandError::Kind::Syntax, "the command line holds a control character");
        if (isShellCharacter(c))
            throw CommandError(CommandError::Kind::Syntax,
                               std::string("the command line holds the character '") + c + "', which no option takes");
        word += c;
    }
    if (!word.empty()) words.push_back(word);
    return words;
}

CommandLine::CommandLine(std::string command, const std::vector<std::string>& args,
                         const std::vector<OptionDef>& allowed)
    : m_command(std::move(command)) {
    auto definitionOf = [&allowed](const std::string& word) -> const OptionDef* {
        for (const OptionDef& definition : allowed)
            if (definition.name == word) return &definition;
        return nullptr;
    };
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& word = args[i];
        if (word.empty()) throw syntax(m_command, "an empty argument");
        const OptionDef* definition = definitionOf(word);
        if (definition == nullptr) {
            if (word[0] == '-') throw syntax(m_command, "unknown option " + word);
            throw syntax(m_command, "unexpected word " + quoted(word) +
                                        (i == 0 ? "" : " after " + args[i - 1]));
        }
        if (m_values.count(word) != 0) throw syntax(m_command, "option " + word + " is given twice");
        if (!definition->takesValue) {
            m_values[word] = "";
            continue;
        }
        if (i + 1 >= args.size() || args[i + 1].empty() || definitionOf(args[i + 1]) != nullptr)
            throw syntax(m_command, "option " + word + " needs a value");
        m_values[word] = args[++i];
    }
}

const std::string& CommandLine::Value(const std::string& option) const {
    auto it = m_values.find(option);
    if (it == m_values.end()) throw syntax(m_command, "option " + option + " is required");
    return it->second;
}

std::string CommandLine::OneOf(const std::vector<std::string>& options) const {
    std::string found;
    std::string all;
    for (const std::string& option : options) {
        all += (all.empty() ? "" : " or ") + option;
        if (!Has(option)) continue;
        if (!found.empty()) throw syntax(m_command, "options " + found + " and " + option + " exclude each other");
        found = option;
    }
    if (found.empty()) throw syntax(m_command, "one of " + all + " is required");
    return found;
}

std::string CommandLine::Choice(const std::string& option, const std::vector<std::string>& choices) const {
    const std::string& value = Value(option);
    if (std::find(choices.begin(), choices.end(), value) != choices.end()) return value;
    std::string list;
    for (const std::string& choice : choices) list += (list.empty() ? "" : ", ") + choice;
    throw syntax(m_command, "option " + option + " takes " + list + ", not " + quoted(value));
}

bool CommandLine::ParseHex(const std::string& text, unsigned max, unsigned& value) {
    if (text.size() < 2 || text.size() > 9 || text.back() != 'h') return false;
    std::uint64_t number = 0;
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        const char c = text[i];
        int digit;
        if (c >= '0' && c <= '9') digit = c - '0';
        else if (c >= 'a' && c <= 'f') digit = c - 'a' + 10;
        else if (c >= 'A' && c <= 'F') digit = c - 'A' + 10;
        else return false;
        number = number * 16 + static_cast<std::uint64_t>(digit);
    }
    if (number > max) return false;
    value = static_cast<unsigned>(number);
    return true;
}

unsigned CommandLine::Hex(const std::string& option, unsigned max) const {
    const std::string& text = Value(option);
    unsigned value = 0;
    if (!ParseHex(text, max, value)) {
        char limit[16];
        std::snprintf(limit, sizeof limit, "%xh", max);
        throw syntax(m_command, "option " + option + " takes a hexadecimal number with the suffix h from 0h to " +
                                    limit + ", not " + quoted(text));
    }
    return value;
}

std::vector<unsigned> CommandLine::HexList(const std::string& option, unsigned max) const {
    const std::string& text = Value(option);
    std::vector<unsigned> values;
    std::set<unsigned> seen;
    std::size_t start = 0;
    while (true) {
        const std::size_t comma = text.find(',', start);
        const std::string item = text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        unsigned value = 0;
        if (!ParseHex(item, max, value))
            throw syntax(m_command, "option " + option + " takes hexadecimal numbers with the suffix h, separated by commas; " +
                                        quoted(item) + " is not one");
        if (!seen.insert(value).second) throw syntax(m_command, "option " + option + " names " + item + " twice");
        values.push_back(value);
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    return values;
}

std::uint64_t CommandLine::Decimal(const std::string& option, std::uint64_t min, std::uint64_t max) const {
    const std::string& text = Value(option);
    std::uint64_t value = 0;
    bool good = !text.empty() && text.size() <= 19;
    for (char c : text) {
        if (c < '0' || c > '9') {
            good = false;
            break;
        }
        value = value * 10 + static_cast<std::uint64_t>(c - '0');
    }
    if (!good || value < min || value > max)
        throw syntax(m_command, "option " + option + " takes a decimal number from " + std::to_string(min) + " to " +
                                    std::to_string(max) + ", not " + quoted(text));
    return value;
}

}  // namespace arraysim
