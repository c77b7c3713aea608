// The capacity watch: the polling daemon says nothing about how full a thin
// pool grows, so on an array with a virtual pool the module asks for a
// logical read of the array at its own interval; on an array without one it
// never does. The server's standard output tells each read and its kind.

#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "EndToEndSupport.h"

namespace {

using e2e::CountOf;
using e2e::ReadFile;
using e2e::WaitFor;

class CapacityWatchEndToEndTest : public e2e::EndToEndTest {
protected:
    static constexpr int kInterval = 3;

    std::vector<std::pair<std::string, std::string>> ModuleSettings() const override {
        return {{"capacity_watch_interval", std::to_string(kInterval)}};
    }
    std::string Output() const { return ReadFile(m_box.Path("/opt/pegasus/logs/cimserver.out")); }
    int LogicalReads() const { return CountOf(Output(), "Command type is logic"); }
    // Whether the array, as its own view tool tells, has a virtual pool.
    bool HasVirtualPool() const {
        const e2e::RunResult view = m_box.Tool("Vexview -all");
        EXPECT_EQ(0, view.status) << view.output;
        return view.output.find(">virtual<") != std::string::npos;
    }
};

class CapacityWatchWithVirtualPoolTest : public CapacityWatchEndToEndTest {
protected:
    std::string ArrayTemplate() const override { return "medium"; }
};

class CapacityWatchWithoutVirtualPoolTest : public CapacityWatchEndToEndTest {
protected:
    std::string ArrayTemplate() const override { return "small"; }
};

TEST_F(CapacityWatchWithVirtualPoolTest, AsksForALogicalReadAtItsInterval) {
    ASSERT_TRUE(HasVirtualPool()) << "the medium array is expected to have a virtual pool";
    const int before = LogicalReads();
    // Nothing changes at the console, so every logical read comes from the
    // watch: two of them within a handful of intervals.
    EXPECT_TRUE(WaitFor(8 * kInterval, [&] { return LogicalReads() >= before + 2; })) << Output();
    const int counted = LogicalReads();
    std::this_thread::sleep_for(std::chrono::seconds(kInterval + 1));
    EXPECT_GT(LogicalReads(), counted) << "the watch stopped asking:\n" << Output();
}

TEST_F(CapacityWatchWithoutVirtualPoolTest, NeverAsks) {
    ASSERT_FALSE(HasVirtualPool()) << "the small array is expected to have no virtual pool";
    const int before = LogicalReads();
    std::this_thread::sleep_for(std::chrono::seconds(4 * kInterval));
    EXPECT_EQ(before, LogicalReads()) << Output();
}

}  // namespace
