// The runner reads the array once before a tool: copies that have moved on
// are stored and shown, and a state where nothing moves is left untouched
// on disk while the tool is given what was read.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "StateStore.h"
#include "StateTestRoot.h"
#include "Templates.h"
#include "ToolRunner.h"

using namespace arraysim;

namespace {

std::string FileText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

class ToolRunnerStateTest : public ::testing::Test {
protected:
    ToolRunnerStateTest() : store(root.StateDir()) {
        registry.Add("Vexview", [this](ToolInvocation& run) {
            given = run.state;
            *run.out << "answer";
            return 0;
        });
    }

    int Run(const std::string& tool = "Vexview") {
        std::ostringstream out, err;
        ToolInvocation invocation;
        invocation.tool = tool;
        invocation.xml = true;
        invocation.out = &out;
        invocation.err = &err;
        given.reset();
        const int status = ToolRunner::Run(registry, invocation, root.StateDir());
        answer = out.str();
        return status;
    }

    arraysim_test::TempRoot root;
    StateStore store;
    ToolRegistry registry;
    std::shared_ptr<const ArrayState> given;
    std::string answer;
};

TEST_F(ToolRunnerStateTest, AStillArrayIsGivenAsReadAndNotWritten) {
    store.Replace(Templates::Build(TemplateOptions{}));
    const std::string before = FileText(store.StatePath());
    ASSERT_EQ(0, Run());
    EXPECT_EQ("answer", answer);
    ASSERT_TRUE(given);
    EXPECT_EQ(nlohmann::json(*given), nlohmann::json(store.Read()));
    EXPECT_EQ(before, FileText(store.StatePath()));
}

TEST_F(ToolRunnerStateTest, MovedCopiesAreStoredAndGiven) {
    store.Replace(Templates::Build(TemplateOptions{}));
    store.Update([](ArrayState& state) {
        ASSERT_FALSE(state.pairs.empty());
        state.pairs.front().syncState = "rpl/exec";
        state.pairs.front().activityStartMillis = 1;
    });
    const std::uint64_t generation = store.Read().logicalGeneration;
    ASSERT_EQ(0, Run());
    ASSERT_TRUE(given);
    EXPECT_EQ("rpl/sync", given->pairs.front().syncState);
    const ArrayState stored = store.Read();
    EXPECT_EQ("rpl/sync", stored.pairs.front().syncState);
    EXPECT_EQ(generation + 1, stored.logicalGeneration);
    EXPECT_EQ(nlohmann::json(*given), nlohmann::json(stored));
}

TEST_F(ToolRunnerStateTest, NoArrayOrAnUnreadableOneGivesTheToolNothing) {
    ASSERT_EQ(0, Run());
    EXPECT_FALSE(given);
    EXPECT_EQ("answer", answer);

    store.Replace(Templates::Build(TemplateOptions{}));
    std::ofstream(store.StatePath(), std::ios::trunc) << "{\"lds\": [";
    ASSERT_EQ(0, Run());
    EXPECT_FALSE(given);
}

}  // namespace
