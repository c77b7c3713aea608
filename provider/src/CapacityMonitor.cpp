#include "CapacityMonitor.h"

#include <sys/time.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "ArrayRawData.h"
#include "ConfigManager.h"
#include "DataConnector.h"
#include "ExecVexview.h"
#include "PoolRawData.h"
#include "RecordRef.h"
#include "SmisTrace.h"
#include "ThreadSyncTool.h"

namespace orvsmis {

pthread_mutex_t capacity_mutex = PTHREAD_MUTEX_INITIALIZER;
bool cm_view_exe_flag = false;
long cm_view_exe_time_sec = 0;
long cm_view_exe_time_msec = 0;

namespace {

const int DEFAULT_INTERVAL = 300;

void realClock(long* sec, long* msec) {
    struct timeval now;
    ::gettimeofday(&now, nullptr);
    *sec = static_cast<long>(now.tv_sec);
    *msec = static_cast<long>(now.tv_usec / 1000);
}

CapacityClock s_clock = &realClock;

void noteNow() {
    long sec = 0;
    long msec = 0;
    s_clock(&sec, &msec);
    cm_view_exe_time_sec = sec;
    cm_view_exe_time_msec = msec;
}

bool isVirtualPool(const PoolRawData* pool) {
    return pool != nullptr && pool->poolType.find("virtual") != std::string::npos;
}

}  // namespace

void CM_SetClock(CapacityClock clock) {
    smis_mutex_lock(&capacity_mutex);
    s_clock = clock != nullptr ? clock : &realClock;
    smis_mutex_unlock(&capacity_mutex);
}

void CM_UpdateExecTime(bool running) {
    smis_mutex_lock(&capacity_mutex);
    cm_view_exe_flag = running;
    if (running) noteNow();
    smis_mutex_unlock(&capacity_mutex);
}

bool CM_CanSendSignal(int waitTime) {
    smis_mutex_lock(&capacity_mutex);
    long sec = 0;
    long msec = 0;
    s_clock(&sec, &msec);
    // Milliseconds count too: a load that started 299.9 s ago is not yet 300 s old.
    const long long elapsedMs =
        (static_cast<long long>(sec) - cm_view_exe_time_sec) * 1000LL + (msec - cm_view_exe_time_msec);
    const bool running = cm_view_exe_flag;
    const bool can = !running && elapsedMs >= static_cast<long long>(waitTime) * 1000LL;
    SMIS_TRACE(LEVEL4, "CM_CanSendSignal: running=%d last=%ld.%03ld now=%ld.%03ld wait=%d result=%d", running ? 1 : 0,
               cm_view_exe_time_sec, cm_view_exe_time_msec, sec, msec, waitTime, can ? 1 : 0);
    smis_mutex_unlock(&capacity_mutex);
    return can;
}

bool CM_ArrayHasVirtualPool() {
    RecordRef<ArrayRawData> array;
    if (!DataConnector<ArrayRawData>::QueryData(std::string(), std::string(), array.Out()) || array.Get() == nullptr)
        return false;  // no load has stored an array yet
    std::vector<PoolRawData*> pools;
    DataConnector<PoolRawData>::QueryData(array->arrayId, pools);
    bool found = false;
    for (size_t i = 0; i < pools.size() && !found; ++i) found = isVirtualPool(pools[i]);
    DataConnector<PoolRawData>::ReleaseAll(pools);
    return found;
}

bool CM_SignalViewThread() {
    SMIS_TRACE(LEVEL3, "send signal.");
    bool sent = false;
    smis_mutex_lock(&status_mutex);
    // A wake-up already pending reads the logical state anyway.
    if (ds_.wakeup == 0) {
        ds_.wakeup = 1;
        ds_.logical = 1;
        ds_.physical = 2;
        smis_cond_signal(&status_cond);
        sent = true;
    }
    smis_mutex_unlock(&status_mutex);
    return sent;
}

bool CM_RunPass(int interval) {
    if (!CM_CanSendSignal(interval)) return false;
    if (!CM_ArrayHasVirtualPool()) return false;
    return CM_SignalViewThread();
}

int CM_WatchInterval() {
    const int interval = ConfigManager::GetConfigIntValue("smis", "capacity_watch_interval", DEFAULT_INTERVAL);
    if (interval < 1) {
        SMIS_TRACE(LEVEL2, "Error[ capacity_watch_interval ] : %d is no interval, %d seconds are used", interval,
                   DEFAULT_INTERVAL);
        return DEFAULT_INTERVAL;
    }
    return interval;
}

void* CapacityMonitor_thread(void* arg) {
    (void)arg;
    int interval = DEFAULT_INTERVAL;
    try {
        interval = CM_WatchInterval();
    } catch (...) {
        SMIS_TRACE(LEVEL1, "Error[ CapacityMonitor_thread ] : the interval cannot be read, %d seconds are used",
                   DEFAULT_INTERVAL);
    }
    smis_mutex_lock(&capacity_mutex);
    noteNow();
    smis_mutex_unlock(&capacity_mutex);
    for (;;) {
        unsigned int left = static_cast<unsigned int>(interval);
        while (left > 0) left = ::sleep(left);  // a signal cuts the sleep short: sleep the rest
        try {
            CM_RunPass(interval);
        } catch (...) {
            // The thread outlives any failure of a pass: the next pass tries again.
            SMIS_TRACE(LEVEL1, "Error[ CapacityMonitor_thread ] : unexpected exception");
        }
    }
    return nullptr;
}

}  // namespace orvsmis
