#include <Pegasus/FrontEnd/NetworkFrontEnd.h>

#include <Pegasus/CIMXml/CIMXmlOperationHandler.h>
#include <Pegasus/Common/System.h>
#include <Pegasus/Common/Tracer.h>
#include <Pegasus/FrontEnd/HttpFrontEnd.h>
#include <Pegasus/Security/Authenticator.h>
#include <Pegasus/Security/UserFile.h>
#include <Pegasus/Server/CIMServer.h>
#include <Pegasus/Server/ServerCIMOMHandleRep.h>

namespace Pegasus {

NetworkFrontEnd::NetworkFrontEnd(CIMServer& server) : _server(server) {}

NetworkFrontEnd::~NetworkFrontEnd() { stop(); }

void NetworkFrontEnd::attach() {
    _server.addListener({[this] { start(); }, [this] { stop(); }, "the HTTP front end"});
}

void NetworkFrontEnd::start() {
    if (_http) return;
    const CIMServerConfig& config = _server.config();
    const std::string host = System::getFullyQualifiedHostName().toUtf8();
    _users = std::make_unique<UserFile>(config.passwordFile);
    _authenticator = std::make_unique<Authenticator>(*_users, config.enableAuthentication);
    _client = std::make_shared<ServerCIMOMHandleRep>(_server.dispatcher(), Caller::Client);
    _handler = std::make_unique<CIMXmlOperationHandler>(_server.schema(), *_client, host, &_server.dispatcher());

    HttpFrontEnd::Options options;
    options.enableHttp = config.enableHttpConnection;
    options.httpPort = config.httpPort;
    options.enableHttps = config.enableHttpsConnection;
    options.httpsPort = config.httpsPort;
    options.loopbackOnly = config.loopbackOnly;
    options.certificateFile = config.sslCertificateFilePath;
    options.keyFile = config.sslKeyFilePath;
    options.realm = host;
    CIMXmlOperationHandler* handler = _handler.get();
    _http = std::make_unique<HttpFrontEnd>(options, *_authenticator,
        [handler](const HttpFrontEnd::Request& in) {
            CIMXmlOperationHandler::Request request;
            request.httpMethod = in.method;
            for (const auto& header : in.headers) request.headers.emplace_back(header.first, header.second);
            const auto type = in.headers.find("content-type");
            if (type != in.headers.end()) request.contentType = type->second;
            request.body = in.body;
            request.userName = in.user;
            CIMXmlOperationHandler::Response answer = handler->handle(request);
            HttpFrontEnd::Response out;
            out.status = answer.status;
            out.headers = std::move(answer.headers);
            if (!answer.contentType.empty()) out.contentType = answer.contentType;
            out.bodyParts = std::move(answer.bodyParts);
            out.body = std::move(answer.body);
            return out;
        });
    _http->start();
    PEG_TRACE((TRC_HTTP, Tracer::LEVEL2, "front end listening: http %d, https %d", _http->httpPort(),
        _http->httpsPort()));
}

void NetworkFrontEnd::stop() {
    if (!_http) return;
    _http->stop();
    _http.reset();
    _handler.reset();
    _client.reset();
    _authenticator.reset();
    _users.reset();
}

int NetworkFrontEnd::httpPort() const { return _http ? _http->httpPort() : 0; }

int NetworkFrontEnd::httpsPort() const { return _http ? _http->httpsPort() : 0; }

} // namespace Pegasus
