#ifndef ORVSMIS_THREADSYNCTOOL_H
#define ORVSMIS_THREADSYNCTOOL_H

#include <pthread.h>

namespace orvsmis {

// Thin wrappers over the thread library used throughout the module. Each
// gives 0 on success and -1 on failure, and traces the failure with its code.

// Retries at once, without limit, while the system answers EAGAIN.
int smis_pthread_create(pthread_t* thread, const pthread_attr_t* attr,
    void* (*routine)(void*), void* arg);
// Retries at once, without limit, while the library answers EAGAIN.
int smis_mutex_lock(pthread_mutex_t* mutex);
int smis_mutex_unlock(pthread_mutex_t* mutex);
int smis_cond_signal(pthread_cond_t* cond);
int smis_cond_wait(pthread_cond_t* cond, pthread_mutex_t* mutex);
int smis_pthread_attr_init(pthread_attr_t* attr);
int smis_pthread_attr_destroy(pthread_attr_t* attr);
int smis_pthread_attr_setdetachstate(pthread_attr_t* attr, int state);

// Sends the signal, then probes every 200 ms (2000 ms at most) until the
// thread is gone. 0 when the last probe still found the thread, -1 when it
// had vanished or the signal could not be sent.
int smis_pthread_kill(pthread_t thread, int signal);

// Ends the calling thread.
void smis_pthread_exit(void* value);

// Waits by select() without descriptors. The whole wait goes into the
// microsecond field; callers use values up to 1000.
void sleepForMilliSecond(int ms);

}  // namespace orvsmis

#endif
