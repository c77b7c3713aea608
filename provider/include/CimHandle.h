#ifndef ORVSMIS_CIMHANDLE_H
#define ORVSMIS_CIMHANDLE_H

#include <pthread.h>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/CIMOMHandle.h>

#include "Singleton.h"

namespace orvsmis {

// The module's one way into the CIM server's repository. Every call takes
// m_rwLock around the single server call: reads share it, writes and the
// transaction calls take it alone. A lock that cannot be had throws
// ConstructionException "Construction failed"; server failures come back as
// Pegasus::CIMException, as from the CIMOM handle itself.
class CimHandle {
public:
    // Stores a copy of the server's handle under the write lock and asks the
    // server never to unload the module. Called once from initialize.
    void Initialize(Pegasus::CIMOMHandle& handle);
    bool IsInitialized() const { return m_cimomHandle != nullptr; }

    void EnumerateInstances(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        bool deepInheritance, bool localOnly, bool includeQualifiers, bool includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList,
        Pegasus::Array<Pegasus::CIMInstance>& result);
    void EnumerateInstanceNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMName& className,
        Pegasus::Array<Pegasus::CIMObjectPath>& result);
    Pegasus::CIMObjectPath CreateInstance(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMInstance& instance);
    void ModifyInstance(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMInstance& instance,
        bool includeQualifiers, const Pegasus::CIMPropertyList& propertyList);
    void DeleteInstance(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& path);
    Pegasus::CIMInstance GetSmisInstance(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& path,
        bool localOnly, bool includeQualifiers, bool includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList);

    // The association calls first adjust the path's class name to the
    // repository's form (Model::AdjustObjectPath) and use that copy.
    void Associators(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& path,
        const Pegasus::CIMName& assocClass, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role, const Pegasus::String& resultRole, bool includeQualifiers,
        bool includeClassOrigin, const Pegasus::CIMPropertyList& propertyList,
        Pegasus::Array<Pegasus::CIMObject>& result);
    void AssociatorNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& path,
        const Pegasus::CIMName& assocClass, const Pegasus::CIMName& resultClass,
        const Pegasus::String& role, const Pegasus::String& resultRole,
        Pegasus::Array<Pegasus::CIMObjectPath>& result);
    void References(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& path,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        bool includeQualifiers, bool includeClassOrigin,
        const Pegasus::CIMPropertyList& propertyList,
        Pegasus::Array<Pegasus::CIMObject>& result);
    void ReferenceNames(const Pegasus::OperationContext& context,
        const Pegasus::CIMNamespaceName& nameSpace, const Pegasus::CIMObjectPath& path,
        const Pegasus::CIMName& resultClass, const Pegasus::String& role,
        Pegasus::Array<Pegasus::CIMObjectPath>& result);

    // The repository transaction that brackets one load.
    void beginTransaction(const Pegasus::CIMNamespaceName& nameSpace);
    void commitTransaction();
    void rollBackTransaction();

private:
    friend class Singleton<CimHandle>;
    CimHandle();
    ~CimHandle();
    CimHandle(const CimHandle&) = delete;
    CimHandle& operator=(const CimHandle&) = delete;

    // The handle, or NotExistedException when initialize has not run.
    Pegasus::CIMOMHandle& handle();

    pthread_rwlock_t m_rwLock;
    Pegasus::CIMOMHandle* m_cimomHandle;
};

}  // namespace orvsmis

#endif
