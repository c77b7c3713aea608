#ifndef ORVSMIS_DATASTORE_H
#define ORVSMIS_DATASTORE_H

#include <string>
#include <vector>

#include "RawData.h"

namespace orvsmis {

// Holder of one stored record.
class Data {
public:
    virtual ~Data() {}
    // The record, without a reference taken.
    virtual RawData* Get() = 0;
    virtual bool IsEqual(const std::string& name, int type) const = 0;
    virtual void Modify(const RawData* record) = 0;
    virtual bool HasChanged(RawData* record) = 0;
};

// Holds a reference on its record for as long as it lives.
class MemBaseData : public Data {
public:
    MemBaseData(RawData* record, const std::string& arrayId);
    ~MemBaseData() override;

    RawData* Get() override { return m_data; }
    bool IsEqual(const std::string& name, int type) const override;
    // Brings the held record up to date in place. A record of another type
    // is a programming error and ends the process.
    void Modify(const RawData* record) override;
    bool HasChanged(RawData* record) override;

private:
    MemBaseData(const MemBaseData&) = delete;
    MemBaseData& operator=(const MemBaseData&) = delete;

    RawData* m_data;
    std::string m_arrayId;
};

// Where the records of the last load are kept, per array.
class DataStore {
public:
    virtual ~DataStore() {}
    virtual void AddData(const RawData* record, const std::string& arrayId) = 0;
    virtual void DeleteData(const RawData* record, const std::string& arrayId) = 0;
    // A found record carries a reference for the caller.
    virtual bool FindData(const std::string& name, int type, const std::string& arrayId, RawData** out) = 0;
    // Every record in list carries a reference for the caller.
    virtual bool FindData(int type, const std::string& arrayId, std::vector<RawData*>* list) = 0;
    virtual void ModifyData(const RawData* record, const std::string& arrayId) = 0;
    virtual void Destroy() = 0;
};

// A store that keeps nothing: every load finds everything new.
class DataStoreInFile : public DataStore {
public:
    void AddData(const RawData*, const std::string&) override {}
    void DeleteData(const RawData*, const std::string&) override {}
    bool FindData(const std::string&, int, const std::string&, RawData**) override { return false; }
    bool FindData(int, const std::string&, std::vector<RawData*>*) override { return false; }
    void ModifyData(const RawData*, const std::string&) override {}
    void Destroy() override {}
};

}  // namespace orvsmis

#endif
