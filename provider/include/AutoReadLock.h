#ifndef ORVSMIS_AUTOREADLOCK_H
#define ORVSMIS_AUTOREADLOCK_H

#include <pthread.h>

namespace orvsmis {

// Holds a read-write lock for reading for its scope; throws
// ConstructionException "Construction failed" when it cannot be had.
class AutoReadLock {
public:
    explicit AutoReadLock(pthread_rwlock_t& lock);
    ~AutoReadLock();
    AutoReadLock(const AutoReadLock&) = delete;
    AutoReadLock& operator=(const AutoReadLock&) = delete;

private:
    pthread_rwlock_t& m_lock;
};

}  // namespace orvsmis

#endif
