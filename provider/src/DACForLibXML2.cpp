#include "DACForLibXML2.h"

#include "DacRawData.h"
#include "LibXML2Filler.h"

namespace orvsmis {

const char* const DACForLibXML2::objHD = "/REQUEST/CMD_REQUEST/CHAPTER[@name='Controller']/OBJECT[@name='HD']";
const char* const DACForLibXML2::secHDI = "Host Director Information";
const char* const DACForLibXML2::number = "Number(h)";
const char* const DACForLibXML2::state = "State";
const char* const DACForLibXML2::type = "Type";

int DACForLibXML2::ToStruct(std::vector<RawData*>& out) {
    std::vector<xmlNode*> objects = SelectNodes(m_context, objHD);
    if (objects.empty()) return -1;
    // A single-controller array has no controller records at all.
    if (objects.size() == 1) return 0;

    int count = 0;
    for (xmlNode* object : objects) {
        xmlNode* section = nullptr;
        for (xmlNode* child : ElementChildren(object)) {
            if (LibXML2Filler::nameOf(child) == secHDI) {
                section = child;
                break;
            }
        }
        if (section == nullptr) continue;

        DacRawData* record = static_cast<DacRawData*>(RawDataFactory::CreateInstance(RAWDATA_DAC));
        bool numberSeen = false;
        bool stateSeen = false;
        for (xmlNode* unit : ElementChildren(section)) {
            std::string unitName = LibXML2Filler::nameOf(unit);
            if (!numberSeen && unitName == number) {
                record->number = LibXML2Filler::contentOf(unit);
                numberSeen = true;
            } else if (!stateSeen && unitName == state) {
                record->state = LibXML2Filler::contentOf(unit);
                stateSeen = true;
            }
        }
        record->name = record->number;
        record->arrayId = LibXML2Filler::mArrayId;
        out.push_back(record);
        ++count;
    }
    return count;
}

}  // namespace orvsmis
