#include "JobManager.h"

#include <cstdio>
#include <exception>

#include <Pegasus/Common/Exception.h>

#include "ConcreteJob.h"
#include "ConfigManager.h"
#include "Exception.h"
#include "ExecVexcfg.h"
#include "MC.h"
#include "SmisTrace.h"
#include "ThreadSyncTool.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

// Holds the worked list's lock for a scope; a lock that cannot be had is a
// failure of the caller's operation.
class WorkedLock {
public:
    WorkedLock(pthread_rwlock_t& lock, bool write) : m_lock(lock) {
        const int rc = write ? pthread_rwlock_wrlock(&m_lock) : pthread_rwlock_rdlock(&m_lock);
        if (rc != 0) {
            SMIS_TRACE(LEVEL1, "Error[ JobManager ] : worked job lock failed, Error code: %d", rc);
            throw ConstructionException("Construction failed");
        }
    }
    ~WorkedLock() { pthread_rwlock_unlock(&m_lock); }
    WorkedLock(const WorkedLock&) = delete;
    WorkedLock& operator=(const WorkedLock&) = delete;

private:
    pthread_rwlock_t& m_lock;
};

class UnworkedLock {
public:
    explicit UnworkedLock(pthread_mutex_t& mutex) : m_mutex(mutex) { smis_mutex_lock(&m_mutex); }
    ~UnworkedLock() { smis_mutex_unlock(&m_mutex); }
    UnworkedLock(const UnworkedLock&) = delete;
    UnworkedLock& operator=(const UnworkedLock&) = delete;

private:
    pthread_mutex_t& m_mutex;
};

const Uint64 MICROSECONDS_PER_MINUTE = 60000000ULL;
const int CLEAR_INTERVAL_MILLISECONDS = 300000;

Uint64 readMinutes(const char* key) {
    int minutes = ConfigManager::GetConfigIntValue("smis", key, 60);
    if (minutes < 1) {
        SMIS_TRACE(LEVEL2, "Info[ClearJobsThread] : %s %d is below 1 minute, 60 taken", key, minutes);
        minutes = 60;
    }
    return Uint64(minutes) * MICROSECONDS_PER_MINUTE;
}

}  // namespace

JobManager::JobManager() {
    pthread_mutex_init(&m_unworkedMutex, nullptr);
    pthread_rwlock_init(&m_workedLock, nullptr);
}

JobManager::~JobManager() {
    Clean();
    pthread_rwlock_destroy(&m_workedLock);
    pthread_mutex_destroy(&m_unworkedMutex);
}

CIMObjectPath JobManager::CreateJob(JobArgs& args) {
    // The clearing thread reads the times at its start; a job made before
    // that must not time out at its first view.
    if (ConcreteJob::m_timeOut == 0 || ConcreteJob::m_lifeTime == 0) ReadJobTimeSettings();
    ConcreteJob* job = new ConcreteJob(args);
    CIMObjectPath path;
    try {
        path = job->Create();
    } catch (...) {
        // The client gets the repository's failure; what was written of the
        // job is taken back, and nothing is queued.
        job->Delete();
        delete job;
        throw;
    }
    {
        UnworkedLock lock(m_unworkedMutex);
        m_unworkedJobs.push_back(job);
    }
    SMIS_TRACE(LEVEL2, "Info[ CreateJob ] : JobID is %s", job->GetJobId().c_str());
    WakeupCfgThread();
    return path;
}

Uint32 JobManager::StartJob(JobArgs& args, Array<CIMParamValue>& out) {
    const CIMObjectPath path = CreateJob(args);
    out.append(CIMParamValue(String("Job"), CIMValue(path)));
    return JOB_RC_JOB_STARTED;
}

void JobManager::StartJobs() {
    for (;;) {
        ConcreteJob* job = nullptr;
        {
            UnworkedLock lock(m_unworkedMutex);
            if (m_unworkedJobs.empty()) return;
            job = m_unworkedJobs.front();
            m_unworkedJobs.pop_front();
        }
        bool started = false;
        try {
            started = job->Start();
        } catch (const std::exception& e) {
            SMIS_TRACE(LEVEL1, "Error[ StartJobs ] : %s ,%s", job->GetJobId().c_str(), e.what());
        } catch (const Pegasus::Exception& e) {
            SMIS_TRACE(LEVEL1, "Error[ StartJobs ] : %s ,%s", job->GetJobId().c_str(),
                       MC::ToStd(e.getMessage()).c_str());
        } catch (...) {
            SMIS_TRACE(LEVEL1, "Error[ StartJobs ] : %s ,%s", job->GetJobId().c_str(), "unexpected exception");
        }
        {
            // Kept in any case: a job leaves only through the clearing thread.
            pthread_rwlock_wrlock(&m_workedLock);
            m_workedJobs.push_back(job);
            pthread_rwlock_unlock(&m_workedLock);
        }
        if (started && !CanDoNext()) return;
        SMIS_TRACE(LEVEL2, "Info[StartJobs] : do next job");
    }
}

void JobManager::EndJobs() {
    WorkedLock lock(m_workedLock, false);
    for (ConcreteJob* job : m_workedJobs) {
        if (job->GetState() != ConcreteJob::STATE_WAITING) continue;
        try {
            job->End();
        } catch (const std::exception& e) {
            SMIS_TRACE(LEVEL1, "Error[ EndJobs ] : %s ,%s", job->GetJobId().c_str(), e.what());
        } catch (const Pegasus::Exception& e) {
            SMIS_TRACE(LEVEL1, "Error[ EndJobs ] : %s ,%s", job->GetJobId().c_str(),
                       MC::ToStd(e.getMessage()).c_str());
        } catch (...) {
            SMIS_TRACE(LEVEL1, "Error[ EndJobs ] : %s ,%s", job->GetJobId().c_str(), "unexpected exception");
        }
    }
}

void JobManager::GetWorkedJobError(const CIMObjectPath& jobPath, Array<CIMObject>& out) {
    WorkedLock lock(m_workedLock, false);
    const Array<CIMKeyBinding> keys = jobPath.getKeyBindings();
    for (ConcreteJob* job : m_workedJobs) {
        if (job->GetState() != ConcreteJob::STATE_EXCEPTION) continue;
        if (keys.size() == 0) {
            job->GetErrors(out);
            continue;
        }
        const Array<CIMKeyBinding> own = job->GetPath().getKeyBindings();
        if (own.size() == 0) continue;
        if (String::equalNoCase(keys[0].getValue(), own[0].getValue())) {
            job->GetErrors(out);
            return;
        }
    }
}

int JobManager::GetUnworkedJobsCount() {
    UnworkedLock lock(m_unworkedMutex);
    return int(m_unworkedJobs.size());
}

int JobManager::GetUnfinishedJobsCount() {
    WorkedLock lock(m_workedLock, false);
    int count = 0;
    for (ConcreteJob* job : m_workedJobs)
        if (job->GetState() == ConcreteJob::STATE_WAITING) ++count;
    return count;
}

bool JobManager::CanDoNext() { return false; }

void JobManager::Clean() {
    SMIS_TRACE(LEVEL2, "Cleaning job list completely");
    {
        UnworkedLock lock(m_unworkedMutex);
        for (ConcreteJob* job : m_unworkedJobs) delete job;
        m_unworkedJobs.clear();
    }
    pthread_rwlock_wrlock(&m_workedLock);
    for (ConcreteJob* job : m_workedJobs) delete job;
    m_workedJobs.clear();
    pthread_rwlock_unlock(&m_workedLock);
}

void JobManager::CleanWorkedJobs() {
    std::printf("Clear finished jobs\n");
    WorkedLock lock(m_workedLock, true);
    for (std::list<ConcreteJob*>::iterator it = m_workedJobs.begin(); it != m_workedJobs.end();) {
        ConcreteJob* job = *it;
        const int state = job->GetState();
        if ((state == ConcreteJob::STATE_COMPLETED || state == ConcreteJob::STATE_EXCEPTION) &&
            job->GetElapsedTimeFromCompletion() >= ConcreteJob::m_lifeTime) {
            SMIS_TRACE(LEVEL3, "Info[ CleanWorkedJobs ] : %s removed", job->GetJobId().c_str());
            job->Delete();
            delete job;
            it = m_workedJobs.erase(it);
        } else {
            ++it;
        }
    }
}

void ReadJobTimeSettings() {
    ConcreteJob::m_lifeTime = readMinutes("JobLifeTime");
    ConcreteJob::m_timeOut = readMinutes("JobTimeout");
}

void* ClearJobsThread(void*) {
    try {
        ReadJobTimeSettings();
    } catch (...) {
        SMIS_TRACE(LEVEL1, "Error[ClearJobsThread] : job times not read, 60 minutes taken");
        ConcreteJob::m_lifeTime = 60 * MICROSECONDS_PER_MINUTE;
        ConcreteJob::m_timeOut = 60 * MICROSECONDS_PER_MINUTE;
    }
    for (;;) {
        sleepForMilliSecond(CLEAR_INTERVAL_MILLISECONDS);
        try {
            Singleton<JobManager>::Instance()->CleanWorkedJobs();
        } catch (const std::exception& e) {
            SMIS_TRACE(LEVEL1, "Error[ClearJobsThread] : %s", e.what());
        } catch (const Pegasus::Exception& e) {
            SMIS_TRACE(LEVEL1, "Error[ClearJobsThread] : %s", MC::ToStd(e.getMessage()).c_str());
        } catch (...) {
            SMIS_TRACE(LEVEL1, "Error[ClearJobsThread] : unexpected exception");
        }
    }
    return nullptr;
}

}  // namespace orvsmis
