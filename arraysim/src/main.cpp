// arraysim: answers as each of the array's tools, chosen by the name it is
// started under (Vexview, Vexcfg, ..., outfmtset), and as "arraysim
// <subcommand>" for operators and tests.

#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "ConsoleCommands.h"
#include "HubPollingDaemon.h"
#include "OutputFormat.h"
#include "StateStore.h"
#include "ToolRegistry.h"
#include "ToolRunner.h"
#include "ViewTools.h"

#include "ConfigTools.h"

namespace {

std::string baseName(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

int runTool(const std::string& tool, int argc, char** argv) {
    const std::string stateDir = arraysim::StateStore::DefaultDir();
    arraysim::ToolRegistry registry;
    arraysim::ViewTools::Register(registry);
    arraysim::ConfigTools::Register(registry);
    arraysim::OutputFormat::Register(registry, stateDir);
    if (registry.Find(tool) == nullptr) {
        std::cerr << "arraysim: unknown tool name \"" << tool << "\"; run as \"arraysim\" or as one of:";
        for (const auto& name : registry.Names()) std::cerr << " " << name;
        std::cerr << std::endl;
        return 2;
    }
    arraysim::ToolInvocation invocation;
    invocation.tool = tool;
    invocation.args.assign(argv + 1, argv + argc);
    invocation.xml = arraysim::OutputFormat::XmlChosen(stateDir);
    invocation.out = &std::cout;
    invocation.err = &std::cerr;
    return arraysim::ToolRunner::Run(registry, invocation, stateDir);
}

}  // namespace

int main(int argc, char** argv) {
    const std::string name = baseName(argc > 0 && argv[0] != nullptr ? argv[0] : "arraysim");
    if (name != "arraysim") return runTool(name, argc, argv);

    CLI::App app{"The array simulator: the array's tools and its polling daemon"};
    app.require_subcommand(1);
    arraysim::ConsoleCommands::AddSubcommands(app);
    arraysim::HubPollingDaemon::AddSubcommand(app);
    // A word that names no subcommand gets its own message rather than CLI11's general one.
    if (argc > 1 && argv[1][0] != '-') {
        bool known = false;
        for (const auto* sub : app.get_subcommands({})) known |= sub->get_name() == argv[1];
        if (!known) {
            std::cerr << "arraysim: unknown subcommand \"" << argv[1] << "\"; choose one of:";
            for (const auto* sub : app.get_subcommands({})) std::cerr << " " << sub->get_name();
            std::cerr << std::endl;
            return 2;
        }
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e);
    } catch (const std::exception& e) {
        std::cerr << "arraysim: " << e.what() << std::endl;
        return 1;
    }
    return 0;
}
