#ifndef Pegasus_Repository_SqliteDatabase_h
#define Pegasus_Repository_SqliteDatabase_h

#include <stdexcept>
#include <string>

struct sqlite3;

namespace Pegasus {

// Raised for every SQLite failure; the text names the file and SQLite's message.
class SqliteError : public std::runtime_error {
public:
    explicit SqliteError(const std::string& what) : std::runtime_error(what) {}
};

// One SQLite connection in WAL mode. Opening checks that the file really is an
// SQLite database, so a corrupted or foreign file fails here with a clear text.
class SqliteDatabase {
public:
    SqliteDatabase(const std::string& file, bool readOnly, int busyTimeoutMs = 30000);
    ~SqliteDatabase();
    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;

    void exec(const std::string& sql);
    sqlite3* handle() const { return _db; }
    const std::string& file() const { return _file; }
    std::string errorText(const std::string& context) const;
    // Rows changed by the last INSERT/UPDATE/DELETE, and the last inserted rowid.
    int changes() const;
    long long lastInsertRowId() const;

private:
    sqlite3* _db = nullptr;
    std::string _file;
};

} // namespace Pegasus

#endif
