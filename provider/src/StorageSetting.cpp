#include "StorageSetting.h"

#include <iostream>

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "CimHandle.h"
#include "DataConnector.h"
#include "ElementSettingData.h"
#include "LdRawData.h"
#include "MC.h"
#include "Model.h"
#include "RecordRef.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

// The first path of an associatorNames walk, or CIMException 4 naming the
// step that found nothing.
CIMObjectPath firstAssociatorName(const OperationContext& context, const CIMObjectPath& from, const char* assoc,
                                  const char* result) {
    Array<CIMObjectPath> found;
    Singleton<CimHandle>::Instance()->AssociatorNames(context, MC::Namespace(), from, MC::ClassName(assoc),
                                                      MC::ClassName(result), String(), String(), found);
    if (found.size() == 0)
        throw CIMException(CIM_ERR_FAILED, String::fromUtf8(("can not find " + MC::ClassNameText(result) +
                                                             " [StorageSetting::WarpInstance]").c_str()));
    return found[0];
}

void copyProperty(const CIMInstance& from, CIMInstance& to, const char* name, bool required) {
    Uint32 index = from.findProperty(CIMName(name));
    if (index == PEG_NOT_FOUND) {
        if (required)
            throw CIMException(CIM_ERR_FAILED, String::fromUtf8((std::string("the hint has no ") + name +
                                                                 " [StorageSetting::WarpInstance]").c_str()));
        return;
    }
    to.addProperty(CIMProperty(CIMName(name), from.getProperty(index).getValue()));
}

}  // namespace

CIMObjectPath StorageSetting::WarpReference(const std::string& arrayId, const std::string& ldn) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), MC::ToString(arrayId + ":" + ldn + "h"), CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("StorageSetting"), keys, path);
    return path;
}

CIMObjectPath StorageSetting::WarpReference(ParentArgs& args) {
    const LdRawData* ld = dynamic_cast<const LdRawData*>(args.newData);
    if (ld == nullptr) throw CIMException(CIM_ERR_FAILED, "can not read LdRawData! [StorageSetting::WarpReference]");
    return WarpReference(args.arrayId, ld->LDN);
}

CIMInstance StorageSetting::WarpInstance(const OperationContext& context, const CIMObjectPath& volumePath,
                                         const std::string& arrayId, const std::string& ldn) {
    CIMObjectPath pool = firstAssociatorName(context, volumePath, "AllocatedFromStoragePool", "StoragePool");
    CIMObjectPath capability = firstAssociatorName(context, pool, "ElementCapabilities", "StorageCapabilities");
    Array<CIMObject> hints;
    Singleton<CimHandle>::Instance()->Associators(
        context, MC::Namespace(), capability, MC::ClassName("StorageSettingsAssociatedToCapabilities"),
        MC::ClassName("StorageSettingWithHints"), String(), String(), false, false, CIMPropertyList(), hints);
    if (hints.size() == 0)
        throw CIMException(CIM_ERR_FAILED, "can not find StorageSettingWithHints [StorageSetting::WarpInstance]");
    CIMInstance hint(hints[0]);

    CIMInstance setting(MC::ClassName("StorageSetting"));
    std::string id = arrayId + ":" + ldn + "h";
    if (hint.findProperty(CIMName("ThinProvisionedPoolType")) != PEG_NOT_FOUND) {
        copyProperty(hint, setting, "ThinProvisionedPoolType", true);
        // Only the property carries ".virtual"; the key stays that of WarpReference.
        id += ".virtual";
    }
    setting.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(MC::ToString(id))));
    const char* copied[] = {"ElementName",         "NoSinglePointOfFailure", "DataRedundancyMin",
                            "DataRedundancyMax",   "DataRedundancyGoal",     "PackageRedundancyMin",
                            "PackageRedundancyMax", "PackageRedundancyGoal"};
    for (const char* name : copied) copyProperty(hint, setting, name, true);
    setting.addProperty(CIMProperty(CIMName("ExtentStripeLength"), CIMValue(Uint16(0))));
    setting.addProperty(CIMProperty(CIMName("ExtentStripeLengthMin"), CIMValue(Uint16(0))));
    setting.addProperty(CIMProperty(CIMName("ExtentStripeLengthMax"), CIMValue(Uint16(0))));
    setting.addProperty(CIMProperty(CIMName("ParityLayout"), CIMValue(Uint16(2))));
    const char* optional[] = {"UserDataStripeDepth", "UserDataStripeDepthMin", "UserDataStripeDepthMax",
                              "ChangeableType"};
    for (const char* name : optional) copyProperty(hint, setting, name, false);
    addPropertyForCopyServer(arrayId, ldn, setting);
    setting.setPath(WarpReference(arrayId, ldn));
    return setting;
}

void StorageSetting::addPropertyForCopyServer(const std::string& arrayId, const std::string& ldn,
                                              CIMInstance& instance) {
    RecordRef<LdRawData> ld;
    if (!DataConnector<LdRawData>::QueryData(arrayId, ldn, ld.Out())) return;
    // A replica volume takes the deltas of its pair.
    if (ld->RPLAttribute == "RV/MV" || ld->RPLAttribute == "RV") {
        instance.addProperty(CIMProperty(CIMName("DeltaReservationMin"), CIMValue(Uint8(0))));
        instance.addProperty(CIMProperty(CIMName("DeltaReservationMax"), CIMValue(Uint8(100))));
        instance.addProperty(CIMProperty(CIMName("DeltaReservationGoal"), CIMValue(Uint8(100))));
    }
}

CIMObjectPath StorageSetting::Create(const OperationContext& context, const CIMObjectPath& volumePath,
                                     const std::string& arrayId, const std::string& ldn) {
    CIMInstance setting = WarpInstance(context, volumePath, arrayId, ldn);
    Singleton<CimHandle>::Instance()->CreateInstance(context, MC::Namespace(), setting);
    CIMObjectPath path = setting.getPath();
    ElementSettingData::Create(context, volumePath, path, 0, 0, 0);
    return path;
}

void StorageSetting::Delete(ParentArgs& args) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    const CIMObjectPath path = Model::AdjustObjectPath(WarpReference(args));
    try {
        handle->GetSmisInstance(args.context, MC::Namespace(), path, false, false, false, CIMPropertyList());
    } catch (const CIMException& e) {
        // Only volumes a client asked about have a setting.
        if (e.getCode() == CIM_ERR_NOT_FOUND)
            SMIS_TRACE(LEVEL3, "%s", "the StorageVolume has not StorageSetting and ElementSettingData!");
        return;
    }
    try {
        Array<CIMObjectPath> references;
        handle->ReferenceNames(args.context, MC::Namespace(), path, MC::ClassName("ElementSettingData"), String(),
                               references);
        for (Uint32 i = 0; i < references.size(); ++i)
            handle->DeleteInstance(args.context, MC::Namespace(), references[i]);
    } catch (const CIMException& e) {
        std::cout << "Error[ " << cimStatusCodeToString(e.getCode()) << " ] " << MC::ToStd(e.getMessage())
                  << std::endl;
        throw;
    }
    try {
        handle->DeleteInstance(args.context, MC::Namespace(), path);
    } catch (const CIMException& e) {
        SMIS_TRACE(LEVEL3, "%s", ("the setting stays: " + MC::ToStd(e.getMessage())).c_str());
    }
    SMIS_TRACE(LEVEL3, "%s process completed.", "delete storage setting");
}

}  // namespace orvsmis
