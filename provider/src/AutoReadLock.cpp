#include "AutoReadLock.h"

#include "Exception.h"
#include "SmisTrace.h"

namespace orvsmis {

AutoReadLock::AutoReadLock(pthread_rwlock_t& lock) : m_lock(lock) {
    const int rc = pthread_rwlock_rdlock(&m_lock);
    if (rc != 0) {
        SMIS_TRACE(LEVEL1, "pthread_rwlock_rdlock failed, Error code: %d", rc);
        throw ConstructionException("Construction failed");
    }
}

AutoReadLock::~AutoReadLock() { pthread_rwlock_unlock(&m_lock); }

}  // namespace orvsmis
