#include "PoolCommands.h"

#include <algorithm>
#include <cstdio>

#include "CommandError.h"
#include "CommandLine.h"
#include "NameRules.h"

namespace arraysim {

namespace {

constexpr std::uint64_t kGiB = 1024ULL * 1024 * 1024;
// The largest virtual capacity a pool may claim, in GiB (1 PiB).
constexpr std::uint64_t kMaxVirtualGiB = 1024ULL * 1024;

CommandError refuse(CommandError::Kind kind, const std::string& text) { return CommandError(kind, text); }

// The layout a RAID text stands for: disks of one base, and data disks in it.
struct Layout {
    int base = 0;
    int data = 0;
    bool restripes = false;  // RAID5/6: a rebuild spreads any number of disks
};

bool layoutOf(const std::string& raidType, Layout& layout) {
    if (raidType == "RAID1/10" || raidType == "RAID1") {
        layout = {2, 1, false};
        return true;
    }
    if (raidType == "RAID-TM") {
        layout = {3, 1, false};
        return true;
    }
    int data = 0;
    char tail[8] = {0};
    if (std::sscanf(raidType.c_str(), "RAID5/50(%d+%7[^)])", &data, tail) == 2 && std::string(tail) == "P") {
        layout = {data + 1, data, true};
        return data == 2 || data == 4 || data == 8;
    }
    if (std::sscanf(raidType.c_str(), "RAID6/60(%d+%7[^)])", &data, tail) == 2 && std::string(tail) == "PQ") {
        layout = {data + 2, data, true};
        return data == 4 || data == 8;
    }
    return false;
}

std::string diskName(unsigned group, unsigned number) {
    char text[16];
    std::snprintf(text, sizeof text, "%02X-%04X", group, number);
    return text;
}

std::string diskLabel(unsigned group, unsigned number) {
    char text[24];
    std::snprintf(text, sizeof text, "%02xh-%04xh", group, number);
    return text;
}

// The free disks named on the line, checked: present, ready, in no pool, of one type.
std::vector<Disk*> freeDisks(ArrayState& state, unsigned group, const std::vector<unsigned>& numbers,
                             const std::string& wantedType) {
    if (numbers.size() > PoolCommands::kMaxDisksPerCommand)
        throw refuse(CommandError::Kind::Limit, std::to_string(numbers.size()) + " disks are named; one command takes at most " +
                                                    std::to_string(PoolCommands::kMaxDisksPerCommand));
    std::vector<Disk*> disks;
    std::string type = wantedType;
    for (unsigned number : numbers) {
        Disk* disk = state.FindDisk(group, number);
        if (disk == nullptr)
            throw refuse(CommandError::Kind::NotFound, "physical disk " + diskLabel(group, number) + " does not exist");
        if (disk->state != "ready")
            throw refuse(CommandError::Kind::State,
                         "physical disk " + diskLabel(group, number) + " is not ready (state " + disk->state + ")");
        if (disk->classification != "not set" || disk->poolNumber >= 0)
            throw refuse(CommandError::Kind::InUse, "physical disk " + diskLabel(group, number) + " is not free (" +
                                                        disk->classification + ")");
        if (type.empty()) type = disk->type;
        if (disk->type != type)
            throw refuse(CommandError::Kind::Rule, "physical disk " + diskLabel(group, number) + " is of type " +
                                                       disk->type + "; the pool's disks are " + type);
        disks.push_back(disk);
    }
    return disks;
}

// The smallest capacity among the pool's disks and the new ones: every disk
// of a RAID group counts with the smallest.
std::uint64_t smallestDisk(const ArrayState& state, const Pool* pool, const std::vector<Disk*>& added) {
    std::uint64_t smallest = 0;
    auto consider = [&smallest](std::uint64_t bytes) {
        if (smallest == 0 || bytes < smallest) smallest = bytes;
    };
    for (const Disk* disk : added) consider(disk->capacity);
    if (pool != nullptr)
        for (const Disk& disk : state.disks)
            if (disk.poolNumber == static_cast<int>(pool->number)) consider(disk.capacity);
    return smallest;
}

std::size_t memberCount(const ArrayState& state, unsigned poolNumber) {
    return static_cast<std::size_t>(std::count_if(state.disks.begin(), state.disks.end(), [poolNumber](const Disk& d) {
        return d.poolNumber == static_cast<int>(poolNumber);
    }));
}

void joinPool(Pool& pool, const std::vector<Disk*>& disks) {
    for (Disk* disk : disks) {
        disk->classification = "pool";
        disk->poolNumber = static_cast<int>(pool.number);
        disk->rankGroup = pool.number;
        pool.disks.push_back(diskName(disk->group, disk->number));
    }
}

std::string bind(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg poolbind", args,
                     {{"-type", true}, {"-poolnumber", true}, {"-poolname", true}, {"-raid", true}, {"-basepd", true},
                      {"-pdg", true}, {"-pdn", true}, {"-capacity", true}});
    const std::string type = line.Choice("-type", {"dynamic", "virtual"});
    const unsigned number = line.Hex("-poolnumber", PoolCommands::kMaxPoolNumber);
    const std::string& name = line.Value("-poolname");
    const std::string raid = line.Choice("-raid", {"1", "5", "6", "TM"});
    const unsigned group = line.Hex("-pdg", 0xff);
    const std::vector<unsigned> numbers = line.HexList("-pdn", 0xffff);
    const bool virtualPool = type == "virtual";
    if (virtualPool != line.Has("-capacity"))
        throw CommandError(CommandError::Kind::Syntax,
                           virtualPool ? "Vexcfg poolbind: a virtual pool needs -capacity"
                                       : "Vexcfg poolbind: -capacity applies to virtual pools only");
    const std::uint64_t virtualGiB = virtualPool ? line.Decimal("-capacity", 1, kMaxVirtualGiB) : 0;
    const bool needsBase = raid == "5" || raid == "6";
    if (needsBase != line.Has("-basepd"))
        throw CommandError(CommandError::Kind::Syntax, needsBase
                                                           ? "Vexcfg poolbind: RAID" + raid + " needs -basepd"
                                                           : "Vexcfg poolbind: -basepd applies to RAID5 and RAID6 only");

    std::string raidType;
    if (raid == "1") {
        raidType = "RAID1/10";
    } else if (raid == "TM") {
        raidType = "RAID-TM";
    } else {
        const auto base = line.Decimal("-basepd", 1, 64);
        if (raid == "5" && base != 3 && base != 5 && base != 9)
            throw refuse(CommandError::Kind::Rule, "RAID5 takes a base of 3, 5 or 9 disks, not " + std::to_string(base));
        if (raid == "6" && base != 6 && base != 10)
            throw refuse(CommandError::Kind::Rule, "RAID6 takes a base of 6 or 10 disks, not " + std::to_string(base));
        raidType = raid == "5" ? "RAID5/50(" + std::to_string(base - 1) + "+P)"
                               : "RAID6/60(" + std::to_string(base - 2) + "+PQ)";
    }
    Layout layout;
    layoutOf(raidType, layout);

    NameRules::CheckName("pool name", name);
    if (state.FindPool(number) != nullptr)
        throw refuse(CommandError::Kind::Exists, "pool " + NameRules::Hex(number) + " exists already");
    for (const Pool& pool : state.pools)
        if (pool.name == name)
            throw refuse(CommandError::Kind::Exists, "the pool name \"" + name + "\" is in use by pool " +
                                                         NameRules::Hex(pool.number));

    std::vector<Disk*> disks = freeDisks(state, group, numbers, "");
    if (disks.size() < static_cast<std::size_t>(layout.base) || disks.size() % static_cast<std::size_t>(layout.base) != 0)
        throw refuse(CommandError::Kind::Rule, raidType + " takes a multiple of " + std::to_string(layout.base) +
                                                   " disks, not " + std::to_string(disks.size()));

    Pool pool;
    pool.number = number;
    pool.name = name;
    pool.poolType = type;
    pool.raidType = raidType;
    pool.baseDisks = layout.base;
    pool.noBpd = static_cast<unsigned>(layout.base);
    pool.numberOfRaid5s = raid == "5" ? static_cast<int>(disks.size()) / layout.base : 0;
    pool.pdType = disks.front()->type;
    const std::uint64_t usable = PoolCommands::UsableBytes(raidType, disks.size(), smallestDisk(state, nullptr, disks));
    if (usable == 0) throw refuse(CommandError::Kind::Capacity, "the disks give a pool of less than 1 GiB");
    if (virtualPool) {
        pool.actualCapacity = usable;
        pool.capacity = virtualGiB * kGiB;
        pool.threshold = "80";
        pool.actualCapacityThreshold = 90;
    } else {
        pool.capacity = usable;
    }
    joinPool(pool, disks);
    // Pools stay in number order, as the array lists them.
    auto at = std::lower_bound(state.pools.begin(), state.pools.end(), number,
                               [](const Pool& other, unsigned n) { return other.number < n; });
    state.pools.insert(at, pool);
    return "pool " + NameRules::Hex(number) + " (" + name + ") was bound with " + std::to_string(disks.size()) + " disks";
}

std::string expand(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg poolexpand", args,
                     {{"-rebuild", true}, {"-poolnumber", true}, {"-pdg", true}, {"-pdn", true}, {"-capacity", true}});
    const std::string rebuild = line.Choice("-rebuild", {"on", "off"});
    const unsigned number = line.Hex("-poolnumber", PoolCommands::kMaxPoolNumber);
    const std::string what = line.OneOf({"-pdn", "-capacity"});
    if (what == "-pdn" && !line.Has("-pdg"))
        throw CommandError(CommandError::Kind::Syntax, "Vexcfg poolexpand: option -pdg is required with -pdn");
    if (what == "-capacity" && line.Has("-pdg"))
        throw CommandError(CommandError::Kind::Syntax, "Vexcfg poolexpand: -pdg goes with -pdn, not with -capacity");

    Pool* pool = state.FindPool(number);
    if (pool == nullptr) throw refuse(CommandError::Kind::NotFound, "pool " + NameRules::Hex(number) + " does not exist");
    if (pool->state != "ready")
        throw refuse(CommandError::Kind::State,
                     "pool " + NameRules::Hex(number) + " is not ready (state " + pool->state + ")");

    if (what == "-capacity") {
        if (pool->poolType != "virtual")
            throw refuse(CommandError::Kind::Rule, "pool " + NameRules::Hex(number) + " is not virtual; only a virtual pool has a capacity of its own");
        if (rebuild != "off")
            throw refuse(CommandError::Kind::Rule, "a capacity expansion takes -rebuild off");
        const std::uint64_t bytes = line.Decimal("-capacity", 1, kMaxVirtualGiB) * kGiB;
        if (bytes <= pool->capacity)
            throw refuse(CommandError::Kind::Rule, "pool " + NameRules::Hex(number) + " has " +
                                                       std::to_string(pool->capacity / kGiB) +
                                                       " GiB already; a capacity expansion must make it larger");
        pool->capacity = bytes;
        return "pool " + NameRules::Hex(number) + " now has " + std::to_string(bytes / kGiB) + " GiB";
    }

    const unsigned group = line.Hex("-pdg", 0xff);
    const std::vector<unsigned> numbers = line.HexList("-pdn", 0xffff);
    Layout layout;
    if (!layoutOf(pool->raidType, layout))
        throw refuse(CommandError::Kind::Rule, "pool " + NameRules::Hex(number) + " of " + pool->raidType + " cannot be expanded");
    std::vector<Disk*> disks = freeDisks(state, group, numbers, pool->pdType);
    const std::size_t total = memberCount(state, number) + disks.size();
    const std::size_t unit = static_cast<std::size_t>(rebuild == "on" && layout.restripes ? 1 : layout.base);
    const std::size_t checked = rebuild == "on" ? total : disks.size();
    if (checked % unit != 0)
        throw refuse(CommandError::Kind::Rule,
                     rebuild == "on" ? pool->raidType + " keeps a multiple of " + std::to_string(unit) +
                                           " disks; the pool would have " + std::to_string(total)
                                     : "without rebuild " + pool->raidType + " is expanded by a multiple of " +
                                           std::to_string(unit) + " disks, not " + std::to_string(disks.size()));
    const std::uint64_t usable = PoolCommands::UsableBytes(pool->raidType, total, smallestDisk(state, pool, disks));
    joinPool(*pool, disks);
    if (pool->poolType == "virtual") {
        pool->actualCapacity = std::max(pool->actualCapacity, usable);
    } else {
        pool->capacity = std::max(pool->capacity, usable);
    }
    if (pool->raidType.rfind("RAID5", 0) == 0) pool->numberOfRaid5s = static_cast<int>(total) / layout.base;
    return "pool " + NameRules::Hex(number) + " was expanded by " + std::to_string(disks.size()) +
           (disks.size() == 1 ? " disk" : " disks");
}

std::string unbind(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg poolunbind", args, {{"-poolnumber", true}});
    const unsigned number = line.Hex("-poolnumber", PoolCommands::kMaxPoolNumber);
    auto pool = std::find_if(state.pools.begin(), state.pools.end(), [number](const Pool& p) { return p.number == number; });
    if (pool == state.pools.end())
        throw refuse(CommandError::Kind::NotFound, "pool " + NameRules::Hex(number) + " does not exist");
    const auto lds = std::count_if(state.lds.begin(), state.lds.end(), [number](const LogicalDisk& ld) { return ld.poolNumber == number; });
    if (lds > 0)
        throw refuse(CommandError::Kind::InUse, "pool " + NameRules::Hex(number) + " holds " + std::to_string(lds) +
                                                    " logical disks; unbind them first");
    for (const SnapshotReserveArea& area : state.reserveAreas)
        if (area.poolNumber == number)
            throw refuse(CommandError::Kind::InUse,
                         "pool " + NameRules::Hex(number) + " holds a snapshot reserve area; unbind it first");
    for (Disk& disk : state.disks) {
        if (disk.poolNumber != static_cast<int>(number)) continue;
        disk.poolNumber = -1;
        disk.classification = "not set";
        disk.rankGroup = 0;
    }
    state.pools.erase(pool);
    return "pool " + NameRules::Hex(number) + " was unbound";
}

}  // namespace

bool PoolCommands::Handles(const std::string& subcommand) {
    return subcommand == "poolbind" || subcommand == "poolexpand" || subcommand == "poolunbind";
}

std::string PoolCommands::Apply(const std::string& subcommand, const std::vector<std::string>& args, ArrayState& state) {
    if (subcommand == "poolbind") return bind(args, state);
    if (subcommand == "poolexpand") return expand(args, state);
    if (subcommand == "poolunbind") return unbind(args, state);
    throw CommandError(CommandError::Kind::Syntax, "Vexcfg: " + subcommand + " is no pool command");
}

std::uint64_t PoolCommands::UsableBytes(const std::string& raidType, std::size_t disks, std::uint64_t diskBytes) {
    Layout layout;
    if (!layoutOf(raidType, layout) || disks == 0) return 0;
    const std::uint64_t raw = diskBytes * disks;
    const std::uint64_t usable = raw / static_cast<std::uint64_t>(layout.base) * static_cast<std::uint64_t>(layout.data);
    return usable / kGiB * kGiB;
}

}  // namespace arraysim
