#include <Pegasus/FrontEnd/HttpFrontEnd.h>

#include <cerrno>
#include <cstdlib>

#include <httplib.h>

#include <algorithm>
#include <cctype>
#include <malloc.h>
#include <sys/socket.h>
#include <stdexcept>

namespace Pegasus {

namespace {

std::string lower(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

} // namespace

HttpFrontEnd::HttpFrontEnd(const Options& options, Authenticator& authenticator, Handler handler)
    : _options(options), _authenticator(authenticator), _handler(std::move(handler))
{
}

HttpFrontEnd::~HttpFrontEnd()
{
    stop();
}

void HttpFrontEnd::_configure(httplib::Server& server, bool secure)
{
    const int threads = _options.threads > 0 ? _options.threads : defaultThreads;
    server.new_task_queue = [threads] { return new httplib::ThreadPool(static_cast<size_t>(threads)); };
    server.set_payload_max_length(_options.maxBodyBytes);
    // A request that stops sending holds a worker only this long.
    server.set_read_timeout(10, 0);
    server.set_write_timeout(60, 0);
    server.set_keep_alive_max_count(1000);
    // Answers go out in two writes (head, body): without this the second
    // waits for the client's delayed acknowledgement on kept-alive connections.
    server.set_tcp_nodelay(true);
    // A body announced beyond the limit is refused before it is read.
    const size_t maxBody = _options.maxBodyBytes;
    server.set_pre_routing_handler([maxBody](const httplib::Request& req, httplib::Response& res) {
        const std::string length = req.get_header_value("Content-Length");
        if (length.empty()) return httplib::Server::HandlerResponse::Unhandled;
        errno = 0;
        char* end = nullptr;
        const unsigned long long announced = std::strtoull(length.c_str(), &end, 10);
        if (end == length.c_str() || *end != '\0' || errno == ERANGE || announced > maxBody) {
            res.status = 413;
            res.set_header("Connection", "close");
            res.set_content("", "text/plain");
            return httplib::Server::HandlerResponse::Handled;
        }
        return httplib::Server::HandlerResponse::Unhandled;
    });

    server.set_error_handler([](const httplib::Request& req, httplib::Response& res) {
        if (req.method == "M-POST")
        {
            // Tells the client to fall back to POST.
            res.status = 501;
            res.set_content("", "text/plain");
        }
    });

    auto serve = [this, secure](const httplib::Request& req, httplib::Response& res) {
        const std::string authorization = req.get_header_value("Authorization");
        Authenticator::Result auth;
        try
        {
            auth = _authenticator.check(authorization, req.remote_addr);
        }
        catch (const std::exception& e)
        {
            // The user file cannot be read: nobody gets in, and the client learns why.
            res.status = 500;
            res.set_header("PGErrorDetail", e.what());
            return;
        }
        if (!auth.authenticated)
        {
            if (auth.delay.count() > 0)
                std::this_thread::sleep_for(auth.delay);
            res.status = 401;
            res.set_header("WWW-Authenticate", Authenticator::challenge(_options.realm));
            res.set_header("PGErrorDetail", "Invalid%20user%20or%20password");
            return;
        }
        Request request;
        request.method = req.method;
        for (const auto& header : req.headers)
        {
            if (lower(header.first) == "authorization")
                continue;
            request.headers[lower(header.first)] = header.second;
        }
        request.body = req.body;
        request.user = auth.user;
        request.clientAddress = req.remote_addr;
        request.secure = secure;
        Response response;
        try
        {
            response = _handler(request);
        }
        catch (const std::exception& e)
        {
            response = Response();
            response.status = 500;
            response.headers.emplace_back("PGErrorDetail", e.what());
            response.contentType = "text/plain";
        }
        res.status = response.status;
        for (const auto& header : response.headers)
            res.set_header(header.first.c_str(), header.second);
        if (response.bodyParts.empty() && response.body.size() < largeAnswerBytes)
        {
            res.set_content(response.body, response.contentType.c_str());
            return;
        }
        // The text goes out from here with its length announced; it is freed
        // when the library is done with the answer, and the heap trimmed.
        auto text = std::make_shared<std::vector<std::string>>(std::move(response.bodyParts));
        text->push_back(std::move(response.body));
        size_t length = 0;
        for (const std::string& part : *text)
            length += part.size();
        const std::vector<std::string>* parts = text.get();
        res.set_content_provider(length, response.contentType.c_str(),
            [parts, part = size_t(0), partStart = size_t(0)](size_t offset, size_t want,
                httplib::DataSink& sink) mutable {
                // The library asks for the text in order; a retry may ask again
                // from an earlier offset.
                if (offset < partStart)
                {
                    part = 0;
                    partStart = 0;
                }
                while (part < parts->size() && offset >= partStart + (*parts)[part].size())
                    partStart += (*parts)[part++].size();
                if (part >= parts->size())
                    return false;
                const std::string& piece = (*parts)[part];
                const size_t at = offset - partStart;
                const size_t n = std::min<size_t>({want, piece.size() - at, 256u * 1024u});
                return sink.write(piece.data() + at, n);
            },
            [text](bool) mutable {
                text.reset();
                ::malloc_trim(0);
            });
    };
    server.Post(".*", serve);
    // Only POST carries CIM requests.
    auto refuse = [](const httplib::Request&, httplib::Response& res) {
        res.status = 405;
        res.set_header("Allow", "POST");
    };
    server.Get(".*", refuse);
    server.Put(".*", refuse);
    server.Delete(".*", refuse);
    server.Patch(".*", refuse);
}

int HttpFrontEnd::_bind(httplib::Server& server, int port, const char* what)
{
    const std::string host = _options.loopbackOnly ? "127.0.0.1" : "0.0.0.0";
    // The library listens with a backlog of 5, too short for many clients
    // connecting at once (the kernel then drops connections it has already
    // accepted). The listening socket is remembered here and its backlog
    // raised once it listens.
    int listening = -1;
    server.set_socket_options([&listening](int sock) {
        int yes = 1;
        ::setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        listening = sock;
    });
    int bound = port;
    if (port == 0)
        bound = server.bind_to_any_port(host);
    else if (!server.bind_to_port(host, port))
        bound = -1;
    if (bound <= 0)
        throw std::runtime_error(std::string("cannot listen for ") + what + " on " + host + ":" +
                                 std::to_string(port));
    if (listening >= 0)
        ::listen(listening, SOMAXCONN);
    return bound;
}

void HttpFrontEnd::start()
{
    if (_running)
        return;
    if (_options.enableHttp)
    {
        _http.reset(new httplib::Server());
        _configure(*_http, false);
        _boundHttpPort = _bind(*_http, _options.httpPort, "HTTP");
    }
    if (_options.enableHttps)
    {
        auto https = std::make_unique<httplib::SSLServer>(_options.certificateFile.c_str(),
                                                          _options.keyFile.c_str());
        if (!https->is_valid())
        {
            if (_http)
                _http.reset();
            throw std::runtime_error("cannot use the HTTPS certificate \"" + _options.certificateFile +
                                     "\" with the key \"" + _options.keyFile + "\"");
        }
        _https = std::move(https);
        _configure(*_https, true);
        _boundHttpsPort = _bind(*_https, _options.httpsPort, "HTTPS");
    }
    _running = true;
    if (_http)
        _threads.emplace_back([this] { _http->listen_after_bind(); });
    if (_https)
        _threads.emplace_back([this] { _https->listen_after_bind(); });
    // Bound already: connections queue in the backlog until the loops run.
    for (int i = 0; i < 500; ++i)
    {
        if ((!_http || _http->is_running()) && (!_https || _https->is_running()))
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

void HttpFrontEnd::stop()
{
    if (!_running.exchange(false))
        return;
    if (_http)
        _http->stop();
    if (_https)
        _https->stop();
    for (std::thread& t : _threads)
        t.join();
    _threads.clear();
    _http.reset();
    _https.reset();
}

} // namespace Pegasus
