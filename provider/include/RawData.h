#ifndef ORVSMIS_RAWDATA_H
#define ORVSMIS_RAWDATA_H

#include <string>
#include <vector>

#include "Unknown.h"

namespace orvsmis {

// Type codes of the records; also the order in which additions are applied
// (the array first) and the reverse order of deletions.
enum RawDataType {
    RAWDATA_ARRAY = 0,
    RAWDATA_DAC = 1,
    RAWDATA_PORT = 2,
    RAWDATA_PD = 3,
    RAWDATA_DE = 4,
    RAWDATA_POOL = 5,
    RAWDATA_LD = 6,
    RAWDATA_LDSET = 7,
    RAWDATA_SNAPSHOT = 8,
    RAWDATA_REPLICA = 9
};

// Base of the records that a view of the array yields. `name` is the key
// within a type, `arrayId` the array's World Wide Name.
class RawData : public Unknown {
public:
    std::string arrayId;
    std::string name;
    int type;

    RawData() : type(-1) {}
    explicit RawData(int t) : type(t) {}
    ~RawData() override {}

    // True when this stored record differs in content from `newData`, a
    // record of the same identity.
    virtual bool HasChanged(const RawData* newData) const = 0;
    // Identity: same name and same type.
    virtual bool IsEqual(const RawData* other) const;
    // Brings this record up to date from `other` without replacing it.
    virtual void Copy(const RawData* other);

    // "array", "dac", ... for the type codes 0 to 9, "" for anything else.
    static std::string TypeToString(int type);
};

typedef std::vector<RawData*> RawDataList;

// Creates the record class of a type code with one reference taken; null for
// an unknown code (and for types whose records this module does not build).
class RawDataFactory {
public:
    static RawData* CreateInstance(int type);
};

// Releases every record of the list and empties it.
void ReleaseRawDataList(std::vector<RawData*>& records);

}  // namespace orvsmis

#endif
