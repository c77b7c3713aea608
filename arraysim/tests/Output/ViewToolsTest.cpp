// The built tools Vexview, Vexrc_query and Vexsc_query on a small array, run
// as separate programs the way the module runs them.

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "../State/StateTestRoot.h"
#include "StateStore.h"
#include "XmlProbe.h"

using namespace arraysim;

namespace {

const std::string kBin = TEST_BINARY_DIR "/arraysim-bin";

struct ToolRun {
    int status = -1;
    std::string out;
    std::string err;
};

// Runs a tool without a shell; standard output and error are kept apart.
ToolRun RunTool(const std::string& tool, const std::vector<std::string>& args, bool xml) {
    ToolRun run;
    char errPattern[] = "/tmp/arraysim-view-err-XXXXXX";
    const int errFd = ::mkstemp(errPattern);
    int pipeFds[2];
    if (errFd < 0 || ::pipe(pipeFds) != 0) return run;
    const std::string path = kBin + "/" + tool;
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(pipeFds[1], 1);
        ::dup2(errFd, 2);
        ::close(pipeFds[0]);
        ::close(pipeFds[1]);
        if (xml) ::setenv("_OUTFMTSET", "xml", 1);
        else ::unsetenv("_OUTFMTSET");
        std::vector<char*> argv;
        argv.push_back(const_cast<char*>(path.c_str()));
        for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
        argv.push_back(nullptr);
        ::execv(path.c_str(), argv.data());
        ::_exit(127);
    }
    ::close(pipeFds[1]);
    char buffer[65536];
    ssize_t got;
    while ((got = ::read(pipeFds[0], buffer, sizeof buffer)) > 0) run.out.append(buffer, static_cast<size_t>(got));
    ::close(pipeFds[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::ifstream err(errPattern);
    std::ostringstream text;
    text << err.rdbuf();
    run.err = text.str();
    ::close(errFd);
    ::unlink(errPattern);
    return run;
}

class BuiltViewTools : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(::access((kBin + "/Vexview").c_str(), X_OK), 0) << "build the arraysim target first";
        ASSERT_EQ(RunTool("arraysim", {"init", "--template", "small"}, false).status, 0);
        state = StateStore(root.StateDir()).Read();
    }

    // Writes a subject file at the fixed path the module uses, under the root.
    std::string Subject(const std::string& name, const std::string& text) {
        const std::string dir = root.Path() + "/opt/pegasus/etc/conf";
        const std::string made = "mkdir -p '" + dir + "'";
        EXPECT_EQ(std::system(made.c_str()), 0);
        std::ofstream(dir + "/" + name) << text;
        return "/opt/pegasus/etc/conf/" + name;
    }

    arraysim_test::TempRoot root;
    ArrayState state;
};

}  // namespace

TEST_F(BuiltViewTools, VexviewAllReportsTheStoredArray) {
    const ToolRun run = RunTool("Vexview", {"-all"}, true);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const XmlProbe doc(run.out);
    ASSERT_TRUE(doc.Ok()) << run.out.substr(0, 400);
    const std::string chapter = "/REQUEST/CMD_REQUEST/CHAPTER";
    EXPECT_EQ(doc.First("/REQUEST/CMD_REQUEST/RETURN_CODE"), "0");
    EXPECT_EQ(doc.Count(chapter), 7u);
    EXPECT_EQ(doc.First(chapter + "[@name='Disk Array']/OBJECT/SECTION/UNIT[@name='World Wide Name']"),
              state.identity.worldWideName);
    EXPECT_EQ(doc.Count(chapter + "[@name='Controller']/OBJECT[@name='HD']"), state.controllers.size());
    EXPECT_EQ(doc.Count(chapter + "[@name='Physical Disk']/OBJECT"), state.disks.size());
    EXPECT_EQ(doc.Count(chapter + "[@name='Pool']/OBJECT[@name='Pool']"), state.pools.size());
    std::vector<std::string> names;
    for (const LogicalDisk& ld : state.lds) names.push_back(ld.name);
    EXPECT_EQ(doc.All(chapter + "[@name='Logical Disk']/OBJECT/SECTION/UNIT[@name='LD Name']"), names);
    EXPECT_EQ(doc.Count(chapter + "[@name='Access Control']/OBJECT"), state.ldSets.size());

    // A change at the console shows in the next run.
    ASSERT_EQ(RunTool("arraysim", {"set", "access-control", "off"}, false).status, 0);
    const XmlProbe after(RunTool("Vexview", {"-all"}, true).out);
    EXPECT_EQ(after.First(chapter + "[@name='Disk Array']/OBJECT/SECTION/UNIT[@name='Access Control Mode']"), "off");

    const ToolRun text = RunTool("Vexview", {"-dpi"}, false);
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(text.out.find("<?xml"), std::string::npos);
    EXPECT_NE(text.out.find("PD Detail Information"), std::string::npos);
}

TEST_F(BuiltViewTools, RefusalsCarryTheirCodeInTheDocumentAndTheExitStatus) {
    // XML: the whole answer is one document on standard output (the module
    // joins standard error to it), RETURN_CODE equal to the exit status.
    ToolRun run = RunTool("Vexview", {"-everything"}, true);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "");
    XmlProbe doc(run.out);
    ASSERT_TRUE(doc.Ok()) << run.out;
    EXPECT_EQ(doc.First("/REQUEST/CMD_REQUEST/RETURN_CODE"), "1");
    EXPECT_EQ(doc.First("/REQUEST/CMD_REQUEST/RETURN_MSG/UNIT[@name='message_id']"), "Vex20001");
    EXPECT_NE(doc.First("/REQUEST/CMD_REQUEST/RETURN_MSG/UNIT[@name='message_content']").find("-everything"),
              std::string::npos);
    EXPECT_EQ(doc.Count("//CHAPTER"), 0u);

    // Text: nothing on standard output, the message on standard error.
    run = RunTool("Vexrc_query", {"-rv", "LD0001"}, false);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("-rvflg"), std::string::npos) << run.err;

    run = RunTool("Vexsc_query", {"-file", "/opt/pegasus/etc/conf/none.txt", "-detail"}, true);
    EXPECT_EQ(run.status, 3);
    const XmlProbe missing(run.out);
    EXPECT_EQ(missing.RootName(), "CMD_REQUEST");
    EXPECT_EQ(missing.First("/CMD_REQUEST/RETURN_CODE"), "3");

    const std::string bad = Subject("bad.txt", "ld:LD0000\nmv:LD0001\n");
    run = RunTool("Vexrc_query", {"-file", bad}, true);
    EXPECT_EQ(run.status, 3);
    EXPECT_NE(XmlProbe(run.out).First("//UNIT[@name='message_content']").find("line 2"), std::string::npos);

    // A name that is not text at all still gets a well-formed refusal.
    run = RunTool("Vexrc_query", {"-file", Subject("binary.txt", "ld:LD\xff\x01\n")}, true);
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(XmlProbe(run.out).Ok()) << run.out;
    EXPECT_EQ(XmlProbe(run.out).First("/CMD_REQUEST/RETURN_CODE"), "2");

    run = RunTool("Vexrc_query", {"-rv", "NOSUCH", "-rvflg", "ld"}, true);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(XmlProbe(run.out).Count("/CMD_REQUEST/CHAPTER"), 0u);

    // Without an array there is nothing to report.
    ASSERT_EQ(std::remove((root.StateDir() + "/state.json").c_str()), 0);
    run = RunTool("Vexview", {"-all"}, true);
    EXPECT_EQ(run.status, 9);
    EXPECT_EQ(XmlProbe(run.out).First("/REQUEST/CMD_REQUEST/RETURN_CODE"), "9");
}

TEST_F(BuiltViewTools, QueriesReadTheirSubjectFileUnderTheRoot) {
    ASSERT_FALSE(state.pairs.empty());
    ASSERT_FALSE(state.snapshots.empty());
    const ReplicationPair& pair = state.pairs.front();
    const std::string mv = state.FindLd(pair.mvNumber)->name;
    const std::string rv = state.FindLd(pair.rvNumber)->name;
    const std::string objects = "/CMD_REQUEST/CHAPTER[@name='Pair Copy State']/OBJECT[@name='Pair Copy State']";

    ToolRun run = RunTool("Vexrc_query", {"-file", Subject("Vexrc_query.txt", "ld:" + mv + "\nld:LD0000\n")}, true);
    ASSERT_EQ(run.status, 0) << run.out;
    XmlProbe doc(run.out);
    EXPECT_EQ(doc.All(objects + "/SECTION[@name='MV Detail Information']/UNIT[@name='LD Name']"),
              (std::vector<std::string>{mv, "LD0000"}));
    EXPECT_EQ(doc.All(objects + "[1]/SECTION[@name='RV Detail Information']/UNIT[@name='LD Name']"),
              std::vector<std::string>{rv});
    EXPECT_EQ(doc.First(objects + "[1]/SECTION[@name='RV Detail Information']/UNIT[@name='Sync State']"),
              pair.syncState);

    run = RunTool("Vexrc_query", {"-rv", rv, "-rvflg", "ld"}, true);
    ASSERT_EQ(run.status, 0) << run.out;
    XmlProbe one(run.out);
    EXPECT_EQ(one.Count(objects), 1u);
    EXPECT_EQ(one.First(objects + "/SECTION[@name='MV Detail Information']/UNIT[@name='LD Name']"), mv);

    const SnapshotBase& base = state.snapshots.front();
    const std::string bv = state.FindLd(base.number)->name;
    run = RunTool("Vexsc_query", {"-file", Subject("Vexsc_query.txt", "ld:" + bv + "\n"), "-detail"}, true);
    ASSERT_EQ(run.status, 0) << run.out;
    XmlProbe snap(run.out);
    const std::string chapter = "/CMD_REQUEST/CHAPTER[@name='Vexsc_query_Info']";
    EXPECT_EQ(snap.First(chapter + "/OBJECT[@name='BV Information']/SECTION[@name='BV']/UNIT[@name='LD Name']"), bv);
    EXPECT_EQ(snap.Count(chapter + "/OBJECT[@name='Pair Information']/SECTION[@name='SV']"), base.generations.size());
}
