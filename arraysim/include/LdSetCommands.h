#pragma once
// The LD set commands of Vexcfg: addldset, addldsetld, addldsetpath,
// addldsetinitiator, delldset, delldsetld, delldsetpath, delldsetinitiator
// and chgldsetname. An LD set ("<platform>:<name>") gives the hosts named by
// its paths (FC, SAS: host WWPNs or array ports in port mode) or initiators
// (iSCSI) access to its LDs, each under a LUN.

#include <string>
#include <vector>

#include "ArrayState.h"

namespace arraysim {

class LdSetCommands {
public:
    static bool Handles(const std::string& subcommand);

    // Carries out one sub-command on state; returns the message of success.
    // Throws CommandError when the array refuses.
    static std::string Apply(const std::string& subcommand, const std::vector<std::string>& args, ArrayState& state);
};

}  // namespace arraysim
