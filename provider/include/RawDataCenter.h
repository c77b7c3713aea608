#ifndef ORVSMIS_RAWDATACENTER_H
#define ORVSMIS_RAWDATACENTER_H

#include <string>
#include <vector>

#include "DataCenter.h"
#include "Singleton.h"

namespace orvsmis {

class DataStore;

// The front of the record store: the records of the last load, which the
// next load is compared against and which models and controllers read.
// One per process: Singleton<RawDataCenter>::Instance().
class RawDataCenter : public DataCenter {
public:
    // general/dataStoreType 0 (the default "Memory") keeps the records in
    // memory; anything else keeps none.
    RawDataCenter();
    ~RawDataCenter() override;

    static RawDataCenter* Instance() { return Singleton<RawDataCenter>::Instance(); }

    void AddData(const std::vector<RawData*>* records, const std::string& arrayId) override;
    void DeleteData(const std::vector<RawData*>* records, const std::string& arrayId) override;
    void ModifyData(const std::vector<RawData*>* records, const std::string& arrayId) override;
    void Destroy() override;

    void AddData(const RawData* record, const std::string& arrayId);
    void DeleteData(const RawData* record, const std::string& arrayId);
    void ModifyData(const RawData* record, const std::string& arrayId);
    // A found record carries a reference that the caller releases.
    bool GetData(const std::string& name, int type, const std::string& arrayId, RawData** out);
    // Each record in list carries a reference that the caller releases.
    bool GetData(int type, const std::string& arrayId, std::vector<RawData*>& list);
    bool validateArrayData(const std::string& arrayId);

private:
    RawDataCenter(const RawDataCenter&) = delete;
    RawDataCenter& operator=(const RawDataCenter&) = delete;

    DataStore* m_store;
};

}  // namespace orvsmis

#endif
