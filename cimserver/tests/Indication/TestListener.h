#ifndef CIMSERVER_TESTS_INDICATION_TESTLISTENER_H
#define CIMSERVER_TESTS_INDICATION_TESTLISTENER_H

// An in-process CIM-XML listener for the delivery tests: records every
// ExportIndication it gets, and can refuse requests on demand.

#include <Pegasus/CIMXml/CIMXmlReader.h>
#include <Pegasus/CIMXml/CIMXmlWriter.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/Exception.h>

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

class TestListener {
public:
    // Port 0: any free port.
    explicit TestListener(int port = 0) {
        _server.set_tcp_nodelay(true);
        _server.Post(".*", [this](const httplib::Request& request, httplib::Response& response) {
            std::lock_guard<std::mutex> lock(_mutex);
            ++_requests;
            _lastHeaders = request.headers;
            if (_refuseStatus != 0) {
                response.status = _refuseStatus;
                return;
            }
            const Pegasus::CIMXmlReader::ExportIndication exported =
                Pegasus::CIMXmlReader::readExportIndication(request.body);
            _received.push_back(exported.indication);
            if (_answerError) {
                response.set_content(Pegasus::CIMXmlWriter::formatExportIndicationError(exported.messageId,
                    Pegasus::CIMException(Pegasus::CIM_ERR_FAILED, "refused by the test")), "application/xml");
            } else {
                response.set_content(Pegasus::CIMXmlWriter::formatExportIndicationResponse(exported.messageId),
                    "application/xml");
            }
            response.set_header("CIMExport", "MethodResponse");
            _changed.notify_all();
        });
        if (port == 0) {
            _port = _server.bind_to_any_port("127.0.0.1");
        } else {
            _port = port;
            bool bound = false;
            // The port may still be in TIME_WAIT from an earlier listener.
            for (int i = 0; i < 50 && !bound; ++i) {
                bound = _server.bind_to_port("127.0.0.1", port);
                if (!bound) std::this_thread::sleep_for(std::chrono::milliseconds(100));
            }
            if (!bound) _port = -1;
        }
        if (_port <= 0) throw std::runtime_error("the test listener cannot bind");
        _thread = std::thread([this] { _server.listen_after_bind(); });
    }
    ~TestListener() { stop(); }

    void stop() {
        _server.stop();
        if (_thread.joinable()) _thread.join();
    }

    int port() const { return _port; }
    std::string url(const std::string& path = "/") const {
        return "http://127.0.0.1:" + std::to_string(_port) + path;
    }

    void refuseWith(int status) {
        std::lock_guard<std::mutex> lock(_mutex);
        _refuseStatus = status;
    }
    void answerError(bool on) {
        std::lock_guard<std::mutex> lock(_mutex);
        _answerError = on;
    }

    // Waits until `count` indications arrived; returns what arrived.
    std::vector<Pegasus::CIMInstance> waitFor(std::size_t count,
        std::chrono::milliseconds timeout = std::chrono::seconds(20)) {
        std::unique_lock<std::mutex> lock(_mutex);
        _changed.wait_for(lock, timeout, [&] { return _received.size() >= count; });
        return _received;
    }
    std::vector<Pegasus::CIMInstance> received() {
        std::lock_guard<std::mutex> lock(_mutex);
        return _received;
    }
    int requests() {
        std::lock_guard<std::mutex> lock(_mutex);
        return _requests;
    }
    httplib::Headers lastHeaders() {
        std::lock_guard<std::mutex> lock(_mutex);
        return _lastHeaders;
    }

    // A port nothing listens on (bound once, then released).
    static int freePort() {
        const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
        if (fd < 0) throw std::runtime_error("socket failed");
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = 0;
        socklen_t size = sizeof(address);
        if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
            ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
            ::close(fd);
            throw std::runtime_error("no free port");
        }
        ::close(fd);
        return ntohs(address.sin_port);
    }

private:
    httplib::Server _server;
    int _port = 0;
    std::thread _thread;
    std::mutex _mutex;
    std::condition_variable _changed;
    std::vector<Pegasus::CIMInstance> _received;
    httplib::Headers _lastHeaders;
    int _requests = 0;
    int _refuseStatus = 0;
    bool _answerError = false;
};

#endif
