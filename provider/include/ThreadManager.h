#ifndef ORVSMIS_THREADMANAGER_H
#define ORVSMIS_THREADMANAGER_H

#include <pthread.h>

namespace orvsmis {

// The worker threads' ids.
extern pthread_t sm_tid;
extern pthread_t Vexview_tid;
extern pthread_t Vexcfg_tid;
extern pthread_t jobclear_tid;
extern pthread_t thresholdtest_tid;
extern pthread_t capacityMonitor_tid;

// Starts the detached workers in order: the polling link (unless
// PollingSimulator/Enable), the view thread, the configuration thread, the
// job-clearing thread and the memory watch. The first failure stops the
// chain; threads already started keep running. 0 on success, -1 on failure.
int create_worker_thread();

// The workers end with the process; this only traces.
void terminate_worker_thread();

}  // namespace orvsmis

#endif
