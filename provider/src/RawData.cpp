#include "RawData.h"

#include "ArrayRawData.h"
#include "DacRawData.h"
#include "DeRawData.h"
#include "LdRawData.h"
#include "PdRawData.h"
#include "PoolRawData.h"

namespace orvsmis {

bool RawData::IsEqual(const RawData* other) const {
    return other != nullptr && name == other->name && type == other->type;
}

void RawData::Copy(const RawData* other) {
    if (other == nullptr) return;
    arrayId = other->arrayId;
    name = other->name;
    type = other->type;
}

std::string RawData::TypeToString(int type) {
    static const char* const words[] = {"array", "dac",  "port", "pd",       "de",
                                        "pool",  "ld",   "ldset", "snapshot", "replica"};
    if (type < 0 || type > 9) return "";
    return words[type];
}

RawData* RawDataFactory::CreateInstance(int type) {
    RawData* record = nullptr;
    switch (type) {
        case RAWDATA_ARRAY: record = new ArrayRawData(); break;
        case RAWDATA_DAC: record = new DacRawData(); break;
        case RAWDATA_PD: record = new PdRawData(); break;
        case RAWDATA_DE: record = new DeRawData(); break;
        case RAWDATA_POOL: record = new PoolRawData(); break;
        case RAWDATA_LD: record = new LdRawData(); break;
        default: return nullptr;
    }
    record->AddRef();
    return record;
}

void ReleaseRawDataList(std::vector<RawData*>& records) {
    for (RawData* record : records) {
        if (record != nullptr) record->Release();
    }
    records.clear();
}

}  // namespace orvsmis
