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
// Layout:
//   instances(id, path UNIQUE, class, data)
//     path  canonical key path (ObjectPathNormalizer), class as the schema
//           spells it, data = encoded instance (InstanceCodec; its path comes
//           first, so name-only queries decode just that)
//   refs(assoc, assoc_class, role, target, target_class)
//     one row per non-null reference property of an association instance;
//     role in lower case, target the canonical referenced path (with its
//     namespace only when it is another one), indexed by target and by assoc.
class RepositoryConnection {
public:
    RepositoryConnection(const std::string& file, bool readOnly);
    ~RepositoryConnection();

    SqliteDatabase& database() { return _db; }
    void exec(const std::string& sql) { _db.exec(sql); }

    // Transaction control through prepared statements (run once per call, so
    // not parsed again each time).
    enum Control { BEGIN, BEGIN_IMMEDIATE, COMMIT, ROLLBACK, SAVEPOINT, RELEASE, ROLLBACK_TO };
    void run(Control control);

    // Row id, or -1 when the path is taken.
    int64_t insertInstance(const std::string& path, const std::string& className,
        const std::string& data);
    // False when there is no such instance; fills what is asked for.
    bool findInstance(const std::string& path, int64_t* id, std::string* data);
    bool instanceById(int64_t id, std::string* data);
    void updateInstance(int64_t id, const std::string& data);
    // Deletes the instance and its reference rows.
    void deleteInstance(int64_t id);
    // Calls f(data) for each instance of exactly this class, in order of creation.
    void forEachOfClass(const std::string& className,
        const std::function<void(const std::string& data)>& f);

    void deleteReferencesOf(int64_t assoc);
    void insertReference(int64_t assoc, const std::string& assocClass, const std::string& role,
        const std::string& target, const std::string& targetClass);
    // Calls f(assoc, assocClass, role) for each reference row naming target.
    void forEachReferenceTo(const std::string& target,
        const std::function<void(int64_t, const std::string&, const std::string&)>& f);

private:
    enum StatementId {
        INSERT_INSTANCE, FIND_INSTANCE, INSTANCE_BY_ID, UPDATE_INSTANCE, DELETE_INSTANCE,
        DELETE_REFS, OF_CLASS, INSERT_REF, REFS_TO,
        CONTROL_FIRST, STATEMENT_COUNT = CONTROL_FIRST + ROLLBACK_TO + 1
    };
    SqliteStatement& statement(StatementId id);
    void createLayout(const std::string& file);

    SqliteDatabase _db;
    std::unique_ptr<SqliteStatement> _statements[STATEMENT_COUNT];
};

} // namespace Pegasus

#endif
