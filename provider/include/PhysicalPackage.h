#ifndef ORVSMIS_PHYSICALPACKAGE_H
#define ORVSMIS_PHYSICALPACKAGE_H

#include <string>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>

#include "EventArgs.h"
#include "Submodel.h"

namespace orvsmis {

class RawData;
class PdRawData;

// The physical package of one disk: it realizes the disk drive, sits in
// the array's chassis and carries the disk's product. The arguments' path
// is the disk drive; newData the disk record.
class PhysicalPackage : public Submodel {
public:
    Pegasus::CIMObjectPath Create(ParentArgs& args) override;
    void Delete(ParentArgs& args) override;
    void Modify(ParentArgs& args) override;

    // The handlers of the disk drive's events.
    static void OnCreate(ParentArgs& args);
    static void OnModify(ParentArgs& args);
    static void OnDelete(ParentArgs& args);

    // Another record type throws CIMException 4.
    Pegasus::CIMInstance WrapInstance(ParentArgs& args);
    Pegasus::CIMObjectPath WrapReference(ParentArgs& args);
    static Pegasus::CIMObjectPath WrapReference(const std::string& pdn, const std::string& arrayId);

    // The disk's number as the physical view shows it: "00-0a" gives
    // "00h-0ah"; the number part is cut to four characters ("00-000a5"
    // gives "00h-000ah"). A PDN shorter than four characters or without
    // its "-" throws InvalidParamException.
    static std::string ShortDeviceID(const std::string& pdn);
    // "PD:" + ShortDeviceID + "(" + array id + ")": the package's tag and
    // the disk product's name.
    static std::string Tag(const std::string& pdn, const std::string& arrayId);

    static bool isModified(const PdRawData* newData, const PdRawData* oldData);

private:
    static const PdRawData* asPd(const RawData* record);
};

}  // namespace orvsmis

#endif
