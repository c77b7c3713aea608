#include "NonToplevelComputerSystem.h"

#include <cctype>
#include <climits>
#include <cstdlib>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "ComputerSystem.h"
#include "ConfigManager.h"
#include "DacRawData.h"
#include "DataConnector.h"
#include "Exception.h"
#include "MC.h"
#include "Property.h"
#include "RecordRef.h"
#include "RedundancySet.h"
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

const DacRawData* NonToplevelComputerSystem::asDac(const RawData* record, const char* failure) {
    const DacRawData* dac = dynamic_cast<const DacRawData*>(record);
    if (dac == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, failure);
    return dac;
}

std::string NonToplevelComputerSystem::ControllerName(const std::string& arrayId, const std::string& number) {
    bool hex = !number.empty() && number.size() <= 7;
    for (char c : number)
        if (!isxdigit(static_cast<unsigned char>(c))) hex = false;
    if (!hex) throw InvalidParamException("Invalid controller number: \"" + number + "\"");
    long value = strtol(number.c_str(), nullptr, 16);
    return arrayId + "-" + std::to_string(value);
}

void NonToplevelComputerSystem::MapState(const std::string& state, Array<Uint16>& operationalStatus) {
    operationalStatus.clear();
    if (state.find("ready") != std::string::npos) {
        operationalStatus.append(2);
    } else if (state.find("attn") != std::string::npos) {
        operationalStatus.append(2);
        operationalStatus.append(5);
    } else if (state.find("fault") != std::string::npos) {
        operationalStatus.append(6);
    } else {
        operationalStatus.append(0);
        SMIS_TRACE(LEVEL3, "%s", ("OperationalStatus is unknown type: " + state).c_str());
    }
}

CIMObjectPath NonToplevelComputerSystem::WrapReference(const RawData* record) {
    const DacRawData* dac = asDac(record, "can not read DacRawData! [NonToplevelComputerSystem::WrapReference]");
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), MC::ClassName("ComputerSystem").getString(),
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("Name"), MC::ToString(ControllerName(dac->arrayId, dac->number)),
                              CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("ComputerSystem"), keys, path);
    return path;
}

CIMInstance NonToplevelComputerSystem::WrapInstance(const RawData* record) {
    const DacRawData* dac = asDac(record, "can not read DacRawData! [NonToplevelComputerSystem::WrapInstance]");
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    CIMName className = MC::ClassName("ComputerSystem");
    Array<Uint16> operationalStatus;
    MapState(dac->state, operationalStatus);

    const Property properties[] = {
        Property(CIMName("CreationClassName"), CIMValue(className.getString())),
        Property(CIMName("Name"), CIMValue(MC::ToString(ControllerName(dac->arrayId, dac->number)))),
        Property(CIMName("ElementName"), CIMValue(MC::ToString(config->GetVendor() + "." + config->GetBrand()))),
        Property(CIMName("NameFormat"), CIMValue(String("Other"))),
        Property(CIMName("OperationalStatus"), CIMValue(operationalStatus)),
    };
    CIMInstance instance(className);
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(WrapReference(record));
    return instance;
}

CIMObjectPath NonToplevelComputerSystem::Create(DataEventArgs* args) {
    const DacRawData* dac = asDac(args->newData, "can not read DacRawData! [NonToplevelComputerSystem::WrapInstance]");
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMInstance instance = WrapInstance(dac);
    CIMObjectPath path = handle->CreateInstance(args->context, MC::Namespace(), instance);
    SMIS_TRACE(LEVEL4, "%s successful.", "create NonToplevelComputerSystem");
    ActivateInstCreationIndication(instance);

    CIMObjectPath array = arrayPath();
    ComponentCS::Create(args->context, array, path);

    // The set appears with the first controller.
    Array<CIMInstance> sets;
    handle->EnumerateInstances(args->context, MC::Namespace(), MC::ClassName("RedundancySet"), false, false, false,
                               false, CIMPropertyList(), sets);
    RedundancySet redundancySet;
    CIMObjectPath setPath;
    if (sets.size() == 0)
        setPath = redundancySet.Create(args);
    else
        setPath = sets[0].getPath();
    // An instance handed back without its keys is named from the array id.
    if (setPath.getKeyBindings().size() == 0) setPath = redundancySet.WrapReference(args);
    MemberOfCollection::Create(args->context, Model::AdjustObjectPath(setPath), path);
    SMIS_TRACE(LEVEL3, "%s process completed.", "create controller computer system");
    return path;
}

void NonToplevelComputerSystem::Delete(DataEventArgs* args) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMObjectPath array = arrayPath();
    CIMObjectPath path = Model::AdjustObjectPath(WrapReference(args->newData));
    ComponentCS::Delete(args->context, array, path);
    RedundancySet redundancySet;
    MemberOfCollection::Delete(args->context, Model::AdjustObjectPath(redundancySet.WrapReference(args)), path);

    CIMInstance instance = WrapInstance(args->newData);
    handle->DeleteInstance(args->context, MC::Namespace(), path);
    SMIS_TRACE(LEVEL4, "%s successful.", "delete NonToplevelComputerSystem");
    ActivateInstDeletionIndication(instance);

    // The set goes with the last controller: only the array is left.
    Array<CIMObjectPath> systems;
    handle->EnumerateInstanceNames(args->context, MC::Namespace(), MC::ClassName("ComputerSystem"), systems);
    if (systems.size() == 1) redundancySet.Delete(args);
    SMIS_TRACE(LEVEL3, "%s process completed.", "delete controller computer system");
}

void NonToplevelComputerSystem::Modify(DataEventArgs* args) {
    CIMInstance oldInstance = WrapInstance(args->oldData);
    CIMInstance newInstance = WrapInstance(args->newData);
    Singleton<CimHandle>::Instance()->ModifyInstance(args->context, MC::Namespace(), newInstance, false,
                                                     CIMPropertyList());
    SMIS_TRACE(LEVEL4, "%s successful.", "modify NonToplevelComputerSystem");
    ActivateInstModificationIndication(newInstance, oldInstance);
    // A controller's change re-reads the array's redundancy into the set.
    RedundancySet redundancySet;
    redundancySet.Modify(args);
    SMIS_TRACE(LEVEL3, "%s process completed.", "modify controller computer system");
}

bool NonToplevelComputerSystem::Find(const std::string& key, const std::string& arrayId, CIMObjectPath& out) {
    std::string number = key.substr(0, key.find('-'));
    RecordRef<DacRawData> dac;
    if (!number.empty() && DataConnector<DacRawData>::QueryData(arrayId, number, dac.Out())) {
        out = Model::AdjustObjectPath(WrapReference(dac.Get()));
        return true;
    }
    // A single-controller array reports no controllers: its ports hang on
    // the array itself.
    out = arrayPath();
    SMIS_TRACE(LEVEL4, "No controller %s: the array's path %s", number.c_str(), MC::ToStd(out.toString()).c_str());
    return true;
}

}  // namespace orvsmis
