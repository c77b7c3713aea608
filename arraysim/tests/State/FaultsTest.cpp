// Armed faults: validated when armed, consumed run by run, and applied around
// a tool's answer by the runner.

#include <gtest/gtest.h>

#include <libxml/parser.h>

#include <chrono>
#include <sstream>
#include <stdexcept>

#include "FaultStore.h"
#include "StateTestRoot.h"
#include "ToolRunner.h"

using namespace arraysim;

namespace {

const char* kAnswer = "<?xml version=\"1.0\"?>\n<REQUEST><CMD_REQUEST><RETURN_CODE>0</RETURN_CODE></CMD_REQUEST></REQUEST>\n";

bool wellFormed(const std::string& text) {
    xmlDocPtr doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), "answer.xml", nullptr,
                                  XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    if (doc == nullptr) return false;
    xmlFreeDoc(doc);
    return true;
}

Fault fault(const std::string& target, const std::string& mode) {
    Fault f;
    f.target = target;
    f.mode = mode;
    return f;
}

class FaultsTest : public ::testing::Test {
protected:
    FaultsTest() : faults(root.StateDir()) {
        registry.Add("Vexview", [this](ToolInvocation& run) {
            ++handlerRuns;
            *run.out << kAnswer;
            return 0;
        });
    }

    int run(std::string& out, std::string& err, bool xml = true) {
        std::ostringstream o, e;
        ToolInvocation invocation;
        invocation.tool = "Vexview";
        invocation.xml = xml;
        invocation.out = &o;
        invocation.err = &e;
        const int status = ToolRunner::Run(registry, invocation, root.StateDir());
        out = o.str();
        err = e.str();
        return status;
    }

    arraysim_test::TempRoot root;
    FaultStore faults;
    ToolRegistry registry;
    int handlerRuns = 0;
};

TEST_F(FaultsTest, TakeConsumesRunsPerTarget) {
    Fault f = fault("Vexcfg", "fail");
    f.remaining = 2;
    f.returnCode = 5;
    faults.Add(f);
    faults.Add(fault("hubpolling", "drop"));
    EXPECT_FALSE(faults.Take("Vexview"));
    auto first = faults.Take("Vexcfg");
    ASSERT_TRUE(first);
    EXPECT_EQ(first->returnCode, 5);
    EXPECT_TRUE(faults.Take("Vexcfg"));
    EXPECT_FALSE(faults.Take("Vexcfg"));
    ASSERT_TRUE(faults.Take("hubpolling"));
    EXPECT_TRUE(faults.List().empty());
    faults.Add(fault("Vexview", "empty"));
    faults.Clear();
    EXPECT_FALSE(faults.Take("Vexview"));
}

TEST_F(FaultsTest, BadFaultsRefused) {
    EXPECT_THROW(faults.Add(fault("Vexnothing", "fail")), std::invalid_argument);
    EXPECT_THROW(faults.Add(fault("Vexview", "drop")), std::invalid_argument);        // daemon mode on a tool
    EXPECT_THROW(faults.Add(fault("hubpolling", "truncate")), std::invalid_argument);  // tool mode on the daemon
    EXPECT_THROW(faults.Add(fault("Vexview", "hang")), std::invalid_argument);         // no --seconds
    EXPECT_THROW(faults.Add(fault("Vexview", "prefix")), std::invalid_argument);       // no --text
    Fault none = fault("Vexview", "empty");
    none.remaining = 0;
    EXPECT_THROW(faults.Add(none), std::invalid_argument);
    Fault result = fault("hubpolling", "result");
    result.returnCode = 300;
    EXPECT_THROW(faults.Add(result), std::invalid_argument);
    EXPECT_TRUE(faults.List().empty());
}

TEST_F(FaultsTest, FailAnswersAWellFormedDocumentWithTheCode) {
    Fault f = fault("Vexview", "fail");
    f.returnCode = 7;
    f.message = "array busy <retry>";
    faults.Add(f);
    std::string out, err;
    EXPECT_EQ(run(out, err), 7);
    EXPECT_EQ(handlerRuns, 0);
    EXPECT_TRUE(wellFormed(out)) << out;
    EXPECT_NE(out.find("<RETURN_CODE>7</RETURN_CODE>"), std::string::npos);
    EXPECT_NE(out.find("array busy &lt;retry&gt;"), std::string::npos);
    EXPECT_NE(out.find(">Vex00007<"), std::string::npos) << out;
    // The next run is normal again.
    EXPECT_EQ(run(out, err), 0);
    EXPECT_EQ(out, kAnswer);

    faults.Add(f);
    EXPECT_EQ(run(out, err, false), 7);
    EXPECT_TRUE(out.empty());
    EXPECT_NE(err.find("array busy <retry>"), std::string::npos);
}

TEST_F(FaultsTest, AnswerShapingModes) {
    std::string out, err;
    Fault prefix = fault("Vexview", "prefix");
    prefix.text = "Warning: license expires";
    faults.Add(prefix);
    EXPECT_EQ(run(out, err), 0);
    EXPECT_EQ(out, std::string("Warning: license expires\n") + kAnswer);

    faults.Add(fault("Vexview", "truncate"));
    EXPECT_EQ(run(out, err), 0);
    EXPECT_LT(out.size(), std::string(kAnswer).size());
    EXPECT_EQ(std::string(kAnswer).compare(0, out.size(), out), 0);
    EXPECT_FALSE(wellFormed(out));

    faults.Add(fault("Vexview", "malformed"));
    EXPECT_EQ(run(out, err), 0);
    EXPECT_FALSE(out.empty());
    EXPECT_FALSE(wellFormed(out)) << out;

    faults.Add(fault("Vexview", "empty"));
    EXPECT_EQ(run(out, err), 0);
    EXPECT_TRUE(out.empty());
    EXPECT_EQ(handlerRuns, 4);
}

TEST_F(FaultsTest, HangDelaysTheAnswer) {
    Fault hang = fault("Vexview", "hang");
    hang.seconds = 0.3;
    faults.Add(hang);
    std::string out, err;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(run(out, err), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(290));
    EXPECT_EQ(out, kAnswer);
}

TEST_F(FaultsTest, HandlerExceptionAndUnknownTool) {
    registry.Add("Vexcfg", [](ToolInvocation&) -> int { throw std::runtime_error("broken state"); });
    std::ostringstream o, e;
    ToolInvocation invocation;
    invocation.tool = "Vexcfg";
    invocation.out = &o;
    invocation.err = &e;
    EXPECT_EQ(ToolRunner::Run(registry, invocation, root.StateDir()), 1);
    EXPECT_NE(e.str().find("broken state"), std::string::npos);
    invocation.tool = "Vexnone";
    EXPECT_EQ(ToolRunner::Run(registry, invocation, root.StateDir()), 127);
}

}  // namespace
