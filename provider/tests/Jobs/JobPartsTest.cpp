// The pieces a job is made of: how each state is published, the job times
// read from the configuration, the job ids, the parameters object of a
// method call and the job controller's refusals.

#include <set>

#include <gtest/gtest.h>

#include <Pegasus/Provider/ProviderException.h>

#include "ConfigManager.h"
#include "Exception.h"
#include "MethodCall.h"
#include "JobTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;
using namespace jobtest;
using modeltest::prop;

namespace {

struct StateRow {
    int state;
    std::vector<Uint16> operationalStatus;
    const char* description;
    int percent;  // -1: left as it was
};

TEST(JobStates, EachStateIsPublishedAsTheTableSays) {
    const StateRow rows[] = {
        {-1, {6}, "Job status unknown", -1},
        {2, {15}, "New job", -1},
        {3, {2, 8}, "Job starting", 10},
        {4, {2}, "Job running", 50},
        {32768, {2}, "Job running", 70},
        {7, {2, 17}, "Job completed with no error", 100},
        {10, {6, 17}, "Job occurs exception", 0},
        {5, {6}, "", -1},
        {32769, {6}, "", -1},
    };
    for (const StateRow& row : rows) {
        SCOPED_TRACE(row.state);
        Array<Uint16> status = ConcreteJob::OperationalStatusOf(row.state);
        EXPECT_EQ(std::vector<Uint16>(status.begin(), status.end()), row.operationalStatus);
        EXPECT_EQ(ConcreteJob::StatusDescriptionOf(row.state), row.description);
        EXPECT_EQ(ConcreteJob::PercentOf(row.state), row.percent);
    }
}

class JobParts : public JobFixture {};

TEST_F(JobParts, JobTimesComeFromTheConfigurationInMinutes) {
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    struct Row {
        const char* configured;
        Uint64 minutes;
    };
    const Row rows[] = {{"5", 5}, {"0", 60}, {"-3", 60}, {"1", 1}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.configured);
        config->SetConfigValue("smis", "JobTimeout", std::list<std::string>(1, row.configured));
        config->SetConfigValue("smis", "JobLifeTime", std::list<std::string>(1, row.configured));
        ReadJobTimeSettings();
        EXPECT_EQ(ConcreteJob::m_timeOut, row.minutes * MINUTE);
        EXPECT_EQ(ConcreteJob::m_lifeTime, row.minutes * MINUTE);
    }
}

TEST_F(JobParts, JobIdsRunFromOneToTenThousandAndOneAndStartAgain) {
    std::set<std::string> seen;
    std::string id;
    for (int i = 0; i <= 10001 && id != "Job.10001"; ++i) {
        JobArgs args(new ScriptedDetail(std::make_shared<Script>(), DetailArgs::OPERATION_CREATE),
                     InvokeArgs(context, service, String("CreateOrModifyStoragePool"), Array<CIMParamValue>()));
        ConcreteJob job(args);
        id = job.GetJobId();
        EXPECT_TRUE(seen.insert(id).second) << id;
    }
    ASSERT_EQ(id, "Job.10001");
    JobArgs args(new ScriptedDetail(std::make_shared<Script>(), DetailArgs::OPERATION_CREATE),
                 InvokeArgs(context, service, String("CreateOrModifyStoragePool"), Array<CIMParamValue>()));
    EXPECT_EQ(ConcreteJob(args).GetJobId(), "Job.1");
}

TEST_F(JobParts, JobWithoutDetailIsRefused) {
    JobArgs args(nullptr, InvokeArgs(context, service, String("DeleteStoragePool"), Array<CIMParamValue>()));
    EXPECT_THROW(jobs()->CreateJob(args), InvalidParamException);
    EXPECT_EQ(repository->count(MC::ClassNameText("ConcreteJob")), 0u);
}

TEST(MethodParameters, OutputOverridesInputAndReferenceListsAreLeftOut) {
    const CIMObjectPath pool(String(), CIMNamespaceName(), CIMName("ORV_Storage_StoragePool"));
    const CIMObjectPath volume(String(), CIMNamespaceName(), CIMName("ORV_Storage_StorageVolume"));
    Array<CIMParamValue> in;
    in.append(CIMParamValue(String("ElementName"), CIMValue(String("vol01"))));
    in.append(CIMParamValue(String("InPool"), CIMValue(pool)));
    in.append(CIMParamValue(String("Size"), CIMValue(Uint64(100))));
    in.append(CIMParamValue(String("InExtents"), CIMValue(Array<CIMObjectPath>(1, pool))));
    in.append(CIMParamValue(String("Goal"), CIMValue(CIMTYPE_REFERENCE, false)));
    Array<CIMParamValue> out;
    out.append(CIMParamValue(String("Size"), CIMValue(Uint64(96))));
    out.append(CIMParamValue(String("TheElement"), CIMValue(volume)));

    CIMInstance parameters(MethodCall::WrapParameters(in, out));
    EXPECT_EQ(parameters.getClassName().getString(), "__MethodParameters");
    EXPECT_EQ(prop<String>(parameters, "ElementName"), "vol01");
    EXPECT_EQ(prop<Uint64>(parameters, "Size"), 96u);
    EXPECT_EQ(parameters.findProperty(CIMName("InExtents")), PEG_NOT_FOUND);
    EXPECT_EQ(parameters.findProperty(CIMName("Goal")), PEG_NOT_FOUND);
    const Uint32 element = parameters.findProperty(CIMName("TheElement"));
    ASSERT_NE(element, PEG_NOT_FOUND);
    EXPECT_EQ(parameters.getProperty(element).getReferenceClassName().getString(), "ORV_Storage_StorageVolume");
    EXPECT_NE(parameters.findProperty(CIMName("InPool")), PEG_NOT_FOUND);
}

TEST_F(JobParts, JobControllerRefusesWhatJobsCannotDo) {
    auto script = std::make_shared<Script>();
    CIMObjectPath job = queue(script);
    JobCall change(context, job, "RequestStateChange");
    EXPECT_EQ(change.result, 1u);
    EXPECT_EQ(prop<Uint16>(stored(job), "JobState"), 3);
    EXPECT_THROW(JobCall(context, job, "KillJob"), CIMNotSupportedException);
    // Method names are compared exactly.
    EXPECT_THROW(JobCall(context, job, "geterrors"), CIMNotSupportedException);
}

}  // namespace
