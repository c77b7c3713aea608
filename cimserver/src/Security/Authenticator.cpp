#include <Pegasus/Security/Authenticator.h>

#include <openssl/evp.h>

#include <cctype>
#include <vector>

namespace Pegasus {

constexpr std::chrono::milliseconds Authenticator::firstDelay;
constexpr std::chrono::milliseconds Authenticator::maxDelay;
constexpr std::chrono::seconds Authenticator::forgetAfter;
constexpr size_t Authenticator::maxTrackedAddresses;

Authenticator::Authenticator(UserFile& users, bool enabled)
    : _users(users), _enabled(enabled)
{
}

std::string Authenticator::challenge(const std::string& realm)
{
    std::string r;
    for (char c : realm)
        if (c != '"' && c != '\\' && (unsigned char)c >= 0x20)
            r += c;
    return "Basic realm=\"" + r + "\"";
}

bool Authenticator::decodeBasic(const std::string& authorization, std::string& user,
                                std::string& password)
{
    size_t i = 0;
    while (i < authorization.size() && authorization[i] == ' ')
        ++i;
    static const char scheme[] = "basic";
    for (size_t k = 0; k < 5; ++k, ++i)
        if (i >= authorization.size() || std::tolower((unsigned char)authorization[i]) != scheme[k])
            return false;
    if (i >= authorization.size() || authorization[i] != ' ')
        return false;
    while (i < authorization.size() && authorization[i] == ' ')
        ++i;
    std::string encoded = authorization.substr(i);
    while (!encoded.empty() && (encoded.back() == ' ' || encoded.back() == '\r'))
        encoded.pop_back();
    if (encoded.empty() || encoded.size() % 4 != 0 || encoded.size() > 4096)
        return false;
    for (char c : encoded)
        if (!(std::isalnum((unsigned char)c) || c == '+' || c == '/' || c == '='))
            return false;
    std::vector<unsigned char> out(encoded.size() / 4 * 3 + 1);
    int n = EVP_DecodeBlock(out.data(), reinterpret_cast<const unsigned char*>(encoded.data()),
                            int(encoded.size()));
    if (n < 0)
        return false;
    // EVP_DecodeBlock counts the padding bytes as data: take them off.
    size_t len = size_t(n);
    if (encoded.size() >= 1 && encoded[encoded.size() - 1] == '=')
        --len;
    if (encoded.size() >= 2 && encoded[encoded.size() - 2] == '=')
        --len;
    std::string decoded(reinterpret_cast<const char*>(out.data()), len);
    size_t colon = decoded.find(':');
    if (colon == std::string::npos)
        return false;
    user = decoded.substr(0, colon);
    password = decoded.substr(colon + 1);
    return true;
}

Authenticator::Result Authenticator::check(const std::string& authorization,
                                           const std::string& clientAddress)
{
    Result result;
    if (!_enabled)
    {
        result.authenticated = true;
        return result;
    }
    if (authorization.empty())
    {
        // A client's first request usually comes without credentials: that
        // is no failed attempt, so it is not slowed down.
        result.reason = "no credentials";
        return result;
    }
    std::string user, password;
    if (!decodeBasic(authorization, user, password))
        result.reason = "malformed Basic credentials";
    else
    {
        bool ok = false;
        try
        {
            ok = _users.verify(user, password);
            if (!ok)
                result.reason = "invalid user name or password for \"" + user + "\"";
        }
        catch (const UserFile::Error& e)
        {
            result.reason = std::string("user file unusable: ") + e.what();
        }
        if (ok)
        {
            _recordSuccess(clientAddress);
            result.authenticated = true;
            result.user = user;
            return result;
        }
    }
    result.delay = _recordFailure(clientAddress);
    return result;
}

std::chrono::milliseconds Authenticator::_recordFailure(const std::string& address)
{
    auto now = std::chrono::steady_clock::now();
    std::lock_guard<std::mutex> lock(_mutex);
    auto it = _failures.find(address);
    if (it == _failures.end())
    {
        if (_failures.size() >= maxTrackedAddresses)
        {
            _failures.erase(_byAge.front());
            _byAge.pop_front();
        }
        _byAge.push_back(address);
        Failures f;
        f.age = std::prev(_byAge.end());
        it = _failures.emplace(address, f).first;
    }
    else
    {
        if (now - it->second.last > forgetAfter)
            it->second.count = 0;
        _byAge.splice(_byAge.end(), _byAge, it->second.age);
    }
    Failures& f = it->second;
    f.last = now;
    ++f.count;
    std::chrono::milliseconds delay = firstDelay;
    for (unsigned i = 1; i < f.count && delay < maxDelay; ++i)
        delay *= 2;
    return delay < maxDelay ? delay : maxDelay;
}

void Authenticator::_recordSuccess(const std::string& address)
{
    std::lock_guard<std::mutex> lock(_mutex);
    auto it = _failures.find(address);
    if (it != _failures.end())
    {
        _byAge.erase(it->second.age);
        _failures.erase(it);
    }
}

} // namespace Pegasus
