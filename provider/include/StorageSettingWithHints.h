#ifndef ORVSMIS_STORAGESETTINGWITHHINTS_H
#define ORVSMIS_STORAGESETTINGWITHHINTS_H

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

namespace orvsmis {

// The settings hint that stands beside each capability: what a client may
// pass as the goal of a pool or volume request.
class StorageSettingWithHints {
public:
    // Stores the hint of the capability instance and associates it to the
    // capability; returns the hint's path.
    static Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context,
                                         const Pegasus::CIMInstance& capability, bool withRange, bool isVirtual);
    // Deletes the StorageSettingsAssociatedToCapabilities references of the
    // capability, then the hints they named.
    static void Delete(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& capabilityPath);
    // CIMException 4 when the capability lacks InstanceID or a colon in it.
    static Pegasus::CIMInstance WrapInstance(const Pegasus::CIMInstance& capability, bool withRange,
                                             bool isVirtual);
};

}  // namespace orvsmis

#endif
