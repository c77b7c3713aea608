#include "ServerSystem.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstring>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Constants.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/System.h>

#include "CimHandle.h"
#include "MC.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

const char* const LOOPBACK = "127.0.0.1";

void traceFailure(const char* what, const CIMException& e) {
    SMIS_TRACE(LEVEL2, "Failed to %s ServerSystem instance.ErrorCode=%d,ErrorMessage=\"%s\"", what, int(e.getCode()),
               MC::ToStd(e.getMessage()).c_str());
}

}  // namespace

std::string ServerSystem::ResolveAddress(const std::string& host) {
    if (host.empty()) return LOOPBACK;
    struct addrinfo hints;
    std::memset(&hints, 0, sizeof hints);
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    struct addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0 || found == nullptr) {
        SMIS_TRACE(LEVEL3, "Info[ ServerSystem ] : %s cannot be resolved, %s is used", host.c_str(), LOOPBACK);
        return LOOPBACK;
    }
    char text[INET_ADDRSTRLEN] = {0};
    const struct sockaddr_in* address = reinterpret_cast<const struct sockaddr_in*>(found->ai_addr);
    const bool ok = ::inet_ntop(AF_INET, &address->sin_addr, text, sizeof text) != nullptr;
    ::freeaddrinfo(found);
    return ok ? std::string(text) : std::string(LOOPBACK);
}

std::string ServerSystem::getIP() { return ResolveAddress(MC::ToStd(System::getHostName())); }

CIMObjectPath ServerSystem::WrapReference() {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), CIMValue(MC::ClassName("System").getString())));
    keys.append(CIMKeyBinding(CIMName("Name"), CIMValue(MC::ToString(getIP()))));
    return CIMObjectPath(String(), PEGASUS_NAMESPACENAME_INTEROP, MC::ClassName("System"), keys);
}

CIMInstance ServerSystem::WrapInstance() {
    const CIMName className = MC::ClassName("System");
    const std::string address = getIP();
    std::string host = MC::ToStd(System::getFullyQualifiedHostName());
    if (host.empty()) host = MC::ToStd(System::getHostName());
    CIMInstance instance(className);
    instance.addProperty(CIMProperty(CIMName("CreationClassName"), CIMValue(className.getString())));
    instance.addProperty(CIMProperty(CIMName("NameFormat"), CIMValue(String("IP"))));
    instance.addProperty(CIMProperty(CIMName("Name"), CIMValue(MC::ToString(address))));
    instance.addProperty(CIMProperty(CIMName("Description"),
                                     CIMValue(MC::ToString("Host " + host + " of the CIM server that manages the "
                                                           "ORV disk array"))));
    instance.addProperty(CIMProperty(CIMName("ElementName"), CIMValue(MC::ToString(host.empty() ? address : host))));
    Array<Uint16> status;
    status.append(2);  // OK
    instance.addProperty(CIMProperty(CIMName("OperationalStatus"), CIMValue(status)));
    instance.setPath(WrapReference());
    return instance;
}

CIMObjectPath ServerSystem::Create(const OperationContext& context) {
    try {
        CIMObjectPath path =
            Singleton<CimHandle>::Instance()->CreateInstance(context, PEGASUS_NAMESPACENAME_INTEROP, WrapInstance());
        path.setNameSpace(PEGASUS_NAMESPACENAME_INTEROP);
        return path;
    } catch (const CIMException& e) {
        traceFailure("create", e);
        throw;
    }
}

void ServerSystem::Delete(const OperationContext& context) {
    try {
        Singleton<CimHandle>::Instance()->DeleteInstance(context, PEGASUS_NAMESPACENAME_INTEROP, WrapReference());
    } catch (const CIMException& e) {
        if (e.getCode() == CIM_ERR_NOT_FOUND) return;
        traceFailure("delete", e);
        throw;
    }
}

}  // namespace orvsmis
