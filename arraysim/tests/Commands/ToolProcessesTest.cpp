// The built tools as separate processes, as the module starts them: the exit
// status equals the document's RETURN_CODE, and tools running at the same
// time lose no change.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "../State/StateTestRoot.h"
#include "StateStore.h"

extern char** environ;

using namespace arraysim;

namespace {

const std::string kBin = TEST_BINARY_DIR "/arraysim-bin";

struct Child {
    pid_t pid = -1;
    int output = -1;  // standard output and error, joined
};

// Starts bin/<tool> with args, without a shell.
Child start(const std::string& tool, const std::vector<std::string>& args) {
    Child child;
    int fds[2];
    if (::pipe(fds) != 0) return child;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
    posix_spawn_file_actions_adddup2(&actions, fds[1], 2);
    posix_spawn_file_actions_addclose(&actions, fds[0]);
    const std::string path = kBin + "/" + tool;
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(path.c_str()));
    for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    if (posix_spawn(&child.pid, path.c_str(), &actions, nullptr, argv.data(), environ) != 0) child.pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    ::close(fds[1]);
    child.output = fds[0];
    return child;
}

struct Finished {
    int status = -1;
    std::string output;
};

Finished finish(Child child) {
    Finished done;
    char buffer[4096];
    ssize_t got;
    while ((got = ::read(child.output, buffer, sizeof buffer)) > 0) done.output.append(buffer, static_cast<std::size_t>(got));
    ::close(child.output);
    int status = 0;
    if (child.pid > 0 && ::waitpid(child.pid, &status, 0) == child.pid && WIFEXITED(status)) done.status = WEXITSTATUS(status);
    return done;
}

Finished run(const std::string& tool, const std::vector<std::string>& args) { return finish(start(tool, args)); }

std::string between(const std::string& text, const std::string& open, const std::string& close) {
    const auto from = text.find(open);
    if (from == std::string::npos) return "";
    const auto to = text.find(close, from + open.size());
    return to == std::string::npos ? "" : text.substr(from + open.size(), to - from - open.size());
}

class ToolProcessesTest : public ::testing::Test {
protected:
    void SetUp() override {
        ::setenv("_OUTFMTSET", "xml", 1);
        ASSERT_EQ(run("arraysim", {"init", "--template", "small"}).status, 0);
    }
    void TearDown() override { ::unsetenv("_OUTFMTSET"); }
    arraysim_test::TempRoot root;
};

TEST_F(ToolProcessesTest, ExitStatusIsTheReturnCode) {
    struct Case {
        std::string tool;
        std::vector<std::string> args;
        int status;
    };
    const std::vector<Case> cases = {
        {"Vexcfg", {"ldbind", "-poolnumber", "0000h", "-ldn", "0100h", "-capacity", "1024", "-unit", "mb", "-mode", "exc"}, 0},
        {"Vexcfg", {"ldbind", "-poolnumber", "0000h", "-ldn", "0100h", "-capacity", "1024", "-unit", "mb", "-mode", "exc"}, 1},
        {"Vexcfg", {"ldbind", "-poolnumber", "0000h"}, 2},
        {"Vexrc_pair", {"-pair", "-mv", "LD0001", "-mvflg", "ld", "-rv", "LD0003", "-rvflg", "ld"}, 0},
        {"Vexsc_create", {"-bv", "LD0009", "-bvflg", "ld", "-sv", "LD000A", "-svflg", "ld"}, 0},
    };
    for (const Case& c : cases) {
        const Finished done = run(c.tool, c.args);
        SCOPED_TRACE(c.tool + " " + c.args.front() + ": " + done.output);
        EXPECT_EQ(done.status, c.status);
        EXPECT_EQ(between(done.output, "<RETURN_CODE>", "</RETURN_CODE>"), std::to_string(c.status));
        EXPECT_EQ(between(done.output, "<UNIT name=\"message_id\">", "</UNIT>").rfind("Vex", 0), 0u);
    }
    // The changes are in the state the next tool reads.
    const ArrayState state = StateStore(StateStore::DefaultDir()).Read();
    EXPECT_NE(state.FindLd(0x100), nullptr);
    EXPECT_EQ(state.FindLd(3)->rplAttribute, "RV");
}

TEST_F(ToolProcessesTest, PlainTextAndAMissingArray) {
    ::unsetenv("_OUTFMTSET");
    Finished refused = run("Vexcfg", {"ldunbind", "-ldn", "0000h"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.output.rfind("Vex10401 Logical disk 0000h belongs to the LD set LX:HOST0000", 0), 0u) << refused.output;

    ::setenv("SMIS_ROOT", (root.Path() + "/nowhere").c_str(), 1);
    ::setenv("_OUTFMTSET", "xml", 1);
    Finished missing = run("Vexcfg", {"ldunbind", "-ldn", "0000h"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.output.find("Vex19001"), std::string::npos) << missing.output;
    EXPECT_NE(missing.output.find("no configuration"), std::string::npos) << missing.output;
}

TEST_F(ToolProcessesTest, ConcurrentToolsLoseNoChange) {
    const ArrayState before = StateStore(StateStore::DefaultDir()).Read();
    constexpr int kTools = 24;
    std::vector<Child> children;
    for (int i = 0; i < kTools; ++i) {
        char ldn[16];
        std::snprintf(ldn, sizeof ldn, "%04xh", 0x200 + i);
        children.push_back(start("Vexcfg", {"ldbind", "-poolnumber", i % 2 == 0 ? "0000h" : "0001h", "-ldn", ldn,
                                            "-capacity", "100", "-unit", "mb", "-mode", "exc"}));
    }
    // Meanwhile other tools change other parts of the same state.
    children.push_back(start("Vexcfg", {"addldset", "-ldset", "LX:Busy", "-type", "fc"}));
    children.push_back(start("Vexrc_pair", {"-pair", "-mv", "LD0001", "-mvflg", "ld", "-rv", "LD0003", "-rvflg", "ld"}));
    for (Child& child : children) {
        const Finished done = finish(child);
        EXPECT_EQ(done.status, 0) << done.output;
    }
    const ArrayState after = StateStore(StateStore::DefaultDir()).Read();
    for (int i = 0; i < kTools; ++i) EXPECT_NE(after.FindLd(0x200u + static_cast<unsigned>(i)), nullptr) << i;
    const std::uint64_t each = 100ULL * 1024 * 1024 * (kTools / 2);
    EXPECT_EQ(after.FindPool(0)->usedCapacity, before.FindPool(0)->usedCapacity + each);
    EXPECT_EQ(after.FindPool(1)->usedCapacity, before.FindPool(1)->usedCapacity + each);
    EXPECT_EQ(after.ldSets.size(), before.ldSets.size() + 1);
    EXPECT_EQ(after.pairs.size(), before.pairs.size() + 1);
    EXPECT_GT(after.logicalGeneration, before.logicalGeneration);
}

}  // namespace
