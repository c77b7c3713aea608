#ifndef ORVSMIS_EXECCMD_H
#define ORVSMIS_EXECCMD_H

#include <string>

namespace orvsmis {

class XMLParser;

// Runs a complete shell line and feeds its output, from the first "<" on, to
// the parser in chunks. The line goes to the shell as it stands: every part of
// it that did not come from the module itself must have passed
// IsSafeCommandText first. 0 when the whole output was handed over and the
// document closed, -1 otherwise. The tool's exit status is not looked at: the
// document's return code tells success.
int LocalCMDRequest(XMLParser* parser, const char* line);

// There is no transport to a remote array: always -1.
int RemoteCMDRequest(XMLParser* parser, const char* line);

// LocalCMDRequest for callers that only want -1 or 0.
int ExecCMD(XMLParser* parser, const char* line);

// Skips to the first "<" among the *count characters at buffer, lowering
// *count by the characters passed over. Null when none is there.
char* passSpace(char* buffer, int* count);

// The text up to the first blank (all of it when there is none).
std::string findCommandName(const std::string& command);

// True when a command's text can be put into a shell line as it stands: no
// character that a shell would take as quoting, substitution, redirection,
// a command separator, a pattern or a comment, and no control character.
bool IsSafeCommandText(const std::string& command);

}  // namespace orvsmis

#endif
