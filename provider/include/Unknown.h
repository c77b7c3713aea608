#ifndef ORVSMIS_UNKNOWN_H
#define ORVSMIS_UNKNOWN_H

#include <atomic>
#include <cstdint>

namespace orvsmis {

// Reference-counted base. A new object has no reference; every holder (a
// parser result, a classified set, a store) takes one with AddRef and gives it
// back with Release. The last Release deletes the object. The count is atomic:
// records are shared between the view thread and request threads.
class Unknown {
public:
    Unknown() : m_refCount(0) {}
    // A copy is a new object: it starts without references.
    Unknown(const Unknown&) : m_refCount(0) {}
    Unknown& operator=(const Unknown&) { return *this; }
    virtual ~Unknown() {}

    // Returns the count after the increment.
    virtual uint32_t AddRef() { return m_refCount.fetch_add(1, std::memory_order_relaxed) + 1; }

    // Returns the count after the decrement; at 0 the object is gone.
    virtual uint32_t Release() {
        uint32_t left = m_refCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) delete this;
        return left;
    }

    uint32_t GetRefCount() const { return m_refCount.load(std::memory_order_acquire); }

protected:
    std::atomic<uint32_t> m_refCount;
};

}  // namespace orvsmis

#endif
