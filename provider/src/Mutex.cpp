#include "Mutex.h"

#include "Exception.h"
#include "SmisTrace.h"

namespace orvsmis {

Mutex::Mutex() {
    // Error-checking, so that a thread taking the mutex twice gets an error
    // instead of hanging for ever.
    pthread_mutexattr_t attr;
    pthread_mutexattr_init(&attr);
    pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutex_init(&m_mutex, &attr);
    pthread_mutexattr_destroy(&attr);
}

Mutex::~Mutex() { pthread_mutex_destroy(&m_mutex); }

void Mutex::Lock() {
    const int rc = pthread_mutex_lock(&m_mutex);
    if (rc != 0) {
        SMIS_TRACE(LEVEL1, "pthread_mutex_lock failed, Error code: %d", rc);
        throw ConstructionException("Construction failed");
    }
}

void Mutex::Unlock() {
    const int rc = pthread_mutex_unlock(&m_mutex);
    if (rc != 0) SMIS_TRACE(LEVEL1, "pthread_mutex_unlock failed, Error code: %d", rc);
}

}  // namespace orvsmis
