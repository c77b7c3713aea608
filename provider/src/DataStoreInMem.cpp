#include "DataStoreInMem.h"

#include "AutoReadLock.h"
#include "AutoWriteLock.h"
#include "Exception.h"

namespace orvsmis {

namespace {

// The list of a type within an array, null when it has never had a record.
std::list<Data*>* listOf(ArrayData* arrayData, int type) {
    if (arrayData->subData == nullptr || type < 1 || type > ArrayData::SLOT_COUNT) return nullptr;
    return (*arrayData->subData)[type - 1];
}

}  // namespace

void DataStoreInMem::AddData(const RawData* record, const std::string& arrayId) {
    if (record == nullptr) throw InvalidParamException("Invalid value");
    RawData* held = const_cast<RawData*>(record);
    {
        AutoReadLock storeLock(m_lock);
        auto it = m_arrays.find(arrayId);
        if (it == m_arrays.end() && record->type != RAWDATA_ARRAY)
            throw InvalidParamException("Get sub data before array data.");
        if (it != m_arrays.end()) {
            if (record->type == RAWDATA_ARRAY)
                throw ExistedException("Array data already exist [id:" + record->name + "]");
            if (record->type < 1 || record->type > ArrayData::SLOT_COUNT) throw InvalidParamException("Invalid value");
            ArrayData* arrayData = it->second;
            AutoWriteLock arrayLock(arrayData->lock);
            std::list<Data*>*& list = (*arrayData->subData)[record->type - 1];
            if (list == nullptr) list = new std::list<Data*>();
            list->push_back(new MemBaseData(held, arrayId));
            return;
        }
    }
    // A new array: the reading lock is given up for the writing lock, so the
    // map is looked at again in case another writer came in between.
    ArrayData* arrayData = new ArrayData();
    arrayData->arrayData = new MemBaseData(held, arrayId);
    AutoWriteLock storeLock(m_lock);
    if (m_arrays.find(record->name) != m_arrays.end()) {
        delete arrayData;
        throw ExistedException("Array data already exist [id:" + record->name + "]");
    }
    m_arrays[record->name] = arrayData;
}

void DataStoreInMem::DeleteData(const RawData* record, const std::string& arrayId) {
    if (record == nullptr || record->name.empty()) throw InvalidParamException("Invalid value");
    if (record->type == RAWDATA_ARRAY) {
        // The array's record takes everything that hangs on it along.
        DataStoreCached::Destroy(record->name);
    } else {
        DataStoreCached::Destroy(arrayId, record->name, record->type);
    }
}

bool DataStoreInMem::FindData(const std::string& name, int type, const std::string& arrayId, RawData** out) {
    if (out == nullptr) return false;
    const std::string& key = type == RAWDATA_ARRAY ? name : arrayId;
    AutoReadLock storeLock(m_lock);
    auto it = m_arrays.find(key);
    if (it == m_arrays.end()) return false;
    ArrayData* arrayData = it->second;
    // The array's lock only waits out a writer; the store's lock keeps the
    // array while it is searched.
    { AutoReadLock arrayLock(arrayData->lock); }

    RawData* found = nullptr;
    if (type == RAWDATA_ARRAY) {
        if (arrayData->arrayData == nullptr) return false;
        found = arrayData->arrayData->Get();
        if (found == nullptr) throw NotExistedException("The data not exist");
    } else {
        std::list<Data*>* list = listOf(arrayData, type);
        if (list == nullptr) return false;
        Data* hit = nullptr;
        for (Data* data : *list) {
            if (data->IsEqual(name, type)) {
                hit = data;
                break;
            }
        }
        if (hit == nullptr) return false;
        found = hit->Get();
        if (found == nullptr) throw NotExistedException("The data not exist");
    }
    found->AddRef();
    *out = found;
    return true;
}

bool DataStoreInMem::FindData(int type, const std::string& arrayId, std::vector<RawData*>* list) {
    if (list == nullptr) return false;
    AutoReadLock storeLock(m_lock);
    if (type == RAWDATA_ARRAY) {
        for (auto& entry : m_arrays) {
            AutoReadLock arrayLock(entry.second->lock);
            RawData* record = entry.second->arrayData == nullptr ? nullptr : entry.second->arrayData->Get();
            if (record == nullptr) throw InvalidParamException("Invalid value");
            record->AddRef();
            list->push_back(record);
        }
    } else {
        auto it = m_arrays.find(arrayId);
        if (it == m_arrays.end()) return false;
        ArrayData* arrayData = it->second;
        AutoReadLock arrayLock(arrayData->lock);
        std::list<Data*>* records = listOf(arrayData, type);
        if (records != nullptr) {
            for (Data* data : *records) {
                RawData* record = data->Get();
                if (record == nullptr) throw InvalidParamException("Invalid value");
                record->AddRef();
                list->push_back(record);
            }
        }
    }
    return !list->empty();
}

void DataStoreInMem::ModifyData(const RawData* record, const std::string& arrayId) {
    if (record == nullptr) throw InvalidParamException("Invalid value");
    AutoReadLock storeLock(m_lock);
    auto it = m_arrays.find(arrayId);
    if (it == m_arrays.end()) throw InvalidParamException("the array data is not existed.");
    ArrayData* arrayData = it->second;
    AutoWriteLock arrayLock(arrayData->lock);
    if (record->type == RAWDATA_ARRAY) {
        if (arrayData->arrayData != nullptr) arrayData->arrayData->Modify(record);
        return;
    }
    if (arrayData->subData == nullptr) throw NotExistedException("subdata = NULL");
    std::list<Data*>* list = listOf(arrayData, record->type);
    if (list == nullptr) throw NotExistedException("No such data list");
    for (Data* data : *list) {
        if (data->IsEqual(record->name, record->type)) {
            data->Modify(record);
            return;
        }
    }
}

}  // namespace orvsmis
