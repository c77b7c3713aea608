#include "LdRawData.h"

namespace orvsmis {

LdRawData::LdRawData() : RawData(GetType()), LDCapacity(0), actualUsedCapacity(0) {}

bool LdRawData::IsEqual(const RawData* other) const {
    const LdRawData* o = dynamic_cast<const LdRawData*>(other);
    return o != nullptr && name == o->name && poolNo == o->poolNo && raidType == o->raidType && PDType == o->PDType;
}

bool LdRawData::HasChanged(const RawData* newData) const {
    const LdRawData* o = dynamic_cast<const LdRawData*>(newData);
    if (o == nullptr) return true;
    return LDName != o->LDName || LDCapacity != o->LDCapacity || LDState != o->LDState ||
           snapshotAttribute != o->snapshotAttribute || group != o->group || RPLAttribute != o->RPLAttribute ||
           threshold != o->threshold || actualUsedCapacity != o->actualUsedCapacity;
}

void LdRawData::Copy(const RawData* other) {
    RawData::Copy(other);
    const LdRawData* o = dynamic_cast<const LdRawData*>(other);
    if (o == nullptr || o == this) return;
    LDN = o->LDN;
    LDName = o->LDName;
    LDCapacity = o->LDCapacity;
    poolNo = o->poolNo;
    raidType = o->raidType;
    PDType = o->PDType;
    LDState = o->LDState;
    group = o->group;
    purpose = o->purpose;
    RPLAttribute = o->RPLAttribute;
    snapshotAttribute = o->snapshotAttribute;
    threshold = o->threshold;
    actualUsedCapacity = o->actualUsedCapacity;
}

namespace {

// One row of the classification: a null attribute matches anything; the
// first row that fits wins.
struct LdTypeRow {
    const char* purpose;
    const char* rplAttribute;
    const char* snapshotAttribute;
    int result;
};

const LdTypeRow LD_TYPE_ROWS[] = {
    {"---", nullptr, nullptr, 0},
    {"RPL", "MV", nullptr, 1},
    {"RPL", "RV", nullptr, 2},
    {"RPL", "RV/MV", nullptr, 3},
    {"Control Volume", "MV", nullptr, 4},
    {"Snapshot", nullptr, "BV", 5},
    {"Snapshot", nullptr, "SV", 6},
    {"Snapshot", nullptr, "SDV", 7},
    {"Snapshot", nullptr, "SV*", 8},
    {"RPL/Snapshot", "MV", "BV", 9},
    {"RPL/Snapshot", "RV", "BV", 10},
    {"RPL/Snapshot", "RV/MV", "BV", 11},
    {"Link Volume", nullptr, nullptr, 12},
    {"Control Volume", nullptr, nullptr, 13},
    {"L2 Cache", nullptr, nullptr, 14},
    {"Data Protection", nullptr, nullptr, 15},
    {"RPL/Data Protection", nullptr, nullptr, 16},
    {"System Volume", nullptr, nullptr, 17},
    {"Replication Reserved Volume", nullptr, nullptr, 18},
    {"Migration Reserved Volume", nullptr, nullptr, 19},
    {"Optimization", nullptr, nullptr, 20},
    {"VVOL", nullptr, nullptr, 21},
};

const int LD_TYPE_UNKNOWN = 22;

}  // namespace

int LdRawData::GetLdType() const {
    for (const LdTypeRow& row : LD_TYPE_ROWS) {
        if (purpose != row.purpose) continue;
        if (row.rplAttribute != nullptr && RPLAttribute != row.rplAttribute) continue;
        if (row.snapshotAttribute != nullptr && snapshotAttribute != row.snapshotAttribute) continue;
        return row.result;
    }
    return LD_TYPE_UNKNOWN;
}

}  // namespace orvsmis
