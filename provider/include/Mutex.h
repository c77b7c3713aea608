#ifndef ORVSMIS_MUTEX_H
#define ORVSMIS_MUTEX_H

#include <pthread.h>

namespace orvsmis {

// A plain (non-recursive) pthread mutex. Lock() throws ConstructionException
// "Construction failed" when the mutex cannot be taken.
class Mutex {
public:
    Mutex();
    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void Lock();
    void Unlock();
    pthread_mutex_t* Native() { return &m_mutex; }

private:
    pthread_mutex_t m_mutex;
};

}  // namespace orvsmis

#endif
