#include "SystemDevice.h"

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "MC.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

std::string keyValue(const CIMObjectPath& path, const char* name) {
    const Array<CIMKeyBinding>& keys = path.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i)
        if (keys[i].getName().equal(CIMName(name))) return MC::ToStd(keys[i].getValue());
    return std::string();
}

}  // namespace

CIMObjectPath SystemDevice::Create(const OperationContext& context, const CIMObjectPath& system,
                                   const CIMObjectPath& device) {
    return SystemDevicePD::Create(context, system, device);
}

void SystemDevice::getStorageVolumeObject(RequestArgs* args, Array<CIMObjectPath>& out) {
    if (args == nullptr) throw CIMException(CIM_ERR_FAILED, "dynamic_cast error! [SystemDevice::getStorageVolumeObject]");
    const std::string systemName = keyValue(args->objectPath, "Name");
    // The system is a key of every volume, so the names alone tell which
    // volumes lie in it: thousands of whole volumes are never held at once.
    Array<CIMObjectPath> volumes;
    Singleton<CimHandle>::Instance()->EnumerateInstanceNames(args->context, MC::Namespace(),
                                                             MC::ClassName("StorageVolume"), volumes);
    for (Uint32 i = 0; i < volumes.size(); ++i)
        if (keyValue(volumes[i], "SystemName") == systemName) out.append(volumes[i]);
    if (out.size() == 0) SMIS_TRACE(LEVEL3, "%s : %s", "can not find storage volume", systemName.c_str());
}

void SystemDevice::getComputerSystemObject(RequestArgs* args, Array<CIMObjectPath>& out) {
    if (args == nullptr)
        throw CIMException(CIM_ERR_FAILED, "dynamic_cast error! [SystemDevice::getComputerSystemObject]");
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMInstance volume = handle->GetSmisInstance(args->context, MC::Namespace(), args->objectPath, false, false,
                                                 false, CIMPropertyList());
    String systemName;
    MC::GetString(volume, "SystemName", systemName);
    Array<CIMObjectPath> systems;
    handle->EnumerateInstanceNames(args->context, MC::Namespace(), MC::ClassName("ComputerSystem"), systems);
    for (Uint32 i = 0; i < systems.size(); ++i) {
        if (keyValue(systems[i], "Name") == MC::ToStd(systemName)) {
            out.append(systems[i]);
            return;
        }
    }
    SMIS_TRACE(LEVEL3, "%s : %s", "Can not find array!", MC::ToStd(systemName).c_str());
}

bool SystemDevice::collect(RequestArgs* args, const std::string& objectClass, const std::string& resultClass,
                           Array<CIMObjectPath>& out) {
    // The result class, when given, must be the one the source leads to.
    if (objectClass == "ComputerSystem") {
        if (!resultClass.empty() && resultClass != "StorageVolume" && resultClass != "LogicalDevice" &&
            resultClass != "StorageExtent")
            return false;
        getStorageVolumeObject(args, out);
        return true;
    }
    if (objectClass == "StorageVolume") {
        if (!resultClass.empty() && resultClass != "ComputerSystem" && resultClass != "System") return false;
        getComputerSystemObject(args, out);
        return true;
    }
    SMIS_TRACE(LEVEL3, "SystemDevice answers no associators from %s", objectClass.c_str());
    return false;
}

void SystemDevice::Associator(AssoArgs& args, const std::string& objectClass, const std::string& resultClass) {
    Array<CIMObjectPath> found;
    collect(&args, objectClass, resultClass, found);
    args.handler.processing();
    CimHandle* handle = Singleton<CimHandle>::Instance();
    // One instance at a time: read, hand over, let go.
    for (Uint32 i = 0; i < found.size(); ++i) {
        CIMInstance instance;
        try {
            instance = handle->GetSmisInstance(args.context, MC::Namespace(), found[i], false, false, false,
                                               CIMPropertyList());
        } catch (const CIMException& e) {
            // Removed by a load since its name was read: no longer an answer.
            if (e.getCode() != CIM_ERR_NOT_FOUND) throw;
            continue;
        }
        CIMObjectPath path = found[i];
        path.setNameSpace(MC::Namespace());
        instance.setPath(path);
        args.handler.deliver(CIMObject(instance));
    }
    args.handler.complete();
}

void SystemDevice::AssociatorNames(AssoNameArgs& args, const std::string& objectClass,
                                   const std::string& resultClass) {
    Array<CIMObjectPath> found;
    collect(&args, objectClass, resultClass, found);
    args.handler.processing();
    for (Uint32 i = 0; i < found.size(); ++i) {
        CIMObjectPath path = found[i];
        path.setNameSpace(MC::Namespace());
        args.handler.deliver(path);
    }
    args.handler.complete();
}

}  // namespace orvsmis
