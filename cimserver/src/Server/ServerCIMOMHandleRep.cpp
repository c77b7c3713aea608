#include <Pegasus/Server/ServerCIMOMHandleRep.h>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Repository/Repository.h>

namespace Pegasus {

ServerCIMOMHandleRep::ServerCIMOMHandleRep(OperationDispatcher& dispatcher, Caller caller)
    : _dispatcher(dispatcher), _caller(caller) {}

CIMInstance ServerCIMOMHandleRep::getInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList) {
    return _dispatcher.getInstance(context, nameSpace, instanceName, localOnly, includeQualifiers,
        includeClassOrigin, propertyList, _caller);
}

Array<CIMInstance> ServerCIMOMHandleRep::enumerateInstances(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance, Boolean localOnly,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) {
    return _dispatcher.enumerateInstances(context, nameSpace, className, deepInheritance, localOnly,
        includeQualifiers, includeClassOrigin, propertyList, _caller);
}

Array<CIMObjectPath> ServerCIMOMHandleRep::enumerateInstanceNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMName& className) {
    return _dispatcher.enumerateInstanceNames(context, nameSpace, className, _caller);
}

CIMObjectPath ServerCIMOMHandleRep::createInstance(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMInstance& newInstance) {
    return _dispatcher.createInstance(context, nameSpace, newInstance, _caller);
}

void ServerCIMOMHandleRep::modifyInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMInstance& modifiedInstance, Boolean includeQualifiers, const CIMPropertyList& propertyList) {
    _dispatcher.modifyInstance(context, nameSpace, modifiedInstance, includeQualifiers, propertyList, _caller);
}

void ServerCIMOMHandleRep::deleteInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName) {
    _dispatcher.deleteInstance(context, nameSpace, instanceName, _caller);
}

Array<CIMObject> ServerCIMOMHandleRep::associators(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList) {
    return _dispatcher.associators(context, nameSpace, objectName, assocClass, resultClass, role, resultRole,
        includeQualifiers, includeClassOrigin, propertyList, _caller);
}

Array<CIMObjectPath> ServerCIMOMHandleRep::associatorNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole) {
    return _dispatcher.associatorNames(context, nameSpace, objectName, assocClass, resultClass, role,
        resultRole, _caller);
}

Array<CIMObject> ServerCIMOMHandleRep::references(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList) {
    return _dispatcher.references(context, nameSpace, objectName, resultClass, role, includeQualifiers,
        includeClassOrigin, propertyList, _caller);
}

Array<CIMObjectPath> ServerCIMOMHandleRep::referenceNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role) {
    return _dispatcher.referenceNames(context, nameSpace, objectName, resultClass, role, _caller);
}

CIMValue ServerCIMOMHandleRep::getProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& propertyName) {
    return _dispatcher.getProperty(context, nameSpace, instanceName, propertyName, _caller);
}

void ServerCIMOMHandleRep::setProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& propertyName, const CIMValue& newValue) {
    _dispatcher.setProperty(context, nameSpace, instanceName, propertyName, newValue, _caller);
}

CIMValue ServerCIMOMHandleRep::invokeMethod(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& methodName, const Array<CIMParamValue>& inParameters,
    Array<CIMParamValue>& outParameters) {
    return _dispatcher.invokeMethod(context, nameSpace, instanceName, methodName, inParameters, outParameters,
        _caller);
}

void ServerCIMOMHandleRep::disallowProviderUnload() { ++_unloadBlocks; }

void ServerCIMOMHandleRep::allowProviderUnload() {
    int blocks = _unloadBlocks.load();
    while (blocks > 0 && !_unloadBlocks.compare_exchange_weak(blocks, blocks - 1)) {
    }
}

void ServerCIMOMHandleRep::beginTransaction(const CIMNamespaceName& nameSpace) {
    if (_caller != Caller::Provider)
        throw CIMException(CIM_ERR_ACCESS_DENIED, "Only providers may open repository transactions");
    _dispatcher.repository().beginTransaction(_dispatcher.canonicalNamespace(nameSpace));
}

void ServerCIMOMHandleRep::commitTransaction() {
    if (_caller != Caller::Provider)
        throw CIMException(CIM_ERR_ACCESS_DENIED, "Only providers may commit repository transactions");
    _dispatcher.repository().commitTransaction();
}

void ServerCIMOMHandleRep::rollBackTransaction() {
    if (_caller != Caller::Provider)
        throw CIMException(CIM_ERR_ACCESS_DENIED, "Only providers may roll back repository transactions");
    _dispatcher.repository().rollBackTransaction();
}

} // namespace Pegasus
