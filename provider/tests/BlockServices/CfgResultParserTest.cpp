// Reading the configuration tool's answer: what a job shows a client when a
// step fails.

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CfgResultParser.h"
#include "ResultInfo.h"
#include "VexcfgCommand.h"
#include "BlockServicesTestSupport.h"

using namespace orvsmis;

namespace {

std::string answer(const std::string& code, const std::string& id, const std::string& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<REQUEST>\n<CMD_REQUEST>\n<RETURN_CODE>" + code +
           "</RETURN_CODE>\n<RETURN_MSG>\n<UNIT name=\"message_id\">" + id +
           "</UNIT>\n<UNIT name=\"message_content\">" + content +
           "</UNIT>\n<UNIT name=\"return_time\">2026/11/23 10:00:00</UNIT>\n</RETURN_MSG>\n</CMD_REQUEST>\n</REQUEST>\n";
}

void load(CfgResultParser& parser, const std::string& document) {
    parser.Unload();
    parser.LoadChunk(document.data(), static_cast<int>(document.size()), 0);
    parser.LoadChunk(document.data(), 0, 1);
}

TEST(CfgResultParserDocuments, ReadsSuccessFailureAndTheBareMessageId) {
    struct Row {
        std::string document;
        bool parsed;
        bool success;
        const char* id;
        const char* content;
    };
    const Row rows[] = {
        {answer("0", "Vex00000", "pool 0002h was bound"), true, true, "00000", "pool 0002h was bound"},
        {answer("1", "Vex10701", "the pool name is in use"), true, false, "10701", "the pool name is in use"},
        // An id from elsewhere keeps its form.
        {answer("3", "E42", "controller busy"), true, false, "E42", "controller busy"},
        {answer("0", "Ve", "short id"), true, true, "Ve", "short id"},
        // A view's document has no CMD_REQUEST under REQUEST's root form.
        {"<?xml version=\"1.0\"?><CMD_REQUEST><RETURN_CODE>0</RETURN_CODE></CMD_REQUEST>", false, false, "Unknown",
         "Unknown"},
        // Broken XML.
        {"<REQUEST><CMD_REQUEST><RETURN_CODE>0</RETURN", false, false, "Unknown", "Unknown"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.document);
        CfgResultParser parser;
        load(parser, row.document);
        EXPECT_EQ(parser.Parse(), row.parsed);
        EXPECT_EQ(parser.IsSuccess(), row.success);
        EXPECT_EQ(parser.GetMessageId(), row.id);
        EXPECT_EQ(parser.GetMessageContent(), row.content);
    }
}

TEST(CfgResultParserDocuments, NothingLoadedIsNoAnswerAndAnEarlierAnswerIsForgotten) {
    CfgResultParser parser;
    EXPECT_FALSE(parser.Parse());
    load(parser, answer("1", "Vex10701", "refused"));
    ASSERT_TRUE(parser.Parse());
    parser.Unload();
    EXPECT_FALSE(parser.Parse());
    EXPECT_EQ(parser.GetMessageId(), "Unknown");
    EXPECT_FALSE(parser.IsSuccess());
}

// The tool itself, through the command layer as a job runs it.
class CfgResultFromTool : public ::testing::Test {
protected:
    void SetUp() override {
        blocktest::ModelSettings();
        ASSERT_TRUE(root.Ready());
    }
    blocktest::SimulatorRoot root;
};

TEST_F(CfgResultFromTool, SuccessRefusalAndBrokenAnswers) {
    {
        SCOPED_TRACE("carried out");
        VexcfgCommand command;
        ASSERT_TRUE(command.NickPoolName("0001", "renamed"));
        ResultInfo info;
        command.GetError(info);
        EXPECT_TRUE(info.success);
        EXPECT_EQ(info.code, "00000");
    }
    {
        SCOPED_TRACE("the array's own refusal: an unknown pool");
        VexcfgCommand command;
        EXPECT_FALSE(command.NickPoolName("00ff", "other"));
        ResultInfo info;
        command.GetError(info);
        EXPECT_FALSE(info.success);
        EXPECT_NE(info.code, "Unknown");
        EXPECT_EQ(info.code.find("Vex"), std::string::npos);
        EXPECT_NE(info.message.find("00ffh"), std::string::npos) << info.message;
    }
    {
        SCOPED_TRACE("told to fail");
        ASSERT_EQ(simrun::sim("fault Vexcfg --mode fail --rc 3 --message \"controller 01h is busy\""), 0);
        VexcfgCommand command;
        EXPECT_FALSE(command.NickPoolName("0001", "again"));
        ResultInfo info;
        command.GetError(info);
        EXPECT_FALSE(info.success);
        EXPECT_EQ(info.message, "controller 01h is busy");
        EXPECT_EQ(info.code, "00003");
    }
    const char* const broken[] = {"malformed", "empty", "truncate"};
    for (const char* mode : broken) {
        SCOPED_TRACE(mode);
        ASSERT_EQ(simrun::sim(std::string("fault Vexcfg --mode ") + mode), 0);
        VexcfgCommand command;
        EXPECT_FALSE(command.NickPoolName("0001", "third"));
        ResultInfo info;
        command.GetError(info);
        EXPECT_FALSE(info.success);
        EXPECT_EQ(info.code, "00021");
        EXPECT_EQ(info.message, "Parse results failed!");
    }
}

}  // namespace
