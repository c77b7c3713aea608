#ifndef Pegasus_FrontEnd_NetworkFrontEnd_h
#define Pegasus_FrontEnd_NetworkFrontEnd_h

#include <memory>

namespace Pegasus {

class CIMServer;
class UserFile;
class Authenticator;
class ServerCIMOMHandleRep;
class CIMXmlOperationHandler;
class HttpFrontEnd;

// The server's network face: HTTP and HTTPS with Basic authentication
// against the server's user file, carrying CIM-XML operations to the
// dispatcher as a client (committed repository content only).
class NetworkFrontEnd {
public:
    explicit NetworkFrontEnd(CIMServer& server);
    ~NetworkFrontEnd();
    NetworkFrontEnd(const NetworkFrontEnd&) = delete;
    NetworkFrontEnd& operator=(const NetworkFrontEnd&) = delete;

    // Adds this front end to the server's listeners: it starts once the
    // providers run and stops before they are terminated.
    void attach();

    void start();
    void stop();
    int httpPort() const;
    int httpsPort() const;

private:
    CIMServer& _server;
    std::unique_ptr<UserFile> _users;
    std::unique_ptr<Authenticator> _authenticator;
    std::shared_ptr<ServerCIMOMHandleRep> _client;
    std::unique_ptr<CIMXmlOperationHandler> _handler;
    std::unique_ptr<HttpFrontEnd> _http;
};

} // namespace Pegasus

#endif
