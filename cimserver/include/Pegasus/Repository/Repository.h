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
#include <memory>
#include <string>

namespace Pegasus {

class SchemaManager;
class NamespaceStore;

// How a call sees an open transaction.
//  Committed: client requests through the server's front end. Reads use their own
//             connection and a WAL snapshot: they see only committed data and are
//             never blocked by an open transaction. Writes to a namespace whose
//             transaction is open wait (SQLite busy timeout, 30 s) until it ends.
//  Joined:    the provider module's CIMOMHandle calls, from any thread. On the
//             namespace of the open transaction they run inside that transaction.
enum class RepositoryAccess { Committed, Joined };

// Instance store: one SQLite database per namespace, "<namespace lower case, '/'
// replaced by '#'>.db" in the given folder, in WAL mode. Instances are kept under
// their canonical key path (schema class name, keys sorted, no host/namespace).
// Reference properties of association instances are indexed, so association
// queries are index lookups. Errors are CIMExceptions with the CIM status codes
// (abstract classes are refused with CIM_ERR_INVALID_CLASS).
// modifyInstance with a NULL property list replaces every non-key property: those
// absent from the given instance are removed from the stored instance.
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
    CIMObjectPath createInstance(const CIMNamespaceName& ns, const CIMInstance& instance);
    void modifyInstance(const CIMNamespaceName& ns, const CIMInstance& instance,
        Boolean includeQualifiers, const CIMPropertyList& propertyList);
    void deleteInstance(const CIMNamespaceName& ns, const CIMObjectPath& path);

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

    CIMValue getProperty(const CIMNamespaceName& ns, const CIMObjectPath& path,
        const CIMName& propertyName, RepositoryAccess access);
    void setProperty(const CIMNamespaceName& ns, const CIMObjectPath& path,
        const CIMName& propertyName, const CIMValue& value);

    // One transaction at a time; a second begin, or commit/rollback without begin,
    // throws CIMException(CIM_ERR_FAILED).
    void beginTransaction(const CIMNamespaceName& ns);
    void commitTransaction();
    void rollBackTransaction();
    Boolean inTransaction() const;

    Array<CIMNamespaceName> namespaces() const;
    std::string databaseFile(const CIMNamespaceName& ns) const;

private:
    std::string _directory;
    const SchemaManager& _schema;
    std::map<std::string, std::unique_ptr<NamespaceStore>> _stores;
};

} // namespace Pegasus

#endif
