// The life of a job through the queue: created, run by the configuration
// thread's turn, proved or timed out by a view, failed by the array, and
// removed once its life is over; with what a client sees of it on the way
// (its instance, its method result, its associations and the indications).

#include <cctype>

#include <gtest/gtest.h>

#include "ExecVexcfg.h"
#include "JobTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;
using namespace jobtest;
using modeltest::prop;
using modeltest::uint16s;

namespace {

class JobLife : public JobFixture {};

Uint16 jobState(const CIMInstance& job) { return prop<Uint16>(job, "JobState"); }

CIMInstance embedded(const CIMInstance& instance, const char* name) {
    CIMInstance out;
    instance.getProperty(instance.findProperty(CIMName(name))).getValue().get(out);
    return out;
}

TEST_F(JobLife, CreateJobWalksThroughTheStatesAndMovesItsElementsToWhatItMade) {
    auto script = std::make_shared<Script>();
    Uint16 stateDuringExecute = 0, percentDuringExecute = 0;
    CIMObjectPath job;
    script->duringExecute = [&]() {
        stateDuringExecute = jobState(stored(job));
        percentDuringExecute = prop<Uint16>(stored(job), "PercentComplete");
    };
    script->output.append(CIMParamValue(String("TheElement"), CIMValue(volume)));
    script->output.append(CIMParamValue(String("Size"), CIMValue(Uint64(1073741824ULL))));
    job = queue(script);

    // Queued: the job, its result and its three associations are written.
    CIMInstance created = stored(job);
    EXPECT_EQ(jobState(created), 3);
    EXPECT_EQ(prop<Uint16>(created, "PercentComplete"), 10);
    EXPECT_EQ(uint16s(created, "OperationalStatus"), (std::vector<Uint16>{2, 8}));
    EXPECT_EQ(prop<String>(created, "Description"), "Create volume vol01");
    EXPECT_TRUE(created.getProperty(created.findProperty(CIMName("StartTime"))).getValue().isNull());
    EXPECT_EQ(linked(job, "OwningJobElement"), std::vector<std::string>{modeltest::canonical(service)});
    EXPECT_EQ(linked(job, "AffectedJobElement"), std::vector<std::string>{modeltest::canonical(pool)});
    ASSERT_EQ(linked(job, "AssociatedJobMethodResult").size(), 1u);
    EXPECT_EQ(repository->count(MC::ClassNameText("MethodResult")), 1u);
    EXPECT_EQ(indications.named("CIM_InstCreation").size(), 1u);
    ASSERT_EQ(indications.named("CIM_InstMethodCall").size(), 1u);
    EXPECT_TRUE(prop<Boolean>(indications.named("CIM_InstMethodCall")[0], "PreCall"));
    EXPECT_EQ(jobs()->GetUnworkedJobsCount(), 1);

    // The configuration thread's turn runs it: 4 while the commands run,
    // then 32768 until a view shows the effect.
    EXPECT_TRUE(RunCfgThreadTurn());
    EXPECT_EQ(stateDuringExecute, 4);
    EXPECT_EQ(percentDuringExecute, 50);
    EXPECT_EQ(jobState(stored(job)), 32768);
    EXPECT_EQ(prop<Uint16>(stored(job), "PercentComplete"), 70);
    EXPECT_EQ(jobs()->GetUnfinishedJobsCount(), 1);
    ASSERT_EQ(auditLines().size(), 1u);
    EXPECT_NE(auditLines()[0].find("CreateOrModifyElementFromStoragePool"), std::string::npos);

    // A view without the effect leaves it waiting.
    jobs()->EndJobs();
    EXPECT_EQ(script->finished, 1);
    EXPECT_EQ(jobState(stored(job)), 32768);

    script->effectShown = true;
    jobs()->EndJobs();
    CIMInstance done = stored(job);
    EXPECT_EQ(jobState(done), 7);
    EXPECT_EQ(prop<Uint16>(done, "PercentComplete"), 100);
    EXPECT_EQ(uint16s(done, "OperationalStatus"), (std::vector<Uint16>{2, 17}));
    EXPECT_EQ(prop<Uint16>(done, "ErrorCode"), 0);
    EXPECT_EQ(jobs()->GetUnfinishedJobsCount(), 0);
    EXPECT_EQ(linked(job, "AffectedJobElement"), std::vector<std::string>{modeltest::canonical(volume)});

    // The method result and the post-call indication carry the outcome.
    CIMInstance result = repository->of(MC::ClassNameText("MethodResult"))[0];
    CIMInstance postCall = embedded(result, "PostCallIndication");
    EXPECT_EQ(prop<String>(postCall, "ReturnValue"), "Complete with no error");
    CIMInstance parameters = embedded(postCall, "MethodParameters");
    EXPECT_NE(parameters.findProperty(CIMName("TheElement")), PEG_NOT_FOUND);
    EXPECT_EQ(prop<String>(parameters, "ElementName"), "vol01");
    std::vector<CIMInstance> calls = indications.named("CIM_InstMethodCall");
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_FALSE(prop<Boolean>(calls[1], "PreCall"));
    EXPECT_EQ(prop<String>(calls[1], "ReturnValue"), "Complete with no error");
    EXPECT_FALSE(indications.named("CIM_InstModification").empty());
    EXPECT_TRUE(indications.named("CIM_AlertIndication").empty());

    // A good job has no errors to show.
    JobCall errors(context, job, "GetErrors");
    EXPECT_EQ(errors.result, 0u);
    ASSERT_NE(errors.find("Errors"), nullptr);
    Array<CIMObject> none;
    errors.find("Errors")->getValue().get(none);
    EXPECT_EQ(none.size(), 0u);
    JobCall error(context, job, "GetError");
    EXPECT_EQ(error.result, 0u);
    EXPECT_EQ(error.out.size(), 0u);
}

TEST_F(JobLife, ModifyJobKeepsItsElements) {
    auto script = std::make_shared<Script>();
    script->effectShown = true;
    script->output.append(CIMParamValue(String("TheElement"), CIMValue(volume)));
    CIMObjectPath job = queue(script, DetailArgs::OPERATION_MODIFY);
    RunCfgThreadTurn();
    jobs()->EndJobs();
    EXPECT_EQ(jobState(stored(job)), 7);
    EXPECT_EQ(linked(job, "AffectedJobElement"), std::vector<std::string>{modeltest::canonical(pool)});
}

TEST_F(JobLife, RefusedCommandFailsTheJobWithTheArraysMessage) {
    auto script = std::make_shared<Script>();
    script->executeAccepted = false;
    CIMObjectPath job = queue(script);
    RunCfgThreadTurn();

    CIMInstance failed = stored(job);
    EXPECT_EQ(jobState(failed), 10);
    EXPECT_EQ(prop<Uint16>(failed, "PercentComplete"), 0);
    EXPECT_EQ(uint16s(failed, "OperationalStatus"), (std::vector<Uint16>{6, 17}));
    EXPECT_EQ(prop<Uint16>(failed, "ErrorCode"), 4);
    EXPECT_EQ(prop<String>(failed, "ErrorDescription"), "LD name already used");
    EXPECT_EQ(script->recovered, 1);
    EXPECT_EQ(jobs()->GetUnfinishedJobsCount(), 0);

    // The client learns of it by an alert; the method result keeps its
    // pre-call state.
    ASSERT_EQ(indications.named("CIM_AlertIndication").size(), 1u);
    EXPECT_EQ(prop<String>(indications.named("CIM_AlertIndication")[0], "Description"),
              "The call to method CreateOrModifyElementFromStoragePool has failed.");
    EXPECT_EQ(indications.named("CIM_InstMethodCall").size(), 1u);

    JobCall errors(context, job, "GetErrors");
    EXPECT_EQ(errors.result, 0u);
    Array<CIMObject> list;
    errors.find("Errors")->getValue().get(list);
    ASSERT_EQ(list.size(), 1u);
    CIMInstance error(list[0]);
    EXPECT_EQ(prop<String>(error, "Message"), "LD name already used");
    EXPECT_EQ(prop<String>(error, "MessageID"), "CFG0042");
    EXPECT_EQ(prop<String>(error, "OwningEntity"), "ORV");
    EXPECT_EQ(prop<Sint32>(error, "CIMStatusCode"), 1);
    JobCall first(context, job, "GetError");
    ASSERT_NE(first.find("Error"), nullptr);
}

TEST_F(JobLife, ErrorsAreFoundByTheJobsKeyIgnoringCase) {
    auto a = std::make_shared<Script>();
    a->executeAccepted = false;
    a->failure.message = "first failure";
    auto b = std::make_shared<Script>();
    b->executeAccepted = false;
    b->failure.message = "second failure";
    CIMObjectPath jobA = queue(a);
    CIMObjectPath jobB = queue(b);
    RunCfgThreadTurn();

    Array<CIMKeyBinding> keys = jobB.getKeyBindings();
    std::string text = keys[0].getValue().toUtf8();
    for (char& c : text) c = char(std::toupper(static_cast<unsigned char>(c)));
    const String upper = String::fromUtf8(text);
    CIMObjectPath askedB(String(), CIMNamespaceName(), jobB.getClassName());
    Array<CIMKeyBinding> upperKeys;
    upperKeys.append(CIMKeyBinding(keys[0].getName(), upper, CIMKeyBinding::STRING));
    askedB.setKeyBindings(upperKeys);
    Array<CIMObject> errors;
    jobs()->GetWorkedJobError(askedB, errors);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(prop<String>(CIMInstance(errors[0]), "Message"), "second failure");

    // Without a key: the errors of every failed job.
    errors.clear();
    jobs()->GetWorkedJobError(CIMObjectPath(String(), CIMNamespaceName(), jobA.getClassName()), errors);
    EXPECT_EQ(errors.size(), 2u);
}

TEST_F(JobLife, JobsThatFailAtOnceLetTheNextStartInTheSameTurn) {
    std::vector<std::shared_ptr<Script>> scripts;
    for (int i = 0; i < 3; ++i) scripts.push_back(std::make_shared<Script>());
    scripts[0]->executeAccepted = false;
    scripts[1]->executeAccepted = false;
    std::vector<CIMObjectPath> paths;
    for (auto& script : scripts) paths.push_back(queue(script));

    EXPECT_TRUE(RunCfgThreadTurn());
    EXPECT_EQ(jobState(stored(paths[0])), 10);
    EXPECT_EQ(jobState(stored(paths[1])), 10);
    EXPECT_EQ(jobState(stored(paths[2])), 32768);
    EXPECT_EQ(jobs()->GetUnworkedJobsCount(), 0);
    EXPECT_EQ(auditLines().size(), 3u);
}

TEST_F(JobLife, SecondJobStartsOnlyAfterTheFirstIsProved) {
    auto first = std::make_shared<Script>();
    auto second = std::make_shared<Script>();
    CIMObjectPath jobA = queue(first);
    CIMObjectPath jobB = queue(second);

    EXPECT_TRUE(RunCfgThreadTurn());
    EXPECT_EQ(first->executed, 1);
    EXPECT_EQ(second->executed, 0);
    EXPECT_EQ(jobs()->GetUnworkedJobsCount(), 1);

    // Further wake-ups change nothing while the first waits for its view.
    EXPECT_FALSE(RunCfgThreadTurn());
    jobs()->EndJobs();
    EXPECT_FALSE(RunCfgThreadTurn());
    EXPECT_EQ(second->executed, 0);
    EXPECT_EQ(jobState(stored(jobB)), 3);

    first->effectShown = true;
    jobs()->EndJobs();
    EXPECT_EQ(jobState(stored(jobA)), 7);
    EXPECT_TRUE(RunCfgThreadTurn());
    EXPECT_EQ(second->executed, 1);
    EXPECT_EQ(jobState(stored(jobB)), 32768);
    EXPECT_FALSE(RunCfgThreadTurn());
}

TEST_F(JobLife, EffectThatNeverShowsTimesOutAtTheFirstViewAfterTheTimeout) {
    ConcreteJob::m_timeOut = 10 * MINUTE;
    auto script = std::make_shared<Script>();
    CIMObjectPath job = queue(script);
    RunCfgThreadTurn();

    advance(10 * MINUTE - 1);
    jobs()->EndJobs();
    EXPECT_EQ(jobState(stored(job)), 32768);

    // Time alone does not end a job: only a view does.
    advance(1);
    EXPECT_EQ(jobState(stored(job)), 32768);
    jobs()->EndJobs();
    CIMInstance failed = stored(job);
    EXPECT_EQ(jobState(failed), 10);
    EXPECT_EQ(prop<Uint16>(failed, "ErrorCode"), 2);
    EXPECT_EQ(prop<String>(failed, "ErrorDescription"), "Unknown error!");
    EXPECT_EQ(script->recovered, 0);
    std::vector<CIMInstance> calls = indications.named("CIM_InstMethodCall");
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(prop<String>(calls[1], "ReturnValue"), "Failed");

    // A timed-out job has no array error to give.
    JobCall errors(context, job, "GetErrors");
    Array<CIMObject> list;
    errors.find("Errors")->getValue().get(list);
    EXPECT_EQ(list.size(), 0u);
    // Its effect showing later changes nothing.
    script->effectShown = true;
    jobs()->EndJobs();
    EXPECT_EQ(jobState(stored(job)), 10);
}

TEST_F(JobLife, FinishedJobsDisappearAfterTheirLifeTime) {
    ConcreteJob::m_lifeTime = 30 * MINUTE;
    auto done = std::make_shared<Script>();
    done->effectShown = true;
    auto failing = std::make_shared<Script>();
    failing->executeAccepted = false;
    auto waiting = std::make_shared<Script>();
    CIMObjectPath jobDone = queue(done);
    RunCfgThreadTurn();
    jobs()->EndJobs();
    CIMObjectPath jobFailed = queue(failing);
    CIMObjectPath jobWaiting = queue(waiting);
    RunCfgThreadTurn();
    ASSERT_EQ(jobState(stored(jobWaiting)), 32768);
    EXPECT_EQ(prop<CIMDateTime>(stored(jobDone), "TimeBeforeRemoval"), CIMDateTime(30 * MINUTE, true));

    advance(30 * MINUTE - 1);
    jobs()->CleanWorkedJobs();
    EXPECT_TRUE(repository->has(jobDone));
    EXPECT_TRUE(repository->has(jobFailed));

    advance(1);
    jobs()->CleanWorkedJobs();
    EXPECT_FALSE(repository->has(jobDone));
    EXPECT_FALSE(repository->has(jobFailed));
    EXPECT_TRUE(linked(jobDone, "AffectedJobElement").empty());
    EXPECT_TRUE(linked(jobFailed, "OwningJobElement").empty());
    EXPECT_TRUE(linked(jobDone, "AssociatedJobMethodResult").empty());
    // Only the waiting job is left, with its own result and links.
    EXPECT_EQ(repository->count(MC::ClassNameText("ConcreteJob")), 1u);
    EXPECT_EQ(repository->count(MC::ClassNameText("MethodResult")), 1u);
    EXPECT_EQ(repository->count(MC::ClassNameText("OwningJobElement")), 1u);
    EXPECT_EQ(repository->count(MC::ClassNameText("AssociatedJobMethodResult")), 1u);

    // A job still waiting for its view is never removed.
    advance(24 * 60 * MINUTE);
    jobs()->CleanWorkedJobs();
    EXPECT_TRUE(repository->has(jobWaiting));
    EXPECT_EQ(jobs()->GetUnfinishedJobsCount(), 1);
}

TEST_F(JobLife, RepositoryFailureWhileCreatingLeavesNoJobBehind) {
    repository->failCreateOfClass = MC::ClassNameText("MethodResult");
    auto script = std::make_shared<Script>();
    EXPECT_THROW(queue(script), CIMException);
    EXPECT_EQ(jobs()->GetUnworkedJobsCount(), 0);
    EXPECT_EQ(repository->count(MC::ClassNameText("ConcreteJob")), 0u);
    EXPECT_EQ(repository->count(MC::ClassNameText("OwningJobElement")), 0u);
    EXPECT_FALSE(RunCfgThreadTurn());
    EXPECT_EQ(script->executed, 0);
}

}  // namespace
