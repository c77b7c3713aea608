#ifndef ORVSMIS_DACFORLIBXML2_H
#define ORVSMIS_DACFORLIBXML2_H

#include <libxml/xpath.h>

#include "RawDataFiller.h"

namespace orvsmis {

// Reads the controller records. -1 when the document has no HD object; a
// single controller gives no record at all (0).
class DACForLibXML2 : public RawDataFiller {
public:
    static const char* const objHD;
    static const char* const secHDI;
    static const char* const number;
    static const char* const state;
    static const char* const type;

    explicit DACForLibXML2(xmlXPathContext* context) : m_context(context) {}

    int ToStruct(std::vector<RawData*>& out) override;

private:
    xmlXPathContext* m_context;
};

}  // namespace orvsmis

#endif
