#include "ReplicaQueryCommand.h"

#include "ViewError.h"
#include "ViewFormat.h"

namespace arraysim {
namespace {

const char* const kChapter = "Pair Copy State";

// The names of the two time units a pair shows for its present state.
struct TimeUnits {
    const char* start;
    const char* end;
};

TimeUnits TimeUnitsOf(const PairRecord& pair) {
    const std::string& state = pair.syncState;
    if (state.compare(0, 3, "rst") == 0) return {"Restore Start Time", "Restore End Time"};
    if (state.compare(0, 3, "rpl") == 0) return {"Replicate Start Time", "Replicate End Time"};
    if (state == "fault") return {"Separate Start Time", "Fault Time"};
    if (pair.forcedSeparate) return {"Separate Start Time", "Forced Separate Time"};
    return {"Separate Start Time", "Separate End Time"};
}

void AddMv(ViewObject& object, const std::string& name, unsigned number) {
    object.AddSection("MV Detail Information")
        .Add("LD Name", name)
        .Add("LD Number(h)", ViewFormat::Hex(number, 4));
}

void AddRv(ViewObject& object, const PairRecord& pair) {
    ViewSection& s = object.AddSection("RV Detail Information");
    s.Add("LD Name", pair.rvName)
        .Add("LD Number(h)", ViewFormat::Hex(pair.rvNumber, 4))
        .Add("Sync State", pair.syncState)
        .Add("Copy Control State", pair.copyControlState);
    TimeUnits units = TimeUnitsOf(pair);
    if (pair.startTime != 0) s.Add(units.start, ViewFormat::Time(pair.startTime));
    if (pair.endTime != 0) s.Add(units.end, ViewFormat::Time(pair.endTime));
    s.Add("Previous Active", pair.previousActive)
        .Add("Copy Diff", pair.copyDiff)
        .Add("Separate Diff", pair.separateDiff)
        .Add("RV Access", pair.rvAccess)
        .Add("Connection", pair.connection);
}

const LdRecord* FindLd(const ViewRecords& records, const std::string& name) {
    for (const LdRecord& ld : records.lds)
        if (ld.name == name) return &ld;
    return nullptr;
}

ViewDocument NewDocument() {
    ViewDocument doc;
    doc.SetRoot(ViewDocument::Root::CmdRequest);
    return doc;
}

}  // namespace

ReplicaQueryCommand::Request ReplicaQueryCommand::ParseArguments(const std::vector<std::string>& args) {
    Request request;
    if (args.size() == 2 && args[0] == "-file") {
        if (args[1].empty() || args[1][0] == '-')
            throw ViewError(ViewError::kBadArguments, "-file needs a file name");
        request.file = args[1];
        return request;
    }
    if (args.size() == 4 && args[0] == "-rv" && args[2] == "-rvflg") {
        if (args[3] != "ld") throw ViewError(ViewError::kBadArguments, "unsupported -rvflg " + args[3] + " (ld is supported)");
        if (args[1].empty()) throw ViewError(ViewError::kBadArguments, "-rv needs a volume name");
        request.rv = args[1];
        return request;
    }
    std::string line;
    for (const std::string& arg : args) line += " " + arg;
    throw ViewError(ViewError::kBadArguments,
                    "invalid options:" + line + " (use -file FILE, or -rv NAME -rvflg ld)");
}

ViewDocument ReplicaQueryCommand::BuildForVolumes(const ViewRecords& records, const std::vector<std::string>& mvNames) {
    ViewDocument doc = NewDocument();
    ViewChapter& chapter = doc.AddChapter(kChapter);
    for (const std::string& name : mvNames) {
        const LdRecord* ld = FindLd(records, name);
        if (!ld) throw ViewError(ViewError::kNotFound, "the logical disk " + name + " does not exist");
        ViewObject& object = chapter.AddObject(kChapter);
        AddMv(object, ld->name, ld->number);
        for (const PairRecord& pair : records.pairs)
            if (pair.mvName == name) AddRv(object, pair);
    }
    return doc;
}

ViewDocument ReplicaQueryCommand::BuildForReplica(const ViewRecords& records, const std::string& rvName) {
    if (!FindLd(records, rvName)) throw ViewError(ViewError::kNotFound, "the logical disk " + rvName + " does not exist");
    for (const PairRecord& pair : records.pairs) {
        if (pair.rvName != rvName) continue;
        ViewDocument doc = NewDocument();
        ViewObject& object = doc.AddChapter(kChapter).AddObject(kChapter);
        AddMv(object, pair.mvName, pair.mvNumber);
        AddRv(object, pair);
        return doc;
    }
    throw ViewError(ViewError::kNotFound, "the logical disk " + rvName + " is not paired as a replica volume");
}

}  // namespace arraysim
