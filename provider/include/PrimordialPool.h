#ifndef ORVSMIS_PRIMORDIALPOOL_H
#define ORVSMIS_PRIMORDIALPOOL_H

#include <string>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

#include "EventArgs.h"

namespace orvsmis {

// The one primordial pool of an array: all raw disk capacity, computed from
// the disk index, with the associations between the pool and each disk
// extent. It has no record of its own and follows the array.
class PrimordialPool {
public:
    // The pool, its hosting and its eight capabilities.
    Pegasus::CIMObjectPath Create(DataEventArgs* args);
    void Delete(DataEventArgs* args);
    // Stores the instance anew: the disk sizes move its two space values.
    void UpdateInstance(EventArgs* args);

    static Pegasus::CIMObjectPath GetPath(const std::string& arrayId);
    // "<vendor>.<brand> : Primordial Pool.in.<array>"
    static std::string InstanceID(const std::string& arrayId);

    static void AssocStorageExtent(const Pegasus::OperationContext& context, const std::string& arrayId,
                                   const Pegasus::CIMObjectPath& extentPath, bool used);
    static void UnassocStorageExtent(const Pegasus::OperationContext& context, const std::string& arrayId,
                                     const Pegasus::CIMObjectPath& extentPath);
    static void UpdateRemainingExtent(const Pegasus::OperationContext& context, const std::string& arrayId,
                                      const Pegasus::CIMObjectPath& extentPath, bool used);

    Pegasus::CIMInstance warpInstance(const std::string& arrayId);
    static Pegasus::CIMObjectPath warpReference(const std::string& arrayId);
};

}  // namespace orvsmis

#endif
