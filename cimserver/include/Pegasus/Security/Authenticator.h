#ifndef Pegasus_Security_Authenticator_h
#define Pegasus_Security_Authenticator_h

#include <Pegasus/Security/UserFile.h>

#include <chrono>
#include <list>
#include <mutex>
#include <string>
#include <unordered_map>

namespace Pegasus {

// HTTP Basic authentication of the front end against the user file.
// Repeated failures from one client address are slowed down: the caller
// waits `delay` before it answers 401, doubling with each failure up to a
// ceiling, until a success from that address or a quiet period.
class Authenticator
{
public:
    struct Result
    {
        bool authenticated = false;
        std::string user;               // set when authenticated
        std::string reason;             // why not, for the trace
        std::chrono::milliseconds delay{0};
    };

    Authenticator(UserFile& users, bool enabled);

    bool enabled() const { return _enabled; }

    // authorization: the Authorization header's value (empty when absent).
    Result check(const std::string& authorization, const std::string& clientAddress);

    // The WWW-Authenticate value of a 401 answer.
    static std::string challenge(const std::string& realm);

    // Decodes "Basic <base64>" into user and password; false when malformed.
    static bool decodeBasic(const std::string& authorization, std::string& user,
                            std::string& password);

    static constexpr std::chrono::milliseconds firstDelay{250};
    static constexpr std::chrono::milliseconds maxDelay{8000};
    static constexpr std::chrono::seconds forgetAfter{600};
    static constexpr size_t maxTrackedAddresses = 4096;

private:
    struct Failures
    {
        unsigned count = 0;
        std::chrono::steady_clock::time_point last;
        std::list<std::string>::iterator age;
    };

    std::chrono::milliseconds _recordFailure(const std::string& address);
    void _recordSuccess(const std::string& address);

    UserFile& _users;
    bool _enabled;
    std::mutex _mutex;
    std::unordered_map<std::string, Failures> _failures;
    std::list<std::string> _byAge;      // oldest first, bounds the table
};

} // namespace Pegasus

#endif
