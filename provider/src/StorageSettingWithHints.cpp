#include "StorageSettingWithHints.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "ConfigManager.h"
#include "MC.h"
#include "Model.h"
#include "Singleton.h"
#include "SmisTrace.h"
#include "StorageCapability.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

// A property value of the capability; CIMException 4 when it lacks it.
CIMValue capabilityValue(const CIMInstance& capability, const std::string& name) {
    Uint32 index = capability.findProperty(CIMName(name.c_str()));
    if (index == PEG_NOT_FOUND)
        throw CIMException(CIM_ERR_FAILED, String::fromUtf8(("the capability has no " + name +
                                                             " [StorageSettingWithHints::WrapInstance]").c_str()));
    return capability.getProperty(index).getValue();
}

}  // namespace

CIMInstance StorageSettingWithHints::WrapInstance(const CIMInstance& capability, bool withRange, bool isVirtual) {
    String capabilityId;
    if (!MC::GetString(capability, "InstanceID", capabilityId))
        throw CIMException(CIM_ERR_FAILED, "the capability has no InstanceID [StorageSettingWithHints::WrapInstance]");
    const std::string text = MC::ToStd(capabilityId);
    const std::string::size_type colon = text.find(':');
    if (colon == std::string::npos)
        throw CIMException(CIM_ERR_FAILED, "the capability's InstanceID has no \":\" [StorageSettingWithHints::WrapInstance]");
    // The blank behind the colon stays with the rest.
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    std::string id = config->GetVendor() + "." + config->GetBrand() + " : " + "StorageSetting" + ".in." +
                     text.substr(colon + 1);

    CIMInstance hint(MC::ClassName("StorageSettingWithHints"));
    if (isVirtual) {
        id += ".virtual";
        hint.addProperty(CIMProperty(CIMName("ThinProvisionedPoolType"), CIMValue(Uint16(8))));
    }
    hint.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(MC::ToString(id))));
    String elementName;
    MC::GetString(capability, "ElementName", elementName);
    hint.addProperty(CIMProperty(CIMName("ElementName"), CIMValue(elementName)));
    Boolean noSinglePoint = false;
    Uint32 index = capability.findProperty(CIMName("NoSinglePointOfFailure"));
    if (index != PEG_NOT_FOUND && !capability.getProperty(index).getValue().isNull() &&
        capability.getProperty(index).getValue().getType() == CIMTYPE_BOOLEAN)
        capability.getProperty(index).getValue().get(noSinglePoint);
    hint.addProperty(CIMProperty(CIMName("NoSinglePointOfFailure"), CIMValue(noSinglePoint)));

    const char* families[] = {"DataRedundancy", "PackageRedundancy", "DeltaReservation"};
    for (const char* family : families) {
        const std::string f(family);
        const CIMValue goal = capabilityValue(capability, f + "Default");
        const CIMValue max = withRange ? capabilityValue(capability, f + "Max") : goal;
        const CIMValue min = withRange ? capabilityValue(capability, f + "Min") : goal;
        hint.addProperty(CIMProperty(CIMName((f + "Goal").c_str()), goal));
        hint.addProperty(CIMProperty(CIMName((f + "Max").c_str()), max));
        hint.addProperty(CIMProperty(CIMName((f + "Min").c_str()), min));
    }

    hint.addProperty(CIMProperty(CIMName("StorageEfficiencyHint"), CIMValue(Uint16(5))));
    if (StorageCapability::ToRaidType(hint) == 10)
        hint.getProperty(hint.findProperty(CIMName("StorageEfficiencyHint"))).setValue(CIMValue(Uint16(2)));

    Array<Uint16> accessSize;
    accessSize.append(512);
    hint.addProperty(CIMProperty(CIMName("DataAvailabilityHint"), CIMValue(Uint16(5))));
    hint.addProperty(CIMProperty(CIMName("AccessRandomnessHint"), CIMValue(Uint16(5))));
    hint.addProperty(CIMProperty(CIMName("AccessDirectionHint"), CIMValue(Uint16(5))));
    hint.addProperty(CIMProperty(CIMName("AccessSizeHint"), CIMValue(accessSize)));
    hint.addProperty(CIMProperty(CIMName("AccessLatencyHint"), CIMValue(Uint16(5))));
    hint.addProperty(CIMProperty(CIMName("AccessBandwidthWeight"), CIMValue(Uint16(0))));
    hint.addProperty(CIMProperty(CIMName("StorageCostHint"), CIMValue(Uint16(5))));
    hint.addProperty(CIMProperty(CIMName("ChangeableType"), CIMValue(Uint16(0))));

    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), MC::ToString(id), CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("StorageSettingWithHints"), keys, path);
    hint.setPath(path);
    return hint;
}

CIMObjectPath StorageSettingWithHints::Create(const OperationContext& context, const CIMInstance& capability,
                                              bool withRange, bool isVirtual) {
    CIMInstance hint = WrapInstance(capability, withRange, isVirtual);
    Singleton<CimHandle>::Instance()->CreateInstance(context, MC::Namespace(), hint);
    CIMObjectPath path = Model::AdjustObjectPath(hint.getPath());
    StorageSettingsAssociatedToCapabilities::Create(context, capability.getPath(), path);
    return path;
}

void StorageSettingWithHints::Delete(const OperationContext& context, const CIMObjectPath& capabilityPath) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    Array<CIMObjectPath> references;
    handle->ReferenceNames(context, MC::Namespace(), capabilityPath,
                           MC::ClassName("StorageSettingsAssociatedToCapabilities"), String(), references);
    Array<CIMObjectPath> hints;
    handle->AssociatorNames(context, MC::Namespace(), capabilityPath,
                            MC::ClassName("StorageSettingsAssociatedToCapabilities"),
                            MC::ClassName("StorageSettingWithHints"), String(), String(), hints);
    for (Uint32 i = 0; i < references.size(); ++i) handle->DeleteInstance(context, MC::Namespace(), references[i]);
    for (Uint32 i = 0; i < hints.size(); ++i) handle->DeleteInstance(context, MC::Namespace(), hints[i]);
}

}  // namespace orvsmis
