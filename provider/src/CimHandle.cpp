#include "CimHandle.h"

#include "AutoReadLock.h"
#include "AutoWriteLock.h"
#include "Exception.h"
#include "Model.h"
#include "SmisTrace.h"

using Pegasus::Array;
using Pegasus::CIMInstance;
using Pegasus::CIMName;
using Pegasus::CIMNamespaceName;
using Pegasus::CIMObject;
using Pegasus::CIMObjectPath;
using Pegasus::CIMPropertyList;
using Pegasus::OperationContext;
using Pegasus::String;

namespace orvsmis {

CimHandle::CimHandle() : m_cimomHandle(nullptr) { pthread_rwlock_init(&m_rwLock, nullptr); }

CimHandle::~CimHandle() {
    delete m_cimomHandle;
    pthread_rwlock_destroy(&m_rwLock);
}

void CimHandle::Initialize(Pegasus::CIMOMHandle& handle) {
    AutoWriteLock lock(m_rwLock);
    Pegasus::CIMOMHandle* copy = new Pegasus::CIMOMHandle(handle);
    delete m_cimomHandle;
    m_cimomHandle = copy;
    // Once initialised the module stays loaded for the life of the server.
    m_cimomHandle->disallowProviderUnload();
}

Pegasus::CIMOMHandle& CimHandle::handle() {
    if (m_cimomHandle == nullptr) throw NotExistedException("The CIM server handle is not set");
    return *m_cimomHandle;
}

void CimHandle::EnumerateInstances(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMName& className, bool deepInheritance,
    bool localOnly, bool includeQualifiers, bool includeClassOrigin,
    const CIMPropertyList& propertyList, Array<CIMInstance>& result) {
    AutoReadLock lock(m_rwLock);
    result = handle().enumerateInstances(context, nameSpace, className, deepInheritance,
        localOnly, includeQualifiers, includeClassOrigin, propertyList);
}

void CimHandle::EnumerateInstanceNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMName& className, Array<CIMObjectPath>& result) {
    AutoReadLock lock(m_rwLock);
    result = handle().enumerateInstanceNames(context, nameSpace, className);
}

CIMObjectPath CimHandle::CreateInstance(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMInstance& instance) {
    AutoWriteLock lock(m_rwLock);
    return handle().createInstance(context, nameSpace, instance);
}

void CimHandle::ModifyInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMInstance& instance, bool includeQualifiers, const CIMPropertyList& propertyList) {
    AutoWriteLock lock(m_rwLock);
    handle().modifyInstance(context, nameSpace, instance, includeQualifiers, propertyList);
}

void CimHandle::DeleteInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& path) {
    AutoWriteLock lock(m_rwLock);
    handle().deleteInstance(context, nameSpace, path);
}

CIMInstance CimHandle::GetSmisInstance(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& path, bool localOnly,
    bool includeQualifiers, bool includeClassOrigin, const CIMPropertyList& propertyList) {
    AutoReadLock lock(m_rwLock);
    return handle().getInstance(context, nameSpace, path, localOnly, includeQualifiers,
        includeClassOrigin, propertyList);
}

void CimHandle::Associators(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& path, const CIMName& assocClass, const CIMName& resultClass,
    const String& role, const String& resultRole, bool includeQualifiers, bool includeClassOrigin,
    const CIMPropertyList& propertyList, Array<CIMObject>& result) {
    const CIMObjectPath adjusted = Model::AdjustObjectPath(path);
    AutoReadLock lock(m_rwLock);
    result = handle().associators(context, nameSpace, adjusted, assocClass, resultClass, role,
        resultRole, includeQualifiers, includeClassOrigin, propertyList);
}

void CimHandle::AssociatorNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& path, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole,
    Array<CIMObjectPath>& result) {
    const CIMObjectPath adjusted = Model::AdjustObjectPath(path);
    AutoReadLock lock(m_rwLock);
    result = handle().associatorNames(context, nameSpace, adjusted, assocClass, resultClass, role,
        resultRole);
}

void CimHandle::References(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& path, const CIMName& resultClass, const String& role,
    bool includeQualifiers, bool includeClassOrigin, const CIMPropertyList& propertyList,
    Array<CIMObject>& result) {
    const CIMObjectPath adjusted = Model::AdjustObjectPath(path);
    AutoReadLock lock(m_rwLock);
    result = handle().references(context, nameSpace, adjusted, resultClass, role,
        includeQualifiers, includeClassOrigin, propertyList);
}

void CimHandle::ReferenceNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& path, const CIMName& resultClass,
    const String& role, Array<CIMObjectPath>& result) {
    const CIMObjectPath adjusted = Model::AdjustObjectPath(path);
    AutoReadLock lock(m_rwLock);
    result = handle().referenceNames(context, nameSpace, adjusted, resultClass, role);
}

void CimHandle::beginTransaction(const CIMNamespaceName& nameSpace) {
    AutoWriteLock lock(m_rwLock);
    SMIS_TRACE(LEVEL3, "Begin");
    handle().beginTransaction(nameSpace);
}

void CimHandle::commitTransaction() {
    AutoWriteLock lock(m_rwLock);
    SMIS_TRACE(LEVEL3, "Saving disk array data");
    handle().commitTransaction();
}

void CimHandle::rollBackTransaction() {
    AutoWriteLock lock(m_rwLock);
    SMIS_TRACE(LEVEL3, "Rolling back repository");
    handle().rollBackTransaction();
}

}  // namespace orvsmis
