#pragma once
// Snapshots: the reserve areas of pools (Vexcfg srabind, sraunbind,
// sraexpand), the generations of a base volume (Vexcfg generationadd,
// generationdel) and the snapshot tools Vexsc_create, Vexsc_delete and
// Vexsc_restore, whose work CopyProgress carries on in simulated time.

#include <string>
#include <vector>

#include "ArrayState.h"

namespace arraysim {

class SnapshotCommands {
public:
    static constexpr int kMaxGenerations = 16;

    // Vexcfg sub-commands handled here.
    static bool Handles(const std::string& subcommand);

    // Carries out one Vexcfg sub-command; returns the message of success.
    // Throws CommandError when the array refuses.
    static std::string Apply(const std::string& subcommand, const std::vector<std::string>& args, ArrayState& state);

    // Runs the tool Vexsc_create, Vexsc_delete or Vexsc_restore at nowMillis.
    static std::string RunTool(const std::string& tool, const std::vector<std::string>& args, ArrayState& state,
                               long long nowMillis);
};

}  // namespace arraysim
