#ifndef Pegasus_AutoFileLock_h
#define Pegasus_AutoFileLock_h

#include <Pegasus/Common/Config.h>

PEGASUS_NAMESPACE_BEGIN

// Holds a write lock on a whole existing file for the lifetime of the object.
// The file is never created here: when it is missing or cannot be locked the
// failure is traced and the object holds no lock.
class PEGASUS_COMMON_LINKAGE AutoFileLock {
public:
    explicit AutoFileLock(const char* fileName);
    ~AutoFileLock();
    AutoFileLock(const AutoFileLock&) = delete;
    AutoFileLock& operator=(const AutoFileLock&) = delete;

    // Server extension, for tests and traces.
    Boolean isLocked() const { return _locked; }

private:
    int _fd = -1;
    Boolean _locked = false;
};

PEGASUS_NAMESPACE_END

#endif
