#include <Pegasus/Repository/RepositoryConnection.h>

namespace Pegasus {

namespace {

const char* const SQL[] = {
    "SELECT id, entry FROM names ORDER BY id",
    "INSERT OR IGNORE INTO names(id, entry) VALUES(?1, ?2)",
    "SELECT entry FROM names WHERE id = ?1",
    "INSERT INTO instances(key, class, data) VALUES(?1, ?2, ?3)",
    "INSERT INTO instances(key, class, data, id) VALUES(?1, ?2, ?3, ?4)",
    "SELECT id, data FROM instances WHERE key = ?1 ORDER BY id",
    "SELECT data FROM instances WHERE id = ?1",
    "UPDATE instances SET data = ?2 WHERE id = ?1",
    "DELETE FROM instances WHERE id = ?1",
    "SELECT data FROM instances WHERE class = ?1 ORDER BY id",
    "INSERT OR IGNORE INTO refs(target, assoc, role, assoc_class) VALUES(?1, ?2, ?3, ?4)",
    "DELETE FROM refs WHERE target = ?1 AND assoc = ?2 AND role = ?3",
    "SELECT assoc, role, assoc_class FROM refs WHERE target = ?1 ORDER BY assoc",
    "BEGIN",
    "BEGIN IMMEDIATE",
    "COMMIT",
    "ROLLBACK",
    "SAVEPOINT repository_call",
    "RELEASE repository_call",
    "ROLLBACK TO repository_call",
};

// Resets the statement when the use ends, also when it ends by an exception.
struct Use {
    explicit Use(SqliteStatement& s) : stmt(s) {}
    ~Use() { stmt.reset(); }
    SqliteStatement& stmt;
};

} // namespace

RepositoryConnection::RepositoryConnection(const std::string& file, bool readOnly)
    : _db(file, readOnly)
{
    // The writer keeps a whole data load in its page cache: a spilled page
    // that changes again would be written to the WAL once more. Readers map
    // the file. After a checkpoint the WAL is cut back to a few megabytes.
    _db.exec(readOnly ? "PRAGMA mmap_size=268435456"
                      : "PRAGMA cache_size=-131072; PRAGMA temp_store=MEMORY;"
                        "PRAGMA journal_size_limit=4194304");
    if (!readOnly)
        createLayout(file);
    if (_firstLayout)
        return;
    // A database of another program may have tables of these names with
    // other columns: refused here rather than at its first use.
    try {
        SqliteStatement(_db, "SELECT id, entry FROM names LIMIT 0");
        SqliteStatement(_db, "SELECT id, key, class, data FROM instances LIMIT 0");
        SqliteStatement(_db, "SELECT target, assoc, role, assoc_class FROM refs LIMIT 0");
    } catch (const SqliteError& e) {
        throw SqliteError("repository database " + file +
            " does not have the tables of an instance repository: " + e.what());
    }
}

void RepositoryConnection::createLayout(const std::string& file)
{
    int version = 0;
    {
        SqliteStatement query(_db, "PRAGMA user_version");
        if (query.step())
            version = int(query.columnInt64(0));
    }
    if (version == 1) {
        _firstLayout = true;
        return;
    }
    if (version != 0 && version != LAYOUT_VERSION)
        throw SqliteError("repository database " + file + " has layout version " +
            std::to_string(version) + ", this server reads versions 1 and " +
            std::to_string(LAYOUT_VERSION) + "; it was written by a newer server: start that "
            "server again, or move the file away to start with an empty repository");
    createTables();
    if (version == 0)
        _db.exec("PRAGMA user_version=" + std::to_string(LAYOUT_VERSION));
}

void RepositoryConnection::createTables()
{
    try {
        _db.exec(
            "CREATE TABLE IF NOT EXISTS names("
            " id INTEGER PRIMARY KEY,"
            " entry BLOB NOT NULL);"
            "CREATE TABLE IF NOT EXISTS instances("
            " id INTEGER PRIMARY KEY,"
            " key INTEGER NOT NULL,"
            " class INTEGER NOT NULL,"
            " data BLOB NOT NULL);"
            "CREATE INDEX IF NOT EXISTS instances_by_key ON instances(key);"
            "CREATE INDEX IF NOT EXISTS instances_by_class ON instances(class, id);"
            "CREATE TABLE IF NOT EXISTS refs("
            " target INTEGER NOT NULL,"
            " assoc INTEGER NOT NULL,"
            " role INTEGER NOT NULL,"
            " assoc_class INTEGER NOT NULL,"
            " PRIMARY KEY(target, assoc, role)) WITHOUT ROWID;");
    } catch (const SqliteError& e) {
        throw SqliteError("repository database " + _db.file() +
            " does not have the tables of an instance repository: " + e.what());
    }
}

RepositoryConnection::~RepositoryConnection()
{
    // Statements must go before the connection closes.
    for (auto& s : _statements)
        s.reset();
}

SqliteStatement& RepositoryConnection::statement(StatementId id)
{
    if (!_statements[id])
        _statements[id].reset(new SqliteStatement(_db, SQL[id]));
    return *_statements[id];
}

void RepositoryConnection::run(Control control)
{
    Use u(statement(StatementId(CONTROL_FIRST + control)));
    u.stmt.step();
}

void RepositoryConnection::forEachDictionaryEntry(
    const std::function<void(int64_t id, const std::string& entry)>& f)
{
    Use u(statement(NAMES_ALL));
    while (u.stmt.step())
        f(u.stmt.columnInt64(0), u.stmt.columnBlob(1));
}

bool RepositoryConnection::insertDictionaryEntry(int64_t id, const std::string& entry)
{
    Use u(statement(NAME_INSERT));
    u.stmt.bindInt64(1, id);
    u.stmt.bindBlob(2, entry.data(), entry.size());
    u.stmt.step();
    return _db.changes() > 0;
}

bool RepositoryConnection::dictionaryEntry(int64_t id, std::string* entry)
{
    Use u(statement(NAME_GET));
    u.stmt.bindInt64(1, id);
    if (!u.stmt.step())
        return false;
    if (entry)
        *entry = u.stmt.columnBlob(0);
    return true;
}

int64_t RepositoryConnection::insertInstance(int64_t key, int64_t classId, const std::string& data,
    int64_t id)
{
    Use u(statement(id < 0 ? INSERT_INSTANCE : INSERT_INSTANCE_ID));
    u.stmt.bindInt64(1, key);
    u.stmt.bindInt64(2, classId);
    u.stmt.bindBlob(3, data.data(), data.size());
    if (id >= 0)
        u.stmt.bindInt64(4, id);
    u.stmt.step();
    return _db.lastInsertRowId();
}

void RepositoryConnection::forEachWithKey(int64_t key,
    const std::function<bool(int64_t id, const std::string& data)>& f)
{
    Use u(statement(WITH_KEY));
    u.stmt.bindInt64(1, key);
    while (u.stmt.step()) {
        if (!f(u.stmt.columnInt64(0), u.stmt.columnBlob(1)))
            return;
    }
}

bool RepositoryConnection::instanceById(int64_t id, std::string* data)
{
    Use u(statement(INSTANCE_BY_ID));
    u.stmt.bindInt64(1, id);
    if (!u.stmt.step())
        return false;
    if (data)
        *data = u.stmt.columnBlob(0);
    return true;
}

void RepositoryConnection::updateInstance(int64_t id, const std::string& data)
{
    Use u(statement(UPDATE_INSTANCE));
    u.stmt.bindInt64(1, id);
    u.stmt.bindBlob(2, data.data(), data.size());
    u.stmt.step();
}

void RepositoryConnection::deleteInstance(int64_t id)
{
    Use u(statement(DELETE_INSTANCE));
    u.stmt.bindInt64(1, id);
    u.stmt.step();
}

void RepositoryConnection::forEachOfClass(int64_t classId,
    const std::function<void(const std::string& data)>& f)
{
    Use u(statement(OF_CLASS));
    u.stmt.bindInt64(1, classId);
    std::string data;
    while (u.stmt.step()) {
        data = u.stmt.columnBlob(0);
        f(data);
    }
}

void RepositoryConnection::insertReference(int64_t target, int64_t assoc, int64_t role,
    int64_t assocClass)
{
    Use u(statement(INSERT_REF));
    u.stmt.bindInt64(1, target);
    u.stmt.bindInt64(2, assoc);
    u.stmt.bindInt64(3, role);
    u.stmt.bindInt64(4, assocClass);
    u.stmt.step();
}

void RepositoryConnection::deleteReference(int64_t target, int64_t assoc, int64_t role)
{
    Use u(statement(DELETE_REF));
    u.stmt.bindInt64(1, target);
    u.stmt.bindInt64(2, assoc);
    u.stmt.bindInt64(3, role);
    u.stmt.step();
}

void RepositoryConnection::forEachReferenceTo(int64_t target,
    const std::function<void(int64_t assoc, int64_t role, int64_t assocClass)>& f)
{
    Use u(statement(REFS_TO));
    u.stmt.bindInt64(1, target);
    while (u.stmt.step())
        f(u.stmt.columnInt64(0), u.stmt.columnInt64(1), u.stmt.columnInt64(2));
}

} // namespace Pegasus
