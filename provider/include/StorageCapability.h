#ifndef ORVSMIS_STORAGECAPABILITY_H
#define ORVSMIS_STORAGECAPABILITY_H

#include <string>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

#include "EventArgs.h"

namespace orvsmis {

class RawData;

// What the pool models hand over when a pool gains or loses its
// capabilities. The record is not owned; its name ends the InstanceID.
class StorageCapabilityArgs : public EventArgs {
public:
    StorageCapabilityArgs(const Pegasus::OperationContext& ctx, const RawData* record, int raid,
                          const Pegasus::CIMObjectPath& element, bool isPrimordial, bool isVirtualPool)
        : context(ctx), poolData(record), raidCode(raid), elementPath(element), primordial(isPrimordial),
          isVirtual(isVirtualPool) {}

    const Pegasus::OperationContext& context;
    const RawData* poolData;
    int raidCode;
    Pegasus::CIMObjectPath elementPath;
    bool primordial;
    bool isVirtual;
};

// The capabilities of a pool, which follow from its RAID code alone, with
// the pool's settings hint beside them.
class StorageCapability {
public:
    // One row of the fixed capability table.
    struct RaidCapability {
        const char* name;
        Pegasus::Uint16 dataRedundancy;
        Pegasus::Uint16 packageRedundancy;
    };
    // The row of a RAID code; "UnknownRaidType" with zero values for any
    // code outside the table.
    static RaidCapability LookUp(int raidCode);

    // Stores the capability, the ElementCapabilities from the element to it
    // and the hint; returns the capability's path.
    static Pegasus::CIMObjectPath Create(StorageCapabilityArgs* args);
    // Removes the hint, the ElementCapabilities references and the
    // capability.
    static void Delete(StorageCapabilityArgs* args);
    static Pegasus::CIMInstance WrapInstance(StorageCapabilityArgs* args);
    // id is the text behind ".in." (the pool's name, with "h" for a
    // concrete pool).
    static Pegasus::CIMObjectPath WrapReference(const std::string& id, int raidCode);
    // The RAID code a goal or hint asks for by its redundancy goals; 0 for
    // a pair outside the table or missing properties.
    static int ToRaidType(const Pegasus::CIMInstance& instance);

private:
    static std::string instanceId(const std::string& id, int raidCode);
    static std::string idOf(StorageCapabilityArgs* args);
};

}  // namespace orvsmis

#endif
