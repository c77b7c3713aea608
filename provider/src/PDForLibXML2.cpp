#include "PDForLibXML2.h"

#include <string>
#include <utility>

#include "LibXML2Filler.h"
#include "PdRawData.h"

namespace orvsmis {

const char* const PDForLibXML2::objPD =
    "/REQUEST/CMD_REQUEST/CHAPTER[@name='Physical Disk']/OBJECT[@name='Physical Disk']";
const char* const PDForLibXML2::secPDDetailInfo = "PD Detail Information";

const char* const PDForLibXML2::PDN = "PDN(h)";
const char* const PDForLibXML2::classification = "Classification";
const char* const PDForLibXML2::rankGroupNumber = "Rank Group Number(h)";
const char* const PDForLibXML2::state = "State";
const char* const PDForLibXML2::PDCapacity = "PD Capacity";
const char* const PDForLibXML2::rotationalSpeed = "Rotational Speed";
const char* const PDForLibXML2::nodeNo = "Node No.(h)";
const char* const PDForLibXML2::type = "Type";
const char* const PDForLibXML2::vendorID = "Vendor ID";
const char* const PDForLibXML2::productID = "Product ID";
const char* const PDForLibXML2::productRevision = "Product Revision";
const char* const PDForLibXML2::serialNumber = "Serial Number";
const char* const PDForLibXML2::configurationChange = "Configuration Change";
const char* const PDForLibXML2::transferRate = "Transfer Rate";

int PDForLibXML2::ToStruct(std::vector<RawData*>& out) {
    return CollectRecords<PdRawData>(m_context, objPD, RAWDATA_PD, out, [this](xmlNode* section, PdRawData* record) {
        if (!LibXML2Filler::nameIs(section, secPDDetailInfo)) return false;
        fillPDDetailInfo(section, record);
        return true;
    });
}

void PDForLibXML2::fillPDDetailInfo(xmlNode* section, PdRawData* record) {
    const TextUnit fields[] = {
        {PDN, &record->PDN},
        {classification, &record->classification},
        {rankGroupNumber, &record->rankGroupNumber},
        {state, &record->state},
        {rotationalSpeed, &record->rotationalSpeed},
        {nodeNo, &record->nodeNo},
        {type, &record->type},
        {vendorID, &record->vendorID},
        {productID, &record->productID},
        {productRevision, &record->productRevision},
        {serialNumber, &record->serialNumber},
        {configurationChange, &record->configurationChange},
        {transferRate, &record->transferRate},
    };
    FillTextUnits(section, fields);
    for (xmlNode* unit = section->children; unit != nullptr; unit = unit->next)
        LibXML2Filler::fillAtr(unit, record->PDCapacity, PDCapacity);
    record->name = record->PDN;
    record->arrayId = LibXML2Filler::mArrayId;
}

}  // namespace orvsmis
