#include "ReplicationCommands.h"

#include <algorithm>

#include "CommandError.h"
#include "CommandLine.h"
#include "NameRules.h"

namespace arraysim {

namespace {

CommandError refuse(CommandError::Kind kind, const std::string& text) { return CommandError(kind, text); }

LogicalDisk& namedLd(ArrayState& state, const std::string& name) {
    LogicalDisk* ld = state.FindLdByName(name);
    if (ld == nullptr) throw refuse(CommandError::Kind::NotFound, "no logical disk is named " + name);
    return *ld;
}

// The MV and RV of a line, and their pair when they have one.
struct Volumes {
    LogicalDisk* mv;
    LogicalDisk* rv;
    ReplicationPair* pair;
    std::string label;
};

Volumes volumesOf(const CommandLine& line, ArrayState& state) {
    const std::string& mvName = line.Value("-mv");
    line.Choice("-mvflg", {"ld"});
    const std::string& rvName = line.Value("-rv");
    line.Choice("-rvflg", {"ld"});
    Volumes volumes{&namedLd(state, mvName), &namedLd(state, rvName), nullptr, "MV " + mvName + ", RV " + rvName};
    for (ReplicationPair& pair : state.pairs)
        if (pair.mvNumber == volumes.mv->number && pair.rvNumber == volumes.rv->number) volumes.pair = &pair;
    return volumes;
}

ReplicationPair& pairOf(Volumes& volumes) {
    if (volumes.pair == nullptr) throw refuse(CommandError::Kind::NotFound, volumes.label + " are no pair");
    return *volumes.pair;
}

const std::vector<OptionDef> kVolumeOptions = {{"-mv", true}, {"-mvflg", true}, {"-rv", true}, {"-rvflg", true}};

std::vector<OptionDef> withVolumes(std::vector<OptionDef> more) {
    more.insert(more.begin(), kVolumeOptions.begin(), kVolumeOptions.end());
    return more;
}

bool isSeparated(const ReplicationPair& pair) {
    return pair.syncState == "separated" || pair.syncState == "cancel" || pair.syncState == "fault";
}

std::string copyControlFor(const std::string& cpmode) { return cpmode == "sync" ? "foreground copy(sync)" : "background copy"; }

// A copy (replicate or restore) begins now.
void startCopy(ReplicationPair& pair, const std::string& syncState, const std::string& cpmode, long long nowMillis) {
    pair.syncState = syncState;
    pair.copyMode = cpmode;
    pair.copyControlState = copyControlFor(cpmode);
    pair.startTime = nowMillis / 1000;
    pair.endTime = 0;
    pair.activityStartMillis = nowMillis;
    pair.copiedBytes = 0;
    pair.forcedSeparate = false;
    pair.rvAccess = "nr";
    pair.rvMode.clear();
}

void releaseAttributes(ArrayState& state, unsigned ldNumber) {
    const bool stillPaired = std::any_of(state.pairs.begin(), state.pairs.end(), [ldNumber](const ReplicationPair& p) {
        return p.mvNumber == ldNumber || p.rvNumber == ldNumber;
    });
    if (stillPaired) return;
    if (LogicalDisk* ld = state.FindLd(ldNumber)) {
        ld->rplAttribute = "IV";
        if (ld->purpose == "RPL") ld->purpose = "---";
    }
}

std::string pairCommand(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexrc_pair", args, withVolumes({{"-pair", false}, {"-unpair", false}, {"-force", true}}));
    const std::string action = line.OneOf({"-pair", "-unpair"});
    const bool force = line.Has("-force");
    if (force) line.Choice("-force", {"all", "rv"});
    Volumes volumes = volumesOf(line, state);
    if (action == "-unpair") {
        ReplicationPair& pair = pairOf(volumes);
        if (!force && !isSeparated(pair))
            throw refuse(CommandError::Kind::State,
                         "the pair of " + volumes.label + " is " + pair.syncState + "; separate it first or use -force");
        const unsigned mv = pair.mvNumber, rv = pair.rvNumber;
        state.pairs.erase(state.pairs.begin() + (volumes.pair - state.pairs.data()));
        releaseAttributes(state, mv);
        releaseAttributes(state, rv);
        return "the pair of " + volumes.label + " was dissolved";
    }
    if (force) throw CommandError(CommandError::Kind::Syntax, "Vexrc_pair: -force goes with -unpair only");
    LogicalDisk& mv = *volumes.mv;
    LogicalDisk& rv = *volumes.rv;
    if (mv.number == rv.number) throw refuse(CommandError::Kind::Rule, "an LD cannot be paired with itself");
    if (volumes.pair != nullptr) throw refuse(CommandError::Kind::Exists, volumes.label + " are a pair already");
    if (mv.capacity != rv.capacity)
        throw refuse(CommandError::Kind::Rule, "MV and RV differ in size (" + std::to_string(mv.capacity) + " and " +
                                                   std::to_string(rv.capacity) + " bytes)");
    for (const LogicalDisk* ld : {&mv, &rv})
        if (ld->snapshotAttribute == "BV" || ld->snapshotAttribute == "SV")
            throw refuse(CommandError::Kind::InUse, ld->name + " is a snapshot volume (" + ld->snapshotAttribute + ")");
    int rvsOfMv = 0;
    for (const ReplicationPair& pair : state.pairs) {
        if (pair.rvNumber == rv.number) throw refuse(CommandError::Kind::InUse, rv.name + " is the RV of another pair");
        if (pair.mvNumber == rv.number) throw refuse(CommandError::Kind::InUse, rv.name + " is the MV of another pair");
        if (pair.rvNumber == mv.number) throw refuse(CommandError::Kind::InUse, mv.name + " is an RV; it cannot be an MV");
        if (pair.mvNumber == mv.number) ++rvsOfMv;
    }
    if (rvsOfMv >= ReplicationCommands::kMaxRvsPerMv)
        throw refuse(CommandError::Kind::Limit, mv.name + " has " + std::to_string(rvsOfMv) + " RVs, the most an MV can have");
    ReplicationPair pair;
    pair.mvNumber = mv.number;
    pair.rvNumber = rv.number;
    pair.syncState = "separated";
    pair.copyControlState = "-";
    pair.rvAccess = "rw";
    state.pairs.push_back(pair);
    mv.rplAttribute = "MV";
    rv.rplAttribute = "RV";
    mv.purpose = rv.purpose = "RPL";
    return volumes.label + " were paired";
}

std::string replicate(const std::vector<std::string>& args, ArrayState& state, long long nowMillis) {
    CommandLine line("Vexrc_replicate", args, withVolumes({{"-cpmode", true}}));
    const std::string cpmode = line.Choice("-cpmode", {"bg", "sync"});
    Volumes volumes = volumesOf(line, state);
    ReplicationPair& pair = pairOf(volumes);
    if (pair.syncState != "separated" && pair.syncState != "cancel")
        throw refuse(CommandError::Kind::State, "the pair of " + volumes.label + " is " + pair.syncState + ", not separated");
    startCopy(pair, "rpl/exec", cpmode, nowMillis);
    return "replication started: " + volumes.label;
}

std::string separate(const std::vector<std::string>& args, ArrayState& state, long long nowMillis) {
    CommandLine line("Vexrc_separate", args, withVolumes({{"-force", true}}));
    const bool force = line.Has("-force");
    if (force) line.Choice("-force", {"all", "rv"});
    Volumes volumes = volumesOf(line, state);
    ReplicationPair& pair = pairOf(volumes);
    if (isSeparated(pair))
        throw refuse(CommandError::Kind::State, "the pair of " + volumes.label + " is " + pair.syncState + " already");
    if (force) {
        // A forced separation cuts the copy off at once; the RV keeps what it has.
        pair.previousActive = pair.syncState;
        pair.syncState = "cancel";
        pair.forcedSeparate = true;
        pair.startTime = pair.endTime = nowMillis / 1000;
        pair.copyControlState = "-";
        pair.rvAccess = pair.rvMode.empty() ? "rw" : pair.rvMode;
        pair.activityStartMillis = nowMillis;
        return "the pair of " + volumes.label + " was separated by force";
    }
    if (pair.syncState != "rpl/sync")
        throw refuse(CommandError::Kind::State,
                     "the pair of " + volumes.label + " is " + pair.syncState + "; only a pair in rpl/sync can be separated");
    if (pair.copyControlState == "normal suspend")
        throw refuse(CommandError::Kind::State, "the pair of " + volumes.label + " is suspended; resume it first");
    pair.previousActive = pair.syncState;
    pair.syncState = "sep/exec";
    pair.forcedSeparate = false;
    pair.startTime = nowMillis / 1000;
    pair.endTime = 0;
    pair.activityStartMillis = nowMillis;
    return "separation started: " + volumes.label;
}

std::string restore(const std::vector<std::string>& args, ArrayState& state, long long nowMillis) {
    CommandLine line("Vexrc_restore", args, withVolumes({{"-cpmode", true}, {"-mode", true}}));
    const std::string cpmode = line.Choice("-cpmode", {"bg", "sync"});
    const bool protect = line.Has("-mode");
    if (protect) line.Choice("-mode", {"protect"});
    Volumes volumes = volumesOf(line, state);
    ReplicationPair& pair = pairOf(volumes);
    if (pair.syncState != "separated" && pair.syncState != "cancel")
        throw refuse(CommandError::Kind::State, "the pair of " + volumes.label + " is " + pair.syncState + ", not separated");
    startCopy(pair, protect ? "rst/exec (protect)" : "rst/exec", cpmode, nowMillis);
    pair.protect = protect;
    return "restore started: " + volumes.label;
}

std::string change(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexrc_change", args, withVolumes({{"-suspend", false}, {"-resume", false}}));
    const std::string action = line.OneOf({"-suspend", "-resume"});
    Volumes volumes = volumesOf(line, state);
    ReplicationPair& pair = pairOf(volumes);
    if (action == "-suspend") {
        if (pair.syncState != "rpl/sync" && pair.syncState != "rst/sync")
            throw refuse(CommandError::Kind::State, "the pair of " + volumes.label + " is " + pair.syncState +
                                                        "; only a pair in rpl/sync or rst/sync can be suspended");
        if (pair.copyControlState == "normal suspend")
            throw refuse(CommandError::Kind::State, "the pair of " + volumes.label + " is suspended already");
        pair.copyControlState = "normal suspend";
        return "copying suspended: " + volumes.label;
    }
    if (pair.copyControlState != "normal suspend")
        throw refuse(CommandError::Kind::State, "the pair of " + volumes.label + " is not suspended");
    pair.copyControlState = copyControlFor(pair.copyMode);
    return "copying resumed: " + volumes.label;
}

std::string rvmode(const std::vector<std::string>& args, ArrayState& state) {
    CommandLine line("Vexrc_rvmode", args, {{"-rv", true}, {"-rvflg", true}, {"-rvacc", true}});
    const std::string& rvName = line.Value("-rv");
    line.Choice("-rvflg", {"ld"});
    const std::string access = line.Choice("-rvacc", {"ro", "rw"});
    LogicalDisk& rv = namedLd(state, rvName);
    ReplicationPair* pair = state.FindPairByRv(rv.number);
    if (pair == nullptr) throw refuse(CommandError::Kind::NotFound, rvName + " is the RV of no pair");
    if (!isSeparated(*pair))
        throw refuse(CommandError::Kind::State, "the pair of RV " + rvName + " is " + pair->syncState +
                                                    "; the RV's access can be set only while separated");
    pair->rvAccess = access;
    pair->rvMode = access;
    return "RV " + rvName + " is now " + access;
}

}  // namespace

bool ReplicationCommands::Handles(const std::string& tool) {
    return tool == "Vexrc_pair" || tool == "Vexrc_replicate" || tool == "Vexrc_separate" || tool == "Vexrc_restore" ||
           tool == "Vexrc_change" || tool == "Vexrc_rvmode";
}

std::string ReplicationCommands::RunTool(const std::string& tool, const std::vector<std::string>& args, ArrayState& state,
                                         long long nowMillis) {
    if (tool == "Vexrc_pair") return pairCommand(args, state);
    if (tool == "Vexrc_replicate") return replicate(args, state, nowMillis);
    if (tool == "Vexrc_separate") return separate(args, state, nowMillis);
    if (tool == "Vexrc_restore") return restore(args, state, nowMillis);
    if (tool == "Vexrc_change") return change(args, state);
    if (tool == "Vexrc_rvmode") return rvmode(args, state);
    throw CommandError(CommandError::Kind::Syntax, tool + " is no replication tool");
}

}  // namespace arraysim
