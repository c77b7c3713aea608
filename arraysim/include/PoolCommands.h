#pragma once
// Vexcfg poolbind, poolexpand and poolunbind: pools made of free disks of one
// group and one type, with the array's RAID and base-disk rules.

#include <cstdint>
#include <string>
#include <vector>

#include "ArrayState.h"

namespace arraysim {

class PoolCommands {
public:
    static constexpr unsigned kMaxPoolNumber = 0xff;
    static constexpr std::size_t kMaxDisksPerCommand = 60;

    static bool Handles(const std::string& subcommand);

    // Carries out one sub-command on state; returns the message of success.
    // Throws CommandError, leaving state as it was, when the array refuses.
    static std::string Apply(const std::string& subcommand, const std::vector<std::string>& args, ArrayState& state);

    // Usable bytes of `disks` disks of `diskBytes` each under a RAID text
    // ("RAID6/60(4+PQ)"), in whole GiB as the array allocates; 0 for a text
    // it does not know.
    static std::uint64_t UsableBytes(const std::string& raidType, std::size_t disks, std::uint64_t diskBytes);
};

}  // namespace arraysim
