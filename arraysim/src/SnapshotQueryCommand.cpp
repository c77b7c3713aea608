#include "SnapshotQueryCommand.h"

#include "ViewError.h"
#include "ViewFormat.h"

namespace arraysim {
namespace {

const char* StartTimeUnit(const std::string& snapState) {
    if (snapState.find("rst") != std::string::npos || snapState.find("restor") != std::string::npos)
        return "Restore Start Time";
    if (snapState.find("del") != std::string::npos) return "Delete Start Time";
    return "Create Start Time";
}

void AddGeneration(ViewObject& object, const GenerationRecord& g) {
    ViewSection& s = object.AddSection("SV");
    s.Add("LD Number", ViewFormat::Hex(g.number, 4))
        .Add("LD Name", g.name)
        .Add("Type", g.type)
        .Add("Generation", std::to_string(g.generation))
        .Add("Generation(Attribute)", g.generationAttribute)
        .Add("Snap State", g.snapState)
        .Add("Creation Time", ViewFormat::Time(g.creationTime));
    if (g.startTime != 0) s.Add(StartTimeUnit(g.snapState), ViewFormat::Time(g.startTime));
    s.Add("Processing Data Size", std::to_string(g.processingDataSize))
        .Add("Snapshot Data Size", ViewFormat::DataSize(g.snapshotDataSize))
        .Add("LV Link Status", g.linkStatus);
}

}  // namespace

SnapshotQueryCommand::Request SnapshotQueryCommand::ParseArguments(const std::vector<std::string>& args) {
    Request request;
    bool haveFile = false;
    for (size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "-file" && !haveFile && i + 1 < args.size() && !args[i + 1].empty() &&
            args[i + 1][0] != '-') {
            request.file = args[++i];
            haveFile = true;
        } else if (args[i] == "-detail" && !request.detail) {
            request.detail = true;
        } else {
            throw ViewError(ViewError::kBadArguments, "invalid option " + args[i] + " (use -file FILE [-detail])");
        }
    }
    if (!haveFile) throw ViewError(ViewError::kBadArguments, "-file FILE is required");
    return request;
}

ViewDocument SnapshotQueryCommand::Build(const ViewRecords& records, const std::vector<std::string>& bvNames, bool detail) {
    ViewDocument doc;
    doc.SetRoot(ViewDocument::Root::CmdRequest);
    for (const std::string& name : bvNames) {
        const SnapshotBaseRecord* base = nullptr;
        for (const SnapshotBaseRecord& candidate : records.snapshots)
            if (candidate.name == name) base = &candidate;
        if (!base) throw ViewError(ViewError::kNotFound, "the logical disk " + name + " is not a snapshot base volume");
        ViewChapter& chapter = doc.AddChapter("Vexsc_query_Info");
        chapter.AddObject("BV Information").AddSection("BV")
            .Add("LD Number", ViewFormat::Hex(base->number, 4))
            .Add("LD Name", base->name)
            .Add("Type", base->type)
            .Add("Special File", base->specialFile)
            .Add("State", base->state)
            .Add("Reserve Area", base->reserveArea);
        if (detail) {
            ViewObject& pairs = chapter.AddObject("Pair Information");
            for (const GenerationRecord& generation : base->generations) AddGeneration(pairs, generation);
        }
    }
    return doc;
}

}  // namespace arraysim
