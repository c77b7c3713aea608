#include "Product.h"

#include <string>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "ArrayRawData.h"
#include "Association.h"
#include "AssociationRefs.h"
#include "Chassis.h"
#include "CimHandle.h"
#include "ConfigManager.h"
#include "MC.h"
#include "Model.h"
#include "PdRawData.h"
#include "PhysicalPackage.h"
#include "Property.h"
#include "RawData.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

CIMObjectPath Product::m_arrayProductPath;

namespace {

void traceFailure(const char* what, const CIMException& e) {
    SMIS_TRACE(LEVEL3, "Failed to %s.ErrorCode=%d,ErrorMessage=\"%s\"", what, int(e.getCode()),
               MC::ToStd(e.getMessage()).c_str());
}

// The four keys and the element name of a product.
struct ProductText {
    std::string name;
    std::string identifyingNumber;
    std::string vendor;
    std::string version;
    std::string elementName;
};

// The configured vendor follows the array's vendor ID; a product written
// before a change of it is named by the old record's value.
ProductText textOf(const RawData* record, const RawData* current, const std::string& arrayId) {
    ProductText text;
    if (const PdRawData* pd = dynamic_cast<const PdRawData*>(record)) {
        text.name = PhysicalPackage::Tag(pd->PDN, arrayId);
        text.identifyingNumber = pd->serialNumber;
        text.vendor = pd->vendorID;
        text.version = pd->productRevision;
        text.elementName = text.name;
        return text;
    }
    const ArrayRawData* array = dynamic_cast<const ArrayRawData*>(record);
    if (array == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, "Dynamic cast parameter \"param\" failed.");
    const ArrayRawData* now = dynamic_cast<const ArrayRawData*>(current);
    text.name = array->productID;
    text.identifyingNumber = array->serialNumber;
    text.vendor = Singleton<ConfigManager>::Instance()->GetVendor();
    if (now != nullptr && now != array && now->vendorID != array->vendorID) text.vendor = array->vendorID;
    text.version = array->productFWRevision;
    text.elementName = array->productID + " " + array->productFWRevision;
    return text;
}

CIMObjectPath keyPath(const ProductText& text) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("Name"), MC::ToString(text.name), CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("IdentifyingNumber"), MC::ToString(text.identifyingNumber),
                              CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("Vendor"), MC::ToString(text.vendor), CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("Version"), MC::ToString(text.version), CIMKeyBinding::STRING));
    CIMObjectPath path;
    path.setClassName(MC::ClassName("Product"));
    path.setKeyBindings(keys);
    return path;
}

bool isDisk(const RawData* record) { return record != nullptr && record->type == RAWDATA_PD; }

// The array's product: the one written last, or else the one the
// repository ties to the chassis.
CIMObjectPath arrayProduct(const OperationContext& context) {
    CIMObjectPath product = Product::GetArrayProductPath();
    if (product.getKeyBindings().size() != 0) return product;
    CIMObjectPath chassis = Chassis::GetPath();
    if (chassis.getKeyBindings().size() != 0) {
        Array<CIMObjectPath> links = AssociationRefs::Find(context, MC::Namespace(), chassis, "ProductPhysicalComponent");
        for (Uint32 i = 0; i < links.size(); ++i)
            if (AssociationRefs::End(links[i], "GroupComponent", product)) return product;
    }
    throw CIMException(CIM_ERR_NOT_FOUND, "Find the product of the array failed.");
}

// Removes a product with its links; the instance must exist.
void removeProduct(const OperationContext& context, const CIMObjectPath& path) {
    try {
        AssociationRefs::Delete(context, MC::Namespace(), path, "ProductPhysicalComponent");
        AssociationRefs::Delete(context, MC::Namespace(), path, "ProductParentChild");
        Singleton<CimHandle>::Instance()->DeleteInstance(context, MC::Namespace(), path);
    } catch (const CIMException& e) {
        traceFailure("delete Product instance", e);
        throw;
    }
}

}  // namespace

const RawData* Product::recordOf(ParentArgs& args, bool useOld) {
    const RawData* record = useOld ? args.oldData : args.newData;
    if (record == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, "Dynamic cast parameter \"param\" failed.");
    return record;
}

bool Product::isModified(const RawData* newData, const RawData* oldData) {
    if (newData == nullptr || oldData == nullptr) return true;
    if (const PdRawData* pd = dynamic_cast<const PdRawData*>(newData)) {
        const PdRawData* old = dynamic_cast<const PdRawData*>(oldData);
        return old == nullptr || pd->PDN != old->PDN || pd->serialNumber != old->serialNumber ||
               pd->vendorID != old->vendorID || pd->productRevision != old->productRevision;
    }
    const ArrayRawData* array = dynamic_cast<const ArrayRawData*>(newData);
    const ArrayRawData* old = dynamic_cast<const ArrayRawData*>(oldData);
    if (array == nullptr || old == nullptr) return true;
    return array->serialNumber != old->serialNumber || array->productFWRevision != old->productFWRevision ||
           array->productID != old->productID || array->vendorID != old->vendorID;
}

CIMObjectPath Product::WrapReference(ParentArgs& args, bool useOld) {
    return keyPath(textOf(recordOf(args, useOld), args.newData, args.arrayId));
}

CIMInstance Product::WrapInstance(ParentArgs& args, bool useOld) {
    const ProductText text = textOf(recordOf(args, useOld), args.newData, args.arrayId);
    const Property properties[] = {
        Property(CIMName("Name"), CIMValue(MC::ToString(text.name))),
        Property(CIMName("IdentifyingNumber"), CIMValue(MC::ToString(text.identifyingNumber))),
        Property(CIMName("Vendor"), CIMValue(MC::ToString(text.vendor))),
        Property(CIMName("Version"), CIMValue(MC::ToString(text.version))),
        Property(CIMName("ElementName"), CIMValue(MC::ToString(text.elementName))),
    };
    CIMInstance instance(MC::ClassName("Product"));
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(keyPath(text));
    return instance;
}

CIMObjectPath Product::Create(ParentArgs& args) {
    const bool disk = isDisk(recordOf(args, false));
    CIMInstance instance = WrapInstance(args, false);
    CIMObjectPath path = Model::AdjustObjectPath(instance.getPath());
    try {
        Singleton<CimHandle>::Instance()->CreateInstance(args.context, MC::Namespace(), instance);
        ProductPhysicalComponent::Create(args.context, path, Model::AdjustObjectPath(args.path));
        if (disk) ProductParentChild::Create(args.context, arrayProduct(args.context), path);
    } catch (const CIMException& e) {
        traceFailure("create Product instance", e);
        throw;
    }
    if (!disk) m_arrayProductPath = path;
    SMIS_TRACE(LEVEL4, "%s", "Product::Create() ended successfully.");
    return path;
}

void Product::Delete(ParentArgs& args) {
    CIMObjectPath path = WrapReference(args, false);
    removeProduct(args.context, path);
    if (m_arrayProductPath == path) m_arrayProductPath = CIMObjectPath();
    SMIS_TRACE(LEVEL4, "%s", "Product::Delete() ended successfully.");
}

void Product::Modify(ParentArgs& args) {
    if (args.oldData == nullptr || !isModified(args.newData, args.oldData)) return;
    const bool disk = isDisk(recordOf(args, false));
    CIMObjectPath newPath = WrapReference(args, false);
    CIMObjectPath oldPath = WrapReference(args, true);
    if (newPath == oldPath) {
        try {
            Singleton<CimHandle>::Instance()->ModifyInstance(args.context, MC::Namespace(), WrapInstance(args, false),
                                                             false, CIMPropertyList());
        } catch (const CIMException& e) {
            traceFailure("modify Product instance", e);
            throw;
        }
        return;
    }
    // A key changed (a new firmware revision, say): the product is replaced.
    // The array's product takes its disks' products along to the new one.
    Array<CIMObjectPath> children;
    if (!disk) {
        Array<CIMObjectPath> links = AssociationRefs::Find(args.context, MC::Namespace(), oldPath, "ProductParentChild");
        for (Uint32 i = 0; i < links.size(); ++i) {
            CIMObjectPath parent;
            CIMObjectPath child;
            if (AssociationRefs::End(links[i], "Parent", parent) && parent == oldPath &&
                AssociationRefs::End(links[i], "Child", child))
                children.append(child);
        }
    }
    removeProduct(args.context, oldPath);
    if (m_arrayProductPath == oldPath) m_arrayProductPath = CIMObjectPath();
    CIMObjectPath created = Create(args);
    try {
        for (Uint32 i = 0; i < children.size(); ++i) ProductParentChild::Create(args.context, created, children[i]);
    } catch (const CIMException& e) {
        traceFailure("create ProductParentChild instance", e);
        throw;
    }
}

CIMObjectPath Product::GetArrayProductPath() { return m_arrayProductPath; }

}  // namespace orvsmis
