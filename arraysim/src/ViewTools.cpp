#include "ViewTools.h"

#include <cstdlib>
#include <exception>
#include <ostream>
#include <string>

#include "ReplicaQueryCommand.h"
#include "SnapshotQueryCommand.h"
#include "StateStore.h"
#include "SubjectFile.h"
#include "TextTableWriter.h"
#include "ViewCommand.h"
#include "ViewError.h"
#include "ViewRecordsBuilder.h"
#include "XmlDocWriter.h"

namespace arraysim {
namespace {

// The document of a run, or the refusal that ended it.
using Producer = ViewDocument (*)(const ToolInvocation& run);

// The records of the array the runner read for this run, or of the array as
// it is now when the runner read none.
ViewRecords ReadRecords(const ToolInvocation& run) {
    if (run.state) return ViewRecordsBuilder::Build(*run.state);
    ArrayState state;
    try {
        state = StateStore(StateStore::DefaultDir()).Read();
    } catch (const StateError& e) {
        throw ViewError(ViewError::kInternal, std::string("the array state cannot be read: ") + e.what());
    }
    return ViewRecordsBuilder::Build(state);
}

std::string SubjectPath(const std::string& given) { return SubjectFile::Locate(given, std::getenv("SMIS_ROOT")); }

ViewDocument RunView(const ToolInvocation& run) {
    const ViewCommand::Scope scope = ViewCommand::ParseArguments(run.args);
    return ViewCommand::Build(ReadRecords(run), scope);
}

ViewDocument RunReplicaQuery(const ToolInvocation& run) {
    const ReplicaQueryCommand::Request request = ReplicaQueryCommand::ParseArguments(run.args);
    if (!request.file.empty()) {
        const std::vector<std::string> names = SubjectFile::Read(SubjectPath(request.file));
        return ReplicaQueryCommand::BuildForVolumes(ReadRecords(run), names);
    }
    return ReplicaQueryCommand::BuildForReplica(ReadRecords(run), request.rv);
}

ViewDocument RunSnapshotQuery(const ToolInvocation& run) {
    const SnapshotQueryCommand::Request request = SnapshotQueryCommand::ParseArguments(run.args);
    const std::vector<std::string> names = SubjectFile::Read(SubjectPath(request.file));
    return SnapshotQueryCommand::Build(ReadRecords(run), names, request.detail);
}

// Runs one tool: the document in the chosen form on standard output, or the
// refusal (a document with its RETURN_CODE in XML, a message on standard
// error in text). The exit status is the RETURN_CODE.
int Answer(ToolInvocation& run, Producer produce, ViewDocument::Root failureRoot) {
    std::string answer;
    int status = 0;
    ViewDocument failure;
    failure.SetRoot(failureRoot);
    try {
        const ViewDocument doc = produce(run);
        // The XML goes out as it is made: a large view is read while it is
        // still being written. A value it cannot carry is found before the
        // first byte, and the refusal below is all that is written.
        if (run.xml)
            XmlDocWriter::Write(doc, *run.out);
        else
            answer = TextTableWriter::ToString(doc);
    } catch (const ViewError& e) {
        failure.SetFailure(e.ReturnCode(), e.MessageId(), e.what());
        status = e.ReturnCode();
    } catch (const std::exception& e) {
        const ViewError internal(ViewError::kInternal, e.what());
        failure.SetFailure(internal.ReturnCode(), internal.MessageId(), internal.what());
        status = internal.ReturnCode();
    }
    if (status != 0) {
        if (!run.xml) {
            *run.err << run.tool << ": " << failure.MessageId() << " " << failure.MessageContent() << std::endl;
            return status;
        }
        // Nothing goes to standard error here: callers read both streams as
        // one document. A message libxml2 refuses is replaced, not dropped
        // with the whole answer.
        try {
            answer = XmlDocWriter::ToString(failure);
        } catch (const std::exception&) {
            failure.SetFailure(status, failure.MessageId(), "the message cannot be written as XML");
            answer = XmlDocWriter::ToString(failure);
        }
    }
    *run.out << answer;
    run.out->flush();
    return status;
}

}  // namespace

void ViewTools::Register(ToolRegistry& registry) {
    registry.Add("Vexview", [](ToolInvocation& run) { return Answer(run, RunView, ViewDocument::Root::Request); });
    registry.Add("Vexrc_query",
                 [](ToolInvocation& run) { return Answer(run, RunReplicaQuery, ViewDocument::Root::CmdRequest); });
    registry.Add("Vexsc_query",
                 [](ToolInvocation& run) { return Answer(run, RunSnapshotQuery, ViewDocument::Root::CmdRequest); });
}

}  // namespace arraysim
