#include "StorageConfigurationCapability.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "ConfigManager.h"
#include "MC.h"
#include "Model.h"
#include "RawData.h"
#include "Singleton.h"
#include "SmisProvider.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

const Uint16 StorageConfigurationCapability::asynActions[8] = {2, 3, 4, 5, 6, 7, 8, 9};
const Uint16 StorageConfigurationCapability::elementFeatures[4] = {3, 5, 6, 12};
const Uint16 StorageConfigurationCapability::elementTypes[3] = {2, 5, 8};
const Uint16 StorageConfigurationCapability::poolFeatures[3] = {2, 3, 6};

namespace {

std::string instanceId(DataEventArgs* args) {
    if (args == nullptr || args->newData == nullptr) throw CIMException(CIM_ERR_FAILED, "Error : raw data typemiss");
    const char* text = nullptr;
    if (args->newData->type == RAWDATA_ARRAY)
        text = "default capabilities of storage configuration service";
    else if (args->newData->type == RAWDATA_POOL)
        text = "configuration of pool";
    else
        throw CIMException(CIM_ERR_FAILED, "Error : raw data typemiss");
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    return config->GetVendor() + "." + config->GetBrand() + " : " + text + ".in." + args->newData->name;
}

// skipReplicaActions leaves out 8 and 9, the actions of the copy service.
template <size_t N>
Array<Uint16> toArray(const Uint16 (&values)[N], bool skipReplicaActions = false) {
    Array<Uint16> out;
    for (size_t i = 0; i < N; ++i) {
        if (skipReplicaActions && (values[i] == 8 || values[i] == 9)) continue;
        out.append(values[i]);
    }
    return out;
}

}  // namespace

CIMObjectPath StorageConfigurationCapability::WrapReference(DataEventArgs* args) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), MC::ToString(instanceId(args)), CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("StorageConfigurationCapabilities"), keys, path);
    return path;
}

CIMInstance StorageConfigurationCapability::WrapInstance(DataEventArgs* args) {
    const String id = MC::ToString(instanceId(args));
    const bool copyService = SMISProvider::m_bEnableCopyService;
    CIMInstance instance(MC::ClassName("StorageConfigurationCapabilities"));
    if (copyService) instance.addProperty(CIMProperty(CIMName("InitialReplicationState"), CIMValue(Uint16(2))));
    instance.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(id)));
    instance.addProperty(CIMProperty(CIMName("ElementName"), CIMValue(id)));
    instance.addProperty(CIMProperty(CIMName("SupportedAsynchronousActions"), CIMValue(toArray(asynActions, !copyService))));
    instance.addProperty(CIMProperty(CIMName("SupportedSynchronousActions"), CIMValue(Array<Uint16>())));
    instance.addProperty(CIMProperty(CIMName("SupportedStorageElementTypes"), CIMValue(toArray(elementTypes))));
    instance.addProperty(CIMProperty(CIMName("SupportedStoragePoolFeatures"), CIMValue(toArray(poolFeatures))));
    instance.addProperty(
        CIMProperty(CIMName("SupportedStorageElementFeatures"), CIMValue(toArray(elementFeatures))));
    Array<Uint16> copyTypes;
    if (copyService) {
        copyTypes.append(2);
        copyTypes.append(3);
        copyTypes.append(5);
    }
    instance.addProperty(CIMProperty(CIMName("SupportedCopyTypes"), CIMValue(copyTypes)));
    instance.setPath(WrapReference(args));
    return instance;
}

CIMObjectPath StorageConfigurationCapability::Create(ParentArgs* args) {
    CIMInstance instance = WrapInstance(args);
    Singleton<CimHandle>::Instance()->CreateInstance(args->context, MC::Namespace(), instance);
    CIMObjectPath path = Model::AdjustObjectPath(instance.getPath());
    ElementCapability::Create(args->context, args->path, path);
    SMIS_TRACE(LEVEL3, "%s process completed.", "create storage configuration capability");
    return path;
}

void StorageConfigurationCapability::Delete(ParentArgs* args) {
    // Found through the service rather than rebuilt from the array's names,
    // which may have changed since the capability was made.
    CimHandle* handle = Singleton<CimHandle>::Instance();
    Array<CIMObjectPath> capabilities;
    handle->AssociatorNames(args->context, MC::Namespace(), args->path, MC::ClassName("ElementCapabilities"),
                            MC::ClassName("StorageConfigurationCapabilities"), String("ManagedElement"),
                            String("Capabilities"), capabilities);
    for (Uint32 c = 0; c < capabilities.size(); ++c) {
        CIMObjectPath path = Model::AdjustObjectPath(capabilities[c]);
        Array<CIMObjectPath> references;
        handle->ReferenceNames(args->context, MC::Namespace(), path, MC::ClassName("ElementCapabilities"),
                               String("Capabilities"), references);
        for (Uint32 i = 0; i < references.size(); ++i)
            handle->DeleteInstance(args->context, MC::Namespace(), references[i]);
        handle->DeleteInstance(args->context, MC::Namespace(), path);
    }
    SMIS_TRACE(LEVEL3, "%s process completed.", "delete storage configuration capability");
}

}  // namespace orvsmis
