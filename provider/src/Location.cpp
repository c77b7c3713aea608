#include "Location.h"

#include <string>

#include <Pegasus/Common/CIMProperty.h>
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

namespace {

void traceFailure(const char* what, const CIMException& e) {
    SMIS_TRACE(LEVEL3, "Failed to %s.ErrorCode=%d,ErrorMessage=\"%s\"", what, int(e.getCode()),
               MC::ToStd(e.getMessage()).c_str());
}

// The location's name. The configured vendor and brand follow the array's
// vendor and product ID; a location written before they changed is named
// by the old record's values.
std::string locationName(const ArrayRawData* record, const ArrayRawData* current) {
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    std::string vendor = config->GetVendor();
    std::string brand = config->GetBrand();
    if (record != current && current != nullptr) {
        if (record->vendorID != current->vendorID) vendor = record->vendorID;
        if (record->productID != current->productID) brand = record->productID;
    }
    return vendor + "." + brand + " : " + "Location";
}

}  // namespace

const ArrayRawData* Location::asArray(const RawData* record) {
    const ArrayRawData* array = dynamic_cast<const ArrayRawData*>(record);
    if (array == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, "Dynamic cast parameter \"param\" failed.");
    return array;
}

bool Location::isModified(const ArrayRawData* newData, const ArrayRawData* oldData) {
    if (newData == nullptr || oldData == nullptr) return true;
    return newData->serialNumber != oldData->serialNumber || newData->unitLocation != oldData->unitLocation ||
           newData->vendorID != oldData->vendorID || newData->productID != oldData->productID;
}

CIMObjectPath Location::WrapReference(ParentArgs& args, bool useOld) {
    const ArrayRawData* current = asArray(args.newData);
    const ArrayRawData* record = useOld ? asArray(args.oldData) : current;
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("Name"), MC::ToString(locationName(record, current)), CIMKeyBinding::STRING));
    keys.append(CIMKeyBinding(CIMName("PhysicalPosition"), MC::ToString(record->unitLocation), CIMKeyBinding::STRING));
    CIMObjectPath path;
    path.setClassName(MC::ClassName("Location"));
    path.setKeyBindings(keys);
    return path;
}

CIMInstance Location::WrapInstance(ParentArgs& args) {
    const ArrayRawData* array = asArray(args.newData);
    const String name = MC::ToString(locationName(array, array));
    const Property properties[] = {
        Property(CIMName("Name"), CIMValue(name)),
        Property(CIMName("PhysicalPosition"), CIMValue(MC::ToString(array->unitLocation))),
        Property(CIMName("ElementName"), CIMValue(name)),
        Property(CIMName("Address"), CIMValue(MC::ToString(array->unitLocation))),
    };
    CIMInstance instance(MC::ClassName("Location"));
    for (const Property& property : properties) instance.addProperty(CIMProperty(property.name, property.value));
    instance.setPath(WrapReference(args, false));
    return instance;
}

CIMObjectPath Location::Create(ParentArgs& args) {
    CIMInstance instance = WrapInstance(args);
    CIMObjectPath path = Model::AdjustObjectPath(instance.getPath());
    try {
        Singleton<CimHandle>::Instance()->CreateInstance(args.context, MC::Namespace(), instance);
        PhysicalElementLocation::Create(args.context, Model::AdjustObjectPath(args.path), path);
    } catch (const CIMException& e) {
        traceFailure("create Location instance", e);
        throw;
    }
    SMIS_TRACE(LEVEL4, "%s", "Location::Create() ended successfully.");
    return path;
}

void Location::Delete(ParentArgs& args) { Delete(args, false); }

void Location::Delete(ParentArgs& args, bool useOld) {
    CIMObjectPath path = WrapReference(args, useOld);
    try {
        AssociationRefs::Delete(args.context, MC::Namespace(), path, "PhysicalElementLocation");
        Singleton<CimHandle>::Instance()->DeleteInstance(args.context, MC::Namespace(), path);
    } catch (const CIMException& e) {
        traceFailure("delete Location instance", e);
        throw;
    }
    SMIS_TRACE(LEVEL4, "%s", "Location::Delete() ended successfully.");
}

void Location::Modify(ParentArgs& args) {
    const ArrayRawData* array = asArray(args.newData);
    const ArrayRawData* old = args.oldData != nullptr ? asArray(args.oldData) : nullptr;
    if (old == nullptr || !isModified(array, old)) {
        SMIS_TRACE(LEVEL4, "%s", " Location is not needed to modidy.");
        return;
    }
    // The position is part of the key: a move replaces the instance.
    Delete(args, true);
    Create(args);
}

void Location::OnCreate(ParentArgs& args) {
    Location location;
    location.Create(args);
}

void Location::OnModify(ParentArgs& args) {
    Location location;
    location.Modify(args);
}

void Location::OnDelete(ParentArgs& args) {
    Location location;
    location.Delete(args, false);
}

}  // namespace orvsmis
