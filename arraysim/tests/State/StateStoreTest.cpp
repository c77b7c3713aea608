// The state on disk: atomic changes under the lock, nothing lost when many
// processes and threads change it at once, and the generation counters.

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include "StateStore.h"
#include "StateTestRoot.h"
#include "Templates.h"

using namespace arraysim;

namespace {

class StateStoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        StateStore(root.StateDir()).Replace(Templates::Build(TemplateOptions{}));
    }
    arraysim_test::TempRoot root;
};

TEST_F(StateStoreTest, DefaultDirFollowsSmisRoot) {
    EXPECT_EQ(StateStore::DefaultDir(), root.Path() + "/var/lib/arraysim");
}

TEST_F(StateStoreTest, MissingOrBrokenStateIsAClearError) {
    StateStore empty(root.Path() + "/elsewhere");
    EXPECT_FALSE(empty.Exists());
    try {
        empty.Read();
        FAIL() << "read of a missing state";
    } catch (const StateError& e) {
        EXPECT_NE(std::string(e.what()).find("arraysim init"), std::string::npos);
    }
    std::ofstream(root.StateDir() + "/state.json") << "{\"pools\": [";
    EXPECT_THROW(StateStore(root.StateDir()).Read(), StateError);
    EXPECT_THROW(StateStore(root.StateDir()).Update([](ArrayState&) {}), StateError);
}

TEST_F(StateStoreTest, RoundTripKeepsEverything) {
    StateStore store(root.StateDir());
    const ArrayState written = Templates::Build(TemplateOptions{"medium", "mixed", 2, 7});
    store.Replace(written);
    ArrayState read = store.Read();
    read.logicalGeneration = written.logicalGeneration;
    read.physicalGeneration = written.physicalGeneration;
    EXPECT_EQ(nlohmann::json(read), nlohmann::json(written));
}

TEST_F(StateStoreTest, EachSideMovesItsOwnCounter) {
    StateStore store(root.StateDir());
    const ArrayState before = store.Read();

    ArrayState after = store.Update([](ArrayState& s) { s.pools[0].name = "Renamed"; });
    EXPECT_EQ(after.logicalGeneration, before.logicalGeneration + 1);
    EXPECT_EQ(after.physicalGeneration, before.physicalGeneration);

    after = store.Update([](ArrayState& s) { s.disks[3].state = "failure"; });
    EXPECT_EQ(after.logicalGeneration, before.logicalGeneration + 1);
    EXPECT_EQ(after.physicalGeneration, before.physicalGeneration + 1);

    after = store.Update([](ArrayState& s) {
        s.identity.unitLocation = "Room 2";
        s.lds[0].state = "fault";
    });
    EXPECT_EQ(after.logicalGeneration, before.logicalGeneration + 2);
    EXPECT_EQ(after.physicalGeneration, before.physicalGeneration + 2);

    // No change, no move; and a change cannot set the counters itself.
    after = store.Update([](ArrayState& s) { s.logicalGeneration = 999; });
    EXPECT_EQ(after.logicalGeneration, before.logicalGeneration + 2);
    // A timing change is kept without moving either side.
    after = store.Update([](ArrayState& s) { s.timing.mode = "realistic"; });
    EXPECT_EQ(store.Read().timing.mode, "realistic");
    EXPECT_EQ(after.logicalGeneration, before.logicalGeneration + 2);
    EXPECT_EQ(after.physicalGeneration, before.physicalGeneration + 2);
    EXPECT_EQ(store.Read().logicalGeneration, after.logicalGeneration);
}

TEST_F(StateStoreTest, ThrowingChangeWritesNothing) {
    StateStore store(root.StateDir());
    const nlohmann::json before = store.Read();
    EXPECT_THROW(store.Update([](ArrayState& s) {
        s.pools.clear();
        throw std::invalid_argument("refused");
    }),
                 std::invalid_argument);
    EXPECT_EQ(nlohmann::json(store.Read()), before);
}

TEST_F(StateStoreTest, ReinitKeepsCountersMoving) {
    StateStore store(root.StateDir());
    const ArrayState before = store.Read();
    store.Replace(Templates::Build(TemplateOptions{}));
    const ArrayState after = store.Read();
    EXPECT_GT(after.logicalGeneration, before.logicalGeneration);
    EXPECT_GT(after.physicalGeneration, before.physicalGeneration);
}

// Processes and threads each add LDs; every one must be there in the end, and
// readers meanwhile never see a half-written state.
TEST_F(StateStoreTest, ConcurrentUpdatesLoseNothing) {
    const std::string dir = root.StateDir();
    constexpr int kProcesses = 4;
    constexpr int kThreads = 3;
    constexpr int kEach = 15;
    auto work = [dir](int worker) {
        StateStore store(dir);
        for (int i = 0; i < kEach; ++i)
            store.Update([&](ArrayState& s) {
                LogicalDisk ld;
                ld.number = static_cast<unsigned>(0x1000 + worker * 100 + i);
                ld.name = "W" + std::to_string(worker) + "_" + std::to_string(i);
                s.lds.push_back(ld);
            });
    };
    std::vector<pid_t> children;
    for (int p = 0; p < kProcesses; ++p) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            try {
                std::vector<std::thread> threads;
                for (int t = 0; t < kThreads; ++t) threads.emplace_back(work, p * kThreads + t);
                for (auto& t : threads) t.join();
            } catch (...) {
                ::_exit(1);
            }
            ::_exit(0);
        }
        children.push_back(child);
    }
    // A reader in this process while the others write.
    int reads = 0;
    bool readersFailed = false;
    for (int i = 0; i < 40; ++i) {
        try {
            const ArrayState seen = StateStore(dir).Read();
            reads += seen.lds.size() >= 16 ? 1 : 0;
        } catch (const std::exception&) {
            readersFailed = true;
        }
    }
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    EXPECT_FALSE(readersFailed);
    EXPECT_EQ(reads, 40);
    const ArrayState final = StateStore(dir).Read();
    EXPECT_EQ(final.lds.size(), 16u + kProcesses * kThreads * kEach);
    EXPECT_EQ(final.logicalGeneration, 1u + kProcesses * kThreads * kEach);
}

}  // namespace
