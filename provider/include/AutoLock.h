#ifndef ORVSMIS_AUTOLOCK_H
#define ORVSMIS_AUTOLOCK_H

#include "Mutex.h"

namespace orvsmis {

// Holds a Mutex for its scope.
class AutoLock {
public:
    explicit AutoLock(Mutex& mutex);
    ~AutoLock();
    AutoLock(const AutoLock&) = delete;
    AutoLock& operator=(const AutoLock&) = delete;

private:
    Mutex& m_mutex;
};

}  // namespace orvsmis

#endif
