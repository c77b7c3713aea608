// The module's replication and snapshot sequences, step by step, with the
// sync states moving on in simulated time: at once ("instant") or at the
// copy rate ("realistic").

#include <gtest/gtest.h>

#include <algorithm>

#include "CommandTestSupport.h"
#include "CopyProgress.h"

using namespace arraysim;
using arraysim_test::ApplyLine;
using arraysim_test::kNowMillis;
using arraysim_test::SmallArray;

namespace {

// The small template's LDs are 285696 MB; LD0100h becomes a target of that size.
const char* const kBindTarget = "Vexcfg ldbind -poolnumber 0001h -ldn 0100h -capacity 285696 -unit mb -mode exc";
const char* const kNameTarget = "Vexcfg nickname -ldn 0100h -newname :Clone1";
const char* const kPair = "Vexrc_pair -pair -mv LD0001 -mvflg ld  -rv Clone1 -rvflg ld";

const ReplicationPair& pairOf(ArrayState& s) {
    const ReplicationPair* pair = s.FindPairByRv(0x100);
    if (pair == nullptr) throw std::runtime_error("no pair for RV 0100h");
    return *pair;
}

class CopyProgressTest : public ::testing::Test {
protected:
    void SetUp() override {
        ApplyLine(state, kBindTarget);
        ApplyLine(state, kNameTarget);
        ApplyLine(state, kPair);
    }
    std::string sync() { return pairOf(state).syncState; }
    ArrayState state = SmallArray();
};

TEST_F(CopyProgressTest, CloneCreateRunsThroughToAnUnpairedCopy) {
    EXPECT_EQ(sync(), "separated");
    EXPECT_EQ(pairOf(state).copyControlState, "-");
    EXPECT_EQ(pairOf(state).startTime, 0);  // a fresh pair has no times yet
    EXPECT_EQ(state.FindLd(1)->rplAttribute, "MV");
    EXPECT_EQ(state.FindLd(0x100)->rplAttribute, "RV");

    ApplyLine(state, "Vexrc_replicate  -mv LD0001 -mvflg ld  -rv Clone1 -rvflg ld -cpmode bg", kNowMillis);
    EXPECT_EQ(sync(), "rpl/exec");
    EXPECT_EQ(pairOf(state).copyControlState, "background copy");
    EXPECT_EQ(pairOf(state).rvAccess, "nr");
    EXPECT_EQ(pairOf(state).startTime, kNowMillis / 1000);
    EXPECT_TRUE(CopyProgress::Advance(state, kNowMillis + 1));
    EXPECT_EQ(sync(), "rpl/sync");
    EXPECT_FALSE(CopyProgress::Advance(state, kNowMillis + 2));

    ApplyLine(state, "Vexrc_separate  -mv LD0001 -mvflg ld  -rv Clone1 -rvflg ld", kNowMillis + 10);
    EXPECT_EQ(sync(), "sep/exec");
    EXPECT_TRUE(CopyProgress::Advance(state, kNowMillis + 10));
    EXPECT_EQ(sync(), "separated");
    EXPECT_EQ(pairOf(state).copyControlState, "-");
    EXPECT_EQ(pairOf(state).rvAccess, "rw");
    EXPECT_EQ(pairOf(state).previousActive, "rpl/sync");
    EXPECT_NE(pairOf(state).endTime, 0);

    // The return-to-pool form of the line ends with a blank.
    ApplyLine(state, "Vexrc_pair -unpair -mv LD0001 -mvflg ld  -rv Clone1 -rvflg ld ");
    EXPECT_EQ(state.FindPairByRv(0x100), nullptr);
    EXPECT_EQ(state.FindLd(1)->rplAttribute, "IV");
    EXPECT_EQ(state.FindLd(0x100)->rplAttribute, "IV");
    ApplyLine(state, "Vexcfg ldunbind -ldn 0100h");
}

TEST_F(CopyProgressTest, ProtectRestoreLetsGoOfTheRvByItself) {
    ApplyLine(state, "Vexrc_restore -mv LD0001 -mvflg ld  -rv Clone1 -rvflg ld -cpmode bg -mode protect");
    EXPECT_EQ(sync(), "rst/exec (protect)");
    EXPECT_TRUE(CopyProgress::Advance(state, kNowMillis));
    EXPECT_EQ(sync(), "separated");
    EXPECT_EQ(pairOf(state).previousActive, "rst/sync (protect)");
    EXPECT_EQ(pairOf(state).rvAccess, "rw");
    ApplyLine(state, "Vexrc_pair -unpair -mv LD0001 -mvflg ld  -rv Clone1 -rvflg ld");
}

TEST_F(CopyProgressTest, MirrorQuiesceFractureAndForcedRecovery) {
    ApplyLine(state, "Vexrc_replicate  -mv LD0001 -mvflg ld  -rv Clone1 -rvflg ld -cpmode sync");
    EXPECT_EQ(pairOf(state).copyControlState, "foreground copy(sync)");
    CopyProgress::Advance(state, kNowMillis);
    ApplyLine(state, "Vexrc_change -suspend -mv LD0001 -mvflg ld  -rv Clone1 -rvflg ld");
    EXPECT_EQ(pairOf(state).copyControlState, "normal suspend");
    ApplyLine(state, "Vexrc_change -resume -mv LD0001 -mvflg ld  -rv Clone1 -rvflg ld");
    EXPECT_EQ(pairOf(state).copyControlState, "foreground copy(sync)");

    // Fracture with force: cancel at once, then the RV read-only.
    ApplyLine(state, "Vexrc_separate -mv LD0001 -mvflg ld  -rv Clone1 -rvflg ld -force all");
    EXPECT_EQ(sync(), "cancel");
    EXPECT_TRUE(pairOf(state).forcedSeparate);
    EXPECT_EQ(pairOf(state).previousActive, "rpl/sync");
    ApplyLine(state, "Vexrc_rvmode  -rv Clone1 -rvflg ld -rvacc ro");
    EXPECT_EQ(pairOf(state).rvAccess, "ro");
    EXPECT_FALSE(CopyProgress::Advance(state, kNowMillis + 60000));

    // Resync, then the recovery's forced unpair in the middle of the copy.
    ApplyLine(state, "Vexrc_replicate -mv LD0001 -mvflg ld -rv Clone1 -rvflg ld  -cpmode bg");
    EXPECT_EQ(sync(), "rpl/exec");
    EXPECT_FALSE(pairOf(state).forcedSeparate);
    EXPECT_EQ(pairOf(state).rvAccess, "nr");
    ApplyLine(state, "Vexrc_pair -unpair -mv LD0001 -mvflg ld  -rv Clone1 -rvflg ld  -force rv");
    EXPECT_EQ(state.FindPairByRv(0x100), nullptr);
}

TEST_F(CopyProgressTest, RealisticCopiesTakeTheVolumeSizeAtTheRate) {
    state.timing.mode = "realistic";
    state.timing.rateMBps = 200;  // 285696 MB take 1428.48 s
    ApplyLine(state, "Vexrc_replicate  -mv LD0001 -mvflg ld  -rv Clone1 -rvflg ld -cpmode bg", kNowMillis);
    EXPECT_TRUE(CopyProgress::Advance(state, kNowMillis + 714240));
    EXPECT_EQ(sync(), "rpl/exec");
    EXPECT_EQ(pairOf(state).copiedBytes, state.FindLd(1)->capacity / 100 * 50);
    EXPECT_FALSE(CopyProgress::Advance(state, kNowMillis + 714240));
    // Progress moves in whole percent only.
    EXPECT_FALSE(CopyProgress::Advance(state, kNowMillis + 714240 + 10000));
    EXPECT_TRUE(CopyProgress::Advance(state, kNowMillis + 714240 + 14285));
    CopyProgress::Advance(state, kNowMillis + 1428479);
    EXPECT_EQ(sync(), "rpl/exec");
    EXPECT_TRUE(CopyProgress::Advance(state, kNowMillis + 1428480));
    EXPECT_EQ(sync(), "rpl/sync");

    const long long separated = kNowMillis + 2000000;
    ApplyLine(state, "Vexrc_separate  -mv LD0001 -mvflg ld  -rv Clone1 -rvflg ld", separated);
    CopyProgress::Advance(state, separated + CopyProgress::kShortStepMillis - 1);
    EXPECT_EQ(sync(), "sep/exec");
    CopyProgress::Advance(state, separated + CopyProgress::kShortStepMillis);
    EXPECT_EQ(sync(), "separated");
    EXPECT_EQ(pairOf(state).endTime, (separated + CopyProgress::kShortStepMillis) / 1000);

    // A protect restore shows its synchronised state for a moment before it separates.
    const long long restored = kNowMillis + 3000000;
    ApplyLine(state, "Vexrc_restore -mv LD0001 -mvflg ld  -rv Clone1 -rvflg ld -cpmode bg -mode protect", restored);
    CopyProgress::Advance(state, restored + 1428480);
    EXPECT_EQ(sync(), "rst/sync (protect)");
    CopyProgress::Advance(state, restored + 1428480 + CopyProgress::kShortStepMillis);
    EXPECT_EQ(sync(), "separated");
}

TEST(SnapshotProgressTest, DeleteCreateAndRestoreMoveTheGeneration) {
    ArrayState state = SmallArray();
    auto generation = [&state]() -> const SnapshotGeneration& { return state.FindSnapshotBase(9)->generations[0]; };
    const char* const subject = " -bv LD0009 -bvflg ld -sv LD000A -svflg ld";

    ApplyLine(state, std::string("Vexsc_delete") + subject);
    EXPECT_EQ(generation().snapState, "snap/deleting");
    EXPECT_TRUE(CopyProgress::Advance(state, kNowMillis));
    EXPECT_EQ(generation().snapState, "snap/inactive");
    EXPECT_EQ(generation().snapshotDataSize, 0u);

    ApplyLine(state, std::string("Vexsc_create") + subject, kNowMillis + 5000);
    EXPECT_EQ(generation().snapState, "snap/preparing");
    EXPECT_EQ(generation().creationTime, (kNowMillis + 5000) / 1000);
    CopyProgress::Advance(state, kNowMillis + 5000);
    EXPECT_EQ(generation().snapState, "snap/active");

    state.timing.mode = "realistic";
    state.FindSnapshotBase(9)->generations[0].snapshotDataSize = 2000ULL * 1024 * 1024;  // 10 s at 200 MB/s
    ApplyLine(state, std::string("Vexsc_restore") + subject, kNowMillis + 10000);
    EXPECT_EQ(generation().snapState, "rst/exec");
    // A second restore of the same base waits for the first.
    EXPECT_THROW(ApplyLine(state, "Vexsc_restore -bv LD0009 -bvflg ld -sv LD000B -svflg ld"), CommandError);
    CopyProgress::Advance(state, kNowMillis + 19999);
    EXPECT_EQ(generation().snapState, "rst/exec");
    CopyProgress::Advance(state, kNowMillis + 20000);
    EXPECT_EQ(generation().snapState, "snap/active");

    // The delete job removes the generation right after deleting its
    // snapshot, while the array is still at it.
    ApplyLine(state, "Vexsc_delete -bv LD0009 -bvflg ld -sv LD000B -svflg ld", kNowMillis + 30000);
    // A snapshot volume a host sees must leave its LD set first.
    for (LdSet& set : state.ldSets)
        set.luns.erase(std::remove_if(set.luns.begin(), set.luns.end(), [](const LunMapping& m) { return m.ldn == 0xb; }),
                       set.luns.end());
    ApplyLine(state, "Vexcfg addldsetld -ldset LX:HOST0000 -ldn 000bh");
    EXPECT_THROW(ApplyLine(state, "Vexcfg generationdel -bvn 0009h -count 1"), CommandError);
    ApplyLine(state, "Vexcfg delldsetld -ldset LX:HOST0000 -ldn 000bh");
    ApplyLine(state, "Vexcfg generationdel -bvn 0009h -count 1", kNowMillis + 30000);
    ASSERT_EQ(state.FindSnapshotBase(9)->generations.size(), 1u);
    EXPECT_EQ(state.FindLdByName("LD000B"), nullptr);
    EXPECT_EQ(generation().number, 0xau);
}

}  // namespace
