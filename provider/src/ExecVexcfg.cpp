#include "ExecVexcfg.h"

#include "ExecVexview.h"
#include "JobManager.h"
#include "Singleton.h"
#include "SmisTrace.h"
#include "ThreadSyncTool.h"

namespace orvsmis {

int diskcfg = 0;
pthread_mutex_t cfg_mutex = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t cfg_cond = PTHREAD_COND_INITIALIZER;

void WakeupCfgThread() {
    if (smis_mutex_lock(&cfg_mutex) != 0) return;
    diskcfg = 1;
    smis_cond_signal(&cfg_cond);
    smis_mutex_unlock(&cfg_mutex);
}

void WaitForCfgTurn() {
    for (;;) {
        if (smis_mutex_lock(&cfg_mutex) != 0) {
            sleepForMilliSecond(1000);
            continue;
        }
        bool waitFailed = false;
        while (diskcfg == 0) {
            if (smis_cond_wait(&cfg_cond, &cfg_mutex) != 0) {
                waitFailed = true;
                break;
            }
        }
        if (!waitFailed) {
            diskcfg = 0;
            smis_mutex_unlock(&cfg_mutex);
            return;
        }
        // A wait that cannot be done is not turned into a busy loop.
        smis_mutex_unlock(&cfg_mutex);
        sleepForMilliSecond(1000);
    }
}

void RunCfgJobTurn(void (*startJobs)()) {
    SMIS_TRACE(LEVEL2, "Info[cfg thread] : starting a job");
    EnableVexviewThread(false);
    try {
        if (startJobs != NULL) startJobs();
    } catch (...) {
        SMIS_TRACE(LEVEL1, "Error[cfg thread] : a job ended by an unexpected exception");
    }
    // The view that proves the jobs' effect is due; the view thread takes it
    // on its next pass.
    MarkViewDue();
    EnableVexviewThread(true);
    SMIS_TRACE(LEVEL2, "Info[cfg thread] : finish");
}

namespace {

void startQueuedJobs() { Singleton<JobManager>::Instance()->StartJobs(); }

}  // namespace

bool RunCfgThreadTurn() {
    SMIS_TRACE(LEVEL3, "Info[cfg thread] : estimating the condition of execution");
    JobManager* jobs = Singleton<JobManager>::Instance();
    // One job at a time: the next starts only once the last one's effect was
    // seen in a view, so that each job works on the array as it now is.
    if (jobs->GetUnfinishedJobsCount() > 0) return false;
    if (jobs->GetUnworkedJobsCount() == 0) return false;
    RunCfgJobTurn(startQueuedJobs);
    return true;
}

void* Vexcfg_thread(void*) {
    for (;;) {
        try {
            WaitForCfgTurn();
            RunCfgThreadTurn();
        } catch (...) {
            SMIS_TRACE(LEVEL1, "Error[cfg thread] : unexpected exception");
        }
    }
    return NULL;
}

}  // namespace orvsmis
