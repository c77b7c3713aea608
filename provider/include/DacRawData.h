#ifndef ORVSMIS_DACRAWDATA_H
#define ORVSMIS_DACRAWDATA_H

#include <string>

#include "RawData.h"

namespace orvsmis {

// One host director (controller) of the array. Its name is its number, in
// hexadecimal digits as reported.
class DacRawData : public RawData {
public:
    std::string number;
    std::string state;

    DacRawData() : RawData(GetType()) {}

    static int GetType() { return RAWDATA_DAC; }

    bool HasChanged(const RawData* newData) const override;
    bool IsEqual(const RawData* other) const override;
    void Copy(const RawData* other) override;
};

}  // namespace orvsmis

#endif
