#include "ExecVexview.h"

#include <stdio.h>

#include "DataflowSource.h"
#include "CapacityMonitor.h"
#include "ExecVexcfg.h"
#include "SmisStatusRecorder.h"
#include "SmisTrace.h"
#include "ThreadSyncTool.h"

namespace orvsmis {

DiskStatus ds_ = {0, 0, 0};
pthread_mutex_t status_mutex = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t status_cond = PTHREAD_COND_INITIALIZER;
std::atomic<bool> bEnable(true);

namespace {

DataflowSource* s_source = NULL;
ViewFailoverFunction s_failover = NULL;
int s_passCounter = 0;

void say(const char* text) {
    printf("%s\n", text);
    fflush(stdout);
}

bool loadOnce() {
    CM_UpdateExecTime(true);
    bool result = false;
    if (s_source == NULL) {
        SMIS_TRACE(LEVEL1, "Error[ LoadData ] : no data source is attached to the view thread");
    } else {
        try {
            result = s_source->LoadData();
        } catch (...) {
            SMIS_TRACE(LEVEL1, "Error[ LoadData ] : unexpected exception");
            result = false;
        }
    }
    SaveSmisLayerStatus(result);
    CM_UpdateExecTime(false);
    return result;
}

void failover() {
    if (s_failover == NULL) return;
    try {
        s_failover();
    } catch (...) {
        SMIS_TRACE(LEVEL1, "Error[ Failover ] : unexpected exception");
    }
}

// Waits until a load is asked for. False when the wait itself failed.
bool waitForWakeup() {
    if (smis_mutex_lock(&status_mutex) != 0) return false;
    while (ds_.wakeup == 0) {
        if (smis_cond_wait(&status_cond, &status_mutex) != 0) {
            smis_mutex_unlock(&status_mutex);
            return false;
        }
    }
    return true;
}

}  // namespace

void SetViewThreadSource(DataflowSource* source, ViewFailoverFunction failover) {
    s_source = source;
    s_failover = failover;
}

void WakeupViewThread() {
    if (smis_mutex_lock(&status_mutex) != 0) return;
    ds_.wakeup = 1;
    smis_cond_signal(&status_cond);
    smis_mutex_unlock(&status_mutex);
}

void MarkViewDue() {
    if (smis_mutex_lock(&status_mutex) != 0) return;
    ds_.wakeup = 1;
    smis_mutex_unlock(&status_mutex);
}

void EnableVexviewThread(bool enable) { bEnable = enable; }

void VexviewOptionParse(int* kind, const DiskStatus* status) {
    if (status->logical == 1 && status->physical == 1)
        *kind = CMD_TYPE_ALL;
    else if (status->logical == 1)
        *kind = CMD_TYPE_LOGIC;
    else if (status->physical == 1)
        *kind = CMD_TYPE_PHYSICS;
    else
        *kind = CMD_TYPE_NONE;
}

const char* CmdTypeToString(int kind) {
    switch (kind) {
    case CMD_TYPE_ALL: return "all";
    case CMD_TYPE_LOGIC: return "logic";
    case CMD_TYPE_PHYSICS: return "physics";
    default: return "";
    }
}

void SaveSmisLayerStatus(bool ok) {
    static bool last = true;
    if (ok != last) {
        if (ok)
            RecordSmisLayerStatus(1, "ready");
        else
            RecordSmisLayerStatus(2, "abnormal (data center)");
    }
    last = ok;
}

bool ViewThreadPass() {
    if (!waitForWakeup()) {
        sleepForMilliSecond(1000);
        return false;
    }
    if (!bEnable) {
        // Held back while a job runs; the wake flag stays, so the load follows
        // as soon as the job is over.
        smis_mutex_unlock(&status_mutex);
        say("View thread waiting for cfg end.");
        SMIS_TRACE(LEVEL3, "View thread waiting for a job execution over.");
        sleepForMilliSecond(1000);
        return false;
    }
    ds_.wakeup = 0;
    int kind = CMD_TYPE_NONE;
    VexviewOptionParse(&kind, &ds_);
    ds_.logical = 2;
    ds_.physical = 2;
    smis_mutex_unlock(&status_mutex);

    // The kind goes to the log only: every load reads the whole array.
    printf("[%d] Command type is %s\n", s_passCounter++, CmdTypeToString(kind));
    fflush(stdout);
    SMIS_TRACE(LEVEL3, "Command type is %s", CmdTypeToString(kind));

    bool result = loadOnce();
    while (!result) {
        SMIS_TRACE(LEVEL1, "Error[ LoadData ] : Failed! Clean envirement.");
        say("Load data failed! Clean envirement.");
        failover();
        sleepForMilliSecond(1000);
        result = loadOnce();
    }
    SMIS_TRACE(LEVEL2, "Info[ LoadData ] : Successfully.");
    say("Load data successfully.");
    // Each successful load gives the configuration thread its turn.
    WakeupCfgThread();
    return true;
}

void* Vexview_thread(void*) {
    for (;;) {
        try {
            ViewThreadPass();
        } catch (...) {
            SMIS_TRACE(LEVEL1, "Error[ view thread ] : unexpected exception");
        }
    }
    return NULL;
}

void Vexview_thread_exit() {
    SMIS_TRACE(LEVEL2, "Vexview thread exit normally");
    smis_pthread_exit(NULL);
}

}  // namespace orvsmis
