#pragma once
// The array's configuration and replication tools: Vexcfg, the snapshot
// commands (Vexsc_create, Vexsc_delete, Vexsc_restore) and the replication
// commands (Vexrc_pair, Vexrc_replicate, Vexrc_separate, Vexrc_restore,
// Vexrc_change, Vexrc_rvmode). Each run changes the state under its lock and
// answers a CMD_REQUEST document (ResultDocument) whose RETURN_CODE is the
// exit status.

#include <string>
#include <vector>

#include "ArrayState.h"
#include "ToolRegistry.h"

namespace arraysim {

class ConfigTools {
public:
    // Adds every configuration and replication tool to registry; they work
    // on the state in StateStore::DefaultDir() at the present time.
    static void Register(ToolRegistry& registry);

    // The names of the tools Register adds.
    static std::vector<std::string> ToolNames();

    // Runs invocation.tool against the state in stateDir at nowMillis
    // (milliseconds since the epoch); returns the exit status.
    static int Run(ToolInvocation& invocation, const std::string& stateDir, long long nowMillis);

    // Applies one tool line to a state in memory; returns the message of
    // success, throws CommandError when the array refuses.
    static std::string Apply(const std::string& tool, const std::vector<std::string>& args, ArrayState& state,
                             long long nowMillis);
};

}  // namespace arraysim
