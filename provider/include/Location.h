#ifndef ORVSMIS_LOCATION_H
#define ORVSMIS_LOCATION_H

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>

#include "EventArgs.h"
#include "Submodel.h"

namespace orvsmis {

class RawData;
class ArrayRawData;

// Where the array stands ("Unit Location" of the array record), tied to
// the chassis. The position is part of the key, so a move replaces the
// instance. The arguments' path is the chassis.
class Location : public Submodel {
public:
    Pegasus::CIMObjectPath Create(ParentArgs& args) override;
    // The location of newData.
    void Delete(ParentArgs& args) override;
    // The location of oldData when useOld is true, of newData otherwise.
    void Delete(ParentArgs& args, bool useOld);
    void Modify(ParentArgs& args) override;

    // The handlers of the chassis' events.
    static void OnCreate(ParentArgs& args);
    static void OnModify(ParentArgs& args);
    static void OnDelete(ParentArgs& args);

    // Another record type throws CIMException 4.
    Pegasus::CIMInstance WrapInstance(ParentArgs& args);
    Pegasus::CIMObjectPath WrapReference(ParentArgs& args, bool useOld);

    static bool isModified(const ArrayRawData* newData, const ArrayRawData* oldData);

private:
    static const ArrayRawData* asArray(const RawData* record);
};

}  // namespace orvsmis

#endif
