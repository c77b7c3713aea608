#ifndef ORVSMIS_LDRAWDATA_H
#define ORVSMIS_LDRAWDATA_H

#include <string>

#include "RawData.h"

namespace orvsmis {

// One logical disk (volume) of the array. Its name is the LD number
// (hexadecimal text); capacities are bytes.
class LdRawData : public RawData {
public:
    std::string LDN;
    std::string LDName;
    unsigned long long LDCapacity;
    std::string poolNo;
    std::string raidType;
    std::string PDType;
    std::string LDState;
    std::string group;
    std::string purpose;
    std::string RPLAttribute;
    std::string snapshotAttribute;
    std::string threshold;
    unsigned long long actualUsedCapacity;

    LdRawData();

    static int GetType() { return RAWDATA_LD; }

    // Same name, pool, RAID type and disk type (the type code is not
    // compared): a logical disk that moves to another pool is a new one.
    bool IsEqual(const RawData* other) const override;
    bool HasChanged(const RawData* newData) const override;
    void Copy(const RawData* other) override;

    // The kind of logical disk, 0 to 22, from purpose, replication and
    // snapshot attributes (22: anything not recognised).
    int GetLdType() const;
};

}  // namespace orvsmis

#endif
