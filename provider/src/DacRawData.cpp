#include "DacRawData.h"

namespace orvsmis {

bool DacRawData::HasChanged(const RawData* newData) const {
    const DacRawData* o = dynamic_cast<const DacRawData*>(newData);
    if (o == nullptr) return true;
    return type != o->type || number != o->number || state != o->state;
}

bool DacRawData::IsEqual(const RawData* other) const {
    const DacRawData* o = dynamic_cast<const DacRawData*>(other);
    return o != nullptr && RawData::IsEqual(other) && number == o->number;
}

void DacRawData::Copy(const RawData* other) {
    RawData::Copy(other);
    const DacRawData* o = dynamic_cast<const DacRawData*>(other);
    if (o == nullptr || o == this) return;
    number = o->number;
    state = o->state;
}

}  // namespace orvsmis
