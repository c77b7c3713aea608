#ifndef ORVSMIS_DATASTOREINMEM_H
#define ORVSMIS_DATASTOREINMEM_H

#include "DataStoreCached.h"

namespace orvsmis {

// The records of the last load in memory. An array's record must be added
// before any other record of that array.
class DataStoreInMem : public DataStoreCached {
public:
    void AddData(const RawData* record, const std::string& arrayId) override;
    void DeleteData(const RawData* record, const std::string& arrayId) override;
    bool FindData(const std::string& name, int type, const std::string& arrayId, RawData** out) override;
    // Type 0 gives the records of all arrays, whatever arrayId says.
    bool FindData(int type, const std::string& arrayId, std::vector<RawData*>* list) override;
    void ModifyData(const RawData* record, const std::string& arrayId) override;
};

}  // namespace orvsmis

#endif
