#ifndef ORVSMIS_DERAWDATA_H
#define ORVSMIS_DERAWDATA_H

#include <string>
#include <vector>

#include "RawData.h"

namespace orvsmis {

// The common fields of one enclosure component.
struct DE_COMPONENT {
    std::string type;
    std::string abbreviatedName;
    std::string DENumber;
    std::string number;
    std::string nodeNo;
    std::string state;
    std::string code;

    bool operator==(const DE_COMPONENT& o) const {
        return type == o.type && abbreviatedName == o.abbreviatedName && DENumber == o.DENumber &&
               number == o.number && nodeNo == o.nodeNo && state == o.state && code == o.code;
    }
    bool operator!=(const DE_COMPONENT& o) const { return !(*this == o); }
};

struct DE_ACI : DE_COMPONENT {};  // adapter card
struct DE_FI : DE_COMPONENT {};   // fan
struct DE_PSI : DE_COMPONENT {};  // power supply
struct DE_TI : DE_COMPONENT {};   // temperature sensor

// Back board: the common fields and its disk slot layout.
struct DE_BBI : DE_COMPONENT {
    std::string maximumnumberofPDs;
    std::string verticalNumberofPDs;
    std::string horizontalNumberofPDs;
    std::string insertDirectionofPDs;
    std::string DEType;

    bool operator==(const DE_BBI& o) const {
        return DE_COMPONENT::operator==(o) && maximumnumberofPDs == o.maximumnumberofPDs &&
               verticalNumberofPDs == o.verticalNumberofPDs && horizontalNumberofPDs == o.horizontalNumberofPDs &&
               insertDirectionofPDs == o.insertDirectionofPDs && DEType == o.DEType;
    }
    bool operator!=(const DE_BBI& o) const { return !(*this == o); }
};

// All enclosure components of the array in one record named "DE0".
class DeRawData : public RawData {
public:
    std::vector<DE_ACI> adapterCards;
    std::vector<DE_BBI> backBoards;
    std::vector<DE_FI> fans;
    std::vector<DE_PSI> powerSupplies;
    std::vector<DE_TI> temperatures;

    DeRawData() : RawData(GetType()) {}

    static int GetType() { return RAWDATA_DE; }

    bool HasChanged(const RawData* newData) const override;
    void Copy(const RawData* other) override;
};

}  // namespace orvsmis

#endif
