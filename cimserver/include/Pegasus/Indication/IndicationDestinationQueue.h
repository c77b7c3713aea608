#ifndef Pegasus_Indication_IndicationDestinationQueue_h
#define Pegasus_Indication_IndicationDestinationQueue_h

#include <Pegasus/Common/CIMInstance.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

namespace httplib {
class Client;
}

namespace Pegasus {

// A listener's address: http://host[:port][/path] or https://...; no port
// means 5988 (http) or 5989 (https), no path means "/".
struct ListenerUrl {
    std::string scheme;   // "http" or "https", lower case
    std::string host;     // without IPv6 brackets
    int port = 0;
    std::string path;

    // Throws std::invalid_argument with a text naming what is wrong.
    static ListenerUrl parse(const std::string& url);
    // "scheme://host:port" (brackets around an IPv6 host).
    std::string origin() const;
};

// The indications on their way to one listener, sent by a thread of its own
// as CIM-XML ExportIndication requests, one at a time and in the order they
// were queued. A listener that cannot be reached (or answers 5xx) gets the
// same indication again after a pause that grows up to maxRetryInterval,
// for as long as it takes; one that refuses an indication otherwise (another
// status, or an ERROR in the reply) has it retried up to maxAttempts times,
// then it is dropped with a trace. The queue holds at most maxQueued
// indications: when full, the oldest is dropped with a trace, so a listener
// that never comes back costs bounded memory. enqueue never waits for the
// network.
class IndicationDestinationQueue {
public:
    struct Options {
        std::size_t maxQueued = 10000;
        unsigned maxAttempts = 3;
        std::chrono::milliseconds retryInterval{500};
        std::chrono::milliseconds maxRetryInterval{30000};
        std::chrono::milliseconds connectTimeout{5000};
        std::chrono::milliseconds readTimeout{30000};
        // Listeners commonly run with self-signed certificates.
        bool verifyCertificate = false;
    };

    // Throws std::invalid_argument for a malformed destination.
    explicit IndicationDestinationQueue(const std::string& destination);
    IndicationDestinationQueue(const std::string& destination, const Options& options);
    // Stops the thread; what is still queued is dropped with a trace.
    ~IndicationDestinationQueue();
    IndicationDestinationQueue(const IndicationDestinationQueue&) = delete;
    IndicationDestinationQueue& operator=(const IndicationDestinationQueue&) = delete;

    // Queues a copy; SequenceContext and SequenceNumber are set on it.
    void enqueue(const CIMInstance& indication);

    // Waits until everything queued so far was delivered or dropped, or the
    // timeout passed; true when the queue is empty.
    bool waitIdle(std::chrono::milliseconds timeout);
    // Ends the thread (a send in progress finishes or times out first).
    void stop();

    const std::string& destination() const { return _destination; }
    const ListenerUrl& url() const { return _url; }
    std::size_t pending() const;
    std::uint64_t delivered() const;
    std::uint64_t dropped() const;

private:
    struct Entry {
        std::uint64_t id;
        CIMInstance indication;
    };
    enum class Outcome { Delivered, Refused, Unreachable };

    void run();
    Outcome send(httplib::Client& client, const CIMInstance& indication, std::uint64_t id, std::string& why);

    const std::string _destination;
    const ListenerUrl _url;
    const Options _options;
    const std::string _sequenceContext;

    mutable std::mutex _mutex;
    std::condition_variable _wake;
    std::condition_variable _idle;
    std::deque<Entry> _queue;
    std::uint64_t _nextId = 0;
    std::int64_t _nextSequence = 0;
    std::uint64_t _delivered = 0;
    std::uint64_t _dropped = 0;
    bool _sending = false;
    bool _stopping = false;
    httplib::Client* _client = nullptr;   // the worker's, while it runs
    std::thread _thread;
};

} // namespace Pegasus

#endif
