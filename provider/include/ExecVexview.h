#ifndef ORVSMIS_EXECVEXVIEW_H
#define ORVSMIS_EXECVEXVIEW_H

#include <pthread.h>

#include <atomic>

namespace orvsmis {

class DataflowSource;

// What the view thread is asked to read. Guarded by status_mutex.
struct DiskStatus {
    int wakeup;    // non-zero asks for a load
    int logical;   // 1 when the logical state is to be read; 2 once a load starts
    int physical;  // 1 when the physical state is to be read; 2 once a load starts
};

extern DiskStatus ds_;
extern pthread_mutex_t status_mutex;
extern pthread_cond_t status_cond;

// Whether the view thread may start a load. Written by the configuration
// side only, read by the view thread.
extern std::atomic<bool> bEnable;

// The kinds of view told to the log: 0 "", 1 "all", 2 "logic", 3 "physics".
enum { CMD_TYPE_NONE = 0, CMD_TYPE_ALL = 1, CMD_TYPE_LOGIC = 2, CMD_TYPE_PHYSICS = 3 };

// Called after a failed load, before the next try: empties what the failed
// load left behind.
typedef void (*ViewFailoverFunction)();

// Gives the view thread the source it loads from and the clean-up after a
// failed load. Set once before the thread starts.
void SetViewThreadSource(DataflowSource* source, ViewFailoverFunction failover);

// The view thread's routine: waits to be woken, loads, and retries a failed
// load once a second until it succeeds. Never returns.
void* Vexview_thread(void* arg);

// Ends the view thread from within, with a trace.
void Vexview_thread_exit();

// One pass of the view thread: waits for the wake flag, then (when allowed)
// loads until a load succeeds. False when the pass was held back because the
// view thread is disabled.
bool ViewThreadPass();

void WakeupViewThread();

// Sets the wake flag without a signal: the view is due, and is taken on the
// view thread's next pass.
void MarkViewDue();

void EnableVexviewThread(bool enable);

// Chooses the kind of view from the two statuses.
void VexviewOptionParse(int* kind, const DiskStatus* status);

const char* CmdTypeToString(int kind);

// Records the provider layer's status when the outcome of loads changes:
// "ready" after success, "abnormal (data center)" after failure.
void SaveSmisLayerStatus(bool ok);

}  // namespace orvsmis

#endif
