#ifndef ORVSMIS_STORAGESETTING_H
#define ORVSMIS_STORAGESETTING_H

#include <string>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

#include "EventArgs.h"

namespace orvsmis {

// The setting of one volume, derived from its pool's hint and made only
// when a client first asks for it.
class StorageSetting {
public:
    static Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context,
                                         const Pegasus::CIMObjectPath& volumePath, const std::string& arrayId,
                                         const std::string& ldn);
    // Walks volume -> pool -> capability -> hint; CIMException 4 when a step
    // finds nothing.
    static Pegasus::CIMInstance WarpInstance(const Pegasus::OperationContext& context,
                                             const Pegasus::CIMObjectPath& volumePath, const std::string& arrayId,
                                             const std::string& ldn);
    // InstanceID = arrayId ":" ldn "h".
    static Pegasus::CIMObjectPath WarpReference(const std::string& arrayId, const std::string& ldn);
    // The same from the logical disk record of the args.
    static Pegasus::CIMObjectPath WarpReference(ParentArgs& args);
    // Removes the setting of the volume of args with its ElementSettingData
    // references; a volume without a setting is no failure.
    static void Delete(ParentArgs& args);

private:
    static void addPropertyForCopyServer(const std::string& arrayId, const std::string& ldn,
                                         Pegasus::CIMInstance& instance);
};

}  // namespace orvsmis

#endif
