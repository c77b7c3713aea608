#ifndef ORVSMIS_DISKARRAYFORLIBXML2_H
#define ORVSMIS_DISKARRAYFORLIBXML2_H

#include <libxml/xpath.h>

#include "RawDataFiller.h"

namespace orvsmis {

class ArrayRawData;

// Reads the array record; also sets LibXML2Filler::mArrayId, which every
// other filler stamps on its records, so the array is read first.
class DiskArrayForLibXML2 : public RawDataFiller {
public:
    static const char* const objDiskArray;
    static const char* const objHdProtocol;
    static const char* const objHdState;
    static const char* const secDiskArrayInfo;
    static const char* const secAdminPortInfo;
    static const char* const secDiskArrayMaintInfo;
    static const char* const secBaseProductMaintListInfo;
    static const char* const pathSNMP;
    static const char* const pathFloatingIPV4;
    static const char* const pathFloatingIPV6;
    static const char* const pathSNMPUnitName;
    static const char* const pathSNMPUnitContact;
    static const char* const pathAccessControlMode;

    static const char* const diskArrayName;
    static const char* const resourceState;
    static const char* const monitoring;
    static const char* const vendorID;
    static const char* const productID;
    static const char* const productFWRevision;
    static const char* const serialNumber;
    static const char* const SAA;
    static const char* const worldWideName;
    static const char* const numberofDE;
    static const char* const userSystemCode;
    static const char* const storageControlSoftwareRevision;
    static const char* const configurationChange;
    static const char* const IPV4;
    static const char* const IPV6;
    static const char* const maxLDNumOfTarget;
    static const char* const maxNumOfTarge;
    static const char* const maxLDNumOfOwnerID;
    static const char* const version;
    static const char* const revision;
    static const char* const pPAdditionalData;
    static const char* const protocol;

    explicit DiskArrayForLibXML2(xmlXPathContext* context) : m_context(context) {}

    int ToStruct(std::vector<RawData*>& out) override;

private:
    void fillDiskArrayInfo(xmlNode* section, ArrayRawData* record);
    void fillAdminPortInfo(xmlNode* section, ArrayRawData* record);
    void fillDiskArrayMaintInfo(xmlNode* section, ArrayRawData* record);
    void fillBaseProductMaintList(xmlNode* section, ArrayRawData* record);
    void fillHostDirectorInfo(ArrayRawData* record);

    xmlXPathContext* m_context;
};

}  // namespace orvsmis

#endif
