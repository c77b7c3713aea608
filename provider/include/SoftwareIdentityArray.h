#ifndef ORVSMIS_SOFTWAREIDENTITYARRAY_H
#define ORVSMIS_SOFTWAREIDENTITYARRAY_H

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>

#include "EventArgs.h"

namespace orvsmis {

class RawData;
class ArrayRawData;

// The array's firmware as a software identity, installed on the computer
// system. The arguments' path is the computer system; newData the array
// record.
class SoftwareIdentityArray {
public:
    Pegasus::CIMObjectPath Create(ParentArgs* args);
    void Delete(ParentArgs* args);
    // A new firmware version is written in place; a new array name (part of
    // the key) replaces the instance.
    void Modify(ParentArgs* args);

    // The handlers of the computer system's events.
    static void OnCreate(ParentArgs& args);
    static void OnModify(ParentArgs& args);
    static void OnDelete(ParentArgs& args);

    // Both read the given record; another record type throws CIMException 4.
    static Pegasus::CIMInstance WrapInstance(const RawData* record);
    static Pegasus::CIMObjectPath WrapReference(const RawData* record);

    // The path the last Create wrote; empty after Delete.
    static Pegasus::CIMObjectPath GetPath();

private:
    static const ArrayRawData* asArray(const RawData* record);
    static Pegasus::CIMObjectPath m_path;
};

}  // namespace orvsmis

#endif
