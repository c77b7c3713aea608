#ifndef ORVSMIS_STORAGEEXTENT_H
#define ORVSMIS_STORAGEEXTENT_H

#include <string>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>

#include "EventArgs.h"
#include "IndicationNeeder.h"
#include "Submodel.h"

namespace orvsmis {

class PdRawData;

// The storage extent of one physical disk, below its disk drive: the unit
// the primordial pool is made of. It keeps the disk index in step.
class StorageExtent : public Submodel, public IndicationNeeder {
public:
    // The arguments' path is the disk drive; newData the disk record (and
    // oldData the stored one at Modify).
    Pegasus::CIMObjectPath Create(ParentArgs& args) override;
    void Delete(ParentArgs& args) override;
    void Modify(ParentArgs& args) override;

    // Another record type throws CIMException 4.
    Pegasus::CIMInstance WrapInstance(ParentArgs& args);
    Pegasus::CIMObjectPath WrapReference(ParentArgs& args);
    static Pegasus::CIMObjectPath WrapReference(const std::string& pdn, const std::string& arrayId);

    // Usage of a disk's classification; 65535 for an unknown one.
    static Pegasus::Uint16 MapUsageProperty(const PdRawData* pd);
    // OperationalStatus, ExtentStatus and HealthState of a disk's state; a
    // null record throws CIMException 4.
    static void getPDstatusCimValue(const PdRawData* pd, Pegasus::Uint16& operationalStatus,
                                    Pegasus::Uint16& extentStatus, Pegasus::Uint16& healthState);

private:
    static const PdRawData* asPd(const RawData* record);
};

}  // namespace orvsmis

#endif
