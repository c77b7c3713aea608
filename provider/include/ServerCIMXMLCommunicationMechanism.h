#ifndef ORVSMIS_SERVERCIMXMLCOMMUNICATIONMECHANISM_H
#define ORVSMIS_SERVERCIMXMLCOMMUNICATIONMECHANISM_H

#include <string>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

namespace orvsmis {

// The CIM-XML access point of the object manager, class prefix +
// "CIMXMLCommunicationMechanism": the address and port clients use.
class ServerCIMXMLCommunicationMechanism {
public:
    // Writes the instance, ServerHostedAccessPoint from the system and
    // ServerCommMechanismForManager from the object manager; returns its
    // path.
    Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context,
                                  const Pegasus::CIMObjectPath& systemPath,
                                  const Pegasus::CIMObjectPath& managerPath);
    // The HostedAccessPoint and CommMechanismForManager references where it
    // is Dependent, then the instance.
    void Delete(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& mechanismPath);

    Pegasus::CIMInstance WrapInstance(const Pegasus::OperationContext& context,
                                      const Pegasus::CIMObjectPath& systemPath,
                                      const Pegasus::CIMObjectPath& managerPath);
};

}  // namespace orvsmis

#endif
