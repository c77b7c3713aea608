// The pool and volume jobs against the simulator: each runs its commands,
// and counts as done only once the next view shows the effect.

#include <list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMParamValue.h>

#include "CreateLdJobDetail.h"
#include "CreatePoolJobDetail.h"
#include "DataConnector.h"
#include "DeleteLdJobDetail.h"
#include "DeletePoolJobDetail.h"
#include "ModifyLdJobDetail.h"
#include "ModifyPoolJobDetail.h"
#include "RecordRef.h"
#include "BlockServicesTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;

namespace {

const unsigned long long GiB = 0x40000000ULL;

bool hasOutput(const Array<CIMParamValue>& out, const char* name) {
    for (Uint32 i = 0; i < out.size(); ++i)
        if (out[i].getParameterName() == name) return true;
    return false;
}

class JobsOnSimulator : public ::testing::Test {
protected:
    void SetUp() override {
        blocktest::ModelSettings();
        ASSERT_TRUE(root.Ready());
        arrayId = blocktest::LoadView();
        ASSERT_FALSE(arrayId.empty());
    }
    void TearDown() override {
        RawDataCenter::Instance()->Destroy();
        PDmanager::Instance()->Destroy();
    }

    // Free SAS disks, claimed as a controller claims them.
    std::vector<std::string> ClaimDisks(size_t count) {
        std::list<structPDInfo*> free;
        PDmanager::Instance()->GetPdListByType("SAS", free);
        std::list<structPDInfo*> claimed;
        for (structPDInfo* disk : free)
            if (claimed.size() < count) claimed.push_back(disk);
        PDmanager::Instance()->MarkBeSelectedPD(claimed);
        std::vector<std::string> ids;
        for (structPDInfo* disk : claimed) ids.push_back(disk->pData->PDN);
        return ids;
    }
    size_t FreeDisks() {
        std::list<structPDInfo*> free;
        PDmanager::Instance()->GetPdListByType("SAS", free);
        return free.size();
    }
    CreatePoolDetailArgs* PoolArgs(const std::vector<std::string>& ids) {
        CreatePoolDetailArgs* args = new CreatePoolDetailArgs();
        args->arrayId = arrayId;
        args->poolType = "dynamic";
        args->raidCode = 2;
        args->basePd = 2;
        args->pdg = PDmanager::GroupOf(ids.front());
        for (const std::string& id : ids) args->pdList.push_back(PDmanager::NumberOf(id));
        return args;
    }
    bool HasLd(const std::string& ldn) {
        RecordRef<LdRawData> ld;
        return DataConnector<LdRawData>::QueryData(arrayId, ldn, ld.Out());
    }

    blocktest::SimulatorRoot root;
    std::string arrayId;
};

TEST_F(JobsOnSimulator, PoolIsMadeRenamedAndRemovedOnlyAsTheViewShows) {
    CreatePoolJobDetail create(PoolArgs(ClaimDisks(2)));
    ASSERT_TRUE(create.Execute()) << (create.GetDetail()->errors.empty() ? "" : create.GetDetail()->errors[0].message);
    CreatePoolDetailArgs* args = static_cast<CreatePoolDetailArgs*>(create.GetDetail());
    EXPECT_EQ(args->poolNumber, "0002") << "the lowest free number";
    EXPECT_EQ(args->poolName, "Pool0002") << "an empty name becomes Pool and the number";
    EXPECT_NE(create.GetDescription().find("PoolID = 0002"), std::string::npos);
    Array<CIMParamValue> out;
    EXPECT_FALSE(create.Finish(out)) << "the old view does not show the pool";
    ASSERT_FALSE(blocktest::LoadView().empty());
    ASSERT_TRUE(create.Finish(out));
    EXPECT_TRUE(hasOutput(out, "Size"));
    EXPECT_TRUE(hasOutput(out, "Pool"));

    ModifyPoolDetailArgs* rename = new ModifyPoolDetailArgs();
    rename->arrayId = arrayId;
    rename->poolNumber = "0002";
    rename->poolName = "Mirror_A";
    rename->poolType = "dynamic";
    ModifyPoolJobDetail modify(rename);
    ASSERT_TRUE(modify.Execute());
    Array<CIMParamValue> modified;
    EXPECT_FALSE(modify.Finish(modified));
    ASSERT_FALSE(blocktest::LoadView().empty());
    EXPECT_TRUE(modify.Finish(modified));

    DeletePoolDetailArgs* unbind = new DeletePoolDetailArgs();
    unbind->arrayId = arrayId;
    unbind->poolNumber = "0002";
    DeletePoolJobDetail remove(unbind);
    ASSERT_TRUE(remove.Execute());
    Array<CIMParamValue> none;
    EXPECT_FALSE(remove.Finish(none)) << "still in the old view";
    ASSERT_FALSE(blocktest::LoadView().empty());
    EXPECT_TRUE(remove.Finish(none));
    EXPECT_EQ(none.size(), 0u);
}

TEST_F(JobsOnSimulator, VolumeIsMadeGrownRenamedAndReturned) {
    CreateLdDetailArgs* args = new CreateLdDetailArgs();
    args->arrayId = arrayId;
    args->poolNumber = "0001";
    args->ldNumber = "0000";  // stale on purpose: the job picks the free number when it runs
    args->ldName = "new_vol";
    args->size = GiB;
    CreateLdJobDetail create(args);
    ASSERT_TRUE(create.Execute());
    const std::string ldn = args->ldNumber;
    EXPECT_NE(ldn, "0000");
    Array<CIMParamValue> out;
    EXPECT_FALSE(create.Finish(out));
    ASSERT_FALSE(blocktest::LoadView().empty());
    ASSERT_TRUE(create.Finish(out));
    ASSERT_TRUE(hasOutput(out, "TheElement"));
    for (Uint32 i = 0; i < out.size(); ++i)
        if (out[i].getParameterName() == "Size") {
            Uint64 size = 0;
            out[i].getValue().get(size);
            EXPECT_EQ(size, GiB);
        }

    ModifyLdDetailArgs* grow = new ModifyLdDetailArgs();
    grow->arrayId = arrayId;
    grow->ldNumber = ldn;
    grow->ldName = "Grown_Vol";
    grow->expand = true;
    grow->size = 2 * GiB;
    ModifyLdJobDetail modify(grow);
    ASSERT_TRUE(modify.Execute());
    Array<CIMParamValue> modified;
    EXPECT_FALSE(modify.Finish(modified));
    ASSERT_FALSE(blocktest::LoadView().empty());
    EXPECT_TRUE(modify.Finish(modified));

    // The array may report the name in another case: still the same name.
    ModifyLdDetailArgs* sameName = new ModifyLdDetailArgs();
    sameName->arrayId = arrayId;
    sameName->ldNumber = ldn;
    sameName->ldName = "GROWN_vol";
    ModifyLdJobDetail check(sameName);
    Array<CIMParamValue> checked;
    EXPECT_TRUE(check.Finish(checked));

    DeleteLdDetailArgs* unbind = new DeleteLdDetailArgs();
    unbind->arrayId = arrayId;
    unbind->ldNumber = ldn;
    DeleteLdJobDetail remove(unbind);
    ASSERT_TRUE(remove.Execute());
    Array<CIMParamValue> none;
    EXPECT_FALSE(remove.Finish(none));
    ASSERT_FALSE(blocktest::LoadView().empty());
    EXPECT_TRUE(remove.Finish(none));
    EXPECT_FALSE(HasLd(ldn));
}

TEST_F(JobsOnSimulator, RefusedBindKeepsTheToolsMessageAndRecoverGivesTheDisksBack) {
    const size_t free = FreeDisks();
    std::vector<std::string> ids = ClaimDisks(2);
    EXPECT_EQ(FreeDisks(), free - 2);
    ASSERT_EQ(simrun::sim("fault Vexcfg --mode fail --message \"no pool number left\""), 0);
    CreatePoolJobDetail create(PoolArgs(ids));
    EXPECT_FALSE(create.Execute());
    ASSERT_EQ(create.GetDetail()->errors.size(), 1u);
    EXPECT_EQ(create.GetDetail()->errors[0].message, "no pool number left");
    EXPECT_FALSE(create.GetDetail()->errors[0].success);
    create.Recover();
    EXPECT_EQ(FreeDisks(), free);
}

TEST_F(JobsOnSimulator, FailedNamingUnbindsTheNewVolume) {
    CreateLdDetailArgs* args = new CreateLdDetailArgs();
    args->arrayId = arrayId;
    args->poolNumber = "0001";
    args->ldName = "LD0001";  // the array's name of another volume
    args->size = GiB;
    CreateLdJobDetail create(args);
    EXPECT_FALSE(create.Execute());
    EXPECT_EQ(create.GetStep(), CreateLdJobDetail::STEP_NAME);
    ASSERT_EQ(create.GetDetail()->errors.size(), 1u);
    EXPECT_NE(create.GetDetail()->errors[0].message.find("LD0001"), std::string::npos);
    const std::string ldn = args->ldNumber;
    ASSERT_FALSE(blocktest::LoadView().empty());
    EXPECT_TRUE(HasLd(ldn)) << "bound, unnamed";
    create.Recover();
    ASSERT_FALSE(blocktest::LoadView().empty());
    EXPECT_FALSE(HasLd(ldn));
}

// An array that says yes and does nothing: the job never sees its effect,
// which is what lets the job engine time it out.
TEST_F(JobsOnSimulator, AcceptedCommandWithoutEffectNeverFinishes) {
    ASSERT_EQ(simrun::sim("fault Vexcfg --mode lose"), 0);
    CreateLdDetailArgs* args = new CreateLdDetailArgs();
    args->arrayId = arrayId;
    args->poolNumber = "0001";
    args->size = GiB;
    CreateLdJobDetail create(args);
    ASSERT_TRUE(create.Execute());
    ASSERT_FALSE(blocktest::LoadView().empty());
    Array<CIMParamValue> out;
    EXPECT_FALSE(create.Finish(out));
    EXPECT_FALSE(HasLd(args->ldNumber));
}

}  // namespace
