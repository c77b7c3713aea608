#ifndef ORVSMIS_EXECVEXCFG_H
#define ORVSMIS_EXECVEXCFG_H

#include <pthread.h>

namespace orvsmis {

// Set when the configuration thread is to look at the job queue. Guarded by
// cfg_mutex.
extern int diskcfg;
extern pthread_mutex_t cfg_mutex;
extern pthread_cond_t cfg_cond;

// The configuration thread's routine. Never returns.
void* Vexcfg_thread(void* arg);

// Waits until the configuration thread is woken and takes the wake-up.
void WaitForCfgTurn();

void WakeupCfgThread();

// Runs jobs with the view thread held back, then marks a view as due so that
// the jobs' effect is read: the view thread takes it on its next pass.
void RunCfgJobTurn(void (*startJobs)());

// The configuration thread's work after one wake-up: starts the queued jobs
// unless a started job still waits for the view that proves its effect.
// True when jobs were started.
bool RunCfgThreadTurn();

}  // namespace orvsmis

#endif
