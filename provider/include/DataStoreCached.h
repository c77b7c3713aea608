#ifndef ORVSMIS_DATASTORECACHED_H
#define ORVSMIS_DATASTORECACHED_H

#include <pthread.h>

#include <list>
#include <map>
#include <string>
#include <vector>

#include "DataStore.h"

namespace orvsmis {

// The records of one array: the array's own record and one list per record
// type (type t at index t - 1, null until its first record).
struct ArrayData {
    static const int SLOT_COUNT = 10;

    Data* arrayData;
    std::vector<std::list<Data*>*>* subData;
    pthread_rwlock_t lock;

    ArrayData();
    ~ArrayData();

private:
    ArrayData(const ArrayData&) = delete;
    ArrayData& operator=(const ArrayData&) = delete;
};

// The part of an in-memory store that is common: the arrays and their
// removal. The store's lock is taken before an array's lock, always.
class DataStoreCached : public DataStore {
public:
    DataStoreCached();
    ~DataStoreCached() override;

    void Destroy() override;
    // Removes one array with all its records; a missing array is no error.
    void Destroy(const std::string& arrayId);
    // Removes one record; a missing record is no error, a missing array is.
    void Destroy(const std::string& arrayId, const std::string& name, int type);

protected:
    void destroy(ArrayData* arrayData, int type);
    void destroyArray(ArrayData* arrayData);

    std::map<std::string, ArrayData*> m_arrays;
    pthread_rwlock_t m_lock;

private:
    DataStoreCached(const DataStoreCached&) = delete;
    DataStoreCached& operator=(const DataStoreCached&) = delete;
};

}  // namespace orvsmis

#endif
