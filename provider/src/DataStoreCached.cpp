#include "DataStoreCached.h"

#include "AutoReadLock.h"
#include "AutoWriteLock.h"
#include "Exception.h"

namespace orvsmis {

ArrayData::ArrayData() : arrayData(nullptr), subData(new std::vector<std::list<Data*>*>(SLOT_COUNT, nullptr)) {
    pthread_rwlock_init(&lock, nullptr);
}

ArrayData::~ArrayData() {
    if (subData != nullptr) {
        for (std::list<Data*>* list : *subData) {
            if (list == nullptr) continue;
            for (Data* data : *list) delete data;
            delete list;
        }
        delete subData;
    }
    delete arrayData;
    pthread_rwlock_destroy(&lock);
}

DataStoreCached::DataStoreCached() { pthread_rwlock_init(&m_lock, nullptr); }

DataStoreCached::~DataStoreCached() {
    for (auto& entry : m_arrays) delete entry.second;
    m_arrays.clear();
    pthread_rwlock_destroy(&m_lock);
}

void DataStoreCached::destroy(ArrayData* arrayData, int type) {
    if (arrayData == nullptr || arrayData->subData == nullptr) return;
    if (type < 1 || type > ArrayData::SLOT_COUNT) return;
    std::list<Data*>*& list = (*arrayData->subData)[type - 1];
    if (list == nullptr) return;
    for (Data* data : *list) delete data;
    delete list;
    list = nullptr;
}

void DataStoreCached::destroyArray(ArrayData* arrayData) {
    {
        AutoWriteLock arrayLock(arrayData->lock);
        for (int t = 1; t <= ArrayData::SLOT_COUNT; ++t) destroy(arrayData, t);
    }
    delete arrayData;
}

void DataStoreCached::Destroy() {
    AutoWriteLock storeLock(m_lock);
    for (auto& entry : m_arrays) destroyArray(entry.second);
    m_arrays.clear();
}

void DataStoreCached::Destroy(const std::string& arrayId) {
    AutoWriteLock storeLock(m_lock);
    auto it = m_arrays.find(arrayId);
    if (it == m_arrays.end()) return;
    destroyArray(it->second);
    m_arrays.erase(it);
}

void DataStoreCached::Destroy(const std::string& arrayId, const std::string& name, int type) {
    AutoReadLock storeLock(m_lock);
    auto it = m_arrays.find(arrayId);
    if (it == m_arrays.end()) throw NotExistedException("The data not exist");
    ArrayData* arrayData = it->second;
    AutoWriteLock arrayLock(arrayData->lock);
    if (arrayData->subData == nullptr) throw NotExistedException("The data not exist");
    if (type < 1 || type > ArrayData::SLOT_COUNT) return;
    std::list<Data*>* list = (*arrayData->subData)[type - 1];
    if (list == nullptr) return;
    for (auto item = list->begin(); item != list->end(); ++item) {
        if ((*item)->IsEqual(name, type)) {
            delete *item;
            list->erase(item);
            return;
        }
    }
}

}  // namespace orvsmis
