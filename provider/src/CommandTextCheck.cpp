#include "CommandTextCheck.h"

#include <cstdio>

namespace orvsmis {

namespace {

bool isHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }
bool isLetterOrDigit(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); }

bool allHex(const std::string& text, std::string::size_type from, std::string::size_type to) {
    if (from >= to) return false;
    for (std::string::size_type i = from; i < to; ++i)
        if (!isHexDigit(text[i])) return false;
    return true;
}

}  // namespace

bool CommandTextCheck::IsArrayName(const std::string& name) {
    if (name.empty() || name.size() > MAX_NAME_LENGTH) return false;
    // A leading "-" would make the name read as one of the tool's options.
    if (name[0] == '-') return false;
    for (char c : name)
        if (!isLetterOrDigit(c) && c != '_' && c != '-' && c != '/') return false;
    return true;
}

bool CommandTextCheck::IsHexNumber(const std::string& text) { return text.size() <= 8 && allHex(text, 0, text.size()); }

bool CommandTextCheck::IsNumberWord(const std::string& text) {
    std::string::size_type end = text.size();
    if (end > 0 && (text[end - 1] == 'h' || text[end - 1] == 'H')) --end;
    return end <= 8 && allHex(text, 0, end);
}

bool CommandTextCheck::IsPdnList(const std::string& text) {
    std::string::size_type start = 0;
    for (;;) {
        std::string::size_type comma = text.find(',', start);
        std::string::size_type end = comma == std::string::npos ? text.size() : comma;
        // Each entry: hexadecimal digits and the letter h.
        if (end - start < 2 || text[end - 1] != 'h' || end - 1 - start > 8 || !allHex(text, start, end - 1))
            return false;
        if (comma == std::string::npos) return true;
        start = comma + 1;
    }
}

bool CommandTextCheck::IsLdSetName(const std::string& text) {
    if (text.size() < 4 || text[2] != ':') return false;
    for (int i = 0; i < 2; ++i)
        if (!((text[i] >= 'A' && text[i] <= 'Z') || (text[i] >= '0' && text[i] <= '9'))) return false;
    return IsArrayName(text.substr(3));
}

bool CommandTextCheck::IsInitiatorName(const std::string& text) {
    if (text.size() < 5 || text.size() > MAX_INITIATOR_LENGTH) return false;
    std::string prefix = text.substr(0, 4);
    for (char& c : prefix)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (prefix != "iqn." && prefix != "eui." && prefix != "naa.") return false;
    for (char c : text)
        if (!isLetterOrDigit(c) && c != '.' && c != '-' && c != ':') return false;
    return true;
}

bool CommandTextCheck::IsPathText(const std::string& text) {
    if (text.empty() || text.size() > 64) return false;
    for (char c : text)
        if (!isHexDigit(c) && c != 'h' && c != 'H' && c != '-') return false;
    return true;
}

bool CommandTextCheck::IsKeyword(const std::string& text) {
    if (text.empty() || text.size() > 16) return false;
    for (char c : text)
        if (c < 'a' || c > 'z') return false;
    return true;
}

std::string CommandTextCheck::Printable(const std::string& text) {
    std::string out;
    std::string::size_type shown = 0;
    for (char c : text) {
        if (shown == 80) {
            out += "...";
            break;
        }
        unsigned char u = static_cast<unsigned char>(c);
        if (u < 0x20 || u == 0x7f) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02x", u);
            out += escaped;
        } else {
            out += c;
        }
        ++shown;
    }
    return out;
}

}  // namespace orvsmis
