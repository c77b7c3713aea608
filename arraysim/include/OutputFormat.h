#pragma once
// Which form the tools answer in: XML when _OUTFMTSET=xml is in the
// environment, else when "outfmtset xml" was run (recorded in the file
// "outfmt" in the state folder), plain text otherwise.

#include <string>

#include "ToolRegistry.h"

namespace arraysim {

class OutputFormat {
public:
    // True when the tools answer in XML.
    static bool XmlChosen(const std::string& stateDir);

    // Records the choice of "outfmtset"; throws std::runtime_error when it cannot.
    static void Record(const std::string& stateDir, bool xml);

    // Adds the "outfmtset xml|text" tool, recording into stateDir.
    static void Register(ToolRegistry& registry, const std::string& stateDir);
};

}  // namespace arraysim
