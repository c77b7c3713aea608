#ifndef Pegasus_ArrayInternal_h
#define Pegasus_ArrayInternal_h

#include <Pegasus/Common/Array.h>

PEGASUS_NAMESPACE_BEGIN

template <class T>
Boolean operator==(const Array<T>& x, const Array<T>& y) {
    if (x.size() != y.size()) return false;
    for (Uint32 i = 0; i < x.size(); ++i) {
        if (!(x[i] == y[i])) return false;
    }
    return true;
}

template <class T>
Boolean Contains(const Array<T>& a, const T& x) {
    for (Uint32 i = 0; i < a.size(); ++i) {
        if (a[i] == x) return true;
    }
    return false;
}

PEGASUS_NAMESPACE_END

#endif
