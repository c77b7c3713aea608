#ifndef ORVSMIS_DATACENTER_H
#define ORVSMIS_DATACENTER_H

#include <string>
#include <vector>

#include "RawData.h"

namespace orvsmis {

// Something that takes record changes of one type in lists.
class DataCenter {
public:
    virtual ~DataCenter() {}
    virtual void AddData(const std::vector<RawData*>* records, const std::string& arrayId) = 0;
    virtual void DeleteData(const std::vector<RawData*>* records, const std::string& arrayId) = 0;
    virtual void ModifyData(const std::vector<RawData*>* records, const std::string& arrayId) = 0;
    virtual void Destroy() = 0;
};

}  // namespace orvsmis

#endif
