#ifndef ORVSMIS_SERVERSYSTEM_H
#define ORVSMIS_SERVERSYSTEM_H

#include <string>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

namespace orvsmis {

// The host of the CIM server, as the module describes it in the interop
// namespace: class prefix + "System", named by the host's address.
class ServerSystem {
public:
    // Writes the instance; returns its path (interop namespace set).
    // CIMException on failure, traced.
    Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context);
    // Deletes the instance; a missing one is not an error.
    void Delete(const Pegasus::OperationContext& context);

    Pegasus::CIMInstance WrapInstance();
    Pegasus::CIMObjectPath WrapReference();

    // The address of this host: System::getHostName resolved, or
    // "127.0.0.1" when it cannot be resolved.
    static std::string getIP();
    // The first IPv4 address of host, or "127.0.0.1" when it has none.
    static std::string ResolveAddress(const std::string& host);
};

}  // namespace orvsmis

#endif
