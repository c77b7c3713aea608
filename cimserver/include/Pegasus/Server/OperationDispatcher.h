#ifndef Pegasus_Server_OperationDispatcher_h
#define Pegasus_Server_OperationDispatcher_h

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Server/ProviderManager.h>
#include <Pegasus/Server/ProviderRegistrationManager.h>

#include <functional>
#include <map>
#include <mutex>
#include <string>

namespace Pegasus {

class Repository;
class SchemaManager;
class ClassDecl;

// Who asks: a client over the network sees only committed repository
// content and its instance writes of provider classes go to the provider; a
// provider (through its CIMOMHandle) joins the open repository transaction
// and writes the repository directly, which is how a provider fills it.
enum class Caller { Client, Provider };

// Routes every operation to the repository and the registered providers.
// Instance reads come from the repository for every class; associators and
// references unite the repository's answer with those of the association
// providers registered for the association classes involved; methods go to
// the registered method provider. Errors are CIMExceptions.
class OperationDispatcher {
public:
    OperationDispatcher(const SchemaManager& schema, Repository& repository,
        const ProviderRegistrationManager& registration, ProviderManager& providers,
        bool associationTraversal = true);

    // An in-server provider for the instance writes of `className` and its
    // subclasses in every namespace (clients only), e.g. the indication
    // subscription classes.
    void addControlProvider(const std::string& className, CIMInstanceProvider* provider);

    // "interop" and "root/PG_InterOp" stand for the interop namespace; any
    // other unknown namespace is CIM_ERR_INVALID_NAMESPACE.
    CIMNamespaceName canonicalNamespace(const CIMNamespaceName& ns) const;

    CIMInstance getInstance(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMObjectPath& instanceName, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList, Caller caller);
    Array<CIMInstance> enumerateInstances(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMName& className, Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList, Caller caller);
    Array<CIMObjectPath> enumerateInstanceNames(const OperationContext& context,
        const CIMNamespaceName& ns, const CIMName& className, Caller caller);
    CIMObjectPath createInstance(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMInstance& newInstance, Caller caller);
    void modifyInstance(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMInstance& modifiedInstance, Boolean includeQualifiers,
        const CIMPropertyList& propertyList, Caller caller);
    void deleteInstance(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMObjectPath& instanceName, Caller caller);
    Array<CIMObject> associators(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
        const String& role, const String& resultRole, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList, Caller caller);
    Array<CIMObjectPath> associatorNames(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
        const String& role, const String& resultRole, Caller caller);
    Array<CIMObject> references(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList,
        Caller caller);
    Array<CIMObjectPath> referenceNames(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
        Caller caller);

    // Streaming forms of the enumerations and association queries: the same
    // results in the same order, each handed to `each` with its path
    // completed, without ever holding the whole answer. Repository results
    // are decoded one at a time; what an association provider delivers is
    // handed on as it is delivered (left out when an equal path was answered
    // before; only the answered paths are kept, and only when a provider is
    // asked). `each` runs inside the repository's read or the provider's
    // call, one result at a time: it must not call back into the server. An
    // error ends the call: what `each` got before is not a complete answer.
    using InstanceSink = std::function<void(CIMInstance&)>;
    using ObjectSink = std::function<void(CIMObject&)>;
    using PathSink = std::function<void(CIMObjectPath&)>;
    void enumerateInstances(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMName& className, Boolean deepInheritance, Boolean localOnly, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList, Caller caller,
        const InstanceSink& each);
    void enumerateInstanceNames(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMName& className, Caller caller, const PathSink& each);
    void associators(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
        const String& role, const String& resultRole, Boolean includeQualifiers,
        Boolean includeClassOrigin, const CIMPropertyList& propertyList, Caller caller,
        const ObjectSink& each);
    void associatorNames(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMObjectPath& objectName, const CIMName& assocClass, const CIMName& resultClass,
        const String& role, const String& resultRole, Caller caller, const PathSink& each);
    void references(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
        Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList,
        Caller caller, const ObjectSink& each);
    void referenceNames(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMObjectPath& objectName, const CIMName& resultClass, const String& role,
        Caller caller, const PathSink& each);

    CIMValue getProperty(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMObjectPath& instanceName, const CIMName& propertyName, Caller caller);
    void setProperty(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMObjectPath& instanceName, const CIMName& propertyName, const CIMValue& newValue,
        Caller caller);
    CIMValue invokeMethod(const OperationContext& context, const CIMNamespaceName& ns,
        const CIMObjectPath& instanceName, const CIMName& methodName,
        const Array<CIMParamValue>& inParameters, Array<CIMParamValue>& outParameters, Caller caller);

    Repository& repository() { return _repository; }
    const SchemaManager& schema() const { return _schema; }
    ProviderManager& providers() { return _providers; }
    const ProviderRegistrationManager& registration() const { return _registration; }

private:
    struct Target {
        ProviderManager::Loaded* provider;
        std::string associationClass;
    };

    const ClassDecl& requireClass(const CIMNamespaceName& ns, const CIMName& className,
        CIMStatusCode missing) const;
    ProviderManager::Loaded* providerFor(const ProviderRegistrationManager::Capability* capability);
    CIMInstanceProvider* instanceWriter(const CIMNamespaceName& ns, const CIMName& className);
    std::vector<Target> associationTargets(const CIMNamespaceName& ns, const CIMObjectPath& objectName,
        const CIMName& filterClass);
    void completePath(CIMObjectPath& path, const CIMNamespaceName& ns) const;
    CIMObjectPath providerPath(const CIMObjectPath& path, const CIMNamespaceName& ns) const;
    OperationContext providerContext(const OperationContext& context) const;
    void checkTraversal(const CIMNamespaceName& ns, const CIMObjectPath& objectName) const;

    const SchemaManager& _schema;
    Repository& _repository;
    const ProviderRegistrationManager& _registration;
    ProviderManager& _providers;
    bool _associationTraversal;
    std::mutex _controlMutex;
    std::map<std::string, CIMInstanceProvider*> _controlProviders;   // key: class in lower case
};

} // namespace Pegasus

#endif
