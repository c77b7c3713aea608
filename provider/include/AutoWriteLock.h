#ifndef ORVSMIS_AUTOWRITELOCK_H
#define ORVSMIS_AUTOWRITELOCK_H

#include <pthread.h>

namespace orvsmis {

// Holds a read-write lock for writing for its scope; throws
// ConstructionException "Construction failed" when it cannot be had.
class AutoWriteLock {
public:
    explicit AutoWriteLock(pthread_rwlock_t& lock);
    ~AutoWriteLock();
    AutoWriteLock(const AutoWriteLock&) = delete;
    AutoWriteLock& operator=(const AutoWriteLock&) = delete;

private:
    pthread_rwlock_t& m_lock;
};

}  // namespace orvsmis

#endif
