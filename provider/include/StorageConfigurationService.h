#ifndef ORVSMIS_STORAGECONFIGURATIONSERVICE_H
#define ORVSMIS_STORAGECONFIGURATIONSERVICE_H

#include <string>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>

#include "EventArgs.h"
#include "Submodel.h"

namespace orvsmis {

// The array's block configuration service: the target of the pool and
// volume methods. One instance per array, made with the array's
// ComputerSystem, hosted by it, with its configuration capabilities.
class StorageConfigurationService : public Submodel {
public:
    // args.path is the array's ComputerSystem, args.newData the array record.
    virtual Pegasus::CIMObjectPath Create(ParentArgs& args);
    virtual void Delete(ParentArgs& args);

    // The instance of the array record; CIMException 4 for another record.
    static Pegasus::CIMInstance WrapInstance(const RawData* record);
    static Pegasus::CIMObjectPath WrapReference(const RawData* record);
    // The path of the service of an array.
    static Pegasus::CIMObjectPath WrapReference(const std::string& arrayId);
    // "<vendor>.<brand> : default storage configuration service.in.<array>"
    static std::string Name(const std::string& arrayId);
};

}  // namespace orvsmis

#endif
