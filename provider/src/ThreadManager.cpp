#include "ThreadManager.h"

#include "CapacityMonitor.h"
#include "ConfigManager.h"
#include "ExecVexcfg.h"
#include "ExecVexview.h"
#include "JobManager.h"
#include "MemoryCautioner.h"
#include "SmisTrace.h"
#include "StatusMonitor.h"
#include "ThreadSyncTool.h"

namespace orvsmis {

pthread_t sm_tid;
pthread_t Vexview_tid;
pthread_t Vexcfg_tid;
pthread_t jobclear_tid;
pthread_t thresholdtest_tid;
pthread_t capacityMonitor_tid;

namespace {

struct WorkerStart {
    pthread_t* tid;
    void* (*routine)(void*);
    const char* success;
    const char* failure;
};

}  // namespace

int create_worker_thread() {
    pthread_attr_t attr;
    if (smis_pthread_attr_init(&attr) != 0) {
        SMIS_TRACE(LEVEL1, "smis_pthread_attr_init failed");
        return -1;
    }
    int rc = smis_pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
    if (rc != 0) {
        SMIS_TRACE(LEVEL1, "smis_pthread_attr_setdetachstate failed");
        smis_pthread_attr_destroy(&attr);
        return rc;
    }
    // In the polling simulator mode there is no daemon to listen to: loads
    // come from the other triggers alone.
    if (!ConfigManager::GetConfigBoolValue("PollingSimulator", "Enable", false)) {
        rc = smis_pthread_create(&sm_tid, &attr, sm_thread, nullptr);
        if (rc != 0) {
            SMIS_TRACE(LEVEL1, "create polling monitor thread  failed");
            smis_pthread_attr_destroy(&attr);
            return rc;
        }
    }
    const WorkerStart workers[] = {
        {&Vexview_tid, Vexview_thread, "create  Vexview thread  successed",
            "create  Vexview thread  failed"},
        {&Vexcfg_tid, Vexcfg_thread, "create Vexcfg thread  successed",
            "create Vexcfg thread  failed"},
        {&jobclear_tid, ClearJobsThread, "create jobclear thread  successed",
            "create jobclear thread  failed"},
        {&thresholdtest_tid, CheckMemoryThread, "create memory thread  successed",
            "create memory thread  failed"},
        {&capacityMonitor_tid, CapacityMonitor_thread, "create  CapacityMonitor thread  successed",
            "create  CapacityMonitor thread  failed"},
    };
    for (const WorkerStart& worker : workers) {
        rc = smis_pthread_create(worker.tid, &attr, worker.routine, nullptr);
        if (rc != 0) {
            // Threads already started stay running; the caller fails the start.
            SMIS_TRACE(LEVEL1, "%s", worker.failure);
            break;
        }
        SMIS_TRACE(LEVEL2, "%s", worker.success);
    }
    const int destroyed = smis_pthread_attr_destroy(&attr);
    return rc != 0 ? rc : destroyed;
}

void terminate_worker_thread() {
    // The workers are endless loops that end with the process, which the
    // caller ends right after.
    SMIS_TRACE(LEVEL1, "SMIS Provider will stopped gracefully!");
}

}  // namespace orvsmis
