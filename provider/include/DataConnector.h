#ifndef ORVSMIS_DATACONNECTOR_H
#define ORVSMIS_DATACONNECTOR_H

#include <string>
#include <vector>

#include "RawData.h"
#include "RawDataCenter.h"

namespace orvsmis {

// Typed reads of the record store for models and controllers. Each record
// handed out carries a reference that the caller gives back with Release
// (or ReleaseAll for a list). Records of another class than T are never
// handed out.
template <class T>
class DataConnector {
public:
    // The record of type T named key. For the array type the key is the
    // array id; an empty key then stands for the first stored array.
    static bool QueryData(const std::string& arrayId, const std::string& key, T*& record) {
        record = nullptr;
        if (T::GetType() == RAWDATA_ARRAY && key.empty()) {
            std::vector<T*> all;
            if (!QueryData(arrayId, all)) return false;
            record = all.front();
            for (size_t i = 1; i < all.size(); ++i) all[i]->Release();
            return true;
        }
        RawData* found = nullptr;
        if (!RawDataCenter::Instance()->GetData(key, T::GetType(), arrayId, &found) || found == nullptr)
            return false;
        record = dynamic_cast<T*>(found);
        if (record == nullptr) {
            found->Release();
            return false;
        }
        return true;
    }

    // All records of type T of the array (of every array for the array
    // type), in store order; true when there is at least one.
    static bool QueryData(const std::string& arrayId, std::vector<T*>& records) {
        std::vector<RawData*> found;
        RawDataCenter::Instance()->GetData(T::GetType(), arrayId, found);
        for (size_t i = 0; i < found.size(); ++i) {
            T* typed = found[i] == nullptr ? nullptr : dynamic_cast<T*>(found[i]);
            if (typed != nullptr)
                records.push_back(typed);
            else if (found[i] != nullptr)
                found[i]->Release();
        }
        return !records.empty();
    }

    static void ReleaseAll(std::vector<T*>& records) {
        for (size_t i = 0; i < records.size(); ++i)
            if (records[i] != nullptr) records[i]->Release();
        records.clear();
    }
};

}  // namespace orvsmis

#endif
