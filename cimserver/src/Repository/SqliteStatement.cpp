#include <Pegasus/Repository/SqliteStatement.h>

#include <sqlite3.h>

namespace Pegasus {

SqliteStatement::SqliteStatement(SqliteDatabase& db, const std::string& sql)
    : _db(db), _sql(sql)
{
    if (sqlite3_prepare_v3(db.handle(), sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT,
            &_stmt, nullptr) != SQLITE_OK)
        throw SqliteError(db.errorText("cannot prepare " + sql));
}

SqliteStatement::~SqliteStatement()
{
    sqlite3_finalize(_stmt);
}

void SqliteStatement::check(int rc, const char* context)
{
    if (rc != SQLITE_OK)
        throw SqliteError(_db.errorText(std::string(context) + " in " + _sql));
}

void SqliteStatement::bindText(int index, const std::string& text)
{
    check(sqlite3_bind_text(_stmt, index, text.data(), static_cast<int>(text.size()),
              SQLITE_TRANSIENT), "bind text");
}

void SqliteStatement::bindBlob(int index, const void* data, size_t size)
{
    check(sqlite3_bind_blob64(_stmt, index, data, size, SQLITE_TRANSIENT), "bind blob");
}

void SqliteStatement::bindInt64(int index, int64_t value)
{
    check(sqlite3_bind_int64(_stmt, index, value), "bind integer");
}

void SqliteStatement::bindNull(int index)
{
    check(sqlite3_bind_null(_stmt, index), "bind null");
}

bool SqliteStatement::step()
{
    int rc = sqlite3_step(_stmt);
    if (rc == SQLITE_ROW)
        return true;
    if (rc == SQLITE_DONE)
        return false;
    std::string text = _db.errorText("step " + _sql);
    sqlite3_reset(_stmt);
    throw SqliteError(text);
}

void SqliteStatement::reset()
{
    sqlite3_reset(_stmt);
    sqlite3_clear_bindings(_stmt);
}

std::string SqliteStatement::columnText(int column) const
{
    const unsigned char* text = sqlite3_column_text(_stmt, column);
    int size = sqlite3_column_bytes(_stmt, column);
    return text ? std::string(reinterpret_cast<const char*>(text), size) : std::string();
}

std::string SqliteStatement::columnBlob(int column) const
{
    const void* data = sqlite3_column_blob(_stmt, column);
    int size = sqlite3_column_bytes(_stmt, column);
    return data ? std::string(static_cast<const char*>(data), size) : std::string();
}

int64_t SqliteStatement::columnInt64(int column) const
{
    return sqlite3_column_int64(_stmt, column);
}

bool SqliteStatement::columnIsNull(int column) const
{
    return sqlite3_column_type(_stmt, column) == SQLITE_NULL;
}

} // namespace Pegasus
