#ifndef ORVSMIS_CHASSIS_H
#define ORVSMIS_CHASSIS_H

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>

#include "Delegate.h"
#include "EventArgs.h"
#include "Submodel.h"

namespace orvsmis {

class RawData;
class ArrayRawData;

// The enclosure of the array, below its computer system: it carries the
// array's product and, through its events, the array's location. The
// arguments' path is the computer system; newData the array record (and
// oldData the stored one at Modify).
class Chassis : public Submodel {
public:
    static ModelEvent AfterCreated;
    static ModelEvent AfterModified;
    static ModelEvent BeforeDeleted;

    Pegasus::CIMObjectPath Create(ParentArgs& args) override;
    void Delete(ParentArgs& args) override;
    void Modify(ParentArgs& args) override;

    // The handlers of the computer system's events.
    static void OnCreate(ParentArgs& args);
    static void OnModify(ParentArgs& args);
    static void OnDelete(ParentArgs& args);

    // Both read newData; another record type throws CIMException 4.
    Pegasus::CIMInstance WrapInstance(ParentArgs& args);
    Pegasus::CIMObjectPath WrapReference(ParentArgs& args);
    // The chassis key of an array record, without host and namespace.
    static Pegasus::CIMObjectPath WrapReference(const ArrayRawData* array);

    // True when a property the chassis shows differs between the records.
    static bool isModified(const ArrayRawData* newData, const ArrayRawData* oldData);

    // The path of the chassis the last Create or Modify wrote (empty after
    // Delete), for the disks' packages that hang in it.
    static Pegasus::CIMObjectPath GetPath();

private:
    static const ArrayRawData* asArray(const RawData* record);
    static Pegasus::CIMObjectPath m_path;
};

}  // namespace orvsmis

#endif
