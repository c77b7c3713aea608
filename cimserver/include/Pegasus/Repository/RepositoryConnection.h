#ifndef Pegasus_Repository_RepositoryConnection_h
#define Pegasus_Repository_RepositoryConnection_h

#include <Pegasus/Repository/SqliteDatabase.h>
#include <Pegasus/Repository/SqliteStatement.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace Pegasus {

// One connection to a namespace database with its prepared statements (each
// prepared on first use and reused). Not thread-safe: NamespaceStore hands a
// connection to one thread at a time.
//
// Layout (version 2):
//   names(id, entry)
//     the database's NameDictionary: names and property shapes by number
//   instances(id, key, class, data)
//     key   64-bit hash of the canonical key path (ObjectPathNormalizer::hash);
//           not unique: the caller checks each row of a hash against the
//           path it looks for
//     class number of the class name (as the schema spells it) in names
//     data  encoded instance (InstanceCodec; its key properties name it)
//     indexed by key and by (class, id)
//   refs(target, assoc, role, assoc_class)  [no rowid]
//     one row per non-null reference property of an association instance:
//     target the hash of the canonical referenced path (with its namespace
//     only when it is another one), role the number of the property name in
//     lower case, assoc_class the number of the association's class name;
//     keyed by (target, assoc, role). The rows of an association are found
//     again from its stored references when it changes or goes.
//
// Layout version 1 (text paths, UTF-16 instances) is recognised: firstLayout()
// says so, and LayoutUpgrade converts it.
class RepositoryConnection {
public:
    static constexpr int LAYOUT_VERSION = 2;

    RepositoryConnection(const std::string& file, bool readOnly);
    ~RepositoryConnection();

    SqliteDatabase& database() { return _db; }
    void exec(const std::string& sql) { _db.exec(sql); }

    // True when the file holds the first layout and still has to be converted
    // (writer connections only; the tables of version 2 exist already).
    bool firstLayout() const { return _firstLayout; }
    void converted() { _firstLayout = false; }
    // The present layout's tables, where missing.
    void createTables();

    // Transaction control through prepared statements (run once per call, so
    // not parsed again each time).
    enum Control { BEGIN, BEGIN_IMMEDIATE, COMMIT, ROLLBACK, SAVEPOINT, RELEASE, ROLLBACK_TO };
    void run(Control control);

    // The name dictionary's rows, in order of number.
    void forEachDictionaryEntry(const std::function<void(int64_t id, const std::string& entry)>& f);
    // False when the number is taken already.
    bool insertDictionaryEntry(int64_t id, const std::string& entry);
    bool dictionaryEntry(int64_t id, std::string* entry);

    // With id < 0 a new row id is chosen. Returns the row id.
    int64_t insertInstance(int64_t key, int64_t classId, const std::string& data, int64_t id = -1);
    // Calls f(id, data) for each row of this key until f returns false.
    void forEachWithKey(int64_t key,
        const std::function<bool(int64_t id, const std::string& data)>& f);
    bool instanceById(int64_t id, std::string* data);
    void updateInstance(int64_t id, const std::string& data);
    void deleteInstance(int64_t id);
    // Calls f(data) for each instance of exactly this class, in order of creation.
    void forEachOfClass(int64_t classId, const std::function<void(const std::string& data)>& f);

    void insertReference(int64_t target, int64_t assoc, int64_t role, int64_t assocClass);
    void deleteReference(int64_t target, int64_t assoc, int64_t role);
    // Calls f(assoc, role, assocClass) for each reference row of this target.
    void forEachReferenceTo(int64_t target,
        const std::function<void(int64_t assoc, int64_t role, int64_t assocClass)>& f);

private:
    enum StatementId {
        NAMES_ALL, NAME_INSERT, NAME_GET,
        INSERT_INSTANCE, INSERT_INSTANCE_ID, WITH_KEY, INSTANCE_BY_ID, UPDATE_INSTANCE,
        DELETE_INSTANCE, OF_CLASS, INSERT_REF, DELETE_REF, REFS_TO,
        CONTROL_FIRST, STATEMENT_COUNT = CONTROL_FIRST + ROLLBACK_TO + 1
    };
    SqliteStatement& statement(StatementId id);
    void createLayout(const std::string& file);

    SqliteDatabase _db;
    bool _firstLayout = false;
    std::unique_ptr<SqliteStatement> _statements[STATEMENT_COUNT];
};

} // namespace Pegasus

#endif
