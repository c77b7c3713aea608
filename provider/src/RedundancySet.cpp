#include "RedundancySet.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "ArrayRawData.h"
#include "Association.h"
#include "CimHandle.h"
#include "ComputerSystem.h"
#include "ConfigManager.h"
#include "DataConnector.h"
#include "MC.h"
#include "Property.h"
#include "RecordRef.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

CIMObjectPath arrayPath() {
    CIMObjectPath path;
    ComputerSystem system;
    system.Find("", "", path);
    return path;
}

}  // namespace

std::string RedundancySet::InstanceID(const std::string& arrayId) {
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    return config->GetVendor() + "." + config->GetBrand() + " : " + "Redundancy Set" + ".in." + arrayId;
}

CIMObjectPath RedundancySet::WrapReference(DataEventArgs* args) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), MC::ToString(InstanceID(args->arrayId)),
                              CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("RedundancySet"), keys, path);
    return path;
}

CIMInstance RedundancySet::WrapInstance(DataEventArgs* args) {
    RecordRef<ArrayRawData> array;
    if (!DataConnector<ArrayRawData>::QueryData("", "", array.Out()))
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "can not get ArrayRowData!");
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    Array<Uint16> typeOfSet;
    typeOfSet.append(4);

    const Property properties[] = {
        Property(CIMName("InstanceID"), CIMValue(MC::ToString(InstanceID(args->arrayId)))),
        Property(CIMName("ElementName"), CIMValue(MC::ToString(config->GetVendor() + "." + config->GetBrand()))),
        Property(CIMName("RedundancyStatus"), CIMValue(Uint16(array->redundancyStatus))),
        Property(CIMName("TypeOfSet"), CIMValue(typeOfSet)),
    };
    CIMInstance instance(MC::ClassName("RedundancySet"));
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(WrapReference(args));
    return instance;
}

CIMObjectPath RedundancySet::Create(DataEventArgs* args) {
    CIMInstance instance = WrapInstance(args);
    CIMObjectPath path = Singleton<CimHandle>::Instance()->CreateInstance(args->context, MC::Namespace(), instance);
    SMIS_TRACE(LEVEL4, "%s successful.", "create RedundancySet");
    ConcreteIdentity::Create(args->context, arrayPath(), path);
    return path;
}

void RedundancySet::Delete(DataEventArgs* args) {
    CIMObjectPath path = Model::AdjustObjectPath(WrapReference(args));
    ConcreteIdentity::Delete(args->context, arrayPath(), path);
    Singleton<CimHandle>::Instance()->DeleteInstance(args->context, MC::Namespace(), path);
    SMIS_TRACE(LEVEL4, "%s successful.", "delete RedundancySet");
}

void RedundancySet::Modify(DataEventArgs* args) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMObjectPath path = WrapReference(args);
    CIMInstance stored = handle->GetSmisInstance(args->context, MC::Namespace(), path, false, false, false,
                                                 CIMPropertyList());
    CIMInstance instance = WrapInstance(args);
    handle->ModifyInstance(args->context, MC::Namespace(), instance, false, CIMPropertyList());
    SMIS_TRACE(LEVEL4, "%s successful.", "modify RedundancySet");
    // This class names the stored instance first and the new one second.
    ActivateInstModificationIndication(stored, instance);
}

}  // namespace orvsmis
