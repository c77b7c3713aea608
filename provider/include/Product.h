#ifndef ORVSMIS_PRODUCT_H
#define ORVSMIS_PRODUCT_H

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>

#include "EventArgs.h"
#include "Submodel.h"

namespace orvsmis {

class RawData;

// The product a physical package is: the array's product under the
// chassis (array record) or a disk's product under its package (disk
// record, a child of the array's product). Version and serial number are
// part of the key, so a firmware change replaces the instance. The
// arguments' path is the chassis or the disk's package.
class Product : public Submodel {
public:
    Pegasus::CIMObjectPath Create(ParentArgs& args) override;
    void Delete(ParentArgs& args) override;
    void Modify(ParentArgs& args) override;

    // From newData, or from oldData when useOld is true. A record that is
    // neither an array nor a disk record throws CIMException 4.
    Pegasus::CIMInstance WrapInstance(ParentArgs& args, bool useOld = false);
    Pegasus::CIMObjectPath WrapReference(ParentArgs& args, bool useOld = false);

    // True when a property the product shows differs between the records
    // (both of the same kind).
    static bool isModified(const RawData* newData, const RawData* oldData);

    // The path of the array's product the last Create or Modify wrote
    // (empty after its Delete); the disks' products are its children.
    static Pegasus::CIMObjectPath GetArrayProductPath();

private:
    static const RawData* recordOf(ParentArgs& args, bool useOld);
    static Pegasus::CIMObjectPath m_arrayProductPath;
};

}  // namespace orvsmis

#endif
