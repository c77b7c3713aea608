#include "Chassis.h"

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
#include "Product.h"
#include "Property.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

ModelEvent Chassis::AfterCreated;
ModelEvent Chassis::AfterModified;
ModelEvent Chassis::BeforeDeleted;
CIMObjectPath Chassis::m_path;

namespace {

void traceFailure(const char* what, const CIMException& e) {
    SMIS_TRACE(LEVEL3, "Failed to %s.ErrorCode=%d,ErrorMessage=\"%s\"", what, int(e.getCode()),
               MC::ToStd(e.getMessage()).c_str());
}

}  // namespace

const ArrayRawData* Chassis::asArray(const RawData* record) {
    const ArrayRawData* array = dynamic_cast<const ArrayRawData*>(record);
    if (array == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, "Dynamic cast parameter \"param\" failed.");
    return array;
}

bool Chassis::isModified(const ArrayRawData* newData, const ArrayRawData* oldData) {
    if (newData == nullptr || oldData == nullptr) return true;
    return newData->serialNumber != oldData->serialNumber || newData->productFWRevision != oldData->productFWRevision ||
           newData->productID != oldData->productID || newData->vendorID != oldData->vendorID;
}

CIMObjectPath Chassis::WrapReference(const ArrayRawData* array) {
    if (array == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, "Dynamic cast parameter \"param\" failed.");
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("Tag"), MC::ToString(array->serialNumber), CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), MC::ClassName("Chassis").getString(),
                              CIMKeyBinding::STRING));
    CIMObjectPath path;
    path.setClassName(MC::ClassName("Chassis"));
    path.setKeyBindings(keys);
    return path;
}

CIMObjectPath Chassis::WrapReference(ParentArgs& args) { return WrapReference(asArray(args.newData)); }

CIMInstance Chassis::WrapInstance(ParentArgs& args) {
    const ArrayRawData* array = asArray(args.newData);
    const std::string vendor = Singleton<ConfigManager>::Instance()->GetVendor();
    const Property properties[] = {
        Property(CIMName("ElementName"),
                 CIMValue(MC::ToString(vendor + " " + array->productID + "(" + array->serialNumber + ")"))),
        Property(CIMName("Tag"), CIMValue(MC::ToString(array->serialNumber))),
        Property(CIMName("CreationClassName"), CIMValue(MC::ClassName("Chassis").getString())),
        Property(CIMName("PackageType"), CIMValue(Uint16(3))),
        Property(CIMName("ChassisPackageType"), CIMValue(Uint16(22))),
        Property(CIMName("Name"), CIMValue(MC::ToString(array->productID))),
        Property(CIMName("Version"), CIMValue(MC::ToString(array->productFWRevision))),
        Property(CIMName("OtherIdentifyingInfo"), CIMValue(String())),
        Property(CIMName("Manufacturer"), CIMValue(MC::ToString(vendor))),
        Property(CIMName("Model"), CIMValue(MC::ToString(array->productID))),
        Property(CIMName("SerialNumber"), CIMValue(MC::ToString(array->serialNumber))),
        Property(CIMName("VendorCompatibilityStrings"), CIMValue(Array<String>())),
    };
    CIMInstance instance(MC::ClassName("Chassis"));
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(WrapReference(array));
    return instance;
}

CIMObjectPath Chassis::Create(ParentArgs& args) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMInstance instance = WrapInstance(args);
    CIMObjectPath path = Model::AdjustObjectPath(instance.getPath());
    try {
        handle->CreateInstance(args.context, MC::Namespace(), instance);
    } catch (const CIMException& e) {
        traceFailure("create Chassis instance", e);
        throw;
    }
    SMIS_TRACE(LEVEL4, "%s", "Create Chassis instance successfully.");
    try {
        ComputerSystemPackage::Create(args.context, Model::AdjustObjectPath(args.path), path);
    } catch (const CIMException& e) {
        traceFailure("create ComputerSystemPackage instance", e);
        throw;
    }
    m_path = path;
    ParentArgs chassisArgs(args, path);
    Product product;
    product.Create(chassisArgs);
    AfterCreated.Invoke(chassisArgs);
    SMIS_TRACE(LEVEL4, "%s", "Chassis::Create() ended successfully.");
    return path;
}

void Chassis::Delete(ParentArgs& args) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMObjectPath path = WrapReference(args);
    ParentArgs chassisArgs(args, path);
    BeforeDeleted.Invoke(chassisArgs);
    Product product;
    product.Delete(chassisArgs);
    try {
        Array<CIMObjectPath> links = AssociationRefs::Find(args.context, MC::Namespace(), path, "ComputerSystemPackage");
        SMIS_TRACE(LEVEL4, "%s", "Get ObjectPaths of ComputerSystemPackage instances successfully.");
        for (Uint32 i = 0; i < links.size(); ++i) {
            handle->DeleteInstance(args.context, MC::Namespace(), links[i]);
            SMIS_TRACE(LEVEL4, "%s", "Delete ComputerSystemPackage instance successfully.");
        }
        // Disk packages still inside leave with their disks; only the links
        // to this chassis go here.
        AssociationRefs::Delete(args.context, MC::Namespace(), path, "Container");
    } catch (const CIMException& e) {
        traceFailure("delete ComputerSystemPackage instance", e);
        throw;
    }
    try {
        handle->DeleteInstance(args.context, MC::Namespace(), path);
    } catch (const CIMException& e) {
        traceFailure("delete Chassis instance", e);
        throw;
    }
    if (m_path == path) m_path = CIMObjectPath();
    SMIS_TRACE(LEVEL4, "%s", "Delete Chassis instance successfully.");
    SMIS_TRACE(LEVEL4, "%s", "Chassis::Delete() ended successfully.");
}

void Chassis::Modify(ParentArgs& args) {
    const ArrayRawData* array = asArray(args.newData);
    const ArrayRawData* old = args.oldData != nullptr ? asArray(args.oldData) : nullptr;
    if (old != nullptr && old->serialNumber != array->serialNumber) {
        // The serial number is the chassis' key: the old chassis, with its
        // product and location, makes room for the new one.
        DataEventArgs oldEvent(args.context, args.oldData, args.oldData, args.arrayId);
        ParentArgs oldArgs(oldEvent, args.path);
        Delete(oldArgs);
        Create(args);
        SMIS_TRACE(LEVEL4, "%s", "Chassis::Modify() ended successfully.");
        return;
    }
    if (isModified(array, old)) {
        try {
            Singleton<CimHandle>::Instance()->ModifyInstance(args.context, MC::Namespace(), WrapInstance(args), false,
                                                             CIMPropertyList());
        } catch (const CIMException& e) {
            traceFailure("modify Chassis instance", e);
            throw;
        }
        SMIS_TRACE(LEVEL4, "%s", "Modify Chassis instance successfully.");
    }
    CIMObjectPath path = WrapReference(args);
    m_path = path;
    ParentArgs chassisArgs(args, path);
    Product product;
    product.Modify(chassisArgs);
    AfterModified.Invoke(chassisArgs);
    SMIS_TRACE(LEVEL4, "%s", "Chassis::Modify() ended successfully.");
}

void Chassis::OnCreate(ParentArgs& args) {
    Chassis chassis;
    chassis.Create(args);
}

void Chassis::OnModify(ParentArgs& args) {
    Chassis chassis;
    chassis.Modify(args);
}

void Chassis::OnDelete(ParentArgs& args) {
    Chassis chassis;
    chassis.Delete(args);
}

CIMObjectPath Chassis::GetPath() { return m_path; }

}  // namespace orvsmis
