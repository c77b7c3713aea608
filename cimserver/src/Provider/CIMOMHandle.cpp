#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

CIMOMHandle::CIMOMHandle() {}
CIMOMHandle::CIMOMHandle(const CIMOMHandle& handle) = default;
CIMOMHandle::CIMOMHandle(std::shared_ptr<CIMOMHandleRep> rep) : _rep(std::move(rep)) {}
CIMOMHandle::~CIMOMHandle() {}
CIMOMHandle& CIMOMHandle::operator=(const CIMOMHandle& handle) = default;

// A handle that was never given to a provider by the server has nothing to talk to.
CIMOMHandleRep& CIMOMHandle::_checked() const {
    if (!_rep) throw CIMException(CIM_ERR_FAILED, "CIMOM handle is not connected to a server");
    return *_rep;
}

CIMInstance CIMOMHandle::getInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, Boolean localOnly, Boolean includeQualifiers,
    Boolean includeClassOrigin, const CIMPropertyList& propertyList) {
    return _checked().getInstance(context, nameSpace, instanceName, localOnly, includeQualifiers,
                                  includeClassOrigin, propertyList);
}

Array<CIMInstance> CIMOMHandle::enumerateInstances(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMName& className, Boolean deepInheritance,
    Boolean localOnly, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList) {
    return _checked().enumerateInstances(context, nameSpace, className, deepInheritance, localOnly,
                                         includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMObjectPath> CIMOMHandle::enumerateInstanceNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMName& className) {
    return _checked().enumerateInstanceNames(context, nameSpace, className);
}

CIMObjectPath CIMOMHandle::createInstance(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMInstance& newInstance) {
    return _checked().createInstance(context, nameSpace, newInstance);
}

void CIMOMHandle::modifyInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMInstance& modifiedInstance, Boolean includeQualifiers,
    const CIMPropertyList& propertyList) {
    _checked().modifyInstance(context, nameSpace, modifiedInstance, includeQualifiers, propertyList);
}

void CIMOMHandle::deleteInstance(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName) {
    _checked().deleteInstance(context, nameSpace, instanceName);
}

Array<CIMObject> CIMOMHandle::associators(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole,
    Boolean includeQualifiers, Boolean includeClassOrigin, const CIMPropertyList& propertyList) {
    return _checked().associators(context, nameSpace, objectName, assocClass, resultClass, role,
                                  resultRole, includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMObjectPath> CIMOMHandle::associatorNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& assocClass,
    const CIMName& resultClass, const String& role, const String& resultRole) {
    return _checked().associatorNames(context, nameSpace, objectName, assocClass, resultClass, role,
                                      resultRole);
}

Array<CIMObject> CIMOMHandle::references(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList) {
    return _checked().references(context, nameSpace, objectName, resultClass, role,
                                 includeQualifiers, includeClassOrigin, propertyList);
}

Array<CIMObjectPath> CIMOMHandle::referenceNames(const OperationContext& context,
    const CIMNamespaceName& nameSpace, const CIMObjectPath& objectName, const CIMName& resultClass,
    const String& role) {
    return _checked().referenceNames(context, nameSpace, objectName, resultClass, role);
}

CIMValue CIMOMHandle::getProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& propertyName) {
    return _checked().getProperty(context, nameSpace, instanceName, propertyName);
}

void CIMOMHandle::setProperty(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& propertyName, const CIMValue& newValue) {
    _checked().setProperty(context, nameSpace, instanceName, propertyName, newValue);
}

CIMValue CIMOMHandle::invokeMethod(const OperationContext& context, const CIMNamespaceName& nameSpace,
    const CIMObjectPath& instanceName, const CIMName& methodName,
    const Array<CIMParamValue>& inParameters, Array<CIMParamValue>& outParameters) {
    return _checked().invokeMethod(context, nameSpace, instanceName, methodName, inParameters,
                                   outParameters);
}

void CIMOMHandle::disallowProviderUnload() { _checked().disallowProviderUnload(); }
void CIMOMHandle::allowProviderUnload() { _checked().allowProviderUnload(); }
void CIMOMHandle::beginTransaction(const CIMNamespaceName& nameSpace) { _checked().beginTransaction(nameSpace); }
void CIMOMHandle::commitTransaction() { _checked().commitTransaction(); }
void CIMOMHandle::rollBackTransaction() { _checked().rollBackTransaction(); }

PEGASUS_NAMESPACE_END
