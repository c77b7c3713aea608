#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/Tracer.h>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

using namespace Pegasus;

namespace {

class TracerTest : public ::testing::Test {
protected:
    void SetUp() override {
        file = "/tmp/tracer-test-" + std::to_string(::getpid()) + ".trc";
        ::unlink(file.c_str());
        ASSERT_EQ(Tracer::setTraceFile(file.c_str()), 0u);
    }
    void TearDown() override {
        Tracer::closeTrace();
        Tracer::setTraceLevelNumber(0);
        Tracer::setTraceComponents("");
        ::unlink(file.c_str());
    }
    std::vector<std::string> lines() {
        Tracer::flushTrace();
        std::ifstream in(file);
        std::vector<std::string> out;
        for (std::string line; std::getline(in, line);) out.push_back(line);
        return out;
    }
    std::string file;
};

void traceScope() {
    PEG_METHOD_ENTER(TRC_REPOSITORY, "Repository::demo");
    PEG_METHOD_EXIT();
}

TEST_F(TracerTest, LineLayoutAndTheModuleComponent) {
    Tracer::setTraceLevelNumber(4);
    ASSERT_TRUE(Tracer::setTraceComponents("ProviderModule"));
    PEG_TRACE((static_cast<TraceComponentId>(44), Tracer::LEVEL2, "Info[ %s ] : JobID is %s", "CreateJob", "7"));
    const std::vector<std::string> got = lines();
    ASSERT_EQ(got.size(), 1u);
    const std::regex layout(R"(^\d+s-\d+us: ProviderModule \[\d+:\d+:TracerTest\.cpp:\d+\]: Info\[ CreateJob \] : JobID is 7$)");
    EXPECT_TRUE(std::regex_match(got[0], layout)) << got[0];
    EXPECT_STREQ(Tracer::componentName(TRC_PROVIDERMODULE), "ProviderModule");
    EXPECT_EQ(static_cast<int>(TRC_PROVIDERMODULE), 44);
}

TEST_F(TracerTest, LevelsAndComponentsFilter) {
    Tracer::setTraceLevelNumber(2);   // LEVEL1 and LEVEL2
    ASSERT_TRUE(Tracer::setTraceComponents("Repository,Http"));
    PEG_TRACE((TRC_REPOSITORY, Tracer::LEVEL1, "one"));
    PEG_TRACE((TRC_REPOSITORY, Tracer::LEVEL2, "two"));
    PEG_TRACE((TRC_REPOSITORY, Tracer::LEVEL3, "three: level too high"));
    PEG_TRACE((TRC_SERVER, Tracer::LEVEL1, "other component"));
    PEG_TRACE_CSTRING(TRC_HTTP, Tracer::LEVEL1, "http");
    traceScope();   // entry and exit only at level 5
    std::vector<std::string> got = lines();
    ASSERT_EQ(got.size(), 3u);
    EXPECT_NE(got[0].find("]: one"), std::string::npos);
    EXPECT_NE(got[1].find("]: two"), std::string::npos);
    EXPECT_NE(got[2].find("Http ["), std::string::npos);

    Tracer::setTraceLevelNumber(5);
    traceScope();
    got = lines();
    ASSERT_EQ(got.size(), 5u);
    EXPECT_NE(got[3].find("Entering method Repository::demo"), std::string::npos);
    EXPECT_NE(got[4].find("Exiting method Repository::demo"), std::string::npos);

    EXPECT_FALSE(Tracer::setTraceComponents("Repository,NoSuchThing"));
    EXPECT_TRUE(Tracer::isTraceEnabled(TRC_REPOSITORY, Tracer::LEVEL1));   // unchanged
    EXPECT_FALSE(Tracer::setTraceLevel(3));                                  // not a LEVEL bit
    EXPECT_TRUE(Tracer::setTraceLevel(Tracer::LEVEL1));
    EXPECT_FALSE(Tracer::isTraceEnabled(TRC_REPOSITORY, Tracer::LEVEL2));
    EXPECT_TRUE(Tracer::setTraceComponents("all"));
    EXPECT_TRUE(Tracer::isTraceEnabled(TRC_SERVER, Tracer::LEVEL1));
}

TEST_F(TracerTest, LongMessagesExceptionsAndThreadsStayWhole) {
    Tracer::setTraceLevelNumber(4);
    Tracer::setTraceComponents("ALL");
    const std::string longText(5000, 'x');
    PEG_TRACE((TRC_SERVER, Tracer::LEVEL1, "%s", longText.c_str()));
    Tracer::traceCIMException(TRC_SERVER, Tracer::LEVEL1, CIMException(CIM_ERR_NOT_FOUND, "gone"));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < 200; ++i) PEG_TRACE((TRC_THREAD, Tracer::LEVEL3, "thread %d line %d", t, i));
        });
    for (auto& t : threads) t.join();
    const std::vector<std::string> got = lines();
    ASSERT_EQ(got.size(), 2u + 800u);
    EXPECT_NE(got[0].find(longText), std::string::npos);
    EXPECT_NE(got[1].find("CIMException: code 6: gone"), std::string::npos);
    const std::regex whole(R"(^\d+s-\d+us: Thread \[[^\]]+\]: thread \d line \d+$)");
    for (std::size_t i = 2; i < got.size(); ++i) ASSERT_TRUE(std::regex_match(got[i], whole)) << got[i];
}

TEST_F(TracerTest, NothingIsWrittenWhenOff) {
    Tracer::setTraceLevelNumber(0);
    Tracer::setTraceComponents("ALL");
    EXPECT_FALSE(Tracer::isTraceOn());
    PEG_TRACE((TRC_SERVER, Tracer::LEVEL1, "hidden"));
    EXPECT_TRUE(lines().empty());
    EXPECT_EQ(Tracer::setTraceFile("/nonexistent-folder/x.trc"), 1u);
}

} // namespace
