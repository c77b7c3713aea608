#ifndef ORVSMIS_COMMANDTEXTCHECK_H
#define ORVSMIS_COMMANDTEXTCHECK_H

#include <string>

namespace orvsmis {

// The forms a value may take where it is written into one of the array's
// command lines. Each check accepts exactly what the array itself takes as
// such a value, which leaves no character that a shell would interpret and
// no blank that would split one word into two.
class CommandTextCheck {
public:
    // The longest name of a pool, a logical disk or an LD set.
    static const std::string::size_type MAX_NAME_LENGTH = 32;
    // The longest iSCSI name.
    static const std::string::size_type MAX_INITIATOR_LENGTH = 223;

    // A pool, LD or snapshot volume name: 1 to 32 letters, digits, "_", "-"
    // or "/", not beginning with "-".
    static bool IsArrayName(const std::string& name);
    // A hexadecimal number without prefix or trailing "h": 1 to 8 digits.
    static bool IsHexNumber(const std::string& text);
    // A number as the caller may give it: hexadecimal digits with an
    // optional trailing "h".
    static bool IsNumberWord(const std::string& text);
    // A comma list of disk numbers, each hexadecimal and followed by "h".
    static bool IsPdnList(const std::string& text);
    // An LD set written "<platform>:<name>": two capital letters or digits,
    // a colon, and an array name.
    static bool IsLdSetName(const std::string& text);
    // An iSCSI name: "iqn.", "eui." or "naa.", then letters, digits, ".",
    // "-" or ":", at most 223 characters.
    static bool IsInitiatorName(const std::string& text);
    // A path of an LD set: a port ("00h-01h") or a WWPN
    // ("xxxx-xxxx-xxxx-xxxx"): hexadecimal digits, "h" and "-".
    static bool IsPathText(const std::string& text);
    // A keyword such as a path type: 1 to 16 lower-case letters.
    static bool IsKeyword(const std::string& text);

    // The text as it may appear in a trace: control characters shown as
    // "\xNN", at most 80 characters followed by "..." when longer.
    static std::string Printable(const std::string& text);
};

}  // namespace orvsmis

#endif
