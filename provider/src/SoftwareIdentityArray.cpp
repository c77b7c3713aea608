#include "SoftwareIdentityArray.h"

#include <string>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "ArrayRawData.h"
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

CIMObjectPath SoftwareIdentityArray::m_path;

namespace {

void traceFailure(const CIMException& e, const char* what) {
    SMIS_TRACE(LEVEL3, "Error[ %s ] : %s ,%s", cimStatusCodeToString(e.getCode()),
               MC::ToStd(e.getMessage()).c_str(), what);
}

std::string vendorAndBrand() {
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    return config->GetVendor() + "." + config->GetBrand();
}

}  // namespace

const ArrayRawData* SoftwareIdentityArray::asArray(const RawData* record) {
    const ArrayRawData* array = dynamic_cast<const ArrayRawData*>(record);
    if (array == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, "Dynamic cast parameter \"param\" failed.");
    return array;
}

CIMObjectPath SoftwareIdentityArray::WrapReference(const RawData* record) {
    const ArrayRawData* array = asArray(record);
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), MC::ToString(vendorAndBrand() + " : " + array->diskArrayName),
                              CIMKeyBinding::STRING));
    CIMObjectPath path;
    path.setClassName(MC::ClassName("SoftwareIdentity"));
    path.setKeyBindings(keys);
    return path;
}

CIMInstance SoftwareIdentityArray::WrapInstance(const RawData* record) {
    const ArrayRawData* array = asArray(record);
    const Property properties[] = {
        Property(CIMName("InstanceID"), CIMValue(MC::ToString(vendorAndBrand() + " : " + array->diskArrayName))),
        Property(CIMName("VersionString"), CIMValue(MC::ToString(array->version + "." + array->revision))),
        Property(CIMName("Manufacturer"), CIMValue(MC::ToString(Singleton<ConfigManager>::Instance()->GetVendor()))),
    };
    CIMInstance instance(MC::ClassName("SoftwareIdentity"));
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(WrapReference(record));
    return instance;
}

CIMObjectPath SoftwareIdentityArray::Create(ParentArgs* args) {
    CIMInstance instance = WrapInstance(args->newData);
    CIMObjectPath path = Model::AdjustObjectPath(instance.getPath());
    try {
        Singleton<CimHandle>::Instance()->CreateInstance(args->context, MC::Namespace(), instance);
        InstalledSoftwareIdentity::Create(args->context, Model::AdjustObjectPath(args->path), path);
    } catch (const CIMException& e) {
        traceFailure(e, "Create the array's SoftwareIdentity failed.");
        throw;
    }
    m_path = path;
    SMIS_TRACE(LEVEL4, "%s", "SoftwareIdentityArray::Create() ended successfully.");
    return path;
}

void SoftwareIdentityArray::Delete(ParentArgs* args) {
    // The path written at Create names the instance even when the array's
    // name has changed since.
    CIMObjectPath path = m_path.getKeyBindings().size() != 0 ? m_path : WrapReference(args->newData);
    try {
        AssociationRefs::Delete(args->context, MC::Namespace(), path, "InstalledSoftwareIdentity");
        Singleton<CimHandle>::Instance()->DeleteInstance(args->context, MC::Namespace(), path);
    } catch (const CIMException& e) {
        traceFailure(e, "Delete the array's SoftwareIdentity failed.");
        throw;
    }
    m_path = CIMObjectPath();
    SMIS_TRACE(LEVEL4, "%s", "SoftwareIdentityArray::Delete() ended successfully.");
}

void SoftwareIdentityArray::Modify(ParentArgs* args) {
    const ArrayRawData* array = asArray(args->newData);
    const ArrayRawData* old = args->oldData != nullptr ? asArray(args->oldData) : nullptr;
    CIMObjectPath path = WrapReference(array);
    const bool known = m_path.getKeyBindings().size() != 0;
    if (known && !(m_path == path)) {
        // The array's name is part of the key: the identity is replaced.
        Delete(args);
        Create(args);
        return;
    }
    if (old != nullptr && old->version == array->version && old->revision == array->revision &&
        old->vendorID == array->vendorID)
        return;
    try {
        Singleton<CimHandle>::Instance()->ModifyInstance(args->context, MC::Namespace(), WrapInstance(array), false,
                                                         CIMPropertyList());
    } catch (const CIMException& e) {
        traceFailure(e, "Modify the array's SoftwareIdentity failed.");
        throw;
    }
    m_path = path;
}

void SoftwareIdentityArray::OnCreate(ParentArgs& args) {
    SoftwareIdentityArray identity;
    identity.Create(&args);
}

void SoftwareIdentityArray::OnModify(ParentArgs& args) {
    SoftwareIdentityArray identity;
    identity.Modify(&args);
}

void SoftwareIdentityArray::OnDelete(ParentArgs& args) {
    SoftwareIdentityArray identity;
    identity.Delete(&args);
}

CIMObjectPath SoftwareIdentityArray::GetPath() { return m_path; }

}  // namespace orvsmis
