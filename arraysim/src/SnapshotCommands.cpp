#include "SnapshotCommands.h"

#include <algorithm>

#include "CommandError.h"
#include "CommandLine.h"
#include "LdCommands.h"
#include "NameRules.h"
#include "PoolCommands.h"

namespace arraysim {

namespace {

constexpr std::uint64_t kMiB = 1024ULL * 1024;
constexpr std::uint64_t kMaxAreaMegabytes = 128ULL * 1024 * 1024;

CommandError refuse(CommandError::Kind kind, const std::string& text) { return CommandError(kind, text); }

std::uint64_t freeBytes(const Pool& pool) { return pool.capacity > pool.usedCapacity ? pool.capacity - pool.usedCapacity : 0; }

std::string mb(std::uint64_t bytes) { return std::to_string(bytes / kMiB) + " MB"; }

Pool& existingPool(ArrayState& state, unsigned number) {
    Pool* pool = state.FindPool(number);
    if (pool == nullptr) throw refuse(CommandError::Kind::NotFound, "pool " + NameRules::Hex(number) + " does not exist");
    return *pool;
}

SnapshotReserveArea* areaOf(ArrayState& state, unsigned poolNumber) {
    for (SnapshotReserveArea& area : state.reserveAreas)
        if (area.poolNumber == poolNumber) return &area;
    return nullptr;
}

void takeSpace(Pool& pool, std::uint64_t bytes) {
    if (bytes > freeBytes(pool))
        throw refuse(CommandError::Kind::Capacity, "pool " + NameRules::Hex(pool.number) + " has " + mb(freeBytes(pool)) +
                                                       " free; the reserve area needs " + mb(bytes));
    pool.usedCapacity += bytes;
}

std::string bindArea(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg srabind", args, {{"-poolnumber", true}, {"-capacity", true}, {"-capunit", true}});
    const unsigned number = line.Hex("-poolnumber", PoolCommands::kMaxPoolNumber);
    const std::uint64_t megabytes = line.Decimal("-capacity", 0, kMaxAreaMegabytes);
    line.Choice("-capunit", {"mb"});
    Pool& pool = existingPool(state, number);
    if (megabytes == 0) throw refuse(CommandError::Kind::Rule, "a reserve area needs a capacity of at least 1 MB");
    if (areaOf(state, number) != nullptr)
        throw refuse(CommandError::Kind::Exists, "pool " + NameRules::Hex(number) + " has a snapshot reserve area already");
    if (pool.state != "ready")
        throw refuse(CommandError::Kind::State, "pool " + NameRules::Hex(number) + " is not ready (state " + pool.state + ")");
    takeSpace(pool, megabytes * kMiB);
    SnapshotReserveArea area;
    area.poolNumber = number;
    area.capacity = megabytes * kMiB;
    state.reserveAreas.push_back(area);
    return "a snapshot reserve area of " + mb(area.capacity) + " was bound in pool " + NameRules::Hex(number);
}

std::string expandArea(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg sraexpand", args, {{"-poolnumber", true}, {"-capacity", true}, {"-capunit", true}});
    const unsigned number = line.Hex("-poolnumber", PoolCommands::kMaxPoolNumber);
    const std::uint64_t megabytes = line.Decimal("-capacity", 0, kMaxAreaMegabytes);
    line.Choice("-capunit", {"mb"});
    Pool& pool = existingPool(state, number);
    if (megabytes == 0) throw refuse(CommandError::Kind::Rule, "an expansion needs a capacity of at least 1 MB");
    SnapshotReserveArea* area = areaOf(state, number);
    if (area == nullptr)
        throw refuse(CommandError::Kind::NotFound, "pool " + NameRules::Hex(number) + " has no snapshot reserve area");
    takeSpace(pool, megabytes * kMiB);
    area->capacity += megabytes * kMiB;
    return "the snapshot reserve area of pool " + NameRules::Hex(number) + " now has " + mb(area->capacity);
}

std::string unbindArea(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg sraunbind", args, {{"-poolnumber", true}});
    const unsigned number = line.Hex("-poolnumber", PoolCommands::kMaxPoolNumber);
    Pool& pool = existingPool(state, number);
    SnapshotReserveArea* area = areaOf(state, number);
    if (area == nullptr)
        throw refuse(CommandError::Kind::NotFound, "pool " + NameRules::Hex(number) + " has no snapshot reserve area");
    for (const SnapshotBase& base : state.snapshots)
        for (const SnapshotGeneration& generation : base.generations) {
            const LogicalDisk* sv = state.FindLd(generation.number);
            if (sv != nullptr && sv->poolNumber == number)
                throw refuse(CommandError::Kind::InUse, "the snapshot reserve area of pool " + NameRules::Hex(number) +
                                                            " serves generations of base volume " + NameRules::Hex(base.number));
        }
    pool.usedCapacity -= std::min(pool.usedCapacity, area->capacity);
    state.reserveAreas.erase(state.reserveAreas.begin() + (area - state.reserveAreas.data()));
    return "the snapshot reserve area of pool " + NameRules::Hex(number) + " was unbound";
}

// The lowest LD numbers no LD has, for new snapshot volumes.
std::vector<unsigned> freeLdNumbers(const ArrayState& state, std::size_t count) {
    std::vector<bool> used(LdCommands::kMaxLdNumber + 1, false);
    for (const LogicalDisk& ld : state.lds)
        if (ld.number <= LdCommands::kMaxLdNumber) used[ld.number] = true;
    std::vector<unsigned> numbers;
    for (unsigned n = 0; n <= LdCommands::kMaxLdNumber && numbers.size() < count; ++n)
        if (!used[n]) numbers.push_back(n);
    if (numbers.size() < count) throw refuse(CommandError::Kind::Limit, "the array has no free LD numbers left");
    return numbers;
}

SnapshotBase* baseOf(ArrayState& state, unsigned bv) { return state.FindSnapshotBase(bv); }

std::string addGenerations(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg generationadd", args, {{"-bvn", true}, {"-poolnumber", true}, {"-count", true}, {"-svname", true}});
    const unsigned bvNumber = line.Hex("-bvn", LdCommands::kMaxLdNumber);
    const unsigned poolNumber = line.Hex("-poolnumber", PoolCommands::kMaxPoolNumber);
    const auto count = static_cast<int>(line.Decimal("-count", 1, SnapshotCommands::kMaxGenerations));
    const std::string& svName = line.Value("-svname");
    NameRules::CheckName("SV name", svName);
    LogicalDisk* bv = state.FindLd(bvNumber);
    if (bv == nullptr) throw refuse(CommandError::Kind::NotFound, "logical disk " + NameRules::Hex(bvNumber) + " does not exist");
    if (bv->snapshotAttribute == "SV")
        throw refuse(CommandError::Kind::Rule, "logical disk " + NameRules::Hex(bvNumber) + " is a snapshot volume; it cannot be a base");
    existingPool(state, poolNumber);
    if (areaOf(state, poolNumber) == nullptr)
        throw refuse(CommandError::Kind::State, "pool " + NameRules::Hex(poolNumber) + " has no snapshot reserve area");
    SnapshotBase* base = baseOf(state, bvNumber);
    const int existing = base == nullptr ? 0 : static_cast<int>(base->generations.size());
    if (existing + count > SnapshotCommands::kMaxGenerations)
        throw refuse(CommandError::Kind::Limit, "base volume " + NameRules::Hex(bvNumber) + " has " + std::to_string(existing) +
                                                    " generations; it can have " +
                                                    std::to_string(SnapshotCommands::kMaxGenerations) + " at most");
    // One generation takes the name as given; several are numbered behind it.
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i) {
        const std::string name = count == 1 ? svName : svName + "_" + std::to_string(existing + i + 1);
        NameRules::CheckName("SV name", name);
        if (state.FindLdByName(name) != nullptr)
            throw refuse(CommandError::Kind::Exists, "the LD name \"" + name + "\" is in use");
        names.push_back(name);
    }
    const std::vector<unsigned> numbers = freeLdNumbers(state, static_cast<std::size_t>(count));
    const std::uint64_t capacity = bv->capacity;
    bv->purpose = "Snapshot";
    bv->snapshotAttribute = "BV";
    if (base == nullptr) {
        SnapshotBase fresh;
        fresh.number = bvNumber;
        fresh.reserveArea = "---";
        state.snapshots.push_back(fresh);
        base = &state.snapshots.back();
    }
    int generation = 0;
    for (const SnapshotGeneration& g : base->generations) generation = std::max(generation, g.generation);
    for (int i = 0; i < count; ++i) {
        LogicalDisk sv;
        sv.number = numbers[static_cast<std::size_t>(i)];
        sv.name = names[static_cast<std::size_t>(i)];
        sv.capacity = capacity;
        sv.poolNumber = poolNumber;
        sv.purpose = "Snapshot";
        sv.snapshotAttribute = "SV";
        sv.rplAttribute = "IV";
        auto at = std::lower_bound(state.lds.begin(), state.lds.end(), sv.number,
                                   [](const LogicalDisk& other, unsigned n) { return other.number < n; });
        state.lds.insert(at, sv);
        SnapshotGeneration entry;
        entry.number = sv.number;
        entry.generation = ++generation;
        entry.snapState = "snap/inactive";
        base->generations.push_back(entry);
    }
    return (count == 1 ? std::string("1 generation was") : std::to_string(count) + " generations were") +
           " added to base volume " + NameRules::Hex(bvNumber);
}

std::string deleteGenerations(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg generationdel", args, {{"-bvn", true}, {"-count", true}});
    const unsigned bvNumber = line.Hex("-bvn", LdCommands::kMaxLdNumber);
    const auto count = static_cast<std::size_t>(line.Decimal("-count", 1, SnapshotCommands::kMaxGenerations));
    SnapshotBase* base = baseOf(state, bvNumber);
    if (base == nullptr || base->generations.empty())
        throw refuse(CommandError::Kind::NotFound, "logical disk " + NameRules::Hex(bvNumber) + " has no snapshot generations");
    // The newest generations that hold no snapshot go; one whose snapshot is
    // being deleted counts as empty, the array finishes the deletion with it.
    std::vector<std::size_t> victims;
    for (std::size_t i = base->generations.size(); i-- > 0 && victims.size() < count;) {
        const std::string& snapState = base->generations[i].snapState;
        if (snapState == "snap/inactive" || snapState == "snap/deleting") victims.push_back(i);
    }
    if (victims.size() < count)
        throw refuse(CommandError::Kind::State, "base volume " + NameRules::Hex(bvNumber) + " has " +
                                                    std::to_string(victims.size()) +
                                                    " generations without a snapshot; delete snapshots first");
    for (std::size_t index : victims) {
        const unsigned svNumber = base->generations[index].number;
        for (const LdSet& set : state.ldSets)
            for (const LunMapping& lun : set.luns)
                if (lun.ldn == svNumber)
                    throw refuse(CommandError::Kind::InUse, "snapshot volume " + NameRules::Hex(svNumber) + " is in the LD set " +
                                                                set.platform + ":" + set.name);
    }
    for (std::size_t index : victims) {  // highest index first, so the others stay in place
        const unsigned svNumber = base->generations[index].number;
        state.lds.erase(std::remove_if(state.lds.begin(), state.lds.end(),
                                       [svNumber](const LogicalDisk& ld) { return ld.number == svNumber; }),
                        state.lds.end());
        base->generations.erase(base->generations.begin() + static_cast<std::ptrdiff_t>(index));
    }
    if (base->generations.empty()) {
        state.snapshots.erase(state.snapshots.begin() + (base - state.snapshots.data()));
        if (LogicalDisk* bv = state.FindLd(bvNumber)) {
            bv->snapshotAttribute = "---";
            if (bv->purpose == "Snapshot") bv->purpose = "---";
        }
    }
    return (count == 1 ? std::string("1 generation") : std::to_string(count) + " generations") + " of base volume " +
           NameRules::Hex(bvNumber) + (count == 1 ? " was" : " were") + " deleted";
}

// The BV and SV named on a Vexsc line, checked to belong together.
struct Subject {
    SnapshotBase* base;
    SnapshotGeneration* generation;
    std::string label;
};

Subject subjectOf(const std::string& tool, const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line(tool, args, {{"-bv", true}, {"-bvflg", true}, {"-sv", true}, {"-svflg", true}});
    const std::string& bvName = line.Value("-bv");
    line.Choice("-bvflg", {"ld"});
    const std::string& svName = line.Value("-sv");
    line.Choice("-svflg", {"ld"});
    LogicalDisk* bv = state.FindLdByName(bvName);
    if (bv == nullptr) throw refuse(CommandError::Kind::NotFound, "no logical disk is named " + bvName);
    LogicalDisk* sv = state.FindLdByName(svName);
    if (sv == nullptr) throw refuse(CommandError::Kind::NotFound, "no logical disk is named " + svName);
    SnapshotBase* base = state.FindSnapshotBase(bv->number);
    if (base == nullptr) throw refuse(CommandError::Kind::State, bvName + " is no base volume: it has no generations");
    for (SnapshotGeneration& generation : base->generations)
        if (generation.number == sv->number) return {base, &generation, "BV " + bvName + ", SV " + svName};
    throw refuse(CommandError::Kind::Rule, svName + " is no generation of " + bvName);
}

bool restoring(const SnapshotBase& base) {
    return std::any_of(base.generations.begin(), base.generations.end(),
                       [](const SnapshotGeneration& g) { return g.snapState == "rst/exec"; });
}

std::string create(const std::string& tool, const std::vector<std::string>& args, ArrayState& state, long long nowMillis) {
    Subject subject = subjectOf(tool, args, state);
    SnapshotGeneration& generation = *subject.generation;
    if (generation.snapState != "snap/inactive" && generation.snapState != "snap/active")
        throw refuse(CommandError::Kind::State, "the snapshot of " + subject.label + " is busy (" + generation.snapState + ")");
    if (restoring(*subject.base))
        throw refuse(CommandError::Kind::State, "a snapshot of " + subject.label.substr(0, subject.label.find(',')) +
                                                    " is being restored");
    generation.snapState = "snap/preparing";
    generation.activityStartMillis = nowMillis;
    generation.creationTime = generation.startTime = nowMillis / 1000;
    generation.snapshotDataSize = 0;
    generation.processingDataSize = 0;
    return "a snapshot was taken: " + subject.label;
}

std::string remove(const std::string& tool, const std::vector<std::string>& args, ArrayState& state, long long nowMillis) {
    Subject subject = subjectOf(tool, args, state);
    SnapshotGeneration& generation = *subject.generation;
    if (generation.snapState == "snap/inactive")
        throw refuse(CommandError::Kind::State, "the generation of " + subject.label + " holds no snapshot");
    if (generation.snapState != "snap/active")
        throw refuse(CommandError::Kind::State, "the snapshot of " + subject.label + " is busy (" + generation.snapState + ")");
    generation.snapState = "snap/deleting";
    generation.activityStartMillis = nowMillis;
    generation.startTime = nowMillis / 1000;
    generation.processingDataSize = generation.snapshotDataSize;
    return "the snapshot is being deleted: " + subject.label;
}

std::string restore(const std::string& tool, const std::vector<std::string>& args, ArrayState& state, long long nowMillis) {
    Subject subject = subjectOf(tool, args, state);
    SnapshotGeneration& generation = *subject.generation;
    if (generation.snapState != "snap/active")
        throw refuse(CommandError::Kind::State, "the generation of " + subject.label + " holds no snapshot to restore (" +
                                                    generation.snapState + ")");
    if (restoring(*subject.base))
        throw refuse(CommandError::Kind::State, "a snapshot of " + subject.label.substr(0, subject.label.find(',')) +
                                                    " is being restored already");
    generation.snapState = "rst/exec";
    generation.activityStartMillis = nowMillis;
    generation.startTime = nowMillis / 1000;
    generation.processingDataSize = generation.snapshotDataSize;
    return "the snapshot is being restored: " + subject.label;
}

}  // namespace

bool SnapshotCommands::Handles(const std::string& subcommand) {
    return subcommand == "srabind" || subcommand == "sraunbind" || subcommand == "sraexpand" ||
           subcommand == "generationadd" || subcommand == "generationdel";
}

std::string SnapshotCommands::Apply(const std::string& subcommand, const std::vector<std::string>& args, ArrayState& state) {
    if (subcommand == "srabind") return bindArea(args, state);
    if (subcommand == "sraunbind") return unbindArea(args, state);
    if (subcommand == "sraexpand") return expandArea(args, state);
    if (subcommand == "generationadd") return addGenerations(args, state);
    if (subcommand == "generationdel") return deleteGenerations(args, state);
    throw CommandError(CommandError::Kind::Syntax, "Vexcfg: " + subcommand + " is no snapshot command");
}

std::string SnapshotCommands::RunTool(const std::string& tool, const std::vector<std::string>& args, ArrayState& state,
                                      long long nowMillis) {
    if (tool == "Vexsc_create") return create(tool, args, state, nowMillis);
    if (tool == "Vexsc_delete") return remove(tool, args, state, nowMillis);
    if (tool == "Vexsc_restore") return restore(tool, args, state, nowMillis);
    throw CommandError(CommandError::Kind::Syntax, tool + " is no snapshot tool");
}

}  // namespace arraysim
