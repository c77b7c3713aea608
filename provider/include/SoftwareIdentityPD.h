#ifndef ORVSMIS_SOFTWAREIDENTITYPD_H
#define ORVSMIS_SOFTWAREIDENTITYPD_H

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>

#include "EventArgs.h"
#include "Submodel.h"

namespace orvsmis {

class RawData;
class PdRawData;

// The firmware of one disk as a software identity, tied to its disk drive.
// The arguments' path is the disk drive; newData the disk record.
class SoftwareIdentityPD : public Submodel {
public:
    Pegasus::CIMObjectPath Create(ParentArgs& args) override;
    void Delete(ParentArgs& args) override;
    void Modify(ParentArgs& args) override;

    // Another record type throws CIMException 4 "Dynamic cast parameter
    // \"parm\" failed.".
    Pegasus::CIMInstance WrapInstance(ParentArgs& args);
    Pegasus::CIMObjectPath WrapReference(ParentArgs& args);

private:
    static const PdRawData* asPd(const RawData* record);
};

}  // namespace orvsmis

#endif
