#ifndef ORVSMIS_DEFORLIBXML2_H
#define ORVSMIS_DEFORLIBXML2_H

#include <libxml/xpath.h>

#include "RawDataFiller.h"

namespace orvsmis {

class DeRawData;

// Reads all enclosure components into one record; 1 when any was found,
// 0 otherwise.
class DEForLibXML2 : public RawDataFiller {
public:
    static const char* const objTI;
    static const char* const objPSI;
    static const char* const objFI;
    static const char* const objBBI;
    static const char* const objACI;
    static const char* const secDETI;
    static const char* const secDEPSI;
    static const char* const secDEFI;
    static const char* const secDEBBI;
    static const char* const secDEACI;

    static const char* const type;
    static const char* const abbreviatedName;
    static const char* const DENumber;
    static const char* const number;
    static const char* const nodeNo;
    static const char* const state;
    static const char* const code;
    static const char* const maximumnumberofPDs;
    static const char* const verticalNumberofPDs;
    static const char* const horizontalNumberofPDs;
    static const char* const insertDirectionofPDs;
    static const char* const DEType;
    static const char* const no;
    static const char* const DENo;
    static const char* const abbr;

    explicit DEForLibXML2(xmlXPathContext* context) : m_context(context) {}

    int ToStruct(std::vector<RawData*>& out) override;

private:
    // selector 0 to 4: adapter cards, back boards, fans, power supplies,
    // temperatures.
    void toStruct(int selector, DeRawData* record);

    xmlXPathContext* m_context;
};

}  // namespace orvsmis

#endif
