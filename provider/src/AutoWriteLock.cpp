#include "AutoWriteLock.h"

#include "Exception.h"
#include "SmisTrace.h"

namespace orvsmis {

AutoWriteLock::AutoWriteLock(pthread_rwlock_t& lock) : m_lock(lock) {
    const int rc = pthread_rwlock_wrlock(&m_lock);
    if (rc != 0) {
        SMIS_TRACE(LEVEL1, "pthread_rwlock_wrlock failed, Error code: %d", rc);
        throw ConstructionException("Construction failed");
    }
}

AutoWriteLock::~AutoWriteLock() { pthread_rwlock_unlock(&m_lock); }

}  // namespace orvsmis
