#include "ComputerSystem.h"
#include "PrimordialPool.h"
#include "StorageConfigurationService.h"

#include <list>
#include <vector>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "ArrayRawData.h"
#include "CimHandle.h"
#include "ConfigManager.h"
#include "MC.h"
#include "Property.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

ModelEvent ComputerSystem::AfterCreated;
ModelEvent ComputerSystem::AfterModified;
ModelEvent ComputerSystem::BeforeDeleted;
CIMObjectPath ComputerSystem::m_path;

namespace {

String vendorAndBrand() {
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    return MC::ToString(config->GetVendor() + "." + config->GetBrand());
}

}  // namespace

const ArrayRawData* ComputerSystem::asArray(const RawData* record, const char* failure) {
    const ArrayRawData* array = dynamic_cast<const ArrayRawData*>(record);
    if (array == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, failure);
    return array;
}

void ComputerSystem::MapState(const std::string& resourceState, Array<Uint16>& operationalStatus,
                              Uint16& healthState) {
    operationalStatus.clear();
    if (resourceState.find("ready") != std::string::npos) {
        operationalStatus.append(2);
        healthState = 5;
    } else if (resourceState.find("attn") != std::string::npos) {
        operationalStatus.append(2);
        operationalStatus.append(5);
        healthState = 10;
    } else if (resourceState.find("fault") != std::string::npos) {
        operationalStatus.append(6);
        healthState = 20;
    } else {
        operationalStatus.append(0);
        healthState = 0;
        SMIS_TRACE(LEVEL3, "%s", ("OperationalStatus is unknown type: " + resourceState).c_str());
    }
}

CIMObjectPath ComputerSystem::WrapReference(const RawData* record) {
    const ArrayRawData* array = asArray(record, "can not read ArrayRawData!");
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), MC::ClassName("ComputerSystem").getString(),
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("Name"), MC::ToString(array->worldWideName), CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("ComputerSystem"), keys, path);
    return path;
}

CIMInstance ComputerSystem::WrapInstance(const RawData* record) {
    const ArrayRawData* array = asArray(record, "can not read ArrayRawData! [ComputerSystem::WrapInstance]");
    CIMName className = MC::ClassName("ComputerSystem");
    String wwn = MC::ToString(array->worldWideName);

    Array<Uint16> operationalStatus;
    Uint16 healthState = 0;
    MapState(array->resourceState, operationalStatus, healthState);
    Array<String> otherInfo;
    otherInfo.append(wwn);
    Array<String> descriptions;
    descriptions.append(String("The World Wide Name of Disk Array is ") + wwn);
    Array<Uint16> dedicated;
    dedicated.append(3);
    dedicated.append(15);
    String description = vendorAndBrand();
    description.append(" Storage System");

    const Property properties[] = {
        Property(CIMName("CreationClassName"), CIMValue(className.getString())),
        Property(CIMName("Name"), CIMValue(wwn)),
        Property(CIMName("ElementName"), CIMValue(vendorAndBrand())),
        Property(CIMName("NameFormat"), CIMValue(String("WWN"))),
        Property(CIMName("OtherIdentifyingInfo"), CIMValue(otherInfo)),
        Property(CIMName("IdentifyingDescriptions"), CIMValue(descriptions)),
        Property(CIMName("OperationalStatus"), CIMValue(operationalStatus)),
        Property(CIMName("HealthState"), CIMValue(healthState)),
        Property(CIMName("Dedicated"), CIMValue(dedicated)),
        Property(CIMName("ResetCapability"), CIMValue(Uint16(4))),
        Property(CIMName("PrimaryOwnerName"), CIMValue(MC::ToString(array->unitName))),
        Property(CIMName("PrimaryOwnerContact"), CIMValue(MC::ToString(array->unitContact))),
        Property(CIMName("Description"), CIMValue(description)),
    };
    CIMInstance instance(className);
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(WrapReference(record));
    outputRawDataInfo(array);
    return instance;
}

void ComputerSystem::outputRawDataInfo(const ArrayRawData* record) {
    std::string line = "Info [Disk Array] id: " + record->name + " | worldWideName: " + record->worldWideName +
                       " | productID: " + record->productID + " | serialNumber: " + record->serialNumber +
                       " | resourceState: " + record->resourceState + " | unitName: " + record->unitName +
                       " | unitContact: " + record->unitContact;
    SMIS_TRACE(LEVEL3, "%s", line.c_str());
}

void ComputerSystem::updateCustomizeInfo(const RawData* record) {
    const ArrayRawData* array = asArray(record, "can not read ArrayRawData!");
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    config->SetConfigValue("general", "brand", std::list<std::string>(1, array->productID));
    config->SetConfigValue("general", "vendor", std::list<std::string>(1, array->vendorID));
}

CIMObjectPath ComputerSystem::Create(DataEventArgs* args) {
    updateCustomizeInfo(args->newData);
    CIMInstance instance = WrapInstance(args->newData);
    CIMObjectPath path = Singleton<CimHandle>::Instance()->CreateInstance(args->context, MC::Namespace(), instance);
    path.setNameSpace(MC::Namespace());
    m_path = path;
    SMIS_TRACE(LEVEL4, "%s successful.", "create ComputerSystem");
    ActivateInstCreationIndication(instance);
    // The array's fixed children: its configuration service and the
    // primordial pool of all its disks.
    {
        ParentArgs serviceArgs(*args, m_path);
        StorageConfigurationService service;
        service.Create(serviceArgs);
    }
    PrimordialPool primordialPool;
    primordialPool.Create(args);
    ParentArgs parentArgs(*args, m_path);
    AfterCreated.Invoke(parentArgs);
    SMIS_TRACE(LEVEL3, "%s process completed.", "create computer system");
    return path;
}

void ComputerSystem::Modify(DataEventArgs* args) {
    updateCustomizeInfo(args->newData);
    CIMObjectPath path = Model::AdjustObjectPath(WrapReference(args->newData));
    CIMInstance oldInstance = WrapInstance(args->oldData);
    CIMInstance newInstance = WrapInstance(args->newData);
    Singleton<CimHandle>::Instance()->ModifyInstance(args->context, MC::Namespace(), newInstance, false,
                                                     CIMPropertyList());
    SMIS_TRACE(LEVEL4, "%s successful.", "modify ComputerSystem");
    ActivateInstModificationIndication(newInstance, oldInstance);
    ParentArgs parentArgs(*args, path);
    AfterModified.Invoke(parentArgs);
    SMIS_TRACE(LEVEL3, "%s process completed.", "modify computer system");
}

void ComputerSystem::Delete(DataEventArgs* args) {
    PrimordialPool primordialPool;
    primordialPool.Delete(args);
    CIMObjectPath path = Model::AdjustObjectPath(WrapReference(args->newData));
    ParentArgs parentArgs(*args, path);
    StorageConfigurationService service;
    service.Delete(parentArgs);
    BeforeDeleted.Invoke(parentArgs);
    Singleton<CimHandle>::Instance()->DeleteInstance(args->context, MC::Namespace(), path);
    SMIS_TRACE(LEVEL4, "%s successful.", "delete ComputerSystem");
    // The instance announced is made after the repository has lost it.
    CIMInstance instance = WrapInstance(args->newData);
    ActivateInstDeletionIndication(instance);
    SMIS_TRACE(LEVEL3, "%s process completed.", "delete computer system");
}

bool ComputerSystem::Find(const std::string& key, const std::string&, CIMObjectPath& out) {
    out = GetPath(key);
    return out.toString().size() != 0;
}

CIMObjectPath ComputerSystem::GetPath(const std::string&) { return m_path; }

}  // namespace orvsmis
