#include "DeRawData.h"

namespace orvsmis {

bool DeRawData::HasChanged(const RawData* newData) const {
    const DeRawData* o = dynamic_cast<const DeRawData*>(newData);
    if (o == nullptr) return true;
    return adapterCards != o->adapterCards || backBoards != o->backBoards || fans != o->fans ||
           powerSupplies != o->powerSupplies || temperatures != o->temperatures;
}

void DeRawData::Copy(const RawData* other) {
    RawData::Copy(other);
    const DeRawData* o = dynamic_cast<const DeRawData*>(other);
    if (o == nullptr || o == this) return;
    adapterCards = o->adapterCards;
    backBoards = o->backBoards;
    fans = o->fans;
    powerSupplies = o->powerSupplies;
    temperatures = o->temperatures;
}

}  // namespace orvsmis
