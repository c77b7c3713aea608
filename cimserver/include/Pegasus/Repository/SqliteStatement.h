#ifndef Pegasus_Repository_SqliteStatement_h
#define Pegasus_Repository_SqliteStatement_h

#include <Pegasus/Repository/SqliteDatabase.h>

#include <cstdint>
#include <string>

struct sqlite3_stmt;

namespace Pegasus {

// A prepared statement, kept per connection and reused: reset() clears the
// bindings between uses. Parameters are numbered from 1, columns from 0.
class SqliteStatement {
public:
    SqliteStatement(SqliteDatabase& db, const std::string& sql);
    ~SqliteStatement();
    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;

    void bindText(int index, const std::string& text);
    void bindBlob(int index, const void* data, size_t size);
    void bindInt64(int index, int64_t value);
    void bindNull(int index);

    // true while a row is available; false when done.
    bool step();
    void reset();

    std::string columnText(int column) const;
    std::string columnBlob(int column) const;
    int64_t columnInt64(int column) const;
    bool columnIsNull(int column) const;

private:
    void check(int rc, const char* context);
    SqliteDatabase& _db;
    sqlite3_stmt* _stmt = nullptr;
    std::string _sql;
};

} // namespace Pegasus

#endif
