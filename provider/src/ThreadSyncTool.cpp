#include "ThreadSyncTool.h"

#include <cerrno>
#include <csignal>
#include <sys/select.h>

#include "SmisTrace.h"

namespace orvsmis {

int smis_pthread_create(pthread_t* thread, const pthread_attr_t* attr,
    void* (*routine)(void*), void* arg) {
    while (true) {
        const int rc = pthread_create(thread, attr, routine, arg);
        if (rc == 0) return 0;
        if (rc == EAGAIN) {
            // No room for a thread just now: try again until there is.
            SMIS_TRACE(LEVEL2, "pthread_create failed and retry, Error code: %d", rc);
            continue;
        }
        SMIS_TRACE(LEVEL1, "pthread_create failed, Error code: %d", rc);
        return -1;
    }
}

int smis_mutex_lock(pthread_mutex_t* mutex) {
    while (true) {
        const int rc = pthread_mutex_lock(mutex);
        if (rc == 0) return 0;
        if (rc == EAGAIN) {
            SMIS_TRACE(LEVEL2, "pthread_mutex_lock failed and retry, Error code: %d", rc);
            continue;
        }
        // The words of the thread creation failure are kept here on purpose:
        // log watchers match them.
        SMIS_TRACE(LEVEL1, "pthread_create failed, Error code: %d", rc);
        return -1;
    }
}

int smis_mutex_unlock(pthread_mutex_t* mutex) {
    const int rc = pthread_mutex_unlock(mutex);
    if (rc == 0) return 0;
    SMIS_TRACE(LEVEL1, "pthread_mutex_unlock failed, Error code: %d", rc);
    return -1;
}

int smis_cond_signal(pthread_cond_t* cond) {
    const int rc = pthread_cond_signal(cond);
    if (rc == 0) return 0;
    SMIS_TRACE(LEVEL1, "pthread_cond_signal failed, Error code: %d", rc);
    return -1;
}

int smis_cond_wait(pthread_cond_t* cond, pthread_mutex_t* mutex) {
    const int rc = pthread_cond_wait(cond, mutex);
    if (rc == 0) return 0;
    SMIS_TRACE(LEVEL1, "pthread_cond_wait failed, Error code: %d", rc);
    return -1;
}

int smis_pthread_attr_init(pthread_attr_t* attr) {
    const int rc = pthread_attr_init(attr);
    if (rc == 0) return 0;
    SMIS_TRACE(LEVEL1, "pthread_attr_init failed, Error code: %d", rc);
    return -1;
}

int smis_pthread_attr_destroy(pthread_attr_t* attr) {
    const int rc = pthread_attr_destroy(attr);
    if (rc == 0) return 0;
    SMIS_TRACE(LEVEL1, "pthread_attr_destroy failed, Error code: %d", rc);
    return -1;
}

int smis_pthread_attr_setdetachstate(pthread_attr_t* attr, int state) {
    const int rc = pthread_attr_setdetachstate(attr, state);
    if (rc == 0) return 0;
    SMIS_TRACE(LEVEL1, "pthread_attr_setdetachstate failed, Error code: %d", rc);
    return -1;
}

int smis_pthread_kill(pthread_t thread, int signal) {
    const int rc = pthread_kill(thread, signal);
    if (rc != 0) {
        SMIS_TRACE(LEVEL1, "pthread_kill failed, Error code: %d", rc);
        return -1;
    }
    // Wait for the thread to be gone: probe every 200 ms, 2 s at most.
    int probe = 0;
    for (int waited = 0; waited < 2000; waited += 200) {
        probe = pthread_kill(thread, 0);
        if (probe == ESRCH) break;
        sleepForMilliSecond(200);
    }
    return probe == 0 ? 0 : -1;
}

void smis_pthread_exit(void* value) { pthread_exit(value); }

void sleepForMilliSecond(int ms) {
    if (ms <= 0) return;
    // Linux refuses a microsecond field of a whole second or more, so the
    // seconds go into their own field. An interrupted select() leaves the
    // time still to wait in the timeval, and the wait goes on with it.
    struct timeval tv;
    tv.tv_sec = ms / 1000;
    tv.tv_usec = static_cast<suseconds_t>(ms % 1000) * 1000;
    while (select(0, nullptr, nullptr, nullptr, &tv) < 0 && errno == EINTR) {
    }
}

}  // namespace orvsmis
