#include <Pegasus/Repository/RepositoryConnection.h>

namespace Pegasus {

namespace {

// Stored as the database's user_version; a change of tables or encoding
// raises it.
const int LAYOUT_VERSION = 1;

const char* const SQL[] = {
    "INSERT OR IGNORE INTO instances(path, class, data) VALUES(?1, ?2, ?3)",
    "SELECT id, data FROM instances WHERE path = ?1",
    "SELECT data FROM instances WHERE id = ?1",
    "UPDATE instances SET data = ?2 WHERE id = ?1",
    "DELETE FROM instances WHERE id = ?1",
    "DELETE FROM refs WHERE assoc = ?1",
    "SELECT data FROM instances WHERE class = ?1 ORDER BY id",
    "INSERT INTO refs(assoc, assoc_class, role, target, target_class) VALUES(?1, ?2, ?3, ?4, ?5)",
    "SELECT assoc, assoc_class, role FROM refs WHERE target = ?1 ORDER BY assoc",
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
    // A data load writes some 100,000 instances in one transaction: the writer
    // keeps them in its page cache instead of spilling pages to the WAL file
    // again and again before the commit. Readers map the file.
    _db.exec(readOnly ? "PRAGMA mmap_size=268435456"
                      : "PRAGMA cache_size=-131072; PRAGMA temp_store=MEMORY;"
                        "PRAGMA journal_size_limit=67108864");
    if (!readOnly)
        createLayout(file);
    // A database of another program may have tables of these names with
    // other columns: refused here rather than at its first use.
    try {
        SqliteStatement(_db, "SELECT id, path, class, data FROM instances LIMIT 0");
        SqliteStatement(_db, "SELECT assoc, assoc_class, role, target, target_class FROM refs LIMIT 0");
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
    if (version != 0 && version != LAYOUT_VERSION)
        throw SqliteError("repository database " + file + " has layout version " +
            std::to_string(version) + ", this server reads version " +
            std::to_string(LAYOUT_VERSION));
    try {
        _db.exec(
            "CREATE TABLE IF NOT EXISTS instances("
            " id INTEGER PRIMARY KEY,"
            " path TEXT NOT NULL UNIQUE,"
            " class TEXT NOT NULL,"
            " data BLOB NOT NULL);"
            "CREATE INDEX IF NOT EXISTS instances_by_class ON instances(class, id);"
            "CREATE TABLE IF NOT EXISTS refs("
            " assoc INTEGER NOT NULL,"
            " assoc_class TEXT NOT NULL,"
            " role TEXT NOT NULL,"
            " target TEXT NOT NULL,"
            " target_class TEXT NOT NULL);"
            "CREATE INDEX IF NOT EXISTS refs_by_target ON refs(target);"
            "CREATE INDEX IF NOT EXISTS refs_by_assoc ON refs(assoc);");
    } catch (const SqliteError& e) {
        throw SqliteError("repository database " + file +
            " does not have the tables of an instance repository: " + e.what());
    }
    if (version == 0)
        _db.exec("PRAGMA user_version=" + std::to_string(LAYOUT_VERSION));
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

int64_t RepositoryConnection::insertInstance(const std::string& path, const std::string& className,
    const std::string& data)
{
    Use u(statement(INSERT_INSTANCE));
    u.stmt.bindText(1, path);
    u.stmt.bindText(2, className);
    u.stmt.bindBlob(3, data.data(), data.size());
    u.stmt.step();
    if (_db.changes() == 0)
        return -1;
    return _db.lastInsertRowId();
}

bool RepositoryConnection::findInstance(const std::string& path, int64_t* id, std::string* data)
{
    Use u(statement(FIND_INSTANCE));
    u.stmt.bindText(1, path);
    if (!u.stmt.step())
        return false;
    if (id)
        *id = u.stmt.columnInt64(0);
    if (data)
        *data = u.stmt.columnBlob(1);
    return true;
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
    deleteReferencesOf(id);
    Use u(statement(DELETE_INSTANCE));
    u.stmt.bindInt64(1, id);
    u.stmt.step();
}

void RepositoryConnection::forEachOfClass(const std::string& className,
    const std::function<void(const std::string& data)>& f)
{
    Use u(statement(OF_CLASS));
    u.stmt.bindText(1, className);
    std::string data;
    while (u.stmt.step()) {
        data = u.stmt.columnBlob(0);
        f(data);
    }
}

void RepositoryConnection::deleteReferencesOf(int64_t assoc)
{
    Use u(statement(DELETE_REFS));
    u.stmt.bindInt64(1, assoc);
    u.stmt.step();
}

void RepositoryConnection::insertReference(int64_t assoc, const std::string& assocClass,
    const std::string& role, const std::string& target, const std::string& targetClass)
{
    Use u(statement(INSERT_REF));
    u.stmt.bindInt64(1, assoc);
    u.stmt.bindText(2, assocClass);
    u.stmt.bindText(3, role);
    u.stmt.bindText(4, target);
    u.stmt.bindText(5, targetClass);
    u.stmt.step();
}

void RepositoryConnection::forEachReferenceTo(const std::string& target,
    const std::function<void(int64_t, const std::string&, const std::string&)>& f)
{
    Use u(statement(REFS_TO));
    u.stmt.bindText(1, target);
    while (u.stmt.step())
        f(u.stmt.columnInt64(0), u.stmt.columnText(1), u.stmt.columnText(2));
}

} // namespace Pegasus
