#ifndef ORVSMIS_PDRAWDATA_H
#define ORVSMIS_PDRAWDATA_H

#include <string>

#include "RawData.h"

namespace orvsmis {

// One physical disk. Its name is PDN, group "-" number in hexadecimal text;
// the capacity is bytes.
class PdRawData : public RawData {
public:
    std::string PDN;
    std::string classification;
    std::string rankGroupNumber;
    std::string state;
    unsigned long long PDCapacity;
    std::string rotationalSpeed;
    std::string nodeNo;
    std::string type;
    std::string vendorID;
    std::string productID;
    std::string productRevision;
    std::string serialNumber;
    std::string configurationChange;
    std::string transferRate;

    PdRawData();

    static int GetType() { return RAWDATA_PD; }

    // Any field that differs counts as a change.
    bool HasChanged(const RawData* newData) const override;
    void Copy(const RawData* other) override;
};

}  // namespace orvsmis

#endif
