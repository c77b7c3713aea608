#ifndef Pegasus_Server_ServerCIMOMHandleRep_h
#define Pegasus_Server_ServerCIMOMHandleRep_h

#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Server/OperationDispatcher.h>

#include <atomic>

namespace Pegasus {

// The server behind a CIMOMHandle: every call goes through the dispatcher
// as the given caller. Providers get one with Caller::Provider (joining the
// open repository transaction); the network front end uses one with
// Caller::Client (committed content only).
class ServerCIMOMHandleRep : public CIMOMHandleRep {
public:
    ServerCIMOMHandleRep(OperationDispatcher& dispatcher, Caller caller);

    CIMInstance getInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList) override;
    Array<CIMInstance> enumerateInstances(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMName& className, Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList) override;
    Array<CIMObjectPath> enumerateInstanceNames(const OperationContext& context,
        const CIMNamespaceName& nameSpace, const CIMName& className) override;
    CIMObjectPath createInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMInstance& newInstance) override;
    void modifyInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMInstance& modifiedInstance, Boolean includeQualifiers,
        const CIMPropertyList& propertyList) override;
    void deleteInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName) override;
    Array<CIMObject> associators(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
        const String& role, const String& resultRole, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList) override;
    Array<CIMObjectPath> associatorNames(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
        const String& role, const String& resultRole) override;
    Array<CIMObject> references(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) override;
    Array<CIMObjectPath> referenceNames(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role) override;
    CIMValue getProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& propertyName) override;
    void setProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& propertyName, const CIMValue& newValue) override;
    CIMValue invokeMethod(const OperationContext& context, const CIMNamespaceName& nameSpace,
        const CIMObjectPath& instanceName, const CIMName& methodName,
        const Array<CIMParamValue>& inParameters, Array<CIMParamValue>& outParameters) override;
    void disallowProviderUnload() override;
    void allowProviderUnload() override;
    void beginTransaction(const CIMNamespaceName& nameSpace) override;
    void commitTransaction() override;
    void rollBackTransaction() override;

    // How many disallowProviderUnload calls are not yet matched.
    int unloadBlocks() const { return _unloadBlocks.load(); }

private:
    OperationDispatcher& _dispatcher;
    Caller _caller;
    std::atomic<int> _unloadBlocks{0};
};

} // namespace Pegasus

#endif
