#include "ServerNamespace.h"

#include <vector>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Constants.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "MC.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

void traceFailure(const char* what, const CIMException& e) {
    SMIS_TRACE(LEVEL2, "Failed to %s ServerNamespace instance.ErrorCode=%d,ErrorMessage=\"%s\"", what,
               int(e.getCode()), MC::ToStd(e.getMessage()).c_str());
}

String required(const CIMInstance& instance, const char* property, const char* owner) {
    String value;
    if (!MC::GetString(instance, property, value) || value.size() == 0) {
        const std::string text =
            std::string("ServerNamespace::WrapInstance execution failed.can't find ") + owner + " " + property;
        SMIS_TRACE(LEVEL2, "%s", text.c_str());
        throw CIMException(CIM_ERR_FAILED, MC::ToString(text));
    }
    return value;
}

}  // namespace

CIMInstance ServerNamespace::WrapInstance(const OperationContext& context, const CIMObjectPath& systemPath,
                                          const CIMObjectPath& managerPath, const std::string& namespaceName) {
    if (namespaceName.empty())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "ServerNamespace::WrapInstance: no namespace name");
    CimHandle* handle = Singleton<CimHandle>::Instance();
    const CIMInstance system = handle->GetSmisInstance(context, PEGASUS_NAMESPACENAME_INTEROP, systemPath, false,
                                                       false, false, CIMPropertyList());
    const CIMInstance manager = handle->GetSmisInstance(context, PEGASUS_NAMESPACENAME_INTEROP, managerPath, false,
                                                        false, false, CIMPropertyList());
    const String systemClass = required(system, "CreationClassName", "system");
    const String systemName = required(system, "Name", "system");
    const String managerClass = required(manager, "CreationClassName", "ObjectManager");
    const String managerName = required(manager, "Name", "ObjectManager");

    const CIMName className = MC::ClassName("Namespace");
    const bool interop = CIMNamespaceName(MC::ToString(namespaceName)) == PEGASUS_NAMESPACENAME_INTEROP;
    CIMInstance instance(className);
    instance.addProperty(CIMProperty(CIMName("SystemCreationClassName"), CIMValue(systemClass)));
    instance.addProperty(CIMProperty(CIMName("SystemName"), CIMValue(systemName)));
    instance.addProperty(CIMProperty(CIMName("ObjectManagerCreationClassName"), CIMValue(managerClass)));
    instance.addProperty(CIMProperty(CIMName("ObjectManagerName"), CIMValue(managerName)));
    instance.addProperty(CIMProperty(CIMName("CreationClassName"), CIMValue(className.getString())));
    instance.addProperty(CIMProperty(CIMName("Name"), CIMValue(MC::ToString(namespaceName))));
    instance.addProperty(CIMProperty(CIMName("ElementName"), CIMValue(MC::ToString(namespaceName))));
    instance.addProperty(CIMProperty(
        CIMName("Description"),
        CIMValue(String(interop ? "Registered profiles and the description of the CIM server"
                                : "The ORV disk array: systems, disks, pools, volumes and their services"))));
    instance.addProperty(CIMProperty(CIMName("ClassInfo"), CIMValue(Uint16(0))));  // Unknown
    instance.addProperty(CIMProperty(CIMName("ClassType"), CIMValue(Uint16(2))));  // CIM
    instance.addProperty(CIMProperty(CIMName("ClassTypeVersion"), CIMValue(String("2.22.0"))));
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("SystemCreationClassName"), CIMValue(systemClass)));
    keys.append(CIMKeyBinding(CIMName("SystemName"), CIMValue(systemName)));
    keys.append(CIMKeyBinding(CIMName("ObjectManagerCreationClassName"), CIMValue(managerClass)));
    keys.append(CIMKeyBinding(CIMName("ObjectManagerName"), CIMValue(managerName)));
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), CIMValue(className.getString())));
    keys.append(CIMKeyBinding(CIMName("Name"), CIMValue(MC::ToString(namespaceName))));
    instance.setPath(CIMObjectPath(String(), PEGASUS_NAMESPACENAME_INTEROP, className, keys));
    return instance;
}

CIMObjectPath ServerNamespace::Create(const OperationContext& context, const CIMObjectPath& systemPath,
                                      const CIMObjectPath& managerPath, const std::string& namespaceName) {
    try {
        CIMObjectPath path = Singleton<CimHandle>::Instance()->CreateInstance(
            context, PEGASUS_NAMESPACENAME_INTEROP, WrapInstance(context, systemPath, managerPath, namespaceName));
        path.setNameSpace(PEGASUS_NAMESPACENAME_INTEROP);
        Association::CreateAssociation(context, ServerNamespaceInManager::FORM, managerPath, path,
                                       std::vector<Property>(), PEGASUS_NAMESPACENAME_INTEROP);
        return path;
    } catch (const CIMException& e) {
        traceFailure("create", e);
        throw;
    }
}

void ServerNamespace::Delete(const OperationContext& context, const CIMObjectPath& namespacePath) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    try {
        Array<CIMObjectPath> references;
        handle->ReferenceNames(context, PEGASUS_NAMESPACENAME_INTEROP, namespacePath,
                               MC::ClassName("NamespaceInManager"), String("Dependent"), references);
        for (Uint32 i = 0; i < references.size(); ++i)
            handle->DeleteInstance(context, PEGASUS_NAMESPACENAME_INTEROP, references[i]);
        handle->DeleteInstance(context, PEGASUS_NAMESPACENAME_INTEROP, namespacePath);
    } catch (const CIMException& e) {
        if (e.getCode() == CIM_ERR_NOT_FOUND) return;
        traceFailure("delete", e);
        throw;
    }
}

}  // namespace orvsmis
