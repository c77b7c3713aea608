#ifndef ORVSMIS_ELEMENTSETTINGDATA_H
#define ORVSMIS_ELEMENTSETTINGDATA_H

#include <string>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

#include "Controller.h"

namespace orvsmis {

// Binds a setting to an element; as a controller it is the route by which a
// volume's setting comes into being on a client's first request.
class ElementSettingData : public Controller {
public:
    static Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context,
                                         const Pegasus::CIMObjectPath& element, const Pegasus::CIMObjectPath& setting,
                                         Pegasus::Uint16 isDefault, Pegasus::Uint16 isCurrent, Pegasus::Uint16 isNext);

    // Only volume -> setting is served: a missing setting is made and
    // delivered; an existing one is left to the repository.
    void Associator(AssoArgs& args, const std::string& objectClass, const std::string& resultClass) override;
    void AssociatorNames(AssoNameArgs& args, const std::string& objectClass, const std::string& resultClass) override;

private:
    // Reads SystemName and DeviceID (without its "h") of the volume.
    static void getArrayIdAndLdnFromStorageVolume(const Pegasus::OperationContext& context,
                                                  const Pegasus::CIMObjectPath& volume, std::string& arrayId,
                                                  std::string& ldn);
    // The setting of the volume when it had to be made now; false when it
    // existed already or could not be made.
    static bool makeSettingOnDemand(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& volume,
                                    Pegasus::CIMInstance& created);
};

}  // namespace orvsmis

#endif
