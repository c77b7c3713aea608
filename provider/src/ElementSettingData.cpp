#include "ElementSettingData.h"

#include <vector>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "MC.h"
#include "Model.h"
#include "Property.h"
#include "Singleton.h"
#include "SmisTrace.h"
#include "StorageSetting.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

const Association::Form FORM = {"ElementSettingData", "ElementSettingData", "ManagedElement", "CIM_ManagedElement",
                                "SettingData", "CIM_SettingData", Association::TRACE_NONE, nullptr, false, true};

// A request without a result class reaches the setting too: the server
// passes the client's result class on unfiltered.
bool isVolumeToSetting(const std::string& objectClass, const std::string& resultClass) {
    return objectClass == "StorageVolume" && (resultClass == "StorageSetting" || resultClass.empty());
}

}  // namespace

CIMObjectPath ElementSettingData::Create(const OperationContext& context, const CIMObjectPath& element,
                                         const CIMObjectPath& setting, Uint16 isDefault, Uint16 isCurrent,
                                         Uint16 isNext) {
    std::vector<Property> extra;
    extra.push_back(Property(CIMName("IsDefault"), CIMValue(isDefault)));
    extra.push_back(Property(CIMName("IsCurrent"), CIMValue(isCurrent)));
    extra.push_back(Property(CIMName("IsNext"), CIMValue(isNext)));
    return Association::CreateAssociation(context, FORM, element, setting, extra);
}

void ElementSettingData::getArrayIdAndLdnFromStorageVolume(const OperationContext& context,
                                                           const CIMObjectPath& volume, std::string& arrayId,
                                                           std::string& ldn) {
    Array<CIMName> names;
    names.append(CIMName("SystemName"));
    names.append(CIMName("DeviceID"));
    CIMInstance instance = Singleton<CimHandle>::Instance()->GetSmisInstance(
        context, MC::Namespace(), Model::AdjustObjectPath(volume), false, false, false, CIMPropertyList(names));
    String systemName;
    String deviceId;
    if (!MC::GetString(instance, "SystemName", systemName) || !MC::GetString(instance, "DeviceID", deviceId))
        throw CIMException(CIM_ERR_FAILED, "the volume has no SystemName or DeviceID [ElementSettingData]");
    arrayId = MC::ToStd(systemName);
    ldn = MC::ToStd(deviceId);
    if (!ldn.empty() && ldn[ldn.size() - 1] == 'h') ldn.erase(ldn.size() - 1);
    if (arrayId.empty() || ldn.empty())
        throw CIMException(CIM_ERR_FAILED, "the volume has an empty SystemName or DeviceID [ElementSettingData]");
}

bool ElementSettingData::makeSettingOnDemand(const OperationContext& context, const CIMObjectPath& volume,
                                             CIMInstance& created) {
    try {
        std::string arrayId;
        std::string ldn;
        getArrayIdAndLdnFromStorageVolume(context, volume, arrayId, ldn);
        CIMObjectPath settingPath = Model::AdjustObjectPath(StorageSetting::WarpReference(arrayId, ldn));
        try {
            Singleton<CimHandle>::Instance()->GetSmisInstance(context, MC::Namespace(), settingPath, false, false,
                                                              false, CIMPropertyList());
            // The repository answers for a setting that exists.
            return false;
        } catch (const CIMException& e) {
            if (e.getCode() != CIM_ERR_NOT_FOUND) return false;
        }
        StorageSetting::Create(context, Model::AdjustObjectPath(volume), arrayId, ldn);
        created = StorageSetting::WarpInstance(context, Model::AdjustObjectPath(volume), arrayId, ldn);
        return true;
    } catch (const CIMException& e) {
        // An association query never fails on this path.
        SMIS_TRACE(LEVEL3, "%s", ("no setting made on demand: " + MC::ToStd(e.getMessage())).c_str());
        return false;
    }
}

void ElementSettingData::Associator(AssoArgs& args, const std::string& objectClass, const std::string& resultClass) {
    args.handler.processing();
    CIMInstance created;
    if (isVolumeToSetting(objectClass, resultClass) && makeSettingOnDemand(args.context, args.objectPath, created))
        args.handler.deliver(CIMObject(created));
    args.handler.complete();
}

void ElementSettingData::AssociatorNames(AssoNameArgs& args, const std::string& objectClass,
                                         const std::string& resultClass) {
    args.handler.processing();
    CIMInstance created;
    if (isVolumeToSetting(objectClass, resultClass) && makeSettingOnDemand(args.context, args.objectPath, created))
        args.handler.deliver(created.getPath());
    args.handler.complete();
}

}  // namespace orvsmis
