#ifndef ORVSMIS_CAPACITYMONITOR_H
#define ORVSMIS_CAPACITYMONITOR_H

#include <pthread.h>

namespace orvsmis {

// When a view load last started, and whether one runs now. Guarded by
// capacity_mutex.
extern pthread_mutex_t capacity_mutex;
extern bool cm_view_exe_flag;
extern long cm_view_exe_time_sec;
extern long cm_view_exe_time_msec;

// The clock the monitor reads: seconds and milliseconds. Tests give their
// own; null puts the real clock back.
typedef void (*CapacityClock)(long* sec, long* msec);
void CM_SetClock(CapacityClock clock);

// The view thread's mark round each load: running true notes the time.
void CM_UpdateExecTime(bool running);

// True when no load runs and waitTime seconds or more have passed since the
// last one started.
bool CM_CanSendSignal(int waitTime);

// True when the first stored array has a pool of type "virtual".
bool CM_ArrayHasVirtualPool();

// Asks the view thread for a logical load unless a wake-up is pending
// already. True when it asked.
bool CM_SignalViewThread();

// One pass after the sleep: the checks and, when they all pass, the signal.
// True when the view thread was asked for a load.
bool CM_RunPass(int interval);

// The interval in seconds: smis/capacity_watch_interval, 300 by default;
// values below 1 give the default.
int CM_WatchInterval();

// The thread: notes the time, then sleeps the interval and runs a pass,
// without end.
void* CapacityMonitor_thread(void* arg);

}  // namespace orvsmis

#endif
