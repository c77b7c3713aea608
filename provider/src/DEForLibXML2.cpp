#include "DEForLibXML2.h"

#include <string>

#include "DeRawData.h"
#include "LibXML2Filler.h"

namespace orvsmis {

#define DE_OBJECT(NAME) "/REQUEST/CMD_REQUEST/CHAPTER[@name='Enclosure']/OBJECT[@name='" NAME "']"

const char* const DEForLibXML2::objTI = DE_OBJECT("DE_TEMP_ALM");
const char* const DEForLibXML2::objPSI = DE_OBJECT("DE_PS");
const char* const DEForLibXML2::objFI = DE_OBJECT("DE_FAN");
const char* const DEForLibXML2::objBBI = DE_OBJECT("DE_BB");
const char* const DEForLibXML2::objACI = DE_OBJECT("DE_ADP(S/S)");
#undef DE_OBJECT

const char* const DEForLibXML2::secDETI = "Temperature Information";
const char* const DEForLibXML2::secDEPSI = "Power Supply Information";
const char* const DEForLibXML2::secDEFI = "FAN Information";
const char* const DEForLibXML2::secDEBBI = "Back Board Information";
const char* const DEForLibXML2::secDEACI = "Adapter Card Information";

const char* const DEForLibXML2::type = "Type";
const char* const DEForLibXML2::abbreviatedName = "Abbreviated Name";
const char* const DEForLibXML2::DENumber = "DE Number(h)";
const char* const DEForLibXML2::number = "Number(h)";
const char* const DEForLibXML2::nodeNo = "Node No. (h)";
const char* const DEForLibXML2::state = "State";
const char* const DEForLibXML2::code = "Code(h)";
const char* const DEForLibXML2::maximumnumberofPDs = "Maximum number of PDs";
const char* const DEForLibXML2::verticalNumberofPDs = "Vertical Number of PDs";
const char* const DEForLibXML2::horizontalNumberofPDs = "Horizontal Number of PDs";
const char* const DEForLibXML2::insertDirectionofPDs = "Insert Direction of PDs";
const char* const DEForLibXML2::DEType = "DE Type";
const char* const DEForLibXML2::no = "No. (h)";
const char* const DEForLibXML2::DENo = "DE No. (h)";
const char* const DEForLibXML2::abbr = "Abbr. Name";

namespace {

// Reads the units of one component section; the back board passes its extra
// fields too.
void fillComponent(xmlNode* section, DE_COMPONENT& c, DE_BBI* board) {
    struct Field {
        const char* unit;
        std::string* value;
    };
    Field fields[12] = {
        {DEForLibXML2::type, &c.type},
        {DEForLibXML2::abbreviatedName, &c.abbreviatedName},
        {DEForLibXML2::DENumber, &c.DENumber},
        {DEForLibXML2::number, &c.number},
        {DEForLibXML2::nodeNo, &c.nodeNo},
        {DEForLibXML2::state, &c.state},
        {DEForLibXML2::code, &c.code},
    };
    size_t count = 7;
    if (board != nullptr) {
        fields[count++] = {DEForLibXML2::maximumnumberofPDs, &board->maximumnumberofPDs};
        fields[count++] = {DEForLibXML2::verticalNumberofPDs, &board->verticalNumberofPDs};
        fields[count++] = {DEForLibXML2::horizontalNumberofPDs, &board->horizontalNumberofPDs};
        fields[count++] = {DEForLibXML2::insertDirectionofPDs, &board->insertDirectionofPDs};
        fields[count++] = {DEForLibXML2::DEType, &board->DEType};
    }
    for (xmlNode* unit : RawDataFiller::ElementChildren(section)) {
        std::string unitName = LibXML2Filler::nameOf(unit);
        if (unitName.empty()) continue;
        for (size_t i = 0; i < count; ++i) {
            if (unitName == fields[i].unit) {
                std::string text = LibXML2Filler::contentOf(unit);
                if (!text.empty()) *fields[i].value = text;
                break;
            }
        }
    }
}

}  // namespace

int DEForLibXML2::ToStruct(std::vector<RawData*>& out) {
    DeRawData* record = static_cast<DeRawData*>(RawDataFactory::CreateInstance(RAWDATA_DE));
    record->name = "DE0";
    record->arrayId = LibXML2Filler::mArrayId;
    out.push_back(record);

    for (int selector = 0; selector < 5; ++selector) toStruct(selector, record);

    if (!record->adapterCards.empty() || !record->backBoards.empty() || !record->fans.empty() ||
        !record->powerSupplies.empty() || !record->temperatures.empty())
        return 1;
    out.pop_back();
    record->Release();
    return 0;
}

void DEForLibXML2::toStruct(int selector, DeRawData* record) {
    static const char* const* const objects[] = {&objACI, &objBBI, &objFI, &objPSI, &objTI};
    if (selector < 0 || selector > 4) return;
    for (xmlNode* object : SelectNodes(m_context, *objects[selector])) {
        // Every object's sections are matched against all five section
        // names: a section counts for its kind wherever it stands.
        for (xmlNode* section : ElementChildren(object)) {
            std::string name = LibXML2Filler::nameOf(section);
            if (name == secDEACI) {
                DE_ACI item;
                fillComponent(section, item, nullptr);
                record->adapterCards.push_back(item);
            } else if (name == secDEBBI) {
                DE_BBI item;
                fillComponent(section, item, &item);
                record->backBoards.push_back(item);
            } else if (name == secDEFI) {
                DE_FI item;
                fillComponent(section, item, nullptr);
                record->fans.push_back(item);
            } else if (name == secDEPSI) {
                DE_PSI item;
                fillComponent(section, item, nullptr);
                record->powerSupplies.push_back(item);
            } else if (name == secDETI) {
                DE_TI item;
                fillComponent(section, item, nullptr);
                record->temperatures.push_back(item);
            }
        }
    }
}

}  // namespace orvsmis
