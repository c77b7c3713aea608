#include "StorageCapabilityController.h"

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Exception.h>

#include "CimHandle.h"
#include "MC.h"
#include "Model.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

CIMValue StorageCapabilityController::Invoke(InvokeMethodArgs& args, Array<CIMParamValue>& outParameters) {
    if (String::equalNoCase(args.methodName.getString(), "CreateSetting")) return createSetting(args, outParameters);
    return CIMValue(Uint32(0));
}

CIMValue StorageCapabilityController::createSetting(InvokeMethodArgs& args, Array<CIMParamValue>& outParameters) {
    bool found = false;
    Uint16 settingType = 0;
    for (Uint32 i = 0; i < args.inParameters.size(); ++i) {
        const CIMParamValue& parameter = args.inParameters[i];
        if (!String::equalNoCase(parameter.getParameterName(), "SettingType")) continue;
        const CIMValue& value = parameter.getValue();
        if (!value.isNull() && !value.isArray() && value.getType() == CIMTYPE_UINT16) {
            value.get(settingType);
            found = true;
        }
        break;
    }
    outParameters.clear();
    if (!found || (settingType != 2 && settingType != 3)) {
        SMIS_TRACE(LEVEL2, "%s", "unknown SettingType");
        throw CIMException(CIM_ERR_FAILED, "unknown SettingType");
    }
    Array<CIMObjectPath> hints;
    Singleton<CimHandle>::Instance()->AssociatorNames(
        args.context, MC::Namespace(), Model::AdjustObjectPath(args.objectPath),
        MC::ClassName("StorageSettingsAssociatedToCapabilities"), MC::ClassName("StorageSettingWithHints"),
        String("Antecedent"), String("Dependent"), hints);
    if (hints.size() == 0) {
        SMIS_TRACE(LEVEL2, "%s", "can not find StorageSettingwithHints on the StorageCapabilities!");
        throw CIMException(CIM_ERR_FAILED, "can not find StorageSettingwithHints on the StorageCapabilities!");
    }
    // The pool's existing hint answers for both types.
    outParameters.append(CIMParamValue(String("NewSetting"), CIMValue(hints[0])));
    return CIMValue(Uint32(0));
}

}  // namespace orvsmis
