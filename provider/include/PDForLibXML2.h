#ifndef ORVSMIS_PDFORLIBXML2_H
#define ORVSMIS_PDFORLIBXML2_H

#include <libxml/xpath.h>

#include "RawDataFiller.h"

namespace orvsmis {

class PdRawData;

// Reads the physical disk records. Returns their number, or -1 when the
// document has no physical disk object.
class PDForLibXML2 : public RawDataFiller {
public:
    static const char* const objPD;
    static const char* const secPDDetailInfo;

    static const char* const PDN;
    static const char* const classification;
    static const char* const rankGroupNumber;
    static const char* const state;
    static const char* const PDCapacity;
    static const char* const rotationalSpeed;
    static const char* const nodeNo;
    static const char* const type;
    static const char* const vendorID;
    static const char* const productID;
    static const char* const productRevision;
    static const char* const serialNumber;
    static const char* const configurationChange;
    static const char* const transferRate;

    explicit PDForLibXML2(xmlXPathContext* context) : m_context(context) {}

    int ToStruct(std::vector<RawData*>& out) override;

private:
    void fillPDDetailInfo(xmlNode* section, PdRawData* record);

    xmlXPathContext* m_context;
};

}  // namespace orvsmis

#endif
