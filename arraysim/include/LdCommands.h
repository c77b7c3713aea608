#pragma once
// Vexcfg ldbind, ldexpand, ldunbind and nickname (names of pools and LDs).

#include <string>
#include <vector>

#include "ArrayState.h"

namespace arraysim {

class LdCommands {
public:
    static constexpr unsigned kMaxLdNumber = 0x1fff;  // 8192 LDs

    static bool Handles(const std::string& subcommand);

    // Carries out one sub-command on state; returns the message of success.
    // Throws CommandError when the array refuses.
    static std::string Apply(const std::string& subcommand, const std::vector<std::string>& args, ArrayState& state);

    // What holds the LD so that it cannot be unbound or resized: an LD set,
    // a pair or a snapshot (LD sets only when countLdSets); empty when
    // nothing does.
    static std::string Holder(const ArrayState& state, unsigned ldNumber, bool countLdSets = true);
};

}  // namespace arraysim
