#pragma once
// The replication tools: Vexrc_pair (-pair, -unpair, -force), Vexrc_replicate,
// Vexrc_separate, Vexrc_restore, Vexrc_change (-suspend, -resume) and
// Vexrc_rvmode. Volumes are named by their LD names (-mvflg ld, -rvflg ld).
// The commands start copies; CopyProgress moves them on in simulated time.

#include <string>
#include <vector>

#include "ArrayState.h"

namespace arraysim {

class ReplicationCommands {
public:
    // The most RVs one MV may have.
    static constexpr int kMaxRvsPerMv = 4;

    static bool Handles(const std::string& tool);

    // Runs one replication tool at nowMillis; returns the message of success.
    // Throws CommandError when the array refuses.
    static std::string RunTool(const std::string& tool, const std::vector<std::string>& args, ArrayState& state,
                               long long nowMillis);
};

}  // namespace arraysim
