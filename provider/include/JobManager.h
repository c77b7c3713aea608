#ifndef ORVSMIS_JOBMANAGER_H
#define ORVSMIS_JOBMANAGER_H

#include <pthread.h>

#include <list>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/Config.h>

#include "JobArgs.h"
#include "Singleton.h"

namespace orvsmis {

class ConcreteJob;

// Return values of the methods that start jobs.
enum JobReturnCode {
    JOB_RC_DONE = 0,                // done at once, no job
    JOB_RC_NOT_SUPPORTED = 1,       // not supported, or makes no sense in this state
    JOB_RC_FAILED = 4,              // the element's state forbids the change
    JOB_RC_INVALID_PARAMETER = 5,   // a parameter is wrong; nothing was started
    JOB_RC_JOB_STARTED = 4096,      // output "Job" holds the job's path
    JOB_RC_SIZE_NOT_SUPPORTED = 4097  // output "Size" holds an acceptable size
};

// The queue of configuration jobs. Jobs wait in the unworked list until the
// configuration thread starts them, then stay in the worked list until the
// clearing thread removes them JobLifeTime after they ended. The manager
// owns every job in either list. Reach it through Singleton<JobManager>.
class JobManager {
public:
    JobManager();
    virtual ~JobManager();

    // Makes the job, writes its instances, queues it and wakes the
    // configuration thread; returns the path of the job's instance. Takes
    // ownership of args.detail even when it throws: a repository failure
    // passes through to the caller and nothing is queued.
    Pegasus::CIMObjectPath CreateJob(JobArgs& args);

    // CreateJob, then appends the job's path to out as "Job" and returns
    // 4096: the usual last step of a controller.
    Pegasus::Uint32 StartJob(JobArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& out);

    // Configuration thread: starts the first queued job; a job that fails at
    // once lets the next one start in the same call.
    void StartJobs();

    // View thread, after a load fed the models and before it is committed:
    // lets every job waiting for its effect look at the new records.
    void EndJobs();

    // The errors (CIM_Error objects) of failed jobs: of the job named by the
    // path's key, or of every failed job when the path has no key.
    void GetWorkedJobError(const Pegasus::CIMObjectPath& job, Pegasus::Array<Pegasus::CIMObject>& out);

    int GetUnworkedJobsCount();
    // Jobs started whose effect has not been seen yet (state 32768).
    int GetUnfinishedJobsCount();

    // One configuration job at a time: always false.
    bool CanDoNext();

    // Forgets every job without touching the repository.
    void Clean();

    // Removes ended jobs (7 or 10) whose completion lies JobLifeTime back,
    // with their instances.
    void CleanWorkedJobs();

private:
    JobManager(const JobManager&) = delete;
    JobManager& operator=(const JobManager&) = delete;

    std::list<ConcreteJob*> m_unworkedJobs;
    pthread_mutex_t m_unworkedMutex;
    std::list<ConcreteJob*> m_workedJobs;
    pthread_rwlock_t m_workedLock;
};

// Reads JobLifeTime and JobTimeout (section "smis", minutes, default 60; a
// value below 1 is 60) into ConcreteJob::m_lifeTime and m_timeOut.
void ReadJobTimeSettings();

// The job-clearing worker: reads the job times, then every 300 seconds
// removes the jobs whose life is over. Never returns.
void* ClearJobsThread(void* arg);

}  // namespace orvsmis

#endif
