#include "RawDataFiller.h"

#include <cstring>

#include "DACForLibXML2.h"
#include "DEForLibXML2.h"
#include "DiskArrayForLibXML2.h"
#include "LDForLibXML2.h"
#include "PDForLibXML2.h"
#include "PoolForLibXML2.h"
#include "LibXML2Filler.h"

namespace orvsmis {

std::string RawDataFiller::GetArrayId() const { return LibXML2Filler::mArrayId; }

std::vector<xmlNode*> RawDataFiller::SelectNodes(xmlXPathContext* context, const char* path) {
    std::vector<xmlNode*> nodes;
    if (context == nullptr || path == nullptr) return nodes;
    xmlXPathObject* result = xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(path), context);
    if (result == nullptr) return nodes;
    if (result->nodesetval != nullptr && result->nodesetval->nodeNr > 0)
        nodes.assign(result->nodesetval->nodeTab, result->nodesetval->nodeTab + result->nodesetval->nodeNr);
    xmlXPathFreeObject(result);
    return nodes;
}

std::vector<xmlNode*> RawDataFiller::ElementChildren(xmlNode* node) {
    std::vector<xmlNode*> children;
    if (node == nullptr) return children;
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE) children.push_back(child);
    }
    return children;
}

void RawDataFiller::FillTextUnits(xmlNode* section, const TextUnit* fields, size_t count) {
    if (section == nullptr) return;
    std::string nameSpill;
    std::string textSpill;
    for (xmlNode* unit = section->children; unit != nullptr; unit = unit->next) {
        if (unit->type != XML_ELEMENT_NODE) continue;
        const char* unitName = LibXML2Filler::nameText(unit, nameSpill);
        if (*unitName == '\0') continue;
        for (size_t i = 0; i < count; ++i) {
            if (std::strcmp(unitName, fields[i].first) != 0) continue;
            const char* text = LibXML2Filler::contentText(unit, textSpill);
            if (*text != '\0') fields[i].second->assign(text);
            break;
        }
    }
}

std::string RawDataFiller::UnitText(xmlNode* section, const char* name) {
    if (section == nullptr) return std::string();
    for (xmlNode* unit = section->children; unit != nullptr; unit = unit->next) {
        if (unit->type == XML_ELEMENT_NODE && LibXML2Filler::nameIs(unit, name)) return LibXML2Filler::contentOf(unit);
    }
    return std::string();
}

RawDataFiller* RawDataFillerFactory::Create(const LibXML2Filler* filler, int type) {
    if (filler == nullptr) return nullptr;
    xmlXPathContext* context = filler->GetXPathContext();
    switch (type) {
        case RAWDATA_ARRAY: return new DiskArrayForLibXML2(context);
        case RAWDATA_DAC: return new DACForLibXML2(context);
        case RAWDATA_PD: return new PDForLibXML2(context);
        case RAWDATA_DE: return new DEForLibXML2(context);
        case RAWDATA_POOL: return new PoolForLibXML2(context);
        case RAWDATA_LD: return new LDForLibXML2(context);
        default: return nullptr;
    }
}

}  // namespace orvsmis
