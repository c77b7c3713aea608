#include "DiskArrayForLibXML2.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <utility>

#include "ArrayRawData.h"
#include "LibXML2Filler.h"
#include "SmisTrace.h"

namespace orvsmis {

#define DA_OBJECT "/REQUEST/CMD_REQUEST/CHAPTER[@name='Disk Array']/OBJECT[@name='Disk Array']"
#define HD_SECTION "/REQUEST/CMD_REQUEST/CHAPTER[@name='Controller']/OBJECT[@name='HD']/SECTION[@name='Host Director Information']"

const char* const DiskArrayForLibXML2::objDiskArray = DA_OBJECT;
const char* const DiskArrayForLibXML2::objHdProtocol = HD_SECTION "/UNIT[@name='Protocol']";
const char* const DiskArrayForLibXML2::objHdState = HD_SECTION "/UNIT[@name='State']";
const char* const DiskArrayForLibXML2::secDiskArrayInfo = "Disk Array Detail Information";
const char* const DiskArrayForLibXML2::secAdminPortInfo = "Admin Port Information";
const char* const DiskArrayForLibXML2::secDiskArrayMaintInfo = "Disk Array Maint Information";
const char* const DiskArrayForLibXML2::secBaseProductMaintListInfo = "Base Product Maint List";
const char* const DiskArrayForLibXML2::pathSNMP =
    DA_OBJECT "/SECTION[@name='SNMP Common Information']/UNIT[@name='Unit Location']";
const char* const DiskArrayForLibXML2::pathFloatingIPV4 =
    DA_OBJECT "/SECTION[@name='Floating IP Address Information']/UNIT[@name='IP Address(IPv4)']";
const char* const DiskArrayForLibXML2::pathFloatingIPV6 =
    DA_OBJECT "/SECTION[@name='Floating IP Address Information']/UNIT[@name='IP Address(IPv6)']";
const char* const DiskArrayForLibXML2::pathSNMPUnitName =
    DA_OBJECT "/SECTION[@name='SNMP Common Information']/UNIT[@name='Unit Name']";
const char* const DiskArrayForLibXML2::pathSNMPUnitContact =
    DA_OBJECT "/SECTION[@name='SNMP Common Information']/UNIT[@name='Unit Contact']";
const char* const DiskArrayForLibXML2::pathAccessControlMode =
    DA_OBJECT "/SECTION[@name='Access Control Information']/UNIT[@name='Access Control Mode']";

const char* const DiskArrayForLibXML2::diskArrayName = "Disk Array Name";
const char* const DiskArrayForLibXML2::resourceState = "Resource State";
const char* const DiskArrayForLibXML2::monitoring = "Monitoring";
const char* const DiskArrayForLibXML2::vendorID = "Vendor ID";
const char* const DiskArrayForLibXML2::productID = "Product ID";
const char* const DiskArrayForLibXML2::productFWRevision = "Product FW Revision";
const char* const DiskArrayForLibXML2::serialNumber = "Serial Number";
const char* const DiskArrayForLibXML2::SAA = "SAA";
const char* const DiskArrayForLibXML2::worldWideName = "World Wide Name";
const char* const DiskArrayForLibXML2::numberofDE = "Number of DE";
const char* const DiskArrayForLibXML2::userSystemCode = "User System Code";
const char* const DiskArrayForLibXML2::storageControlSoftwareRevision = "Storage Control Software Revision";
const char* const DiskArrayForLibXML2::configurationChange = "Configuration Change";
const char* const DiskArrayForLibXML2::IPV4 = "IP Address(IPv4)";
const char* const DiskArrayForLibXML2::IPV6 = "IP Address(IPv6)";
const char* const DiskArrayForLibXML2::maxLDNumOfTarget = "Max LDNum Of Target";
const char* const DiskArrayForLibXML2::maxNumOfTarge = "Max Num Of Target";
const char* const DiskArrayForLibXML2::maxLDNumOfOwnerID = "Max LDNum Of OwnerID";
const char* const DiskArrayForLibXML2::version = "Version";
const char* const DiskArrayForLibXML2::revision = "Revision";
const char* const DiskArrayForLibXML2::pPAdditionalData = "PP Additional Data";
const char* const DiskArrayForLibXML2::protocol = "Protocol";

#undef DA_OBJECT
#undef HD_SECTION

namespace {

typedef std::pair<const char*, std::string*> UnitField;

// Stores each unit's text in the field of the first unit name it matches;
// missing or empty units leave their fields alone.
template <size_t N>
void fillUnits(xmlNode* section, const UnitField (&fields)[N]) {
    for (xmlNode* unit : RawDataFiller::ElementChildren(section)) {
        std::string unitName = LibXML2Filler::nameOf(unit);
        if (unitName.empty()) continue;
        for (const UnitField& field : fields) {
            if (unitName == field.first) {
                std::string text = LibXML2Filler::contentOf(unit);
                if (!text.empty()) *field.second = text;
                break;
            }
        }
    }
}

}  // namespace

int DiskArrayForLibXML2::ToStruct(std::vector<RawData*>& out) {
    ArrayRawData* record = static_cast<ArrayRawData*>(RawDataFactory::CreateInstance(RAWDATA_ARRAY));
    out.push_back(record);

    std::vector<xmlNode*> objects = SelectNodes(m_context, objDiskArray);
    if (objects.empty()) SMIS_TRACE(LEVEL3, "Can not find Array section");

    int count = 0;
    for (xmlNode* object : objects) {
        bool matched = false;
        for (xmlNode* section : ElementChildren(object)) {
            std::string sectionName = LibXML2Filler::nameOf(section);
            if (sectionName == secAdminPortInfo) {
                fillAdminPortInfo(section, record);
                matched = true;
            } else if (sectionName == secBaseProductMaintListInfo) {
                fillBaseProductMaintList(section, record);
                matched = true;
            } else if (sectionName == secDiskArrayInfo) {
                fillDiskArrayInfo(section, record);
                matched = true;
            } else if (sectionName == secDiskArrayMaintInfo) {
                fillDiskArrayMaintInfo(section, record);
                matched = true;
            }
        }
        if (!matched) continue;

        record->unitLocation = LibXML2Filler::getNodeValue(pathSNMP, m_context);
        record->unitName = LibXML2Filler::getNodeValue(pathSNMPUnitName, m_context);
        record->unitContact = LibXML2Filler::getNodeValue(pathSNMPUnitContact, m_context);
        record->floatingIPV4 = LibXML2Filler::getNodeValue(pathFloatingIPV4, m_context);
        record->floatingIPV6 = LibXML2Filler::getNodeValue(pathFloatingIPV6, m_context);
        record->accessControlMode = LibXML2Filler::getNodeValue(pathAccessControlMode, m_context);
        record->protocol = LibXML2Filler::getNodeValue(objHdProtocol, m_context);

        // An iSCSI array always works with access control, whatever the
        // document says.
        std::string lowered = record->protocol;
        std::transform(lowered.begin(), lowered.end(), lowered.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (lowered == "iscsi") record->accessControlMode = "on";
        ++count;
    }
    if (!objects.empty()) fillHostDirectorInfo(record);

    if (count == 0) {
        out.pop_back();
        record->Release();
        return 0;
    }
    return count;
}

void DiskArrayForLibXML2::fillDiskArrayInfo(xmlNode* section, ArrayRawData* record) {
    const UnitField fields[] = {
        {diskArrayName, &record->diskArrayName},
        {resourceState, &record->resourceState},
        {monitoring, &record->monitoring},
        {vendorID, &record->vendorID},
        {productID, &record->productID},
        {productFWRevision, &record->productFWRevision},
        {serialNumber, &record->serialNumber},
        {SAA, &record->SAA},
        {worldWideName, &record->worldWideName},
        {numberofDE, &record->numberofDE},
        {userSystemCode, &record->userSystemCode},
        {storageControlSoftwareRevision, &record->storageControlSoftwareRevision},
        {configurationChange, &record->configurationChange},
    };
    std::string wwn;
    for (xmlNode* unit : ElementChildren(section)) {
        if (LibXML2Filler::nameOf(unit) == worldWideName) {
            wwn = LibXML2Filler::contentOf(unit);
            break;
        }
    }
    fillUnits(section, fields);
    // The World Wide Name is the array's identity, and every other record of
    // this document is stamped with it.
    record->worldWideName = wwn;
    record->name = wwn;
    LibXML2Filler::mArrayId = wwn;
    record->arrayId = LibXML2Filler::mArrayId;
}

void DiskArrayForLibXML2::fillAdminPortInfo(xmlNode* section, ArrayRawData* record) {
    IP_ADDR_INFO port;
    const UnitField fields[] = {{IPV4, &port.IPV4}, {IPV6, &port.IPV6}};
    fillUnits(section, fields);
    record->adminPorts.push_back(port);
}

void DiskArrayForLibXML2::fillDiskArrayMaintInfo(xmlNode* section, ArrayRawData* record) {
    const UnitField fields[] = {
        {maxLDNumOfTarget, &record->maxLDNumOfTarget},
        {maxNumOfTarge, &record->maxNumOfTarge},
        {maxLDNumOfOwnerID, &record->maxLDNumOfOwnerID},
    };
    fillUnits(section, fields);
}

void DiskArrayForLibXML2::fillBaseProductMaintList(xmlNode* section, ArrayRawData* record) {
    // The list may repeat; the last section that has a unit gives its value.
    const UnitField fields[] = {
        {version, &record->version},
        {revision, &record->revision},
        {pPAdditionalData, &record->pPAdditionalData},
    };
    fillUnits(section, fields);
}

void DiskArrayForLibXML2::fillHostDirectorInfo(ArrayRawData* record) {
    std::vector<xmlNode*> states = SelectNodes(m_context, objHdState);
    if (states.empty()) {
        record->hostDirectorCount = 1;
        record->redundancyStatus = 0;  // unknown
        return;
    }
    if (states.size() == 1) {
        record->hostDirectorCount = 1;
        record->redundancyStatus = 4;  // redundancy lost
        return;
    }
    record->hostDirectorCount = static_cast<int>(states.size());
    bool allReady = true;
    for (xmlNode* state : states) {
        if (LibXML2Filler::contentOf(state).find("ready") == std::string::npos) {
            allReady = false;
            break;
        }
    }
    record->redundancyStatus = allReady ? 2 : 3;  // fully redundant : degraded
}

}  // namespace orvsmis
