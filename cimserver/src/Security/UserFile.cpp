#include <Pegasus/Security/UserFile.h>

#include <crypt.h>
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <openssl/crypto.h>

#include <fstream>
#include <sstream>

namespace Pegasus {

namespace {

std::string systemError(const std::string& what, const std::string& path)
{
    return what + " " + path + ": " + strerror(errno);
}

// Holds an exclusive lock on "<file>.lock" for the lifetime of the object,
// so that two `cimuser` runs never lose each other's change.
class LockGuard
{
public:
    explicit LockGuard(const std::string& path)
    {
        _fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (_fd < 0)
            throw UserFile::Error(systemError("cannot open lock file", path));
        while (::flock(_fd, LOCK_EX) != 0)
        {
            if (errno != EINTR)
            {
                ::close(_fd);
                throw UserFile::Error(systemError("cannot lock", path));
            }
        }
    }
    ~LockGuard() { ::close(_fd); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

private:
    int _fd;
};

} // namespace

UserFile::UserFile(const std::string& path) : _path(path)
{
}

void UserFile::validateUserName(const std::string& user)
{
    if (user.empty() || user.size() > 64)
        throw Error("invalid user name: it must have 1 to 64 characters");
    if (user[0] == '-')
        throw Error("invalid user name \"" + user + "\": it must not start with '-'");
    for (unsigned char c : user)
    {
        bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                  (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-';
        if (!ok)
            throw Error("invalid user name: only letters, digits, '.', '_' and '-' are allowed");
    }
}

void UserFile::validatePassword(const std::string& password)
{
    if (password.empty())
        throw Error("the password must not be empty");
    if (password.size() > 256)
        throw Error("the password is longer than 256 bytes");
    for (unsigned char c : password)
        if (c < 0x20 || c == 0x7f)
            throw Error("the password must not contain control characters");
}

std::string UserFile::hashPassword(const std::string& password)
{
    char salt[CRYPT_GENSALT_OUTPUT_SIZE];
    if (!crypt_gensalt_rn("$6$", 0, nullptr, 0, salt, sizeof(salt)))
        throw Error(std::string("cannot make a salt: ") + strerror(errno));
    struct crypt_data data;
    memset(&data, 0, sizeof(data));
    const char* hash = crypt_r(password.c_str(), salt, &data);
    if (!hash || hash[0] != '$')
        throw Error("cannot hash the password");
    return hash;
}

bool UserFile::checkHash(const std::string& password, const std::string& hash)
{
    if (hash.compare(0, 3, "$6$") != 0)
        return false;
    struct crypt_data data;
    memset(&data, 0, sizeof(data));
    const char* computed = crypt_r(password.c_str(), hash.c_str(), &data);
    if (!computed)
        return false;
    size_t n = strlen(computed);
    return n == hash.size() && CRYPTO_memcmp(computed, hash.data(), n) == 0;
}

UserFile::Entries UserFile::_readFile(bool& exists) const
{
    Entries entries;
    std::ifstream in(_path);
    exists = bool(in);
    if (!exists)
    {
        if (errno == ENOENT)
            return entries;
        throw Error(systemError("cannot read the user file", _path));
    }
    std::string line;
    unsigned lineNo = 0;
    while (std::getline(in, line))
    {
        ++lineNo;
        if (line.empty() || line[0] == '#')
            continue;
        size_t colon = line.find(':');
        std::string where = _path + ":" + std::to_string(lineNo) + ": ";
        if (colon == std::string::npos)
            throw Error(where + "expected \"user:hash\"");
        std::string user = line.substr(0, colon);
        std::string hash = line.substr(colon + 1);
        try
        {
            validateUserName(user);
        }
        catch (const Error& e)
        {
            throw Error(where + e.what());
        }
        if (hash.compare(0, 3, "$6$") != 0)
            throw Error(where + "the hash of \"" + user + "\" is not a SHA-512 crypt string");
        if (!entries.emplace(user, hash).second)
            throw Error(where + "user \"" + user + "\" appears twice");
    }
    if (in.bad())
        throw Error(systemError("cannot read the user file", _path));
    return entries;
}

void UserFile::_writeFile(const Entries& entries) const
{
    std::string tmp = _path + ".tmp";
    int fd = ::open(tmp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        throw Error(systemError("cannot write", tmp));
    std::string text;
    for (const auto& e : entries)
        text += e.first + ":" + e.second + "\n";
    size_t done = 0;
    while (done < text.size())
    {
        ssize_t n = ::write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
        {
            std::string msg = systemError("cannot write", tmp);
            ::close(fd);
            ::unlink(tmp.c_str());
            throw Error(msg);
        }
        done += size_t(n);
    }
    if (::fsync(fd) != 0 || ::close(fd) != 0)
    {
        std::string msg = systemError("cannot write", tmp);
        ::unlink(tmp.c_str());
        throw Error(msg);
    }
    if (::rename(tmp.c_str(), _path.c_str()) != 0)
    {
        std::string msg = systemError("cannot replace", _path);
        ::unlink(tmp.c_str());
        throw Error(msg);
    }
}

void UserFile::_refresh()
{
    struct stat st;
    if (::stat(_path.c_str(), &st) != 0)
    {
        if (errno != ENOENT)
            throw Error(systemError("cannot read the user file", _path));
        _entries.clear();
        _loaded = true;
        _size = -1;
        return;
    }
    if (_loaded && st.st_size == _size && st.st_ino == _inode &&
        st.st_mtim.tv_sec == _mtime.tv_sec && st.st_mtim.tv_nsec == _mtime.tv_nsec)
        return;
    bool exists = false;
    Entries fresh = _readFile(exists);
    _entries.swap(fresh);
    _loaded = true;
    _size = st.st_size;
    _inode = st.st_ino;
    _mtime = st.st_mtim;
}

bool UserFile::verify(const std::string& user, const std::string& password)
{
    std::string hash;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _refresh();
        auto it = _entries.find(user);
        if (it != _entries.end())
            hash = it->second;
    }
    if (hash.empty())
    {
        // Same work for an unknown user as for a wrong password, so that
        // the answer time does not tell which names exist.
        checkHash(password, "$6$unknownuser$0000000000000000000000000000000000000000000000000000000000000000000000000000000000000");
        return false;
    }
    return checkHash(password, hash);
}

bool UserFile::hasUser(const std::string& user)
{
    std::lock_guard<std::mutex> lock(_mutex);
    _refresh();
    return _entries.count(user) != 0;
}

std::vector<std::string> UserFile::listUsers()
{
    std::lock_guard<std::mutex> lock(_mutex);
    _refresh();
    std::vector<std::string> names;
    for (const auto& e : _entries)
        names.push_back(e.first);
    return names;
}

template <class Change> void UserFile::_update(Change change)
{
    std::lock_guard<std::mutex> lock(_mutex);
    LockGuard fileLock(_path + ".lock");
    bool exists = false;
    Entries entries = _readFile(exists);
    change(entries);
    _writeFile(entries);
    _loaded = false;
    _refresh();
}

void UserFile::addUser(const std::string& user, const std::string& password)
{
    validateUserName(user);
    validatePassword(password);
    std::string hash = hashPassword(password);
    _update([&](Entries& entries) {
        if (entries.count(user))
            throw Error("user \"" + user + "\" already exists");
        entries[user] = hash;
    });
}

void UserFile::removeUser(const std::string& user)
{
    validateUserName(user);
    _update([&](Entries& entries) {
        if (!entries.erase(user))
            throw Error("user \"" + user + "\" does not exist");
    });
}

void UserFile::setPassword(const std::string& user, const std::string& password)
{
    validateUserName(user);
    validatePassword(password);
    std::string hash = hashPassword(password);
    _update([&](Entries& entries) {
        auto it = entries.find(user);
        if (it == entries.end())
            throw Error("user \"" + user + "\" does not exist");
        it->second = hash;
    });
}

} // namespace Pegasus
