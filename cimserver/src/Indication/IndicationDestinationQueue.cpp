#include <Pegasus/Indication/IndicationDestinationQueue.h>

#include <Pegasus/CIMXml/CIMXmlReader.h>
#include <Pegasus/CIMXml/CIMXmlWriter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/System.h>
#include <Pegasus/Common/Tracer.h>

#include <httplib.h>

#include <atomic>
#include <cctype>
#include <stdexcept>

namespace Pegasus {

namespace {

std::string lowerAscii(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

bool validHostChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '.' || c == '_';
}

std::string makeSequenceContext() {
    static std::atomic<unsigned> counter{0};
    return System::getHostName().toUtf8() + "-" + std::to_string(System::getPID()) + "-" +
           std::to_string(System::getCurrentTimeUsec()) + "-" + std::to_string(++counter);
}

void setProperty(CIMInstance& instance, const char* name, const CIMValue& value) {
    const Uint32 index = instance.findProperty(CIMName(name));
    if (index != PEG_NOT_FOUND) instance.removeProperty(index);
    instance.addProperty(CIMProperty(CIMName(name), value));
}

} // namespace

// ---------------------------------------------------------------- ListenerUrl

ListenerUrl ListenerUrl::parse(const std::string& text) {
    ListenerUrl url;
    const std::size_t sep = text.find("://");
    if (sep == std::string::npos) throw std::invalid_argument("it is not a URL of the form http(s)://host[:port][/path]");
    url.scheme = lowerAscii(text.substr(0, sep));
    if (url.scheme != "http" && url.scheme != "https")
        throw std::invalid_argument("the scheme \"" + text.substr(0, sep) + "\" is not http or https");
    const std::string rest = text.substr(sep + 3);
    const std::size_t slash = rest.find('/');
    const std::string authority = rest.substr(0, slash);
    url.path = slash == std::string::npos ? "/" : rest.substr(slash);
    for (char c : url.path)
        if (static_cast<unsigned char>(c) <= 0x20 || c == 0x7f)
            throw std::invalid_argument("the path holds a blank or a control character");
    if (authority.find('@') != std::string::npos)
        throw std::invalid_argument("user information in the URL is not supported");
    std::string portText;
    if (!authority.empty() && authority[0] == '[') {
        const std::size_t close = authority.find(']');
        if (close == std::string::npos) throw std::invalid_argument("the IPv6 address lacks its closing ']'");
        url.host = authority.substr(1, close - 1);
        for (char c : url.host)
            if (!std::isxdigit(static_cast<unsigned char>(c)) && c != ':' && c != '.')
                throw std::invalid_argument("\"" + url.host + "\" is not an IPv6 address");
        const std::string after = authority.substr(close + 1);
        if (!after.empty()) {
            if (after[0] != ':') throw std::invalid_argument("unexpected text after the IPv6 address");
            portText = after.substr(1);
            if (portText.empty()) throw std::invalid_argument("the port is empty");
        }
    } else {
        const std::size_t colon = authority.find(':');
        url.host = authority.substr(0, colon);
        if (colon != std::string::npos) {
            portText = authority.substr(colon + 1);
            if (portText.empty()) throw std::invalid_argument("the port is empty");
        }
        for (char c : url.host)
            if (!validHostChar(c)) throw std::invalid_argument("the host \"" + url.host + "\" holds an invalid character");
    }
    if (url.host.empty()) throw std::invalid_argument("the host is missing");
    if (!portText.empty()) {
        if (portText.size() > 5) throw std::invalid_argument("the port \"" + portText + "\" is out of range");
        for (char c : portText)
            if (!std::isdigit(static_cast<unsigned char>(c)))
                throw std::invalid_argument("the port \"" + portText + "\" is not a number");
        url.port = std::stoi(portText);
        if (url.port < 1 || url.port > 65535) throw std::invalid_argument("the port \"" + portText + "\" is out of range");
    } else {
        url.port = url.scheme == "https" ? static_cast<int>(System::lookupPort("wbem-exp-https", 5989))
                                         : static_cast<int>(System::lookupPort("wbem-exp-http", 5988));
    }
    return url;
}

std::string ListenerUrl::origin() const {
    const bool v6 = host.find(':') != std::string::npos;
    return scheme + "://" + (v6 ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

// ---------------------------------------------------------------- queue

IndicationDestinationQueue::IndicationDestinationQueue(const std::string& destination)
    : IndicationDestinationQueue(destination, Options()) {}

IndicationDestinationQueue::IndicationDestinationQueue(const std::string& destination, const Options& options)
    : _destination(destination), _url(ListenerUrl::parse(destination)), _options(options),
      _sequenceContext(makeSequenceContext()) {
    _thread = std::thread([this] { run(); });
}

IndicationDestinationQueue::~IndicationDestinationQueue() { stop(); }

void IndicationDestinationQueue::stop() {
    std::size_t left = 0;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        if (_stopping && !_thread.joinable()) return;
        _stopping = true;
        if (_client != nullptr) _client->stop();
    }
    _wake.notify_all();
    if (_thread.joinable() && _thread.get_id() != std::this_thread::get_id()) _thread.join();
    {
        std::lock_guard<std::mutex> lock(_mutex);
        left = _queue.size();
        _dropped += left;
        _queue.clear();
    }
    _idle.notify_all();
    if (left > 0)
        PEG_TRACE((TRC_IND_HANDLER, Tracer::LEVEL2, "%zu indications for %s dropped at shutdown", left,
            _destination.c_str()));
}

void IndicationDestinationQueue::enqueue(const CIMInstance& indication) {
    if (indication.isUninitialized()) return;
    CIMInstance copy = indication.clone();
    std::lock_guard<std::mutex> lock(_mutex);
    if (_stopping) {
        ++_dropped;
        PEG_TRACE((TRC_IND_HANDLER, Tracer::LEVEL2, "indication for %s dropped: delivery has stopped",
            _destination.c_str()));
        return;
    }
    setProperty(copy, "SequenceContext", CIMValue(String::fromUtf8(_sequenceContext)));
    setProperty(copy, "SequenceNumber", CIMValue(Sint64(_nextSequence++)));
    _queue.push_back(Entry{_nextId++, copy});
    if (_queue.size() > _options.maxQueued) {
        _queue.pop_front();
        ++_dropped;
        PEG_TRACE((TRC_IND_HANDLER, Tracer::LEVEL2,
            "queue for %s full (%zu): the oldest indication was dropped", _destination.c_str(),
            _options.maxQueued));
    }
    _wake.notify_one();
}

bool IndicationDestinationQueue::waitIdle(std::chrono::milliseconds timeout) {
    std::unique_lock<std::mutex> lock(_mutex);
    return _idle.wait_for(lock, timeout, [this] { return _queue.empty() && !_sending; });
}

std::size_t IndicationDestinationQueue::pending() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _queue.size();
}

std::uint64_t IndicationDestinationQueue::delivered() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _delivered;
}

std::uint64_t IndicationDestinationQueue::dropped() const {
    std::lock_guard<std::mutex> lock(_mutex);
    return _dropped;
}

void IndicationDestinationQueue::run() {
    httplib::Client client(_url.origin());
    client.set_keep_alive(true);
    client.set_tcp_nodelay(true);   // one small request at a time: no waiting for delayed ACKs
    client.set_connection_timeout(std::chrono::duration_cast<std::chrono::microseconds>(_options.connectTimeout));
    client.set_read_timeout(std::chrono::duration_cast<std::chrono::microseconds>(_options.readTimeout));
    client.set_write_timeout(std::chrono::duration_cast<std::chrono::microseconds>(_options.readTimeout));
    if (_url.scheme == "https") client.enable_server_certificate_verification(_options.verifyCertificate);

    std::unique_lock<std::mutex> lock(_mutex);
    _client = &client;
    std::chrono::milliseconds pause = _options.retryInterval;
    unsigned attempts = 0;
    std::uint64_t attemptsFor = 0;
    while (!_stopping) {
        if (_queue.empty()) {
            _idle.notify_all();
            _wake.wait(lock, [this] { return _stopping || !_queue.empty(); });
            continue;
        }
        const Entry entry = _queue.front();
        if (entry.id != attemptsFor) {
            attempts = 0;
            attemptsFor = entry.id;
        }
        _sending = true;
        lock.unlock();
        std::string why;
        Outcome outcome = Outcome::Unreachable;
        try {
            outcome = send(client, entry.indication, entry.id, why);
        } catch (const std::exception& e) {
            outcome = Outcome::Refused;
            why = e.what();
        } catch (const Exception& e) {
            outcome = Outcome::Refused;
            why = e.getMessage().toUtf8();
        }
        lock.lock();
        _sending = false;
        const bool stillFirst = !_queue.empty() && _queue.front().id == entry.id;
        if (outcome == Outcome::Delivered) {
            ++_delivered;
            if (stillFirst) _queue.pop_front();
            pause = _options.retryInterval;
            continue;
        }
        if (_stopping) break;
        if (outcome == Outcome::Refused) {
            if (++attempts >= _options.maxAttempts) {
                PEG_TRACE((TRC_IND_HANDLER, Tracer::LEVEL1,
                    "indication %llu for %s dropped after %u refusals: %s",
                    static_cast<unsigned long long>(entry.id), _destination.c_str(), attempts, why.c_str()));
                if (stillFirst) {
                    _queue.pop_front();
                    ++_dropped;
                }
                attempts = 0;
                continue;
            }
        } else {
            PEG_TRACE((TRC_IND_HANDLER, Tracer::LEVEL3, "listener %s unreachable (%s); retrying in %lld ms",
                _destination.c_str(), why.c_str(), static_cast<long long>(pause.count())));
        }
        _wake.wait_for(lock, pause, [this] { return _stopping; });
        if (outcome == Outcome::Unreachable) pause = std::min(pause * 2, _options.maxRetryInterval);
    }
    _client = nullptr;
    _idle.notify_all();
}

IndicationDestinationQueue::Outcome IndicationDestinationQueue::send(httplib::Client& client,
    const CIMInstance& indication, std::uint64_t id, std::string& why) {
    const std::string messageId = std::to_string(id);
    const std::string body = CIMXmlWriter::formatExportIndication(indication, messageId);
    httplib::Headers headers{{"CIMExport", "MethodRequest"}, {"CIMExportMethod", "ExportIndication"}};
    httplib::Result result = client.Post(_url.path.c_str(), headers, body, "application/xml; charset=utf-8");
    if (!result) {
        why = httplib::to_string(result.error());
        return Outcome::Unreachable;
    }
    const int status = result->status;
    if (status >= 500) {
        why = "HTTP status " + std::to_string(status);
        return Outcome::Unreachable;
    }
    if (status != 200) {
        why = "HTTP status " + std::to_string(status);
        return Outcome::Refused;
    }
    if (result->body.empty()) return Outcome::Delivered;
    try {
        CIMXmlReader::readExportIndicationResponse(result->body);
    } catch (const CIMException& e) {
        why = std::string("the listener answered ") + cimStatusCodeToString(e.getCode()) + ": " +
              e.getMessage().toUtf8();
        return Outcome::Refused;
    }
    return Outcome::Delivered;
}

} // namespace Pegasus
