#ifndef ORVSMIS_RECORDREF_H
#define ORVSMIS_RECORDREF_H

namespace orvsmis {

// Holds one reference on a record for the life of a scope.
template <class T>
class RecordRef {
public:
    RecordRef() : m_record(nullptr) {}
    ~RecordRef() {
        if (m_record != nullptr) m_record->Release();
    }
    T*& Out() { return m_record; }
    T* Get() const { return m_record; }
    T* operator->() const { return m_record; }

private:
    RecordRef(const RecordRef&) = delete;
    RecordRef& operator=(const RecordRef&) = delete;
    T* m_record;
};

}  // namespace orvsmis

#endif
