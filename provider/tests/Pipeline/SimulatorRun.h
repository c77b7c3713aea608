#ifndef ORVSMIS_TEST_SIMULATORRUN_H
#define ORVSMIS_TEST_SIMULATORRUN_H

// The built simulator, as the tests run it: its console command and its
// view tool, whose answer goes into a parser by chunks as the command layer
// feeds it.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "XMLParser.h"

namespace simrun {

inline const std::string SIM_BIN = std::string(TEST_BINARY_DIR) + "/arraysim-bin";

// "arraysim <args>", its output discarded; the exit status.
inline int sim(const std::string& args) {
    return ::system((SIM_BIN + "/arraysim " + args + " >/dev/null 2>&1").c_str());
}

// Vexview -all into the parser. With withErrors the error stream comes along,
// as the module reads both streams as one document.
inline bool runView(orvsmis::XMLParser& parser, bool withErrors = true) {
    parser.Unload();
    std::string line = "_OUTFMTSET=xml " + SIM_BIN + "/Vexview -all " + (withErrors ? "2>&1" : "2>/dev/null");
    FILE* pipe = ::popen(line.c_str(), "r");
    if (pipe == nullptr) return false;
    char buffer[4096];
    size_t n;
    while ((n = ::fread(buffer, 1, sizeof(buffer), pipe)) > 0) parser.LoadChunk(buffer, static_cast<int>(n), 0);
    ::pclose(pipe);
    parser.LoadChunk(buffer, 0, 1);
    return parser.GetReturnCode();
}

}  // namespace simrun

#endif
