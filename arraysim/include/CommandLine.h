#pragma once
// The arguments of one configuration or replication command, read against
// the options the command takes. Every option is a word of its own followed,
// when it takes one, by its value; an option given twice, an unknown option,
// a missing value or a stray word is refused (CommandError::Kind::Syntax),
// never guessed at.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace arraysim {

struct OptionDef {
    std::string name;  // with its dash: "-poolnumber"
    bool takesValue;
};

class CommandLine {
public:
    // Splits one line into words at runs of blanks (spaces, tabs); leading
    // and trailing blanks are ignored. Control characters and the quoting and
    // substitution characters of a shell are refused: the array's tools take
    // plain words only.
    static std::vector<std::string> Split(const std::string& line);

    // Reads args (without the tool's name and sub-command) for `command`,
    // the name used in messages ("Vexcfg ldbind").
    CommandLine(std::string command, const std::vector<std::string>& args, const std::vector<OptionDef>& allowed);

    const std::string& Command() const { return m_command; }

    bool Has(const std::string& option) const { return m_values.count(option) != 0; }

    // The value of a required option.
    const std::string& Value(const std::string& option) const;

    // Exactly one of the options must be given; returns it.
    std::string OneOf(const std::vector<std::string>& options) const;

    // The value, which must be one of the choices (compared exactly).
    std::string Choice(const std::string& option, const std::vector<std::string>& choices) const;

    // A hexadecimal number written with the suffix h ("001ah"), at most max.
    unsigned Hex(const std::string& option, unsigned max) const;

    // A comma list of such numbers ("3ch,3dh"), none twice.
    std::vector<unsigned> HexList(const std::string& option, unsigned max) const;

    // A decimal number from min to max.
    std::uint64_t Decimal(const std::string& option, std::uint64_t min, std::uint64_t max) const;

    // The parsing behind Hex and Decimal, for values that are not options' values.
    static bool ParseHex(const std::string& text, unsigned max, unsigned& value);

private:
    std::string m_command;
    std::map<std::string, std::string> m_values;
};

}  // namespace arraysim
