#ifndef Pegasus_CIMOMHandle_h
#define Pegasus_CIMOMHandle_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/OperationContext.h>

#include <memory>

PEGASUS_NAMESPACE_BEGIN

class CIMOMHandleRep;

// A provider's way back into the server: every call goes through the whole
// server (repository or providers) synchronously; errors come back as
// CIMException. Copies share one connection to the server.
class PEGASUS_PROVIDER_LINKAGE CIMOMHandle {
public:
    CIMOMHandle();
    CIMOMHandle(const CIMOMHandle& handle);
    virtual ~CIMOMHandle();
    CIMOMHandle& operator=(const CIMOMHandle& handle);

    CIMInstance getInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList);
    Array<CIMInstance> enumerateInstances(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance,
        Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList);
    Array<CIMObjectPath> enumerateInstanceNames(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMName& className);
    CIMObjectPath createInstance(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMInstance& newInstance);
    void modifyInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMInstance& modifiedInstance, Boolean includeQualifiers,
        const CIMPropertyList& propertyList);
    void deleteInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName);
    Array<CIMObject> associators(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList);
    Array<CIMObjectPath> associatorNames(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole);
    Array<CIMObject> references(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList);
    Array<CIMObjectPath> referenceNames(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role);
    CIMValue getProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& propertyName);
    void setProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& propertyName,
        const CIMValue& newValue);
    CIMValue invokeMethod(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& methodName,
        const Array<CIMParamValue>& inParameters, Array<CIMParamValue>& outParameters);

    void disallowProviderUnload();
    void allowProviderUnload();

    // Server extension: one repository transaction on a namespace. Calls
    // through any handle of the same server join it until it is committed or
    // rolled back; clients see none of it before the commit.
    void beginTransaction(const CIMNamespaceName& nameSpace);
    void commitTransaction();
    void rollBackTransaction();

    // Server side: a handle bound to the server's implementation.
    explicit CIMOMHandle(std::shared_ptr<CIMOMHandleRep> rep);

private:
    CIMOMHandleRep& _checked() const;
    std::shared_ptr<CIMOMHandleRep> _rep;
};

// What the server implements behind every CIMOMHandle.
class PEGASUS_PROVIDER_LINKAGE CIMOMHandleRep {
public:
    virtual ~CIMOMHandleRep();
    virtual CIMInstance getInstance(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName, Boolean localOnly,
        Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) = 0;
    virtual Array<CIMInstance> enumerateInstances(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance,
        Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) = 0;
    virtual Array<CIMObjectPath> enumerateInstanceNames(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMName& className) = 0;
    virtual CIMObjectPath createInstance(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMInstance& newInstance) = 0;
    virtual void modifyInstance(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMInstance& modifiedInstance,
        Boolean includeQualifiers, const CIMPropertyList& propertyList) = 0;
    virtual void deleteInstance(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName) = 0;
    virtual Array<CIMObject> associators(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole, Boolean includeQualifiers, Boolean includeClassOrigin,
        const CIMPropertyList& propertyList) = 0;
    virtual Array<CIMObjectPath> associatorNames(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& assocClass, const CIMName& resultClass, const String& role,
        const String& resultRole) = 0;
    virtual Array<CIMObject> references(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList) = 0;
    virtual Array<CIMObjectPath> referenceNames(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName,
        const CIMName& resultClass, const String& role) = 0;
    virtual CIMValue getProperty(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& propertyName) = 0;
    virtual void setProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& propertyName,
        const CIMValue& newValue) = 0;
    virtual CIMValue invokeMethod(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMObjectPath& instanceName,
        const CIMName& methodName, const Array<CIMParamValue>& inParameters,
        Array<CIMParamValue>& outParameters) = 0;
    virtual void disallowProviderUnload() = 0;
    virtual void allowProviderUnload() = 0;
    virtual void beginTransaction(const CIMNamespaceName& nameSpace) = 0;
    virtual void commitTransaction() = 0;
    virtual void rollBackTransaction() = 0;
};

PEGASUS_NAMESPACE_END

#endif
