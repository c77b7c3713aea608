#include "AutoLock.h"

namespace orvsmis {

AutoLock::AutoLock(Mutex& mutex) : m_mutex(mutex) { m_mutex.Lock(); }

AutoLock::~AutoLock() { m_mutex.Unlock(); }

}  // namespace orvsmis
