#include "ConfigTools.h"

#include <chrono>

#include "CommandError.h"
#include "LdCommands.h"
#include "LdSetCommands.h"
#include "PoolCommands.h"
#include "ReplicationCommands.h"
#include "ResultDocument.h"
#include "SnapshotCommands.h"
#include "StateStore.h"

namespace arraysim {

namespace {

long long wallMillis() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

std::string vexcfg(const std::vector<std::string>& args, ArrayState& state) {
    if (args.empty())
        throw CommandError(CommandError::Kind::Syntax, "Vexcfg: a sub-command is required (poolbind, ldbind, addldset, ...)");
    const std::string& sub = args.front();
    const std::vector<std::string> rest(args.begin() + 1, args.end());
    if (PoolCommands::Handles(sub)) return PoolCommands::Apply(sub, rest, state);
    if (LdCommands::Handles(sub)) return LdCommands::Apply(sub, rest, state);
    if (LdSetCommands::Handles(sub)) return LdSetCommands::Apply(sub, rest, state);
    if (SnapshotCommands::Handles(sub)) return SnapshotCommands::Apply(sub, rest, state);
    throw CommandError(CommandError::Kind::Syntax, "Vexcfg: unknown sub-command \"" + sub + "\"");
}

}  // namespace

std::vector<std::string> ConfigTools::ToolNames() {
    return {"Vexcfg",         "Vexsc_create",   "Vexsc_delete", "Vexsc_restore", "Vexrc_pair",
            "Vexrc_replicate", "Vexrc_separate", "Vexrc_restore", "Vexrc_change",  "Vexrc_rvmode"};
}

void ConfigTools::Register(ToolRegistry& registry) {
    for (const std::string& name : ToolNames())
        registry.Add(name, [](ToolInvocation& invocation) {
            return Run(invocation, StateStore::DefaultDir(), wallMillis());
        });
}

std::string ConfigTools::Apply(const std::string& tool, const std::vector<std::string>& args, ArrayState& state,
                               long long nowMillis) {
    if (tool == "Vexcfg") return vexcfg(args, state);
    if (tool == "Vexsc_create" || tool == "Vexsc_delete" || tool == "Vexsc_restore")
        return SnapshotCommands::RunTool(tool, args, state, nowMillis);
    if (ReplicationCommands::Handles(tool)) return ReplicationCommands::RunTool(tool, args, state, nowMillis);
    throw CommandError(CommandError::Kind::Syntax, tool + ": not a configuration tool");
}

int ConfigTools::Run(ToolInvocation& invocation, const std::string& stateDir, long long nowMillis) {
    const long long seconds = nowMillis / 1000;
    std::string message;
    try {
        StateStore store(stateDir);
        if (!store.Exists())
            throw CommandError(CommandError::Kind::Internal,
                               "the array does not answer: it has no configuration (create one with arraysim init)");
        store.Update([&](ArrayState& state) { message = Apply(invocation.tool, invocation.args, state, nowMillis); });
    } catch (const CommandError& error) {
        return ResultDocument::Failure(error, seconds).Write(invocation.xml, *invocation.out, *invocation.err);
    } catch (const std::exception& error) {
        const CommandError internal(CommandError::Kind::Internal, std::string("the array cannot carry out the command: ") + error.what());
        return ResultDocument::Failure(internal, seconds).Write(invocation.xml, *invocation.out, *invocation.err);
    }
    return ResultDocument::Success(message, seconds).Write(invocation.xml, *invocation.out, *invocation.err);
}

}  // namespace arraysim
