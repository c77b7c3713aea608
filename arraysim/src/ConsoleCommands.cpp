#include "ConsoleCommands.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <vector>

#include <CLI/CLI.hpp>

#include "FaultStore.h"
#include "LdCommands.h"
#include "StateStore.h"
#include "Templates.h"

namespace arraysim {

namespace {

std::string hex(unsigned value, int width) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%0*X", width, value);
    return buffer;
}

// State texts are short printable words such as "ready", "failure", "rpl/sync".
void checkStateText(const std::string& value) {
    if (value.empty() || value.size() > 40)
        throw std::invalid_argument("a state is 1 to 40 characters long");
    for (unsigned char c : value)
        if (!std::isprint(c)) throw std::invalid_argument("a state holds printable characters only");
}

// Unit name, contact and location: printable, at most 64 characters.
void checkUnitText(const std::string& value, const std::string& what) {
    if (value.size() > 64) throw std::invalid_argument(what + " is at most 64 characters long");
    for (unsigned char c : value)
        if (!std::isprint(c) || c == '<' || c == '>' || c == '&')
            throw std::invalid_argument(what + " holds printable characters other than < > & only");
}

// Firmware revisions and versions: 1 to 16 letters, digits, ".", "-" or "_".
void checkFirmwareText(const std::string& value, const std::string& what) {
    if (value.empty() || value.size() > 16) throw std::invalid_argument(what + " is 1 to 16 characters long");
    for (unsigned char c : value)
        if (!std::isalnum(c) && c != '.' && c != '-' && c != '_')
            throw std::invalid_argument(what + " holds letters, digits, \".\", \"-\" and \"_\" only, not \"" +
                                        value + "\"");
}

std::pair<unsigned, unsigned> parsePair(const std::string& text, const std::string& what) {
    const auto dash = text.find('-');
    if (dash == std::string::npos) throw std::invalid_argument(what + " \"" + text + "\" is not written NN-NN");
    return {ConsoleCommands::ParseHex(text.substr(0, dash), what), ConsoleCommands::ParseHex(text.substr(dash + 1), what)};
}

std::string stateDir() { return StateStore::DefaultDir(); }

// Runs a state change and reports what went wrong as the command's failure.
void change(const std::function<void(ArrayState&)>& fn) {
    try {
        StateStore(stateDir()).Update(fn);
    } catch (const std::invalid_argument& e) {
        throw CLI::ValidationError(e.what());
    } catch (const StateError& e) {
        throw CLI::Error("StateError", e.what(), 1);
    }
}

}  // namespace

unsigned ConsoleCommands::ParseHex(const std::string& text, const std::string& what) {
    std::string digits = text;
    if (!digits.empty() && (digits.back() == 'h' || digits.back() == 'H')) digits.pop_back();
    if (digits.empty() || digits.size() > 8 ||
        !std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return std::isxdigit(c) != 0; }))
        throw std::invalid_argument(what + " \"" + text + "\" is not a hexadecimal number");
    return static_cast<unsigned>(std::stoul(digits, nullptr, 16));
}

void ConsoleCommands::SetDiskState(ArrayState& state, const std::string& pdn, const std::string& value) {
    checkStateText(value);
    const auto [group, number] = parsePair(pdn, "disk");
    Disk* disk = state.FindDisk(group, number);
    if (disk == nullptr) throw std::invalid_argument("no disk " + hex(group, 2) + "h-" + hex(number, 4) + "h");
    disk->state = value;
}

void ConsoleCommands::SetPoolState(ArrayState& state, const std::string& pool, const std::string& value) {
    checkStateText(value);
    Pool* found = state.FindPool(ParseHex(pool, "pool"));
    if (found == nullptr) throw std::invalid_argument("no pool " + pool);
    found->state = value;
}

void ConsoleCommands::SetPoolUsed(ArrayState& state, const std::string& pool, const std::string& used) {
    Pool* found = state.FindPool(ParseHex(pool, "pool"));
    if (found == nullptr) throw std::invalid_argument("no pool " + pool);
    const bool percent = !used.empty() && used.back() == '%';
    const std::string digits = percent ? used.substr(0, used.size() - 1) : used;
    if (digits.empty() || digits.size() > 19 ||
        !std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return std::isdigit(c) != 0; }))
        throw std::invalid_argument("--used takes a percentage (90%) or a number of bytes, not \"" + used + "\"");
    const unsigned long long amount = std::stoull(digits);
    // Virtual pools fill their actual capacity; dynamic pools their capacity.
    const bool isVirtual = found->poolType == "virtual";
    const std::uint64_t whole = isVirtual ? found->actualCapacity : found->capacity;
    if (percent && amount > 100) throw std::invalid_argument("--used is at most 100%");
    const std::uint64_t bytes = percent ? static_cast<std::uint64_t>(static_cast<long double>(whole) * amount / 100)
                                        : amount;
    if (bytes > whole) throw std::invalid_argument("--used is more than the pool's capacity");
    if (isVirtual)
        found->actualUsedCapacity = bytes;
    else
        found->usedCapacity = bytes;
}

void ConsoleCommands::SetLdState(ArrayState& state, const std::string& ldn, const std::string& value) {
    checkStateText(value);
    LogicalDisk* ld = state.FindLd(ParseHex(ldn, "LD"));
    if (ld == nullptr) throw std::invalid_argument("no LD " + ldn);
    ld->state = value;
}

void ConsoleCommands::SetLdCapacity(ArrayState& state, const std::string& ldn, const std::string& bytes) {
    // The largest LD, as the configuration tool allows it (128 TiB).
    constexpr std::uint64_t kMaxLdBytes = 128ULL * 1024 * 1024 * 1024 * 1024;
    LogicalDisk* ld = state.FindLd(ParseHex(ldn, "LD"));
    if (ld == nullptr) throw std::invalid_argument("no LD " + ldn);
    if (bytes.empty() || bytes.size() > 19 ||
        !std::all_of(bytes.begin(), bytes.end(), [](unsigned char c) { return std::isdigit(c) != 0; }))
        throw std::invalid_argument("--capacity takes a number of bytes, not \"" + bytes + "\"");
    const std::uint64_t wanted = std::stoull(bytes);
    if (wanted % 512 != 0) throw std::invalid_argument("--capacity is a whole number of 512-byte blocks");
    if (wanted > kMaxLdBytes) throw std::invalid_argument("--capacity is at most 128 TiB");
    // Shrinking would cut off the hosts' data: the array only grows an LD.
    if (wanted <= ld->capacity)
        throw std::invalid_argument("LD " + ldn + " has " + std::to_string(ld->capacity) +
                                    " bytes; the new capacity must be larger");
    const std::string holder = LdCommands::Holder(state, ld->number, false);
    if (!holder.empty()) throw std::invalid_argument("LD " + ldn + " belongs to " + holder + " and cannot grow");
    Pool* pool = state.FindPool(ld->poolNumber);
    if (pool == nullptr) throw std::invalid_argument("the pool of LD " + ldn + " does not exist");
    const std::uint64_t more = wanted - ld->capacity;
    const std::uint64_t free = pool->capacity > pool->usedCapacity ? pool->capacity - pool->usedCapacity : 0;
    if (more > free)
        throw std::invalid_argument("pool " + hex(pool->number, 4) + "h has " + std::to_string(free) +
                                    " bytes free; LD " + ldn + " needs " + std::to_string(more) + " more");
    pool->usedCapacity += more;
    ld->capacity = wanted;
}

void ConsoleCommands::SetArrayFirmware(ArrayState& state, const std::string& revision) {
    checkFirmwareText(revision, "the array's firmware revision");
    state.identity.productFwRevision = revision;
}

void ConsoleCommands::SetBaseProductVersion(ArrayState& state, const std::string& version) {
    checkFirmwareText(version, "the base product version");
    if (state.identity.baseProducts.empty()) throw std::invalid_argument("the array lists no base products");
    for (BaseProduct& product : state.identity.baseProducts) product.version = version;
}

void ConsoleCommands::SetDiskFirmware(ArrayState& state, const std::string& pdn, const std::string& revision) {
    checkFirmwareText(revision, "a disk's firmware revision");
    const auto [group, number] = parsePair(pdn, "disk");
    Disk* disk = state.FindDisk(group, number);
    if (disk == nullptr) throw std::invalid_argument("no disk " + hex(group, 2) + "h-" + hex(number, 4) + "h");
    disk->productRevision = revision;
}

void ConsoleCommands::SetControllerState(ArrayState& state, const std::string& number, const std::string& value) {
    checkStateText(value);
    Controller* controller = state.FindController(ParseHex(number, "controller"));
    if (controller == nullptr) throw std::invalid_argument("no controller " + number);
    controller->state = value;
}

void ConsoleCommands::SetPortState(ArrayState& state, const std::string& port, const std::string& value) {
    checkStateText(value);
    const auto [director, number] = parsePair(port, "port");
    Port* found = state.FindPort(director, number);
    if (found == nullptr) throw std::invalid_argument("no port " + port);
    found->state = value;
}

void ConsoleCommands::SetEnclosureState(ArrayState& state, const std::string& kind, const std::string& where,
                                        const std::string& value) {
    checkStateText(value);
    const auto [de, number] = parsePair(where, "enclosure component");
    for (auto& part : state.enclosure)
        if (part.kind == kind && part.deNumber == de && part.number == number) {
            part.state = value;
            return;
        }
    throw std::invalid_argument("no " + kind + " " + where +
                                " (kinds: adapter, backboard, fan, power, temperature; written DE-N)");
}

void ConsoleCommands::SetUnitName(ArrayState& state, const std::string& value) {
    checkUnitText(value, "the unit name");
    state.identity.unitName = value;
}

void ConsoleCommands::SetUnitContact(ArrayState& state, const std::string& value) {
    checkUnitText(value, "the unit contact");
    state.identity.unitContact = value;
}

void ConsoleCommands::SetUnitLocation(ArrayState& state, const std::string& value) {
    checkUnitText(value, "the unit location");
    state.identity.unitLocation = value;
}

void ConsoleCommands::SetAccessControl(ArrayState& state, const std::string& onOff) {
    if (onOff != "on" && onOff != "off") throw std::invalid_argument("access control is on or off");
    state.identity.accessControl = onOff == "on";
}

void ConsoleCommands::SetPairState(ArrayState& state, const std::string& mv, const std::string& value) {
    checkStateText(value);
    ReplicationPair* pair = state.FindPairByMv(ParseHex(mv, "MV"));
    if (pair == nullptr) throw std::invalid_argument("no pair with MV " + mv);
    pair->syncState = value;
}

void ConsoleCommands::SetTiming(ArrayState& state, const std::string& mode, double rateMBps) {
    if (mode != "instant" && mode != "realistic") throw std::invalid_argument("time is instant or realistic");
    if (!std::isfinite(rateMBps) || rateMBps <= 0 || rateMBps > 100000)
        throw std::invalid_argument("--rate is between 0 and 100000 MB/s");
    state.timing.mode = mode;
    state.timing.rateMBps = rateMBps;
}

std::string ConsoleCommands::Show(const ArrayState& s) {
    std::ostringstream out;
    const Identity& id = s.identity;
    out << "Array " << id.diskArrayName << "  " << id.vendorId << " " << id.productId << "  serial " << id.serialNumber
        << "  WWN " << id.worldWideName << "\n"
        << "Unit: name \"" << id.unitName << "\", contact \"" << id.unitContact << "\", location \""
        << id.unitLocation << "\"; access control " << (id.accessControl ? "on" : "off") << "\n"
        << "Generations: logical " << s.logicalGeneration << ", physical " << s.physicalGeneration
        << "; time " << s.timing.mode << " (" << s.timing.rateMBps << " MB/s)\n";
    out << "Controllers:";
    for (const auto& c : s.controllers) out << "  " << hex(c.number, 2) << "h " << c.protocol << " " << c.state;
    out << "\n";
    std::map<std::string, int> portCount;
    std::map<std::string, int> notReady;
    for (const auto& p : s.ports) {
        ++portCount[p.protocol];
        if (p.state != "ready") ++notReady["port " + hex(p.director, 2) + "-" + hex(p.port, 2) + " " + p.state];
    }
    out << "Ports:";
    for (const auto& [protocol, count] : portCount) out << "  " << count << " " << protocol;
    out << "\n";
    int freeDisks = 0;
    for (const auto& d : s.disks) {
        if (d.classification == "not set") ++freeDisks;
        if (d.state != "ready") ++notReady["disk " + hex(d.group, 2) + "h-" + hex(d.number, 4) + "h " + d.state];
    }
    out << "Disks: " << s.disks.size() << " (" << freeDisks << " free)\n";
    out << "Pools: " << s.pools.size() << "\n";
    for (const auto& p : s.pools)
        out << "  " << hex(p.number, 4) << "h " << p.name << "  " << p.poolType << " " << p.raidType << " " << p.pdType
            << "  " << p.state << "  " << p.usedCapacity / (1024ULL * 1024 * 1024) << "/"
            << p.capacity / (1024ULL * 1024 * 1024) << " GiB used, " << p.disks.size() << " disks\n";
    std::size_t mappings = 0;
    for (const auto& set : s.ldSets) mappings += set.luns.size();
    out << "LDs: " << s.lds.size() << "; LD sets: " << s.ldSets.size() << " with " << mappings << " LUNs\n";
    out << "Replication pairs: " << s.pairs.size() << "; snapshot bases: " << s.snapshots.size()
        << "; reserve areas: " << s.reserveAreas.size() << "\n";
    for (const auto& ld : s.lds)
        if (ld.state != "ready") ++notReady["LD " + hex(ld.number, 4) + "h " + ld.state];
    for (const auto& c : s.enclosure)
        if (c.state != "ready")
            ++notReady[c.kind + " " + std::to_string(c.deNumber) + "-" + std::to_string(c.number) + " " + c.state];
    if (!notReady.empty()) {
        out << "Not ready:\n";
        for (const auto& entry : notReady) out << "  " << entry.first << "\n";
    }
    return out.str();
}

void ConsoleCommands::AddSubcommands(CLI::App& app) {
    // init
    auto* init = app.add_subcommand("init", "Create an array from a template (replaces the array there is)");
    auto options = std::make_shared<TemplateOptions>();
    init->add_option("--template", options->size, "small, medium, large or max")
        ->required()
        ->check(CLI::IsMember({"small", "medium", "large", "max"}));
    init->add_option("--protocol", options->protocol, "Host ports: fc, iscsi, sas or mixed")
        ->check(CLI::IsMember({"fc", "iscsi", "sas", "mixed"}));
    init->add_option("--controllers", options->controllers, "1 or 2")->check(CLI::IsMember({1, 2}));
    init->add_option("--seed", options->seed, "Seed of the serial numbers and names (default 1)");
    init->callback([options]() {
        ArrayState state;
        try {
            state = Templates::Build(*options);
            StateStore(stateDir()).Replace(state);
        } catch (const std::invalid_argument& e) {
            throw CLI::ValidationError(e.what());
        } catch (const StateError& e) {
            throw CLI::Error("StateError", e.what(), 1);
        }
        std::cout << "created a " << options->size << " array in " << stateDir() << ": " << state.disks.size()
                  << " disks, " << state.pools.size() << " pools, " << state.lds.size() << " LDs, "
                  << state.ldSets.size() << " LD sets" << std::endl;
    });

    // show
    auto* show = app.add_subcommand("show", "A readable summary of the array");
    auto json = std::make_shared<bool>(false);
    show->add_flag("--json", *json, "The whole state as JSON");
    show->callback([json]() {
        try {
            const ArrayState state = StateStore(stateDir()).Read();
            if (*json)
                std::cout << nlohmann::json(state).dump(1) << std::endl;
            else
                std::cout << Show(state);
        } catch (const StateError& e) {
            throw CLI::Error("StateError", e.what(), 1);
        }
    });

    // set
    auto* set = app.add_subcommand("set", "Change the array as at its console");
    set->require_subcommand(1);
    auto addStateSetter = [set](const std::string& name, const std::string& help, const std::string& idHelp,
                                void (*fn)(ArrayState&, const std::string&, const std::string&)) {
        auto* sub = set->add_subcommand(name, help);
        auto id = std::make_shared<std::string>();
        auto value = std::make_shared<std::string>();
        sub->add_option("id", *id, idHelp)->required();
        sub->add_option("--state", *value, "The new state, e.g. ready, failure")->required();
        sub->callback([id, value, fn]() { change([&](ArrayState& s) { fn(s, *id, *value); }); });
    };
    addStateSetter("disk", "A physical disk's state", "GGh-NNNNh, e.g. 00h-0005h", &SetDiskState);
    addStateSetter("controller", "A controller's state", "Controller number (hexadecimal)", &SetControllerState);
    addStateSetter("port", "A host port's state", "DD-PP (director-port, hexadecimal)", &SetPortState);
    addStateSetter("pair", "A replication pair's sync state", "The MV's LD number (hexadecimal)", &SetPairState);

    auto* pool = set->add_subcommand("pool", "A pool's state or fill");
    auto poolId = std::make_shared<std::string>();
    auto poolState = std::make_shared<std::string>();
    auto poolUsed = std::make_shared<std::string>();
    pool->add_option("id", *poolId, "Pool number (hexadecimal)")->required();
    pool->add_option("--state", *poolState, "The new state");
    pool->add_option("--used", *poolUsed, "Used capacity: a percentage (90%) or bytes");
    pool->callback([poolId, poolState, poolUsed]() {
        if (poolState->empty() && poolUsed->empty()) throw CLI::ValidationError("give --state or --used");
        change([&](ArrayState& s) {
            if (!poolState->empty()) SetPoolState(s, *poolId, *poolState);
            if (!poolUsed->empty()) SetPoolUsed(s, *poolId, *poolUsed);
        });
    });

    auto* ld = set->add_subcommand("ld", "A logical disk's state or size");
    auto ldId = std::make_shared<std::string>();
    auto ldState = std::make_shared<std::string>();
    auto ldCapacity = std::make_shared<std::string>();
    ld->add_option("id", *ldId, "LD number (hexadecimal)")->required();
    ld->add_option("--state", *ldState, "The new state, e.g. ready, fault");
    ld->add_option("--capacity", *ldCapacity, "The new, larger size in bytes");
    ld->callback([ldId, ldState, ldCapacity]() {
        if (ldState->empty() && ldCapacity->empty()) throw CLI::ValidationError("give --state or --capacity");
        change([&](ArrayState& s) {
            if (!ldState->empty()) SetLdState(s, *ldId, *ldState);
            if (!ldCapacity->empty()) SetLdCapacity(s, *ldId, *ldCapacity);
        });
    });

    auto* firmware = set->add_subcommand("firmware", "A firmware update of the array or of disks");
    auto arrayRevision = std::make_shared<std::string>();
    auto baseVersion = std::make_shared<std::string>();
    auto diskRevisions = std::make_shared<std::vector<std::string>>();
    firmware->add_option("--array", *arrayRevision, "The array's product firmware revision, e.g. 0972");
    firmware->add_option("--base", *baseVersion, "The version of the base products, e.g. 9.72");
    firmware->add_option("--disk", *diskRevisions, "A disk and its new product revision: GGh-NNNNh REVISION")
        ->type_size(2)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    firmware->callback([arrayRevision, baseVersion, diskRevisions]() {
        if (arrayRevision->empty() && baseVersion->empty() && diskRevisions->empty())
            throw CLI::ValidationError("give --array, --base or --disk");
        if (diskRevisions->size() % 2 != 0) throw CLI::ValidationError("--disk takes a disk and a revision");
        change([&](ArrayState& s) {
            if (!arrayRevision->empty()) SetArrayFirmware(s, *arrayRevision);
            if (!baseVersion->empty()) SetBaseProductVersion(s, *baseVersion);
            for (std::size_t i = 0; i + 1 < diskRevisions->size(); i += 2)
                SetDiskFirmware(s, (*diskRevisions)[i], (*diskRevisions)[i + 1]);
        });
    });

    auto* enclosure = set->add_subcommand("enclosure", "An enclosure component's state");
    auto kind = std::make_shared<std::string>();
    auto where = std::make_shared<std::string>();
    auto enclosureState = std::make_shared<std::string>();
    enclosure->add_option("kind", *kind, "adapter, backboard, fan, power or temperature")
        ->required()
        ->check(CLI::IsMember({"adapter", "backboard", "fan", "power", "temperature"}));
    enclosure->add_option("where", *where, "DE-N (enclosure number - component number)")->required();
    enclosure->add_option("--state", *enclosureState, "The new state")->required();
    enclosure->callback([kind, where, enclosureState]() {
        change([&](ArrayState& s) { SetEnclosureState(s, *kind, *where, *enclosureState); });
    });

    auto* unit = set->add_subcommand("unit", "The unit's name, contact and location");
    auto unitName = std::make_shared<std::optional<std::string>>();
    auto unitContact = std::make_shared<std::optional<std::string>>();
    auto unitLocation = std::make_shared<std::optional<std::string>>();
    unit->add_option("--name", *unitName, "Unit name");
    unit->add_option("--contact", *unitContact, "Unit contact");
    unit->add_option("--location", *unitLocation, "Unit location");
    unit->callback([unitName, unitContact, unitLocation]() {
        if (!*unitName && !*unitContact && !*unitLocation)
            throw CLI::ValidationError("give --name, --contact or --location");
        change([&](ArrayState& s) {
            if (*unitName) SetUnitName(s, **unitName);
            if (*unitContact) SetUnitContact(s, **unitContact);
            if (*unitLocation) SetUnitLocation(s, **unitLocation);
        });
    });

    auto* access = set->add_subcommand("access-control", "The access control mode");
    auto onOff = std::make_shared<std::string>();
    access->add_option("mode", *onOff, "on or off")->required()->check(CLI::IsMember({"on", "off"}));
    access->callback([onOff]() { change([&](ArrayState& s) { SetAccessControl(s, *onOff); }); });

    // fault
    auto* fault = app.add_subcommand("fault", "Make the next runs of a tool or the polling daemon misbehave");
    auto wanted = std::make_shared<Fault>();
    fault->add_option("target", wanted->target, "A tool name, hubpolling, \"clear\" or \"list\"")->required();
    fault->add_option("--mode", wanted->mode,
                      "fail, hang, prefix, truncate, malformed, empty, lose (answers success, changes nothing); "
                      "hubpolling: drop, result, unknown-code, stall");
    fault->add_option("--count", wanted->remaining, "How many runs (default 1)");
    fault->add_option("--rc", wanted->returnCode, "Return code (fail, result; default 1)");
    fault->add_option("--message", wanted->message, "Message (fail)");
    fault->add_option("--seconds", wanted->seconds, "Seconds (hang, stall)");
    fault->add_option("--text", wanted->text, "Text written before the answer (prefix)");
    fault->callback([wanted]() {
        FaultStore faults(stateDir());
        try {
            if (wanted->target == "clear") {
                faults.Clear();
                return;
            }
            if (wanted->target == "list") {
                for (const auto& f : faults.List())
                    std::cout << f.target << " " << f.mode << " count " << f.remaining << " rc " << f.returnCode
                              << " seconds " << f.seconds << (f.message.empty() ? "" : " message \"" + f.message + "\"")
                              << std::endl;
                return;
            }
            if (wanted->mode.empty()) throw std::invalid_argument("give --mode");
            faults.Add(*wanted);
        } catch (const std::invalid_argument& e) {
            throw CLI::ValidationError(e.what());
        } catch (const StateError& e) {
            throw CLI::Error("StateError", e.what(), 1);
        }
    });

    // time
    auto* time = app.add_subcommand("time", "How fast copies and snapshot work progress");
    auto mode = std::make_shared<std::string>();
    auto rate = std::make_shared<std::optional<double>>();
    time->add_option("mode", *mode, "instant or realistic")->required()->check(CLI::IsMember({"instant", "realistic"}));
    time->add_option("--rate", *rate, "Copy rate in MB/s (realistic)");
    time->callback([mode, rate]() {
        change([&](ArrayState& s) { SetTiming(s, *mode, rate->value_or(s.timing.rateMBps)); });
    });
}

}  // namespace arraysim
