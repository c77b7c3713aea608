#include "ArrayRawData.h"

namespace orvsmis {

bool ArrayRawData::HasChanged(const RawData* newData) const {
    const ArrayRawData* o = dynamic_cast<const ArrayRawData*>(newData);
    if (o == nullptr) return true;
    // Monitoring, the floating addresses and the protocol are left out on
    // purpose; an admin port counts only by the number of ports.
    return diskArrayName != o->diskArrayName || resourceState != o->resourceState || vendorID != o->vendorID ||
           productID != o->productID || productFWRevision != o->productFWRevision ||
           serialNumber != o->serialNumber || SAA != o->SAA || worldWideName != o->worldWideName ||
           numberofDE != o->numberofDE || userSystemCode != o->userSystemCode ||
           storageControlSoftwareRevision != o->storageControlSoftwareRevision ||
           configurationChange != o->configurationChange || unitLocation != o->unitLocation ||
           adminPorts.size() != o->adminPorts.size() || maxLDNumOfTarget != o->maxLDNumOfTarget ||
           maxNumOfTarge != o->maxNumOfTarge || maxLDNumOfOwnerID != o->maxLDNumOfOwnerID ||
           version != o->version || revision != o->revision || pPAdditionalData != o->pPAdditionalData ||
           unitName != o->unitName || unitContact != o->unitContact || accessControlMode != o->accessControlMode ||
           hostDirectorCount != o->hostDirectorCount || redundancyStatus != o->redundancyStatus;
}

void ArrayRawData::Copy(const RawData* other) {
    RawData::Copy(other);
    const ArrayRawData* o = dynamic_cast<const ArrayRawData*>(other);
    if (o == nullptr || o == this) return;
    diskArrayName = o->diskArrayName;
    resourceState = o->resourceState;
    monitoring = o->monitoring;
    vendorID = o->vendorID;
    productID = o->productID;
    productFWRevision = o->productFWRevision;
    serialNumber = o->serialNumber;
    SAA = o->SAA;
    worldWideName = o->worldWideName;
    numberofDE = o->numberofDE;
    userSystemCode = o->userSystemCode;
    storageControlSoftwareRevision = o->storageControlSoftwareRevision;
    configurationChange = o->configurationChange;
    unitLocation = o->unitLocation;
    floatingIPV4 = o->floatingIPV4;
    floatingIPV6 = o->floatingIPV6;
    adminPorts = o->adminPorts;
    maxLDNumOfTarget = o->maxLDNumOfTarget;
    maxNumOfTarge = o->maxNumOfTarge;
    maxLDNumOfOwnerID = o->maxLDNumOfOwnerID;
    version = o->version;
    revision = o->revision;
    pPAdditionalData = o->pPAdditionalData;
    unitName = o->unitName;
    unitContact = o->unitContact;
    accessControlMode = o->accessControlMode;
    protocol = o->protocol;
    hostDirectorCount = o->hostDirectorCount;
    redundancyStatus = o->redundancyStatus;
}

}  // namespace orvsmis
