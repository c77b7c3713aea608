#ifndef ORVSMIS_SERVEROBJECTMANAGER_H
#define ORVSMIS_SERVEROBJECTMANAGER_H

#include <string>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

#include "Delegate.h"

namespace orvsmis {

// The CIM server's object manager as the module describes it: class
// prefix + "ObjectManager", hosted by the ServerSystem, named by the
// address clients reach it at.
class ServerObjectManager {
public:
    // Fired with the object manager's path after Create, and before Delete.
    static ModelEvent AfterCreated;
    static ModelEvent BeforeDeleted;

    // Writes the instance and ServerHostedService from systemPath to it;
    // returns its path (interop namespace set).
    Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context,
                                  const Pegasus::CIMObjectPath& systemPath);
    // BeforeDeleted, the HostedService references, then the instance.
    void Delete(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& systemPath);

    Pegasus::CIMInstance WrapInstance(const Pegasus::CIMObjectPath& systemPath);
    Pegasus::CIMObjectPath WrapReference(const Pegasus::CIMObjectPath& systemPath);

    // "http://<address>:<port>".
    static std::string Name(const std::string& address, int port);
    // The port of the "wbem-http" service, 5988 without an entry.
    static int getPortNumber();
};

}  // namespace orvsmis

#endif
