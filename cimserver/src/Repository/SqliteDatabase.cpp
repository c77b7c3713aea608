#include <Pegasus/Repository/SqliteDatabase.h>

#include <sqlite3.h>

namespace Pegasus {

SqliteDatabase::SqliteDatabase(const std::string& file, bool readOnly, int busyTimeoutMs)
    : _file(file)
{
    int flags = readOnly ? SQLITE_OPEN_READONLY : (SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    flags |= SQLITE_OPEN_NOMUTEX;
    if (sqlite3_open_v2(file.c_str(), &_db, flags, nullptr) != SQLITE_OK) {
        std::string text = errorText("cannot open repository database");
        sqlite3_close(_db);
        _db = nullptr;
        throw SqliteError(text);
    }
    sqlite3_busy_timeout(_db, busyTimeoutMs);
    try {
        // Reading the schema forces SQLite to check the file header.
        exec("SELECT count(*) FROM sqlite_master");
        if (!readOnly) {
            // Takes effect only when the file is new: larger pages make
            // shallower trees for the many small rows of a data load.
            exec("PRAGMA page_size=8192");
            exec("PRAGMA journal_mode=WAL");
            exec("PRAGMA synchronous=NORMAL");
        }
        exec("PRAGMA cache_size=-16384");
    } catch (...) {
        sqlite3_close(_db);
        _db = nullptr;
        throw;
    }
}

SqliteDatabase::~SqliteDatabase()
{
    if (_db)
        sqlite3_close_v2(_db);
}

void SqliteDatabase::exec(const std::string& sql)
{
    char* message = nullptr;
    if (sqlite3_exec(_db, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
        std::string text = "repository database " + _file + ": " + sql + ": " +
            (message ? message : sqlite3_errmsg(_db));
        sqlite3_free(message);
        throw SqliteError(text);
    }
}

std::string SqliteDatabase::errorText(const std::string& context) const
{
    return "repository database " + _file + ": " + context + ": " +
        (_db ? sqlite3_errmsg(_db) : "out of memory");
}

int SqliteDatabase::changes() const
{
    return sqlite3_changes(_db);
}

long long SqliteDatabase::lastInsertRowId() const
{
    return sqlite3_last_insert_rowid(_db);
}

} // namespace Pegasus
