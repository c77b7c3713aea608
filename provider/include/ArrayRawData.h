#ifndef ORVSMIS_ARRAYRAWDATA_H
#define ORVSMIS_ARRAYRAWDATA_H

#include <string>
#include <vector>

#include "RawData.h"

namespace orvsmis {

// One management address of the array's admin port.
struct IP_ADDR_INFO {
    std::string IPV4;
    std::string IPV6;
};

// The array as a whole. Its name and array id are both the World Wide Name.
// Values are the unit texts of the view result as they stand.
class ArrayRawData : public RawData {
public:
    std::string diskArrayName;
    std::string resourceState;
    std::string monitoring;
    std::string vendorID;
    std::string productID;
    std::string productFWRevision;
    std::string serialNumber;
    std::string SAA;
    std::string worldWideName;
    std::string numberofDE;
    std::string userSystemCode;
    std::string storageControlSoftwareRevision;
    std::string configurationChange;
    std::string unitLocation;
    std::string floatingIPV4;
    std::string floatingIPV6;
    std::vector<IP_ADDR_INFO> adminPorts;
    std::string maxLDNumOfTarget;
    std::string maxNumOfTarge;
    std::string maxLDNumOfOwnerID;
    std::string version;
    std::string revision;
    std::string pPAdditionalData;
    std::string unitName;
    std::string unitContact;
    std::string accessControlMode;
    std::string protocol;
    int hostDirectorCount;
    // RedundancyStatus of the controllers: 0 unknown, 2 fully redundant,
    // 3 degraded, 4 redundancy lost.
    int redundancyStatus;

    ArrayRawData() : RawData(GetType()), hostDirectorCount(0), redundancyStatus(0) {}

    static int GetType() { return RAWDATA_ARRAY; }

    // Monitoring, the floating addresses and the protocol are not compared;
    // admin ports count only by their number.
    bool HasChanged(const RawData* newData) const override;
    void Copy(const RawData* other) override;
};

}  // namespace orvsmis

#endif
