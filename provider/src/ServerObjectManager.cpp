#include "ServerObjectManager.h"

#include <vector>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Constants.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/System.h>

#include "Association.h"
#include "CimHandle.h"
#include "EventArgs.h"
#include "MC.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

ModelEvent ServerObjectManager::AfterCreated;
ModelEvent ServerObjectManager::BeforeDeleted;

namespace {

void traceFailure(const char* what, const CIMException& e) {
    SMIS_TRACE(LEVEL2, "Failed to %s ServerObjectManager instance.ErrorCode=%d,ErrorMessage=\"%s\"", what,
               int(e.getCode()), MC::ToStd(e.getMessage()).c_str());
}

String keyOf(const CIMObjectPath& path, const char* name) {
    const Array<CIMKeyBinding> keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i)
        if (keys[i].getName().equal(CIMName(name))) return keys[i].getValue();
    throw CIMException(CIM_ERR_FAILED,
                       MC::ToString(std::string("ServerObjectManager: the system path has no key ") + name));
}

}  // namespace

std::string ServerObjectManager::Name(const std::string& address, int port) {
    return "http://" + address + ":" + std::to_string(port);
}

int ServerObjectManager::getPortNumber() { return static_cast<int>(System::lookupPort("wbem-http", 5988)); }

CIMObjectPath ServerObjectManager::WrapReference(const CIMObjectPath& systemPath) {
    const String systemName = keyOf(systemPath, "Name");
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("SystemCreationClassName"), CIMValue(keyOf(systemPath, "CreationClassName"))));
    keys.append(CIMKeyBinding(CIMName("SystemName"), CIMValue(systemName)));
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), CIMValue(MC::ClassName("ObjectManager").getString())));
    keys.append(CIMKeyBinding(CIMName("Name"), CIMValue(MC::ToString(Name(MC::ToStd(systemName), getPortNumber())))));
    return CIMObjectPath(String(), PEGASUS_NAMESPACENAME_INTEROP, MC::ClassName("ObjectManager"), keys);
}

CIMInstance ServerObjectManager::WrapInstance(const CIMObjectPath& systemPath) {
    const CIMName className = MC::ClassName("ObjectManager");
    const String systemName = keyOf(systemPath, "Name");
    const std::string name = Name(MC::ToStd(systemName), getPortNumber());
    CIMInstance instance(className);
    instance.addProperty(CIMProperty(CIMName("Name"), CIMValue(MC::ToString(name))));
    instance.addProperty(CIMProperty(CIMName("SystemCreationClassName"),
                                     CIMValue(keyOf(systemPath, "CreationClassName"))));
    instance.addProperty(CIMProperty(CIMName("SystemName"), CIMValue(systemName)));
    instance.addProperty(CIMProperty(CIMName("CreationClassName"), CIMValue(className.getString())));
    instance.addProperty(CIMProperty(CIMName("ElementName"), CIMValue(String("ORV storage management CIM server"))));
    instance.addProperty(CIMProperty(CIMName("Description"),
                                     CIMValue(MC::ToString("CIM server of the ORV disk array, reached at " + name))));
    Array<Uint16> status;
    status.append(2);  // OK
    instance.addProperty(CIMProperty(CIMName("OperationalStatus"), CIMValue(status)));
    instance.addProperty(CIMProperty(CIMName("Started"), CIMValue(true)));
    instance.setPath(WrapReference(systemPath));
    return instance;
}

CIMObjectPath ServerObjectManager::Create(const OperationContext& context, const CIMObjectPath& systemPath) {
    CIMObjectPath path;
    try {
        path = Singleton<CimHandle>::Instance()->CreateInstance(context, PEGASUS_NAMESPACENAME_INTEROP,
                                                                 WrapInstance(systemPath));
        path.setNameSpace(PEGASUS_NAMESPACENAME_INTEROP);
        Association::CreateAssociation(context, ServerHostedService::FORM, systemPath, path, std::vector<Property>(),
                                       PEGASUS_NAMESPACENAME_INTEROP);
    } catch (const CIMException& e) {
        traceFailure("create", e);
        throw;
    }
    DataEventArgs data(context, nullptr, nullptr, std::string());
    ParentArgs args(data, path);
    AfterCreated.Invoke(args);
    return path;
}

void ServerObjectManager::Delete(const OperationContext& context, const CIMObjectPath& systemPath) {
    const CIMObjectPath path = WrapReference(systemPath);
    DataEventArgs data(context, nullptr, nullptr, std::string());
    ParentArgs args(data, path);
    BeforeDeleted.Invoke(args);
    CimHandle* handle = Singleton<CimHandle>::Instance();
    try {
        Array<CIMObjectPath> references;
        handle->ReferenceNames(context, PEGASUS_NAMESPACENAME_INTEROP, path, MC::ClassName("HostedService"),
                               String(), references);
        for (Uint32 i = 0; i < references.size(); ++i)
            handle->DeleteInstance(context, PEGASUS_NAMESPACENAME_INTEROP, references[i]);
        handle->DeleteInstance(context, PEGASUS_NAMESPACENAME_INTEROP, path);
    } catch (const CIMException& e) {
        if (e.getCode() == CIM_ERR_NOT_FOUND) return;
        traceFailure("delete", e);
        throw;
    }
}

}  // namespace orvsmis
