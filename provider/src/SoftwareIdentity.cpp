#include "SoftwareIdentity.h"

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Constants.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "AssociationRefs.h"
#include "CimHandle.h"
#include "ConfigManager.h"
#include "MC.h"
#include "Model.h"
#include "Property.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

// The provider's own version, whatever the array or the configuration.
const char* const PROVIDER_VERSION = "1.5.0";

void traceFailure(const CIMException& e, const char* what) {
    SMIS_TRACE(LEVEL3, "Error[ %s ] : %s ,%s", cimStatusCodeToString(e.getCode()),
               MC::ToStd(e.getMessage()).c_str(), what);
}

CIMObjectPath withInterop(const CIMObjectPath& path) {
    CIMObjectPath out = Model::AdjustObjectPath(path);
    out.setNameSpace(PEGASUS_NAMESPACENAME_INTEROP);
    return out;
}

}  // namespace

CIMObjectPath SoftwareIdentity::WrapReference() {
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"),
                              MC::ToString(config->GetVendor() + "." + config->GetBrand() + " : " +
                                           "RegisteredProfile_SoftwareIdentity"),
                              CIMKeyBinding::STRING));
    CIMObjectPath path;
    path.setClassName(MC::ClassName("SoftwareIdentity"));
    path.setKeyBindings(keys);
    return path;
}

CIMInstance SoftwareIdentity::WrapInstance() {
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    const std::string vendor = config->GetVendor();
    Array<Uint16> classifications;
    classifications.append(5);
    const Property properties[] = {
        Property(CIMName("InstanceID"),
                 CIMValue(MC::ToString(vendor + "." + config->GetBrand() + " : " + "RegisteredProfile_SoftwareIdentity"))),
        Property(CIMName("VersionString"), CIMValue(String(PROVIDER_VERSION))),
        Property(CIMName("Manufacturer"), CIMValue(MC::ToString(vendor))),
        Property(CIMName("Classifications"), CIMValue(classifications)),
        Property(CIMName("Name"), CIMValue(MC::ToString(vendor + " " + "SMI-S Provider"))),
    };
    CIMInstance instance(MC::ClassName("SoftwareIdentity"));
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(WrapReference());
    return instance;
}

CIMObjectPath SoftwareIdentity::Create(const OperationContext& context,
                                       const std::map<std::string, CIMObjectPath>& profiles) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMObjectPath path = withInterop(WrapReference());
    try {
        handle->CreateInstance(context, PEGASUS_NAMESPACENAME_INTEROP, WrapInstance());
    } catch (const CIMException& e) {
        // One instance serves every profile; a second call only adds links.
        if (e.getCode() != CIM_ERR_ALREADY_EXISTS) {
            traceFailure(e, "Create the provider's SoftwareIdentity failed.");
            throw;
        }
    }
    for (std::map<std::string, CIMObjectPath>::const_iterator it = profiles.begin(); it != profiles.end(); ++it) {
        CIMObjectPath profile = withInterop(it->second);
        try {
            Association::CreateAssociation(context, ElementSoftwareIdentity::FORM, path, profile,
                                           std::vector<Property>(), PEGASUS_NAMESPACENAME_INTEROP);
        } catch (const CIMException& e) {
            if (e.getCode() != CIM_ERR_ALREADY_EXISTS) throw;
        }
    }
    SMIS_TRACE(LEVEL4, "%s", "SoftwareIdentity::Create() ended successfully.");
    return path;
}

void SoftwareIdentity::Delete(const OperationContext& context, const std::map<std::string, CIMObjectPath>& profiles) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMObjectPath path = withInterop(WrapReference());
    try {
        Array<CIMObjectPath> links =
            AssociationRefs::Find(context, PEGASUS_NAMESPACENAME_INTEROP, path, "ElementSoftwareIdentity");
        Uint32 kept = 0;
        for (Uint32 i = 0; i < links.size(); ++i) {
            CIMObjectPath dependent;
            bool named = false;
            if (AssociationRefs::End(links[i], "Dependent", dependent)) {
                for (std::map<std::string, CIMObjectPath>::const_iterator it = profiles.begin();
                     it != profiles.end() && !named; ++it)
                    named = Model::AdjustObjectPath(it->second) == dependent;
            }
            if (named)
                handle->DeleteInstance(context, PEGASUS_NAMESPACENAME_INTEROP, links[i]);
            else
                ++kept;
        }
        // The instance stays while a profile outside the map still holds it.
        if (kept != 0) return;
        handle->DeleteInstance(context, PEGASUS_NAMESPACENAME_INTEROP, path);
    } catch (const CIMException& e) {
        if (e.getCode() == CIM_ERR_NOT_FOUND) return;
        traceFailure(e, "Delete the provider's SoftwareIdentity failed.");
        throw;
    }
    SMIS_TRACE(LEVEL4, "%s", "SoftwareIdentity::Delete() ended successfully.");
}

}  // namespace orvsmis
