#include "LdSetCommands.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "CommandError.h"
#include "CommandLine.h"
#include "LdCommands.h"
#include "NameRules.h"

namespace arraysim {

namespace {

constexpr std::size_t kMaxInitiatorName = 223;

CommandError refuse(CommandError::Kind kind, const std::string& text) { return CommandError(kind, text); }

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool sameText(const std::string& a, const std::string& b) { return lower(a) == lower(b); }

std::string setLabel(const LdSet& set) { return "LD set " + set.platform + ":" + set.name; }

std::string kindLabel(const std::string& kind) {
    if (kind == "iscsi") return "iSCSI";
    if (kind == "old") return "FC";
    std::string upper = kind;
    std::transform(upper.begin(), upper.end(), upper.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return upper;
}

void requireAccessControl(const ArrayState& state) {
    if (!state.identity.accessControl)
        throw refuse(CommandError::Kind::State, "access control is not enabled on the array; it has no LD sets");
}

LdSet& existingSet(ArrayState& state, const std::string& text) {
    std::string platform, name;
    NameRules::SplitLdSet(text, platform, name);
    LdSet* set = state.FindLdSet(platform, name);
    if (set == nullptr) throw refuse(CommandError::Kind::NotFound, "LD set " + text + " does not exist");
    return *set;
}

unsigned maxLun(const ArrayState& state) {
    return state.identity.maxLdNumOfTarget > 0 ? static_cast<unsigned>(state.identity.maxLdNumOfTarget - 1) : 0xff;
}

// "xxxx-xxxx-xxxx-xxxx", 16 hexadecimal digits in groups of four.
bool isGroupedWwpn(const std::string& text) {
    if (text.size() != 19) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i % 5 == 4) {
            if (text[i] != '-') return false;
        } else if (!std::isxdigit(static_cast<unsigned char>(text[i]))) {
            return false;
        }
    }
    return true;
}

// An array port as "00h-01h": director and port, two hexadecimal digits each.
bool parsePortPath(const std::string& text, unsigned& director, unsigned& port) {
    if (text.size() != 7 || text[3] != '-') return false;
    return CommandLine::ParseHex(text.substr(0, 3), 0xff, director) && CommandLine::ParseHex(text.substr(4), 0xff, port) &&
           std::isxdigit(static_cast<unsigned char>(text[0])) && std::isxdigit(static_cast<unsigned char>(text[4]));
}

// How a port path stands in an LD set's path list: the port number, then the port's name in brackets.
std::string portEntryPrefix(unsigned director, unsigned port) {
    char text[16];
    std::snprintf(text, sizeof text, "%02X-%02X(", director, port);
    return text;
}

bool isInitiatorName(const std::string& name) {
    if (name.size() > kMaxInitiatorName || name.size() < 5) return false;
    const std::string prefix = lower(name.substr(0, 4));
    if (prefix != "iqn." && prefix != "eui." && prefix != "naa.") return false;
    for (char c : name)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '.' && c != '-' && c != ':') return false;
    return true;
}

std::string addSet(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg addldset", args, {{"-ldset", true}, {"-type", true}});
    const std::string& text = line.Value("-ldset");
    const std::string kind = line.Choice("-type", {"fc", "iscsi", "sas"});
    std::string platform, name;
    NameRules::SplitLdSet(text, platform, name);
    requireAccessControl(state);
    if (state.FindLdSet(platform, name) != nullptr) throw refuse(CommandError::Kind::Exists, "LD set " + text + " exists already");
    const bool hasPorts = std::any_of(state.ports.begin(), state.ports.end(),
                                      [&kind](const Port& port) { return lower(port.protocol) == kind; });
    if (!hasPorts) throw refuse(CommandError::Kind::Rule, "the array has no " + kindLabel(kind) + " host ports");
    const std::size_t maxSets = state.identity.maxNumOfTarget > 0 ? static_cast<std::size_t>(state.identity.maxNumOfTarget) : 1024;
    if (state.ldSets.size() >= maxSets)
        throw refuse(CommandError::Kind::Limit, "the array holds " + std::to_string(maxSets) + " LD sets, the most it can");
    LdSet set;
    set.kind = kind;
    set.platform = platform;
    set.name = name;
    if (kind == "iscsi") {
        set.targetMode = "single";
        set.targetName = "iqn.2001-03.jp.example:storage01." + lower(state.identity.diskArrayName) + "." + lower(name);
        set.authenticationMethod = "none";
    }
    state.ldSets.push_back(set);
    return "LD set " + text + " was added";
}

std::string addLd(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg addldsetld", args, {{"-ldset", true}, {"-ldn", true}, {"-lun", true}});
    const std::string& text = line.Value("-ldset");
    const unsigned ldn = line.Hex("-ldn", LdCommands::kMaxLdNumber);
    const unsigned highest = maxLun(state);
    const bool lunGiven = line.Has("-lun");
    const unsigned wanted = lunGiven ? line.Hex("-lun", highest) : 0;
    LdSet& set = existingSet(state, text);
    if (state.FindLd(ldn) == nullptr) throw refuse(CommandError::Kind::NotFound, "logical disk " + NameRules::Hex(ldn) + " does not exist");
    for (const LunMapping& lun : set.luns) {
        if (lun.ldn == ldn)
            throw refuse(CommandError::Kind::Exists, "logical disk " + NameRules::Hex(ldn) + " is in " + setLabel(set) +
                                                         " already, as LUN " + NameRules::Hex(lun.lun));
        if (lunGiven && lun.lun == wanted)
            throw refuse(CommandError::Kind::InUse, "LUN " + NameRules::Hex(wanted) + " of " + setLabel(set) +
                                                        " is taken by logical disk " + NameRules::Hex(lun.ldn));
    }
    unsigned lun = wanted;
    if (!lunGiven) {
        // The lowest LUN the set does not use.
        std::vector<bool> used(static_cast<std::size_t>(highest) + 1, false);
        for (const LunMapping& mapping : set.luns)
            if (mapping.lun <= highest) used[mapping.lun] = true;
        const auto free = std::find(used.begin(), used.end(), false);
        if (free == used.end())
            throw refuse(CommandError::Kind::Limit, setLabel(set) + " has no free LUN");
        lun = static_cast<unsigned>(free - used.begin());
    }
    auto at = std::lower_bound(set.luns.begin(), set.luns.end(), lun,
                               [](const LunMapping& mapping, unsigned n) { return mapping.lun < n; });
    set.luns.insert(at, LunMapping{lun, ldn});
    return "logical disk " + NameRules::Hex(ldn) + " was added to " + setLabel(set) + " as LUN " + NameRules::Hex(lun);
}

void requirePathSet(const LdSet& set) {
    if (set.kind == "iscsi")
        throw refuse(CommandError::Kind::Rule, setLabel(set) + " is an iSCSI set; it takes initiators, not paths");
}

std::string addPath(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg addldsetpath", args, {{"-ldset", true}, {"-pathtype", true}, {"-path", true}});
    const std::string& text = line.Value("-ldset");
    const bool portPath = line.Has("-pathtype");
    if (portPath) line.Choice("-pathtype", {"port"});
    const std::string& path = line.Value("-path");
    unsigned director = 0, portNumber = 0;
    if (portPath && !parsePortPath(path, director, portNumber))
        throw CommandError(CommandError::Kind::Syntax, "Vexcfg addldsetpath: a port path is written as 00h-01h, not \"" + path + "\"");
    if (!portPath && !isGroupedWwpn(path))
        throw CommandError(CommandError::Kind::Syntax,
                           "Vexcfg addldsetpath: a WWPN is written as xxxx-xxxx-xxxx-xxxx, not \"" + path + "\"");
    LdSet& set = existingSet(state, text);
    requirePathSet(set);
    std::string entry = path;
    if (portPath) {
        Port* port = state.FindPort(director, portNumber);
        if (port == nullptr) throw refuse(CommandError::Kind::NotFound, "port " + path + " does not exist");
        if (lower(port->protocol) != set.kind && !(set.kind == "old" && lower(port->protocol) == "fc"))
            throw refuse(CommandError::Kind::Rule, "port " + path + " is an " + port->protocol + " port; " + setLabel(set) +
                                                       " is " + kindLabel(set.kind));
        if (lower(port->mode) != "port")
            throw refuse(CommandError::Kind::State, "port " + path + " is in WWN mode; only a port in port mode is a path");
        const std::string prefix = portEntryPrefix(director, portNumber);
        for (const LdSet& other : state.ldSets)
            for (const std::string& existing : other.paths)
                if (existing.rfind(prefix, 0) == 0)
                    throw refuse(CommandError::Kind::InUse, "port " + path + " is a path of " + setLabel(other) + " already");
        entry = prefix + (port->portName.empty() ? "Port" : port->portName) + ")";
    } else {
        for (const LdSet& other : state.ldSets)
            for (const std::string& existing : other.paths)
                if (sameText(existing, path))
                    throw refuse(CommandError::Kind::InUse, "WWPN " + path + " is a path of " + setLabel(other) + " already");
    }
    set.paths.push_back(entry);
    return "path " + path + " was added to " + setLabel(set);
}

std::string addInitiator(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg addldsetinitiator", args, {{"-ldset", true}, {"-initiatorname", true}});
    const std::string& text = line.Value("-ldset");
    const std::string& initiator = line.Value("-initiatorname");
    if (!isInitiatorName(initiator))
        throw refuse(CommandError::Kind::Rule, "\"" + initiator +
                                                   "\" is no iSCSI name (iqn., eui. or naa., then letters, digits, \".\", \"-\", \":\"; at most 223 characters)");
    LdSet& set = existingSet(state, text);
    if (set.kind != "iscsi")
        throw refuse(CommandError::Kind::Rule, setLabel(set) + " is not an iSCSI set; it takes paths, not initiators");
    for (const LdSet& other : state.ldSets)
        for (const std::string& existing : other.initiators)
            if (sameText(existing, initiator))
                throw refuse(CommandError::Kind::InUse, "initiator " + initiator + " belongs to " + setLabel(other) + " already");
    set.initiators.push_back(initiator);
    return "initiator " + initiator + " was added to " + setLabel(set);
}

std::string deleteSet(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg delldset", args, {{"-ldset", true}});
    LdSet& set = existingSet(state, line.Value("-ldset"));
    if (!set.luns.empty())
        throw refuse(CommandError::Kind::InUse, setLabel(set) + " holds " + std::to_string(set.luns.size()) +
                                                    " logical disks; remove them first");
    const std::string label = setLabel(set);
    const LdSet* address = &set;
    state.ldSets.erase(std::find_if(state.ldSets.begin(), state.ldSets.end(), [address](const LdSet& s) { return &s == address; }));
    return label + " was deleted";
}

std::string deleteLd(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg delldsetld", args, {{"-ldset", true}, {"-ldn", true}, {"-all", false}});
    const std::string which = line.OneOf({"-ldn", "-all"});
    const unsigned ldn = which == "-ldn" ? line.Hex("-ldn", LdCommands::kMaxLdNumber) : 0;
    LdSet& set = existingSet(state, line.Value("-ldset"));
    if (which == "-all") {
        const std::size_t count = set.luns.size();
        set.luns.clear();
        return (count == 1 ? std::string("1 logical disk was") : std::to_string(count) + " logical disks were") +
               " removed from " + setLabel(set);
    }
    auto lun = std::find_if(set.luns.begin(), set.luns.end(), [ldn](const LunMapping& m) { return m.ldn == ldn; });
    if (lun == set.luns.end())
        throw refuse(CommandError::Kind::NotFound, "logical disk " + NameRules::Hex(ldn) + " is not in " + setLabel(set));
    set.luns.erase(lun);
    return "logical disk " + NameRules::Hex(ldn) + " was removed from " + setLabel(set);
}

std::string deletePath(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg delldsetpath", args, {{"-ldset", true}, {"-pathtype", true}, {"-path", true}});
    const std::string type = line.Choice("-pathtype", {"port", "wwpn"});
    const std::string& path = line.Value("-path");
    unsigned director = 0, portNumber = 0;
    if (type == "port" && !parsePortPath(path, director, portNumber))
        throw CommandError(CommandError::Kind::Syntax, "Vexcfg delldsetpath: a port path is written as 00h-01h, not \"" + path + "\"");
    if (type == "wwpn" && !isGroupedWwpn(path))
        throw CommandError(CommandError::Kind::Syntax,
                           "Vexcfg delldsetpath: a WWPN is written as xxxx-xxxx-xxxx-xxxx, not \"" + path + "\"");
    LdSet& set = existingSet(state, line.Value("-ldset"));
    requirePathSet(set);
    const std::string prefix = type == "port" ? portEntryPrefix(director, portNumber) : "";
    auto entry = std::find_if(set.paths.begin(), set.paths.end(), [&](const std::string& existing) {
        return type == "port" ? existing.rfind(prefix, 0) == 0 : sameText(existing, path);
    });
    if (entry == set.paths.end()) throw refuse(CommandError::Kind::NotFound, "path " + path + " is not in " + setLabel(set));
    set.paths.erase(entry);
    return "path " + path + " was removed from " + setLabel(set);
}

std::string deleteInitiator(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg delldsetinitiator", args, {{"-ldset", true}, {"-initiatorname", true}});
    const std::string& initiator = line.Value("-initiatorname");
    LdSet& set = existingSet(state, line.Value("-ldset"));
    auto entry = std::find_if(set.initiators.begin(), set.initiators.end(),
                              [&](const std::string& existing) { return sameText(existing, initiator); });
    if (entry == set.initiators.end())
        throw refuse(CommandError::Kind::NotFound, "initiator " + initiator + " is not in " + setLabel(set));
    set.initiators.erase(entry);
    return "initiator " + initiator + " was removed from " + setLabel(set);
}

std::string rename(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexcfg chgldsetname", args, {{"-oldldset", true}, {"-newldset", true}});
    const std::string& oldText = line.Value("-oldldset");
    const std::string& newText = line.Value("-newldset");
    std::string platform, name;
    NameRules::SplitLdSet(newText, platform, name);
    LdSet& set = existingSet(state, oldText);
    const LdSet* other = state.FindLdSet(platform, name);
    if (other != nullptr && other != &set) throw refuse(CommandError::Kind::Exists, "LD set " + newText + " exists already");
    set.platform = platform;
    set.name = name;
    return "LD set " + oldText + " is now " + newText;
}

}  // namespace

bool LdSetCommands::Handles(const std::string& subcommand) {
    static const std::vector<std::string> names = {"addldset",    "addldsetld",    "addldsetpath",      "addldsetinitiator",
                                                   "delldset",    "delldsetld",    "delldsetpath",      "delldsetinitiator",
                                                   "chgldsetname"};
    return std::find(names.begin(), names.end(), subcommand) != names.end();
}

std::string LdSetCommands::Apply(const std::string& subcommand, const std::vector<std::string>& args, ArrayState& state) {
    if (subcommand == "addldset") return addSet(args, state);
    requireAccessControl(state);
    if (subcommand == "addldsetld") return addLd(args, state);
    if (subcommand == "addldsetpath") return addPath(args, state);
    if (subcommand == "addldsetinitiator") return addInitiator(args, state);
    if (subcommand == "delldset") return deleteSet(args, state);
    if (subcommand == "delldsetld") return deleteLd(args, state);
    if (subcommand == "delldsetpath") return deletePath(args, state);
    if (subcommand == "delldsetinitiator") return deleteInitiator(args, state);
    if (subcommand == "chgldsetname") return rename(args, state);
    throw CommandError(CommandError::Kind::Syntax, "Vexcfg: " + subcommand + " is no LD set command");
}

}  // namespace arraysim
