#ifndef Pegasus_FrontEnd_InteropContent_h
#define Pegasus_FrontEnd_InteropContent_h

#include <Pegasus/Common/CIMInstance.h>

#include <string>
#include <vector>

namespace Pegasus {

class Repository;

// The interop namespace's description of the server itself, which clients
// read to find their way: the host system, the object manager it hosts, one
// CIM_Namespace per namespace served, one CIM-XML communication mechanism per
// protocol offered, and the associations between them. Written at start; what an earlier run
// wrote is replaced, so the content always matches the running server.
class InteropContent
{
public:
    struct Settings
    {
        std::string hostName;               // the name clients reach the server by
        std::string serverVersion;
        bool httpEnabled = true;
        int httpPort = 5988;
        bool httpsEnabled = true;
        int httpsPort = 5989;
        bool authentication = true;
        std::vector<std::string> namespaces;  // every namespace served
    };

    static const char* const interopNamespace;  // "root/interop"

    // The instances, in the order they must be created (associations last).
    static std::vector<CIMInstance> build(const Settings& settings);

    // Replaces what an earlier start wrote with build(settings), in one
    // repository transaction.
    static void write(Repository& repository, const Settings& settings);
};

} // namespace Pegasus

#endif
