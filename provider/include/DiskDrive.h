#ifndef ORVSMIS_DISKDRIVE_H
#define ORVSMIS_DISKDRIVE_H

#include <string>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Config.h>

#include "Delegate.h"
#include "IndicationNeeder.h"
#include "Model.h"

namespace orvsmis {

class RawData;
class PdRawData;

// A physical disk of the array: one disk drive instance per disk record and,
// below it, the disk's storage extent and software identity. Its events let
// the physical view follow the disk.
class DiskDrive : public Model, public IndicationNeeder {
public:
    static ModelEvent AfterCreated;
    static ModelEvent AfterModified;
    static ModelEvent BeforeDeleted;

    Pegasus::CIMObjectPath Create(DataEventArgs* args) override;
    void Delete(DataEventArgs* args) override;
    void Modify(DataEventArgs* args) override;
    // The disk's path from its PDN (key) and the array id; false for a key
    // too short to be a PDN.
    bool Find(const std::string& key, const std::string& arrayId, Pegasus::CIMObjectPath& out) override;

    // Both take the record in newData; another record type throws
    // CIMException 4.
    Pegasus::CIMInstance WrapInstance(DataEventArgs* args);
    Pegasus::CIMObjectPath WrapReference(DataEventArgs* args);

    // "00-0a" gives "00h-0ah"; a PDN shorter than four characters throws
    // InvalidParamException.
    static std::string DeviceID(const std::string& pdn);

    // The mappings of a disk's state, type and rotational speed; null throws
    // CIMException 4, unknown texts give the unknown values with a trace.
    static void getPDstatusCimValue(const PdRawData* data, Pegasus::Array<Pegasus::Uint16>& operationalStatus,
                                    Pegasus::Uint16& healthState, Pegasus::Uint16& availability);
    static void getPDtypeCimValue(const PdRawData* data, Pegasus::Uint16& diskType,
                                  Pegasus::Uint16& interconnectType);
    static Pegasus::Uint32 getPDrpmCimValue(const PdRawData* data);

private:
    static const PdRawData* asPd(const RawData* record);
};

}  // namespace orvsmis

#endif
