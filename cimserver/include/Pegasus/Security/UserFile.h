#ifndef Pegasus_Security_UserFile_h
#define Pegasus_Security_UserFile_h

#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>
#include <sys/types.h>
#include <time.h>

namespace Pegasus {

// The server's user file: one "name:hash" line per user, the hash a salted
// SHA-512 crypt string ("$6$..."). The server reads it and reloads it when it
// changes on disk, so that `cimuser` changes take effect without a restart;
// changes are written under an exclusive lock to a temporary file that is
// renamed over the old one, so a reader never sees half a file.
class UserFile
{
public:
    class Error : public std::runtime_error
    {
    public:
        explicit Error(const std::string& what) : std::runtime_error(what) {}
    };

    explicit UserFile(const std::string& path);

    const std::string& path() const { return _path; }

    // True when the user exists and the password matches. A missing file
    // means no users. Throws Error when the file cannot be read or is broken.
    bool verify(const std::string& user, const std::string& password);

    bool hasUser(const std::string& user);
    std::vector<std::string> listUsers();

    // Each throws Error with a message fit for an operator: invalid name or
    // password, user exists (add) or is missing (remove, setPassword).
    void addUser(const std::string& user, const std::string& password);
    void removeUser(const std::string& user);
    void setPassword(const std::string& user, const std::string& password);

    // Names: 1 to 64 of letters, digits, '.', '_', '-', not starting with '-'.
    static void validateUserName(const std::string& user);
    // Passwords: 1 to 256 bytes, no control characters.
    static void validatePassword(const std::string& password);

    static std::string hashPassword(const std::string& password);
    static bool checkHash(const std::string& password, const std::string& hash);

private:
    typedef std::map<std::string, std::string> Entries;

    void _refresh();                       // caller holds _mutex
    Entries _readFile(bool& exists) const;
    void _writeFile(const Entries& entries) const;
    template <class Change> void _update(Change change);

    std::string _path;
    std::mutex _mutex;
    Entries _entries;
    bool _loaded = false;
    struct timespec _mtime = {0, 0};
    off_t _size = -1;
    ino_t _inode = 0;
};

} // namespace Pegasus

#endif
