#include "SoftwareIdentityPD.h"

#include <string>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "AssociationRefs.h"
#include "CimHandle.h"
#include "ConfigManager.h"
#include "MC.h"
#include "Model.h"
#include "PdRawData.h"
#include "Property.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

const char* const CAST_FAILURE = "Dynamic cast parameter \"parm\" failed.";

void traceFailure(const CIMException& e, const char* what) {
    SMIS_TRACE(LEVEL3, "Error[ %s ] : %s ,%s", cimStatusCodeToString(e.getCode()),
               MC::ToStd(e.getMessage()).c_str(), what);
}

std::string instanceId(const PdRawData* pd, const std::string& arrayId) {
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    return config->GetVendor() + "." + config->GetBrand() + " : " + pd->PDN + ".in." + arrayId;
}

}  // namespace

const PdRawData* SoftwareIdentityPD::asPd(const RawData* record) {
    const PdRawData* pd = dynamic_cast<const PdRawData*>(record);
    if (pd == nullptr) {
        SMIS_TRACE(LEVEL3, "Error[ %s ] : %s ,%s", "CIM_ERR_INVALID_PARAMETER", CAST_FAILURE, "SoftwareIdentityPD");
        throw CIMException(CIM_ERR_INVALID_PARAMETER, CAST_FAILURE);
    }
    return pd;
}

CIMObjectPath SoftwareIdentityPD::WrapReference(ParentArgs& args) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), MC::ToString(instanceId(asPd(args.newData), args.arrayId)),
                              CIMKeyBinding::STRING));
    CIMObjectPath path;
    path.setClassName(MC::ClassName("SoftwareIdentity"));
    path.setKeyBindings(keys);
    return path;
}

CIMInstance SoftwareIdentityPD::WrapInstance(ParentArgs& args) {
    const PdRawData* pd = asPd(args.newData);
    const Property properties[] = {
        Property(CIMName("InstanceID"), CIMValue(MC::ToString(instanceId(pd, args.arrayId)))),
        Property(CIMName("VersionString"), CIMValue(MC::ToString(pd->productRevision))),
        Property(CIMName("Manufacturer"), CIMValue(MC::ToString(pd->vendorID))),
    };
    CIMInstance instance(MC::ClassName("SoftwareIdentity"));
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(WrapReference(args));
    return instance;
}

CIMObjectPath SoftwareIdentityPD::Create(ParentArgs& args) {
    CIMInstance instance = WrapInstance(args);
    CIMObjectPath path = Model::AdjustObjectPath(instance.getPath());
    try {
        Singleton<CimHandle>::Instance()->CreateInstance(args.context, MC::Namespace(), instance);
        ElementSoftwareIdentityPD::Create(args.context, path, Model::AdjustObjectPath(args.path));
    } catch (const CIMException& e) {
        traceFailure(e, "Create the disk's SoftwareIdentity failed.");
        throw;
    }
    return path;
}

void SoftwareIdentityPD::Delete(ParentArgs& args) {
    CIMObjectPath path = WrapReference(args);
    try {
        AssociationRefs::Delete(args.context, MC::Namespace(), path, "ElementSoftwareIdentity");
        Singleton<CimHandle>::Instance()->DeleteInstance(args.context, MC::Namespace(), path);
    } catch (const CIMException& e) {
        traceFailure(e, "Delete the disk's SoftwareIdentity failed.");
        throw;
    }
}

void SoftwareIdentityPD::Modify(ParentArgs& args) {
    const PdRawData* pd = asPd(args.newData);
    if (args.oldData != nullptr) {
        const PdRawData* old = asPd(args.oldData);
        if (old->vendorID == pd->vendorID && old->productRevision == pd->productRevision) return;
    }
    try {
        Singleton<CimHandle>::Instance()->ModifyInstance(args.context, MC::Namespace(), WrapInstance(args), false,
                                                         CIMPropertyList());
    } catch (const CIMException& e) {
        traceFailure(e, "Modify the disk's SoftwareIdentity failed.");
        throw;
    }
}

}  // namespace orvsmis
