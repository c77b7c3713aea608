#ifndef Pegasus_Array_h
#define Pegasus_Array_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Exception.h>

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

PEGASUS_NAMESPACE_BEGIN

// A sequence of T with value semantics. Element access is bounds-checked
// and throws IndexOutOfBoundsException.
template <class T>
class Array {
public:
    typedef T ElementType;

    Array() {}
    Array(const Array<T>& x) { _assign(x._data, x._size); }
    Array(Array<T>&& x) noexcept { _swapRaw(x); }
    explicit Array(Uint32 size) { grow(size, T()); }
    Array(Uint32 size, const T& x) { grow(size, x); }
    Array(const T* items, Uint32 size) { _assign(items, size); }
    ~Array() { _release(); }

    Array<T>& operator=(const Array<T>& x) {
        if (this != &x) {
            Array<T> copy(x);
            swap(copy);
        }
        return *this;
    }
    Array<T>& operator=(Array<T>&& x) noexcept {
        if (this != &x) {
            _release();
            _swapRaw(x);
        }
        return *this;
    }

    void clear() {
        _destroy(0, _size);
        _size = 0;
    }

    void reserveCapacity(Uint32 capacity) {
        if (capacity <= _capacity) return;
        T* data = static_cast<T*>(::operator new(sizeof(T) * size_t(capacity)));
        Uint32 moved = 0;
        try {
            for (; moved < _size; ++moved) new (data + moved) T(std::move_if_noexcept(_data[moved]));
        } catch (...) {
            for (Uint32 i = 0; i < moved; ++i) data[i].~T();
            ::operator delete(data);
            throw;
        }
        _destroy(0, _size);
        ::operator delete(_data);
        _data = data;
        _capacity = capacity;
    }

    void grow(Uint32 size, const T& x) {
        _reserveFor(_size + size);
        for (Uint32 i = 0; i < size; ++i) {
            new (_data + _size) T(x);
            ++_size;
        }
    }

    void swap(Array<T>& x) { _swapRaw(x); }

    Uint32 size() const { return _size; }
    Uint32 getCapacity() const { return _capacity; }
    const T* getData() const { return _data; }

    T& operator[](Uint32 index) {
        if (index >= _size) throw IndexOutOfBoundsException();
        return _data[index];
    }
    const T& operator[](Uint32 index) const {
        if (index >= _size) throw IndexOutOfBoundsException();
        return _data[index];
    }

    void append(const T& x) {
        if (_size == _capacity) {
            T copy(x);  // x may live in this array
            _reserveFor(_size + 1);
            new (_data + _size) T(std::move(copy));
        } else {
            new (_data + _size) T(x);
        }
        ++_size;
    }
    void append(const T* x, Uint32 size) { insert(_size, x, size); }
    void appendArray(const Array<T>& x) {
        Array<T> copy(x);
        append(copy.getData(), copy.size());
    }
    void prepend(const T& x) { insert(0, x); }
    void prepend(const T* x, Uint32 size) { insert(0, x, size); }

    void insert(Uint32 index, const T& x) {
        T copy(x);
        insert(index, &copy, 1);
    }
    void insert(Uint32 index, const T* x, Uint32 size) {
        if (index > _size) throw IndexOutOfBoundsException();
        if (size == 0) return;
        // Build the result in fresh storage: simple and safe against x
        // pointing into this array.
        Array<T> result;
        result._reserveFor(_size + size);
        for (Uint32 i = 0; i < index; ++i) result._pushBack(_data[i]);
        for (Uint32 i = 0; i < size; ++i) result._pushBack(x[i]);
        for (Uint32 i = index; i < _size; ++i) result._pushBack(_data[i]);
        swap(result);
    }

    void remove(Uint32 index) { remove(index, 1); }
    void remove(Uint32 index, Uint32 size) {
        if (index > _size || size > _size - index) throw IndexOutOfBoundsException();
        if (size == 0) return;
        for (Uint32 i = index; i + size < _size; ++i) _data[i] = std::move(_data[i + size]);
        _destroy(_size - size, _size);
        _size -= size;
    }

    // Iteration for the server's own code (range-for).
    const T* begin() const { return _data; }
    const T* end() const { return _data + _size; }

private:
    void _assign(const T* items, Uint32 size) {
        _reserveFor(size);
        for (Uint32 i = 0; i < size; ++i) _pushBack(items[i]);
    }
    void _pushBack(const T& x) {
        new (_data + _size) T(x);
        ++_size;
    }
    void _reserveFor(Uint32 needed) {
        if (needed <= _capacity) return;
        Uint32 capacity = _capacity < 8 ? 8 : _capacity;
        while (capacity < needed) capacity = capacity > 0x7FFFFFFF ? needed : capacity * 2;
        reserveCapacity(capacity);
    }
    void _destroy(Uint32 from, Uint32 to) {
        for (Uint32 i = from; i < to; ++i) _data[i].~T();
    }
    void _release() {
        _destroy(0, _size);
        ::operator delete(_data);
        _data = nullptr;
        _size = _capacity = 0;
    }
    void _swapRaw(Array<T>& x) noexcept {
        std::swap(_data, x._data);
        std::swap(_size, x._size);
        std::swap(_capacity, x._capacity);
    }

    T* _data = nullptr;
    Uint32 _size = 0;
    Uint32 _capacity = 0;
};

PEGASUS_NAMESPACE_END

#endif
