#include "StorageConfigurationService.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "ArrayRawData.h"
#include "Association.h"
#include "CimHandle.h"
#include "ConfigManager.h"
#include "MC.h"
#include "Model.h"
#include "Property.h"
#include "Singleton.h"
#include "SmisTrace.h"
#include "StorageConfigurationCapability.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

const ArrayRawData* asArray(const RawData* record) {
    const ArrayRawData* array = dynamic_cast<const ArrayRawData*>(record);
    if (array == nullptr)
        throw CIMException(CIM_ERR_INVALID_PARAMETER,
                           "can not read array raw data! [StorageConfigurationService::WrapInstance]");
    return array;
}

}  // namespace

std::string StorageConfigurationService::Name(const std::string& arrayId) {
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    return config->GetVendor() + "." + config->GetBrand() + " : default storage configuration service.in." + arrayId;
}

CIMObjectPath StorageConfigurationService::WrapReference(const std::string& arrayId) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("SystemCreationClassName"), MC::ClassName("ComputerSystem").getString(),
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("SystemName"), MC::ToString(arrayId), CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), MC::ClassName("StorageConfigurationService").getString(),
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("Name"), MC::ToString(Name(arrayId)), CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("StorageConfigurationService"), keys, path);
    return path;
}

CIMObjectPath StorageConfigurationService::WrapReference(const RawData* record) {
    return WrapReference(asArray(record)->worldWideName);
}

CIMInstance StorageConfigurationService::WrapInstance(const RawData* record) {
    const ArrayRawData* array = asArray(record);
    const CIMName className = MC::ClassName("StorageConfigurationService");
    const Property properties[] = {
        Property(CIMName("SystemCreationClassName"), CIMValue(MC::ClassName("ComputerSystem").getString())),
        Property(CIMName("SystemName"), CIMValue(MC::ToString(array->worldWideName))),
        Property(CIMName("CreationClassName"), CIMValue(className.getString())),
        Property(CIMName("Name"), CIMValue(MC::ToString(Name(array->worldWideName)))),
    };
    CIMInstance instance(className);
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(WrapReference(array->worldWideName));
    return instance;
}

CIMObjectPath StorageConfigurationService::Create(ParentArgs& args) {
    CIMInstance instance = WrapInstance(args.newData);
    Singleton<CimHandle>::Instance()->CreateInstance(args.context, MC::Namespace(), instance);
    CIMObjectPath path = Model::AdjustObjectPath(instance.getPath());
    HostedService::Create(args.context, args.path, path);
    ParentArgs serviceArgs(args, path);
    StorageConfigurationCapability::Create(&serviceArgs);
    SMIS_TRACE(LEVEL3, "%s process completed.", "create storage configuration service");
    return path;
}

void StorageConfigurationService::Delete(ParentArgs& args) {
    // Found through the array rather than rebuilt from its names, which may
    // have changed since the service was made.
    CimHandle* handle = Singleton<CimHandle>::Instance();
    Array<CIMObjectPath> services;
    handle->AssociatorNames(args.context, MC::Namespace(), args.path, MC::ClassName("HostedService"),
                            MC::ClassName("StorageConfigurationService"), String("Antecedent"), String("Dependent"),
                            services);
    for (Uint32 s = 0; s < services.size(); ++s) {
        CIMObjectPath path = Model::AdjustObjectPath(services[s]);
        ParentArgs serviceArgs(args, path);
        StorageConfigurationCapability::Delete(&serviceArgs);
        Array<CIMObjectPath> references;
        handle->ReferenceNames(args.context, MC::Namespace(), path, MC::ClassName("HostedService"),
                               String("Dependent"), references);
        for (Uint32 i = 0; i < references.size(); ++i)
            handle->DeleteInstance(args.context, MC::Namespace(), references[i]);
        handle->DeleteInstance(args.context, MC::Namespace(), path);
    }
    SMIS_TRACE(LEVEL3, "%s process completed.", "delete storage configuration service");
}

}  // namespace orvsmis
