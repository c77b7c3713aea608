#ifndef ORVSMIS_STORAGECONFIGURATIONCAPABILITY_H
#define ORVSMIS_STORAGECONFIGURATIONCAPABILITY_H

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>

#include "EventArgs.h"

namespace orvsmis {

// What the configuration service offers; lives with the service. The
// parent path of the args is the service.
class StorageConfigurationCapability {
public:
    static const Pegasus::Uint16 asynActions[8];
    static const Pegasus::Uint16 elementFeatures[4];
    static const Pegasus::Uint16 elementTypes[3];
    static const Pegasus::Uint16 poolFeatures[3];

    static Pegasus::CIMObjectPath Create(ParentArgs* args);
    static void Delete(ParentArgs* args);
    // The record decides the InstanceID: an array or a pool record, else
    // CIMException 4 "Error : raw data typemiss".
    static Pegasus::CIMInstance WrapInstance(DataEventArgs* args);
    static Pegasus::CIMObjectPath WrapReference(DataEventArgs* args);
};

}  // namespace orvsmis

#endif
