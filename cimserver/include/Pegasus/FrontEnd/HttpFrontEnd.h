#ifndef Pegasus_FrontEnd_HttpFrontEnd_h
#define Pegasus_FrontEnd_HttpFrontEnd_h

#include <Pegasus/Security/Authenticator.h>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace httplib {
class Server;
}

namespace Pegasus {

// The server's network face: CIM-XML requests over HTTP and HTTPS
// (cpp-httplib), checked against the user file before anything else runs.
//
// M-POST: the HTTP library refuses request methods it does not know while it
// reads the request line, before any header or body is read, so an M-POST
// cannot be served. It is answered "501 Not Implemented", which tells a
// CIM client to send the same request again with POST.
class HttpFrontEnd
{
public:
    // Largest request body accepted; a longer one is answered 413.
    static constexpr size_t defaultMaxBodyBytes = 64u * 1024u * 1024u;
    // Requests served at once per protocol.
    static constexpr int defaultThreads = 64;
    // Answers at least this large (or in pieces) are sent from the handler's
    // own text (never copied), and once sent the memory they and their
    // making used is given back to the system, so that one large enumeration
    // does not leave the server's resident size raised.
    static constexpr size_t largeAnswerBytes = 1024u * 1024u;

    struct Options
    {
        bool enableHttp = true;
        int httpPort = 5988;                // 0: any free port (tests)
        bool enableHttps = true;
        int httpsPort = 5989;
        bool loopbackOnly = false;          // bind 127.0.0.1 instead of every address
        std::string certificateFile;
        std::string keyFile;
        std::string realm;                  // the host name, for the Basic challenge
        size_t maxBodyBytes = defaultMaxBodyBytes;
        int threads = defaultThreads;
    };

    // One CIM request as the operation handler sees it.
    struct Request
    {
        std::string method;                 // "POST"
        std::map<std::string, std::string> headers;  // names in lower case
        std::string body;
        std::string user;                   // the authenticated user ("" without authentication)
        std::string clientAddress;
        bool secure = false;                // came over HTTPS
    };

    struct Response
    {
        int status = 200;
        std::vector<std::pair<std::string, std::string>> headers;
        std::string contentType = "application/xml; charset=utf-8";
        // The body is bodyParts in order, then body: a large answer may come
        // in pieces and goes out as they are, with its whole length announced.
        std::vector<std::string> bodyParts;
        std::string body;
    };

    typedef std::function<Response(const Request&)> Handler;

    HttpFrontEnd(const Options& options, Authenticator& authenticator, Handler handler);
    ~HttpFrontEnd();
    HttpFrontEnd(const HttpFrontEnd&) = delete;
    HttpFrontEnd& operator=(const HttpFrontEnd&) = delete;

    // Binds the enabled ports and starts serving; throws std::runtime_error
    // naming the port when a bind fails or the certificate cannot be used.
    void start();
    // Stops accepting and waits for the requests under way.
    void stop();

    int httpPort() const { return _boundHttpPort; }
    int httpsPort() const { return _boundHttpsPort; }

private:
    void _configure(httplib::Server& server, bool secure);
    int _bind(httplib::Server& server, int port, const char* what);

    Options _options;
    Authenticator& _authenticator;
    Handler _handler;
    std::unique_ptr<httplib::Server> _http;
    std::unique_ptr<httplib::Server> _https;
    std::vector<std::thread> _threads;
    int _boundHttpPort = 0;
    int _boundHttpsPort = 0;
    std::atomic<bool> _running{false};
};

} // namespace Pegasus

#endif
