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
    std::vector<xmlNode*> objects = SelectNodes(m_context, objPD);
    if (objects.empty()) return -1;
    int count = 0;
    for (xmlNode* object : objects) {
        PdRawData* record = static_cast<PdRawData*>(RawDataFactory::CreateInstance(RAWDATA_PD));
        bool matched = false;
        for (xmlNode* section : ElementChildren(object)) {
            if (LibXML2Filler::nameOf(section) != secPDDetailInfo) continue;
            fillPDDetailInfo(section, record);
            matched = true;
        }
        if (matched) {
            out.push_back(record);
            ++count;
        } else {
            record->Release();
        }
    }
    return count;
}

void PDForLibXML2::fillPDDetailInfo(xmlNode* section, PdRawData* record) {
    typedef std::pair<const char*, std::string*> TextUnit;
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
    for (xmlNode* unit : ElementChildren(section)) {
        std::string unitName = LibXML2Filler::nameOf(unit);
        if (unitName.empty()) continue;
        if (LibXML2Filler::fillAtr(unit, record->PDCapacity, PDCapacity)) continue;
        for (const TextUnit& field : fields) {
            if (unitName != field.first) continue;
            std::string text = LibXML2Filler::contentOf(unit);
            if (!text.empty()) *field.second = text;
            break;
        }
    }
    record->name = record->PDN;
    record->arrayId = LibXML2Filler::mArrayId;
}

}  // namespace orvsmis
