#include "LdCommands.h"

#include <algorithm>
#include <cstdio>

#include "CommandError.h"
#include "CommandLine.h"
#include "NameRules.h"
#include "PoolCommands.h"

namespace arraysim {

namespace {

constexpr std::uint64_t kMiB = 1024ULL * 1024;
// The largest LD, in MB (128 TiB).
constexpr std::uint64_t kMaxLdMegabytes = 128ULL * 1024 * 1024;

CommandError refuse(CommandError::Kind kind, const std::string& text) { return CommandError(kind, text); }

std::uint64_t freeBytes(const Pool& pool) { return pool.capacity > pool.usedCapacity ? pool.capacity - pool.usedCapacity : 0; }

std::string mb(std::uint64_t bytes) { return std::to_string(bytes / kMiB) + " MB"; }

Pool& readyPool(ArrayState& state, unsigned number) {
    Pool* pool = state.FindPool(number);
    if (pool == nullptr) throw refuse(CommandError::Kind::NotFound, "pool " + NameRules::Hex(number) + " does not exist");
    if (pool->state != "ready")
        throw refuse(CommandError::Kind::State,
                     "pool " + NameRules::Hex(number) + " is not ready (state " + pool->state + ")");
    return *pool;
}

LogicalDisk& existingLd(ArrayState& state, unsigned number) {
    LogicalDisk* ld = state.FindLd(number);
    if (ld == nullptr) throw refuse(CommandError::Kind::NotFound, "logical disk " + NameRules::Hex(number) + " does not exist");
    return *ld;
}

// The default name of a new LD, unless another LD has taken it.
std::string defaultName(ArrayState& state, unsigned number) {
    char text[16];
    std::snprintf(text, sizeof text, "LD%04X", number);
    return state.FindLdByName(text) == nullptr ? text : "";
}

std::string bind(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg ldbind", args,
                     {{"-poolnumber", true}, {"-ldn", true}, {"-capacity", true}, {"-unit", true}, {"-mode", true},
                      {"-thr", true}});
    const unsigned poolNumber = line.Hex("-poolnumber", PoolCommands::kMaxPoolNumber);
    const unsigned number = line.Hex("-ldn", LdCommands::kMaxLdNumber);
    const std::uint64_t megabytes = line.Decimal("-capacity", 0, kMaxLdMegabytes);
    line.Choice("-unit", {"mb"});
    line.Choice("-mode", {"exc"});
    Pool& pool = readyPool(state, poolNumber);
    if (megabytes == 0) throw refuse(CommandError::Kind::Rule, "an LD needs a capacity of at least 1 MB");
    int threshold = 0;
    if (line.Has("-thr")) {
        threshold = static_cast<int>(line.Decimal("-thr", 1, 99));
        if (pool.poolType != "virtual")
            throw refuse(CommandError::Kind::Rule, "a threshold applies to LDs of virtual pools only; pool " +
                                                       NameRules::Hex(poolNumber) + " is dynamic");
    }
    if (state.FindLd(number) != nullptr)
        throw refuse(CommandError::Kind::Exists, "logical disk " + NameRules::Hex(number) + " exists already");
    const std::uint64_t bytes = megabytes * kMiB;
    if (bytes > freeBytes(pool))
        throw refuse(CommandError::Kind::Capacity, "pool " + NameRules::Hex(poolNumber) + " has " + mb(freeBytes(pool)) +
                                                       " free; the LD needs " + mb(bytes));
    LogicalDisk ld;
    ld.number = number;
    ld.name = defaultName(state, number);
    ld.capacity = bytes;
    ld.poolNumber = poolNumber;
    ld.rplAttribute = "IV";
    if (threshold > 0) ld.threshold = std::to_string(threshold);
    const std::size_t controllers = std::max<std::size_t>(1, state.controllers.size());
    const unsigned owner = state.controllers.empty() ? 0 : state.controllers[number % controllers].number;
    ld.defaultOwner = ld.currentOwner = std::to_string(owner);
    pool.usedCapacity += bytes;
    // Keep the LDs in number order, as the array lists them.
    auto at = std::lower_bound(state.lds.begin(), state.lds.end(), number,
                               [](const LogicalDisk& other, unsigned n) { return other.number < n; });
    state.lds.insert(at, ld);
    return "logical disk " + NameRules::Hex(number) + " of " + mb(bytes) + " was bound in pool " + NameRules::Hex(poolNumber);
}

std::string expand(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg ldexpand", args, {{"-ldn", true}, {"-capacity", true}, {"-unit", true}});
    const unsigned number = line.Hex("-ldn", LdCommands::kMaxLdNumber);
    const std::uint64_t bytes = line.Decimal("-capacity", 0, kMaxLdMegabytes) * kMiB;
    line.Choice("-unit", {"mb"});
    LogicalDisk& ld = existingLd(state, number);
    // An LD grows while hosts use it; a copy or snapshot relation keeps its size fixed.
    const std::string holder = LdCommands::Holder(state, number, false);
    if (!holder.empty())
        throw refuse(CommandError::Kind::InUse, "logical disk " + NameRules::Hex(number) + " belongs to " + holder +
                                                    " and cannot be expanded");
    if (bytes <= ld.capacity)
        throw refuse(CommandError::Kind::Rule, "logical disk " + NameRules::Hex(number) + " has " + mb(ld.capacity) +
                                                   "; an expansion must make it larger");
    Pool& pool = readyPool(state, ld.poolNumber);
    const std::uint64_t more = bytes - ld.capacity;
    if (more > freeBytes(pool))
        throw refuse(CommandError::Kind::Capacity, "pool " + NameRules::Hex(pool.number) + " has " + mb(freeBytes(pool)) +
                                                       " free; the expansion needs " + mb(more));
    pool.usedCapacity += more;
    ld.capacity = bytes;
    return "logical disk " + NameRules::Hex(number) + " now has " + mb(bytes);
}

std::string unbind(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg ldunbind", args, {{"-ldn", true}});
    const unsigned number = line.Hex("-ldn", LdCommands::kMaxLdNumber);
    LogicalDisk& ld = existingLd(state, number);
    const std::string holder = LdCommands::Holder(state, number);
    if (!holder.empty())
        throw refuse(CommandError::Kind::InUse, "logical disk " + NameRules::Hex(number) + " belongs to " + holder +
                                                    " and cannot be unbound");
    if (Pool* pool = state.FindPool(ld.poolNumber)) {
        pool->usedCapacity -= std::min(pool->usedCapacity, ld.capacity);
        pool->actualUsedCapacity -= std::min(pool->actualUsedCapacity, ld.actualUsedCapacity);
    }
    state.lds.erase(std::find_if(state.lds.begin(), state.lds.end(),
                                 [number](const LogicalDisk& other) { return other.number == number; }));
    return "logical disk " + NameRules::Hex(number) + " was unbound";
}

std::string nickname(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg nickname", args, {{"-poolnumber", true}, {"-ldn", true}, {"-newname", true}});
    const std::string target = line.OneOf({"-poolnumber", "-ldn"});
    const std::string& newName = line.Value("-newname");
    if (target == "-poolnumber") {
        const unsigned number = line.Hex("-poolnumber", PoolCommands::kMaxPoolNumber);
        NameRules::CheckName("pool name", newName);
        Pool* pool = state.FindPool(number);
        if (pool == nullptr) throw refuse(CommandError::Kind::NotFound, "pool " + NameRules::Hex(number) + " does not exist");
        for (const Pool& other : state.pools)
            if (other.name == newName && other.number != number)
                throw refuse(CommandError::Kind::Exists, "the pool name \"" + newName + "\" is in use by pool " +
                                                             NameRules::Hex(other.number));
        pool->name = newName;
        return "pool " + NameRules::Hex(number) + " is named " + newName;
    }
    const unsigned number = line.Hex("-ldn", LdCommands::kMaxLdNumber);
    // An LD's new name is written with a colon in front of it.
    if (newName.empty() || newName[0] != ':')
        throw CommandError(CommandError::Kind::Syntax,
                           "Vexcfg nickname: an LD's new name is written \":name\", not \"" + newName + "\"");
    const std::string name = newName.substr(1);
    NameRules::CheckName("LD name", name);
    LogicalDisk& ld = existingLd(state, number);
    const LogicalDisk* other = state.FindLdByName(name);
    if (other != nullptr && other->number != number)
        throw refuse(CommandError::Kind::Exists, "the LD name \"" + name + "\" is in use by logical disk " +
                                                     NameRules::Hex(other->number));
    ld.name = name;
    return "logical disk " + NameRules::Hex(number) + " is named " + name;
}

}  // namespace

bool LdCommands::Handles(const std::string& subcommand) {
    return subcommand == "ldbind" || subcommand == "ldexpand" || subcommand == "ldunbind" || subcommand == "nickname";
}

std::string LdCommands::Apply(const std::string& subcommand, const std::vector<std::string>& args, ArrayState& state) {
    if (subcommand == "ldbind") return bind(args, state);
    if (subcommand == "ldexpand") return expand(args, state);
    if (subcommand == "ldunbind") return unbind(args, state);
    if (subcommand == "nickname") return nickname(args, state);
    throw CommandError(CommandError::Kind::Syntax, "Vexcfg: " + subcommand + " is no LD command");
}

std::string LdCommands::Holder(const ArrayState& state, unsigned ldNumber, bool countLdSets) {
    for (const ReplicationPair& pair : state.pairs)
        if (pair.mvNumber == ldNumber || pair.rvNumber == ldNumber)
            return std::string("a replication pair (") + (pair.mvNumber == ldNumber ? "MV" : "RV") + ")";
    for (const SnapshotBase& base : state.snapshots) {
        if (base.number == ldNumber && !base.generations.empty()) return "a snapshot base with generations (BV)";
        for (const SnapshotGeneration& generation : base.generations)
            if (generation.number == ldNumber) return "a snapshot generation (SV)";
    }
    if (!countLdSets) return "";
    for (const LdSet& set : state.ldSets)
        for (const LunMapping& lun : set.luns)
            if (lun.ldn == ldNumber) return "the LD set " + set.platform + ":" + set.name;
    return "";
}

}  // namespace arraysim
