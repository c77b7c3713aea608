#include "PhysicalPackage.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "AssociationRefs.h"
#include "Chassis.h"
#include "CimHandle.h"
#include "ComputerSystem.h"
#include "Exception.h"
#include "MC.h"
#include "Model.h"
#include "PdRawData.h"
#include "Product.h"
#include "Property.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

void traceFailure(const char* what, const CIMException& e) {
    SMIS_TRACE(LEVEL3, "Failed to %s.ErrorCode=%d,ErrorMessage=\"%s\"", what, int(e.getCode()),
               MC::ToStd(e.getMessage()).c_str());
}

// The chassis the disks' packages sit in: the one the chassis model wrote
// last, or else the one the repository ties to the array.
CIMObjectPath chassisOfArray(const OperationContext& context, const std::string& arrayId) {
    CIMObjectPath chassis = Chassis::GetPath();
    if (chassis.getKeyBindings().size() != 0) return chassis;
    CIMObjectPath array;
    ComputerSystem system;
    if (system.Find("", arrayId, array) && array.getKeyBindings().size() != 0) {
        Array<CIMObjectPath> links =
            AssociationRefs::Find(context, MC::Namespace(), Model::AdjustObjectPath(array), "ComputerSystemPackage");
        for (Uint32 i = 0; i < links.size(); ++i)
            if (AssociationRefs::End(links[i], "Antecedent", chassis)) return chassis;
    }
    throw CIMException(CIM_ERR_NOT_FOUND, "Find the chassis of the array failed.");
}

}  // namespace

const PdRawData* PhysicalPackage::asPd(const RawData* record) {
    const PdRawData* pd = dynamic_cast<const PdRawData*>(record);
    if (pd == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, "Dynamic cast parameter \"param\" failed.");
    return pd;
}

std::string PhysicalPackage::ShortDeviceID(const std::string& pdn) {
    if (pdn.size() < 4) throw InvalidParamException("Invalid physical disk number: \"" + pdn + "\"");
    return pdn.substr(0, 2) + "h-" + pdn.substr(3, 4) + "h";
}

std::string PhysicalPackage::Tag(const std::string& pdn, const std::string& arrayId) {
    return "PD:" + ShortDeviceID(pdn) + "(" + arrayId + ")";
}

bool PhysicalPackage::isModified(const PdRawData* newData, const PdRawData* oldData) {
    if (newData == nullptr || oldData == nullptr) return true;
    return newData->productRevision != oldData->productRevision || newData->vendorID != oldData->vendorID ||
           newData->productID != oldData->productID || newData->serialNumber != oldData->serialNumber;
}

CIMObjectPath PhysicalPackage::WrapReference(const std::string& pdn, const std::string& arrayId) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("Tag"), MC::ToString(Tag(pdn, arrayId)), CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), MC::ClassName("PhysicalPackage").getString(),
                              CIMKeyBinding::STRING));
    CIMObjectPath path;
    path.setClassName(MC::ClassName("PhysicalPackage"));
    path.setKeyBindings(keys);
    return path;
}

CIMObjectPath PhysicalPackage::WrapReference(ParentArgs& args) {
    return WrapReference(asPd(args.newData)->PDN, args.arrayId);
}

CIMInstance PhysicalPackage::WrapInstance(ParentArgs& args) {
    const PdRawData* pd = asPd(args.newData);
    const String tag = MC::ToString(Tag(pd->PDN, args.arrayId));
    const Property properties[] = {
        Property(CIMName("Tag"), CIMValue(tag)),
        Property(CIMName("CreationClassName"), CIMValue(MC::ClassName("PhysicalPackage").getString())),
        Property(CIMName("ElementName"), CIMValue(tag)),
        Property(CIMName("Name"), CIMValue(tag)),
        Property(CIMName("Version"), CIMValue(MC::ToString(pd->productRevision))),
        Property(CIMName("Manufacturer"), CIMValue(MC::ToString(pd->vendorID))),
        Property(CIMName("Model"), CIMValue(MC::ToString(pd->productID))),
        Property(CIMName("SerialNumber"), CIMValue(MC::ToString(pd->serialNumber))),
        Property(CIMName("VendorCompatibilityStrings"), CIMValue(Array<String>())),
    };
    CIMInstance instance(MC::ClassName("PhysicalPackage"));
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(WrapReference(args));
    return instance;
}

CIMObjectPath PhysicalPackage::Create(ParentArgs& args) {
    CIMInstance instance = WrapInstance(args);
    CIMObjectPath path = Model::AdjustObjectPath(instance.getPath());
    try {
        Singleton<CimHandle>::Instance()->CreateInstance(args.context, MC::Namespace(), instance);
        Realizes::Create(args.context, path, Model::AdjustObjectPath(args.path));
        Container::Create(args.context, chassisOfArray(args.context, args.arrayId), path);
    } catch (const CIMException& e) {
        traceFailure("create PhysicalPackage instance", e);
        throw;
    }
    ParentArgs packageArgs(args, path);
    Product product;
    product.Create(packageArgs);
    SMIS_TRACE(LEVEL4, "%s", "PhysicalPackage::Create() ended successfully.");
    return path;
}

void PhysicalPackage::Delete(ParentArgs& args) {
    CIMObjectPath path = WrapReference(args);
    ParentArgs packageArgs(args, path);
    Product product;
    product.Delete(packageArgs);
    try {
        AssociationRefs::Delete(args.context, MC::Namespace(), path, "Realizes");
        AssociationRefs::Delete(args.context, MC::Namespace(), path, "Container");
        Singleton<CimHandle>::Instance()->DeleteInstance(args.context, MC::Namespace(), path);
    } catch (const CIMException& e) {
        traceFailure("delete PhysicalPackage instance", e);
        throw;
    }
    SMIS_TRACE(LEVEL4, "%s", "PhysicalPackage::Delete() ended successfully.");
}

void PhysicalPackage::Modify(ParentArgs& args) {
    const PdRawData* pd = asPd(args.newData);
    const PdRawData* old = args.oldData != nullptr ? asPd(args.oldData) : nullptr;
    if (isModified(pd, old)) {
        try {
            Singleton<CimHandle>::Instance()->ModifyInstance(args.context, MC::Namespace(), WrapInstance(args), false,
                                                             CIMPropertyList());
        } catch (const CIMException& e) {
            traceFailure("modify PhysicalPackage instance", e);
            throw;
        }
    }
    CIMObjectPath path = WrapReference(args);
    ParentArgs packageArgs(args, path);
    Product product;
    product.Modify(packageArgs);
}

void PhysicalPackage::OnCreate(ParentArgs& args) {
    PhysicalPackage package;
    package.Create(args);
}

void PhysicalPackage::OnModify(ParentArgs& args) {
    PhysicalPackage package;
    package.Modify(args);
}

void PhysicalPackage::OnDelete(ParentArgs& args) {
    PhysicalPackage package;
    package.Delete(args);
}

}  // namespace orvsmis
