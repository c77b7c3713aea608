#include "PdRawData.h"

namespace orvsmis {

PdRawData::PdRawData() : RawData(GetType()), PDCapacity(0) {}

bool PdRawData::HasChanged(const RawData* newData) const {
    const PdRawData* o = dynamic_cast<const PdRawData*>(newData);
    if (o == nullptr) return true;
    return PDN != o->PDN || classification != o->classification || rankGroupNumber != o->rankGroupNumber ||
           state != o->state || PDCapacity != o->PDCapacity || rotationalSpeed != o->rotationalSpeed ||
           nodeNo != o->nodeNo || type != o->type || vendorID != o->vendorID || productID != o->productID ||
           productRevision != o->productRevision || serialNumber != o->serialNumber ||
           configurationChange != o->configurationChange || transferRate != o->transferRate;
}

void PdRawData::Copy(const RawData* other) {
    RawData::Copy(other);
    const PdRawData* o = dynamic_cast<const PdRawData*>(other);
    if (o == nullptr || o == this) return;
    PDN = o->PDN;
    classification = o->classification;
    rankGroupNumber = o->rankGroupNumber;
    state = o->state;
    PDCapacity = o->PDCapacity;
    rotationalSpeed = o->rotationalSpeed;
    nodeNo = o->nodeNo;
    type = o->type;
    vendorID = o->vendorID;
    productID = o->productID;
    productRevision = o->productRevision;
    serialNumber = o->serialNumber;
    configurationChange = o->configurationChange;
    transferRate = o->transferRate;
}

}  // namespace orvsmis
