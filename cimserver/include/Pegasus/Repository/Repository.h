#ifndef Pegasus_Repository_Repository_h
#define Pegasus_Repository_Repository_h

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/String.h>

#include <map>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Pegasus {

class SchemaManager;
class ClassDecl;
class NamespaceStore;
class ObjectPathNormalizer;
class ClassCache;
class RepositoryConnection;

// How a call sees an open transaction.
//  Committed: client requests through the server's front end. Reads use their own
//             connection and a WAL snapshot: they see only committed data and are
//             never blocked by an open transaction. Writes to a namespace whose
//             transaction is open wait (SQLite busy timeout, 30 s) until it ends.
//  Joined:    the provider module's CIMOMHandle calls, from any thread. On the
//             namespace of the open transaction they run inside that transaction.
enum class RepositoryAccess { Committed, Joined };

// Instance store: one SQLite database per namespace, "<namespace lower case, '/'
// replaced by '#'>.db" in the given folder (created when missing), in WAL mode.
// Instances are kept under their canonical key path (schema class name, keys
// sorted, no host/namespace; see ObjectPathNormalizer), filed by its hash and
// checked against the stored keys. Reference properties of association
// instances are indexed, so association queries are index lookups. The
// stored form is compact (see RepositoryConnection for the tables and
// InstanceCodec for the encoding); a database of the first layout is
// converted when it is opened (LayoutUpgrade), or refused with an error
// naming the file when it cannot be read.
// Thread-safe: any number of threads may call at once.
//
// Errors are CIMExceptions naming the class, property or path:
//  - unknown namespace: CIM_ERR_INVALID_NAMESPACE; unknown class: CIM_ERR_INVALID_CLASS;
//  - create of an abstract class: CIM_ERR_INVALID_CLASS;
//  - a property the class does not have: CIM_ERR_NO_SUCH_PROPERTY;
//  - wrong type or array-ness: CIM_ERR_TYPE_MISMATCH (a string property with an
//    EmbeddedInstance/EmbeddedObject qualifier also takes instance/object values);
//  - a key missing or null, or a key changed by modify: CIM_ERR_INVALID_PARAMETER;
//  - create of an existing path: CIM_ERR_ALREADY_EXISTS; get, modify, delete,
//    getProperty, setProperty of a missing instance: CIM_ERR_NOT_FOUND;
//  - database faults (also a damaged or foreign file at open): CIM_ERR_FAILED.
//
// createInstance derives the path from the key properties; a path set on the
// instance only has to name the same class. Stored properties get the names,
// class origins and reference classes of the schema. Returned instances and
// paths carry class and keys only (no host, no namespace), except far objects
// of associators/associatorNames in another namespace, which keep it.
//
// modifyInstance with a NULL property list replaces every non-key property:
// those absent from the given instance are removed from the stored instance.
// With a property list only the listed properties change (a listed property
// absent from the given instance is removed); the others stay as they were.
//
// Associations: lookups match the references stored with any host, and with
// the repository's own namespace or none; a reference stored with another
// namespace matches only an object name of that namespace. For references and
// referenceNames, resultClass filters the association class (subclasses
// included); for associators and associatorNames, assocClass filters the
// association class and resultClass the class of the far object (subclasses
// included). Far objects that do not exist (any more) are left out.
class Repository {
public:
    Repository(const std::string& directory, const SchemaManager& schema);
    ~Repository();
    Repository(const Repository&) = delete;
    Repository& operator=(const Repository&) = delete;

    CIMInstance getInstance(const CIMNamespaceName& ns, const CIMObjectPath& path,
        Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, RepositoryAccess access);
    Array<CIMInstance> enumerateInstances(const CIMNamespaceName& ns, const CIMName& className,
        Boolean deepInheritance, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, RepositoryAccess access);
    Array<CIMObjectPath> enumerateInstanceNames(const CIMNamespaceName& ns,
        const CIMName& className, RepositoryAccess access);
    // Writes take the access too: Joined (the default: the module's calls)
    // runs inside the open transaction of that namespace, or commits on its
    // own when none is open; Committed (client writes) waits while a
    // transaction is open on that namespace, then commits on its own.
    CIMObjectPath createInstance(const CIMNamespaceName& ns, const CIMInstance& instance,
        RepositoryAccess access = RepositoryAccess::Joined);
    void modifyInstance(const CIMNamespaceName& ns, const CIMInstance& instance,
        Boolean includeQualifiers, const CIMPropertyList& propertyList,
        RepositoryAccess access = RepositoryAccess::Joined);
    void deleteInstance(const CIMNamespaceName& ns, const CIMObjectPath& path,
        RepositoryAccess access = RepositoryAccess::Joined);

    // Null CIMName filters and empty role strings mean "no filter".
    Array<CIMObject> associators(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, RepositoryAccess access);
    Array<CIMObjectPath> associatorNames(const CIMNamespaceName& ns,
        const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
        const String& role, const String& resultRole, RepositoryAccess access);
    Array<CIMObject> references(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList, RepositoryAccess access);
    Array<CIMObjectPath> referenceNames(const CIMNamespaceName& ns,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
        RepositoryAccess access);

    // Streaming forms of the reads above: each result goes to `each` as soon
    // as it is decoded and is dropped afterwards, so that a large answer
    // never sits in memory as a whole. Same results, same order, same errors
    // as the array forms (which are built on these). `each` may change what
    // it is given. It runs inside the read of the namespace (for Joined access
    // in the open transaction, holding the namespace's writer lock): it must
    // not call the repository. What it throws ends the read and leaves as it is.
    using InstanceSink = std::function<void(CIMInstance&)>;
    using ObjectSink = std::function<void(CIMObject&)>;
    using PathSink = std::function<void(CIMObjectPath&)>;
    void enumerateInstances(const CIMNamespaceName& ns, const CIMName& className,
        Boolean deepInheritance, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, RepositoryAccess access, const InstanceSink& each);
    void enumerateInstanceNames(const CIMNamespaceName& ns, const CIMName& className,
        RepositoryAccess access, const PathSink& each);
    void associators(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, RepositoryAccess access, const ObjectSink& each);
    void associatorNames(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole, RepositoryAccess access, const PathSink& each);
    void references(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList, RepositoryAccess access,
        const ObjectSink& each);
    void referenceNames(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, RepositoryAccess access,
        const PathSink& each);

    CIMValue getProperty(const CIMNamespaceName& ns, const CIMObjectPath& path,
        const CIMName& propertyName, RepositoryAccess access);
    void setProperty(const CIMNamespaceName& ns, const CIMObjectPath& path,
        const CIMName& propertyName, const CIMValue& value,
        RepositoryAccess access = RepositoryAccess::Joined);

    // One transaction at a time; a second begin, or commit/rollback without begin,
    // throws CIMException(CIM_ERR_FAILED).
    void beginTransaction(const CIMNamespaceName& ns);
    void commitTransaction();
    void rollBackTransaction();
    Boolean inTransaction() const;

    Array<CIMNamespaceName> namespaces() const;
    std::string databaseFile(const CIMNamespaceName& ns) const;

private:
    struct Found;
    NamespaceStore& store(const CIMNamespaceName& ns) const;
    NamespaceStore* findStore(const std::string& ns) const;
    CIMInstance validated(const ClassDecl& cls, const CIMInstance& instance) const;
    CIMObjectPath keyPath(const ClassDecl& cls, const CIMInstance& instance) const;
    std::string lookupKey(const NamespaceStore& store, const CIMObjectPath& path) const;
    // The canonical key of a stored instance, from its encoded form.
    std::string storedKey(const NamespaceStore& store, const std::string& data) const;
    // The stored instance of a canonical key (rows of the same hash checked).
    bool findStored(RepositoryConnection& connection, const NamespaceStore& store,
        const std::string& key, int64_t* id, std::string* data) const;
    // The same, decoded (the key values of the decoding serve the check).
    bool findDecoded(RepositoryConnection& connection, const NamespaceStore& store,
        const std::string& key, bool withClassOrigin, CIMInstance& instance) const;
    // The path of a stored association whose reference of this role names
    // the target; false when it does not.
    bool referenceNameOf(const NamespaceStore& store, const std::string& data,
        const std::string& role, const std::string& target, CIMObjectPath& path) const;
    struct RefRow {
        int64_t target;
        int64_t role;
        int64_t assocClass;
    };
    std::vector<RefRow> referenceRows(NamespaceStore& store, const ClassDecl& cls,
        const CIMConstInstance& instance) const;
    void indexReferences(RepositoryConnection& connection, NamespaceStore& store,
        int64_t id, const ClassDecl& cls, const CIMConstInstance& instance) const;
    void unindexReferences(RepositoryConnection& connection, NamespaceStore& store,
        int64_t id, const ClassDecl& cls, const CIMConstInstance& instance) const;
    // Whether the association's reference of this role (lower case) names
    // the target (canonical key).
    bool refersTo(const NamespaceStore& store, const CIMConstInstance& assoc,
        const std::string& role, const std::string& target) const;
    void collect(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole, bool associators, bool wantInstances,
        RepositoryAccess access, const std::function<void(Found&)>& emit) const;

    std::string _directory;
    const SchemaManager& _schema;
    std::unique_ptr<ObjectPathNormalizer> _normalizer;
    std::unique_ptr<ClassCache> _classCache;
    std::map<std::string, std::unique_ptr<NamespaceStore>> _stores; // key: namespace in lower case
    mutable std::mutex _transactionMutex;
    NamespaceStore* _transactionStore = nullptr;
};

} // namespace Pegasus

#endif
