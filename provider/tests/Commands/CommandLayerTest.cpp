// The command layer: the choice of how commands run, the shell line and the
// refusal of text a shell would interpret, reading a tool's output into the
// parser, retries of view commands, replay of saved documents, and the
// simulator's view tool with its faults.

#include <gtest/gtest.h>

#include "Command.h"
#include "CommandsTestSupport.h"
#include "ExecCmd.h"
#include "FakeCommandImpl.h"
#include "LocalCommandImpl.h"
#include "RemoteCommandImpl.h"
#include "VexviewCommand.h"
#include "XMLParser.h"

using namespace orvsmis;
using cmdtest::SetConfig;
using cmdtest::TempRoot;

namespace {

const std::string GOOD_DOC = "<CMD_REQUEST><RETURN_CODE>0</RETURN_CODE></CMD_REQUEST>";
const std::string FAILED_DOC = "<CMD_REQUEST><RETURN_CODE>1</RETURN_CODE></CMD_REQUEST>";

class LineCommand : public Command {
public:
    LineCommand(XMLParser* parser, const std::string& line) : Command(parser) { m_commandLine = line; }
};

class CommandLayer : public ::testing::Test {
protected:
    void SetUp() override {
        SetConfig("Test", "CommandType", "Local");
        SetConfig("Test", "UnifyAuthority", "false");
        SetConfig("smis", "CmdRetryCount", "3");
        SetConfig("PollingSimulator", "CommandReturnValue", "true");
    }
    void TearDown() override { SetUp(); }

    // A tool that counts its runs and answers run n with answers[n-1] (the
    // last one repeating).
    std::string Tool(const std::string& name, const std::vector<std::string>& answers) {
        std::string script = "#!/bin/sh\necho run >> " + m_root.Path() + "/" + name + ".runs\n";
        script += "n=$(wc -l < " + m_root.Path() + "/" + name + ".runs)\n";
        for (size_t i = 0; i + 1 < answers.size(); ++i)
            script += "[ $n -eq " + std::to_string(i + 1) + " ] && printf '%s' '" + answers[i] + "' && exit 0\n";
        script += "printf '%s' '" + answers.back() + "'\n";
        cmdtest::WriteFile(m_root.Path() + "/bin/" + name, script, 0755);
        return m_root.Path() + "/bin/" + name;
    }
    int Runs(const std::string& name) {
        std::string text = cmdtest::ReadFile(m_root.Path() + "/" + name + ".runs");
        return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
    }

    TempRoot m_root;
    XMLParser m_parser;
};

}  // namespace

TEST_F(CommandLayer, WayOfRunningAndShellLine) {
    const char* cases[][2] = {{"Fake", "fake"}, {"Remote", "remote"}, {"fake", "local"}, {"REMOTE", "local"}, {"", "local"}};
    for (const auto& c : cases) {
        SetConfig("Test", "CommandType", c[0]);
        CommandImpl* impl = CommandImplFactory::CreateCommandImpl();
        std::string kind = dynamic_cast<FakeCommandImpl*>(impl)     ? "fake"
                           : dynamic_cast<RemoteCommandImpl*>(impl) ? "remote"
                           : dynamic_cast<LocalCommandImpl*>(impl)  ? "local" : "none";
        EXPECT_EQ(c[1], kind) << c[0];
        delete impl;
    }

    SetConfig("Test", "UnifyAuthority", "true");
    EXPECT_EQ("su - opsmaint -c \"outfmtset xml; Vexcfg ldunbind -ldn 0001h 2>&1 \"",
              LocalCommandImpl().FormShellLine("Vexcfg ldunbind -ldn 0001h"));
    SetConfig("Test", "UnifyAuthority", "false");
    LocalCommandImpl different;
    EXPECT_EQ("su - opsmaint -c \"outfmtset xml; Vexview -all 2>&1 \"", different.FormShellLine("Vexview -all"));
    // Only the first word makes a view command here.
    EXPECT_EQ("_OUTFMTSET=xml; export _OUTFMTSET; Vexrc_query -f Vexview 2>&1 ", different.FormShellLine("Vexrc_query -f Vexview"));
    EXPECT_EQ("outfmtset xml; Vexview -all  2>&1", RemoteCommandImpl::FormShellLine("Vexview -all"));
}

TEST_F(CommandLayer, TextAShellWouldInterpretNeverRuns) {
    for (const char* text : {"Vexcfg nickname -ldn 0001h -newname :LD_01/a-b",
                             "Vexcfg addldsetinitiator -ldset LX:s1 -initiatorname iqn.1994-05.com.host:node1",
                             "Vexrc_query -file /opt/pegasus/etc/conf/Vexrc_query.txt"})
        EXPECT_TRUE(IsSafeCommandText(text)) << text;
    for (const char* bad : {";", "$(id)", "`id`", "\"", "'", "\n", "|", "&", ">", "*", "#", "\\", "\t"})
        EXPECT_FALSE(IsSafeCommandText(std::string("Vexcfg nickname -newname a") + bad)) << bad;

    std::string tool = Tool("cfgtool", {GOOD_DOC});
    LocalCommandImpl impl;
    EXPECT_FALSE(impl.Execute(tool + " -x;" + tool, m_parser));
    EXPECT_FALSE(impl.Execute(tool + " $(" + tool + ")", m_parser));
    EXPECT_EQ(0, Runs("cfgtool"));
}

TEST(PassSpace, SkipsToTheFirstBracketWithinTheCount) {
    char text[] = "ab c<x>";
    int count = 7;
    EXPECT_EQ(text + 4, passSpace(text, &count));
    EXPECT_EQ(3, count);
    count = 4;
    EXPECT_EQ(nullptr, passSpace(text, &count));
    EXPECT_EQ(0, count);
}

TEST_F(CommandLayer, ToolOutputIsParsedFromItsFirstBracket) {
    std::string big = "<CMD_REQUEST><RETURN_CODE>0</RETURN_CODE>";
    for (int i = 0; i < 400; ++i) big += "<X name=\"n\">value</X>";
    cmdtest::WriteFile(m_root.Path() + "/big.xml", big + "</CMD_REQUEST>");
    cmdtest::WriteFile(m_root.Path() + "/late.txt", std::string(3000, 'x') + "\n" + GOOD_DOC);
    const std::pair<std::string, bool> cases[] = {
        {"printf '%s' '" + GOOD_DOC + "'", true},
        {"printf 'Vex Server says hello\\n%s' '" + GOOD_DOC + "'", true},
        {"cat " + m_root.Path() + "/late.txt", true},  // text before the document fills whole reads
        {"cat " + m_root.Path() + "/big.xml", true},   // the document spans many reads
        {"printf '%s' '<REQUEST>" + GOOD_DOC + "</REQUEST>'", true},
        {"printf '%s' '" + FAILED_DOC + "'", false},
        {"true", false},
        {"printf 'no document here'", false},
        {"printf '%s' '<CMD_REQUEST><RETURN_CODE>0</RETURN_CODE>'", false},
        {"printf '%s' '<OTHER><RETURN_CODE>0</RETURN_CODE></OTHER>'", false},
        {"printf '%s' '<CMD_REQUEST><<<>>'", false},
        {"printf '%s' '<CMD_REQUEST></CMD_REQUEST>'", false},
    };
    for (const auto& c : cases) {
        XMLParser parser;
        int rc = LocalCMDRequest(&parser, c.first.c_str());
        EXPECT_EQ(c.second, rc == 0 && parser.GetReturnCode()) << c.first;
        parser.Unload();
        EXPECT_EQ(rc, ExecCMD(&parser, c.first.c_str())) << c.first;
    }
    EXPECT_EQ(-1, LocalCMDRequest(nullptr, "true"));
}

TEST_F(CommandLayer, ViewCommandsAreRetriedOthersNot) {
    std::string view = Tool("Vexview_probe", {FAILED_DOC, FAILED_DOC, GOOD_DOC});
    EXPECT_TRUE(LocalCommandImpl().Execute(view + " -all", m_parser));
    EXPECT_EQ(3, Runs("Vexview_probe"));

    std::string down = Tool("Vexview_down", {FAILED_DOC});
    SetConfig("smis", "CmdRetryCount", "1");
    EXPECT_FALSE(LocalCommandImpl().Execute(down + " -all", m_parser));
    EXPECT_EQ(2, Runs("Vexview_down"));
    SetConfig("smis", "CmdRetryCount", "0");
    EXPECT_FALSE(LocalCommandImpl().Execute(down + " -all", m_parser));
    EXPECT_EQ(3, Runs("Vexview_down"));

    // "Vexview" anywhere in the text makes a command retried.
    SetConfig("smis", "CmdRetryCount", "3");
    std::string other = Tool("cfgtool", {FAILED_DOC, GOOD_DOC});
    EXPECT_FALSE(LocalCommandImpl().Execute(other + " -x", m_parser));
    EXPECT_EQ(1, Runs("cfgtool"));
    m_parser.Unload();
    EXPECT_TRUE(LocalCommandImpl().Execute(other + " -name Vexview", m_parser));

    // Tools other than the view get the XML form through the environment.
    cmdtest::WriteFile(m_root.Path() + "/bin/formtool",
                       "#!/bin/sh\n[ \"$_OUTFMTSET\" = xml ] && printf '%s' '" + GOOD_DOC + "'\n", 0755);
    EXPECT_TRUE(LineCommand(&m_parser, m_root.Path() + "/bin/formtool -x").Execute());

    SetConfig("Test", "CommandType", "Remote");
    EXPECT_FALSE(LineCommand(&m_parser, m_root.Path() + "/bin/formtool -x").Execute());
}

TEST_F(CommandLayer, FakeCommandsReplaySavedDocumentsInACycle) {
    cmdtest::WriteFile(m_root.Path() + "/data/pre_a.xml", GOOD_DOC);
    cmdtest::WriteFile(m_root.Path() + "/data/pre_b.xml", FAILED_DOC);
    SetConfig("Test", "CommandType", "Fake");
    // The path is joined to the name as it stands.
    SetConfig("PollingSimulator", "DataFilePath", m_root.Path() + "/data/pre_");
    SetConfig("PollingSimulator", "Vexview_Data", std::list<std::string>{"a.xml", "b.xml"});
    SetConfig("PollingSimulator", "Vexcfg_Data", "missing.xml");

    LineCommand view(&m_parser, "Vexview -all");
    EXPECT_TRUE(view.Execute());
    EXPECT_FALSE(view.Execute());
    EXPECT_TRUE(view.Execute());
    EXPECT_FALSE(LineCommand(&m_parser, "Vexcfg ldbind -ldn 1h").Execute());
    // No list for the tool, or no tool name: the configured return value alone.
    EXPECT_TRUE(LineCommand(&m_parser, "Vexsc_query -all").Execute());
    EXPECT_FALSE(m_parser.GetReturnCode());
    EXPECT_TRUE(LineCommand(&m_parser, "Vexview").Execute());

    SetConfig("PollingSimulator", "CommandReturnValue", "false");
    EXPECT_FALSE(LineCommand(&m_parser, "Vexview -all").Execute());
    EXPECT_TRUE(m_parser.GetReturnCode());
}

TEST_F(CommandLayer, ViewCommandKindsAndTypes) {
    EXPECT_EQ("Vexview -all", VexviewCommand(VexviewCommand::VIEW_ALL, m_parser).GetCommandLine());
    EXPECT_EQ("Vexview -dpi", VexviewCommand(VexviewCommand::VIEW_PHYSICS, m_parser).GetCommandLine());
    EXPECT_EQ("Vexview -dli", VexviewCommand(VexviewCommand::VIEW_LOGIC, m_parser).GetCommandLine());
    EXPECT_FALSE(VexviewCommand(7, m_parser).Execute());
    std::vector<int> types(1, 99);
    VexviewCommand(0, m_parser).GetQueryDataType(types);
    EXPECT_EQ((std::vector<int>{99, 0, 1, 2, 3, 5, 6, 7}), types);
}

TEST_F(CommandLayer, SimulatorViewToolAndItsFaults) {
    const std::string bin = cmdtest::SimulatorBin();
    const std::string log = m_root.Path() + "/sim.log";
    ASSERT_EQ(0, cmdtest::Run({bin + "/arraysim", "init", "--template", "small"}, log)) << cmdtest::ReadFile(log);
    auto fault = [&](std::vector<std::string> args) {
        args.insert(args.begin(), {bin + "/arraysim", "fault", "Vexview"});
        ASSERT_EQ(0, cmdtest::Run(args, log)) << cmdtest::ReadFile(log);
    };
    LineCommand view(&m_parser, bin + "/Vexview -all");
    ASSERT_TRUE(view.Execute()) << cmdtest::ReadFile(log);
    std::vector<RawData*> arrays;
    EXPECT_EQ(1, m_parser.QueryData(arrays, RAWDATA_ARRAY));
    ReleaseRawDataList(arrays);

    fault({"--mode", "prefix", "--text", "Vex Server starting"});
    EXPECT_TRUE(view.Execute());
    SetConfig("smis", "CmdRetryCount", "1");
    fault({"--mode", "fail"});
    EXPECT_TRUE(view.Execute());  // the retry covers one failing run
    SetConfig("smis", "CmdRetryCount", "0");
    for (const char* mode : {"fail", "truncate", "malformed", "empty"}) {
        fault({"--mode", mode});
        EXPECT_FALSE(view.Execute()) << mode;
    }
    EXPECT_TRUE(view.Execute());
}
