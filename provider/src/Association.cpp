#include "Association.h"

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "CimHandle.h"
#include "MC.h"
#include "Model.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

std::string text(const CIMException& e) { return MC::ToStd(e.getMessage()); }

void traceError(const CIMException& e, const std::string& what) {
    SMIS_TRACE(LEVEL3, "Error[ %s ] : %s ,%s", cimStatusCodeToString(e.getCode()), text(e).c_str(), what.c_str());
}

void traceCreateFailure(const Association::Form& form, const CIMException& e) {
    switch (form.style) {
    case Association::TRACE_NONE:
        break;
    case Association::TRACE_ERROR:
    case Association::TRACE_ENTRY_EXIT:
        traceError(e, form.createFailure != nullptr
                          ? std::string(form.createFailure)
                          : std::string("Create ") + form.name + " association class failed.");
        break;
    case Association::TRACE_CODE:
        SMIS_TRACE(LEVEL3, "Error Code:( %d ) Message:%s", int(e.getCode()), text(e).c_str());
        break;
    case Association::TRACE_SUCCESS_WORDS:
        SMIS_TRACE(LEVEL2, "Failed to create %s instance. ErrorCode=%d,ErrorMessage=\"%s\"", form.name,
                   int(e.getCode()), text(e).c_str());
        break;
    case Association::TRACE_STATUS:
        SMIS_TRACE(LEVEL3, "Failed to CreateInstance. CIMStatusCode : %d, Message : %s", int(e.getCode()),
                   text(e).c_str());
        break;
    }
}

// The reference class of an extent path: by the class name of the path.
const char* extentClass(const CIMObjectPath& path, const char* otherwise) {
    std::string name = MC::ToStd(path.getClassName().getString());
    if (name.find("CompositeExtent") != std::string::npos) return "CIM_CompositeExtent";
    if (name.find("StorageExtent") != std::string::npos) return "CIM_StorageExtent";
    return otherwise;
}

const unsigned long long ALL_ONES = ~0ULL;

}  // namespace

CIMObjectPath Association::KeyPath(const Form& form, const CIMObjectPath& first, const CIMObjectPath& second) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName(form.role1), CIMValue(first)));
    keys.append(CIMKeyBinding(CIMName(form.role2), CIMValue(second)));
    CIMObjectPath path;
    path.setClassName(MC::ClassName(form.shortName));
    path.setKeyBindings(keys);
    return path;
}

CIMObjectPath Association::CreateAssociation(const OperationContext& context, const Form& form,
                                             const CIMObjectPath& first, const CIMObjectPath& second,
                                             const std::vector<Property>& extra, const CIMNamespaceName& nameSpace) {
    if (form.style == TRACE_ENTRY_EXIT) SMIS_TRACE(LEVEL4, "Entering method %s::Create", form.name);
    CIMObjectPath firstRef = form.stripped ? Model::AdjustObjectPath(first) : first;
    CIMObjectPath secondRef = form.stripped ? Model::AdjustObjectPath(second) : second;
    CIMNamespaceName target = nameSpace.isNull() ? MC::Namespace() : nameSpace;

    CIMName className = MC::ClassName(form.shortName);
    CIMInstance instance(className);
    instance.addProperty(CIMProperty(CIMName(form.role1), CIMValue(firstRef), 0, CIMName(form.refClass1)));
    instance.addProperty(CIMProperty(CIMName(form.role2), CIMValue(secondRef), 0, CIMName(form.refClass2)));
    for (size_t i = 0; i < extra.size(); ++i) instance.addProperty(CIMProperty(extra[i].name, extra[i].value));
    if (form.setKeys) {
        CIMObjectPath full;
        Model::WrapAssocObjectPath(className, form.role1, firstRef, form.role2, secondRef, full);
        full.setNameSpace(target);
        instance.setPath(full);
    }
    CIMObjectPath path;
    try {
        path = Singleton<CimHandle>::Instance()->CreateInstance(context, target, instance);
    } catch (const CIMException& e) {
        traceCreateFailure(form, e);
        if (form.style == TRACE_NONE) throw;
        throw CIMException(e);
    }
    if (form.style == TRACE_SUCCESS_WORDS) {
        SMIS_TRACE(LEVEL2, "Create %s instance successfully.", form.name);
        SMIS_TRACE(LEVEL2, "%s::Create() ended successfully.", form.name);
    } else if (form.style == TRACE_ENTRY_EXIT) {
        SMIS_TRACE(LEVEL4, "%s CIMObjectPath = %s", form.name, MC::ToStd(path.toString()).c_str());
        SMIS_TRACE(LEVEL4, "Exiting method %s::Create", form.name);
    }
    return path;
}

void Association::DeleteAssociation(const OperationContext& context, const Form& form, const CIMObjectPath& first,
                                    const CIMObjectPath& second) {
    CIMObjectPath path = KeyPath(form, first, second);
    try {
        Singleton<CimHandle>::Instance()->DeleteInstance(context, MC::Namespace(), path);
    } catch (const CIMException& e) {
        if (form.style == TRACE_NONE) throw;
        traceError(e, std::string("Delete ") + form.name + " association class failed.");
        throw CIMException(e);
    }
}

// The members of the common form.

#define ORVSMIS_DEFINE_CREATE(NAME)                                                                      \
    CIMObjectPath NAME::Create(const OperationContext& context, const CIMObjectPath& first,              \
                               const CIMObjectPath& second) {                                            \
        return Association::CreateAssociation(context, FORM, first, second);                             \
    }

#define ORVSMIS_DEFINE_DELETE(NAME)                                                                      \
    void NAME::Delete(const OperationContext& context, const CIMObjectPath& first,                       \
                      const CIMObjectPath& second) {                                                     \
        Association::DeleteAssociation(context, FORM, first, second);                                    \
    }

const Association::Form SystemDevicePD::FORM = {
    "SystemDevicePD", "SystemDevice", "GroupComponent", "CIM_System", "PartComponent", "CIM_LogicalDevice",
    Association::TRACE_ERROR, "Create CIM_SystemDevice instance failed.", false, false};
ORVSMIS_DEFINE_CREATE(SystemDevicePD)

const Association::Form SystemDevicePort::FORM = {
    "SystemDevicePort", "SystemDevicePort", "GroupComponent", "CIM_System", "PartComponent", "CIM_LogicalDevice",
    Association::TRACE_ENTRY_EXIT, "Create CIM_SystemDevice(Port) Failed.", false, false};
ORVSMIS_DEFINE_CREATE(SystemDevicePort)
ORVSMIS_DEFINE_DELETE(SystemDevicePort)

const Association::Form ComponentCS::FORM = {
    "ComponentCS", "ComponentCS", "GroupComponent", "CIM_ComputerSystem", "PartComponent", "CIM_ComputerSystem",
    Association::TRACE_ERROR, nullptr, false, false};
CIMObjectPath ComponentCS::Create(const OperationContext& context, const CIMObjectPath& first,
                                  const CIMObjectPath& second) {
    SMIS_TRACE(LEVEL4, "ComponentCS::Craete");
    return Association::CreateAssociation(context, FORM, first, second);
}
ORVSMIS_DEFINE_DELETE(ComponentCS)

const Association::Form ConcreteIdentity::FORM = {
    "ConcreteIdentity", "ConcreteIdentity", "SystemElement", "CIM_ManagedElement", "SameElement",
    "CIM_ManagedElement", Association::TRACE_ERROR, nullptr, false, false};
CIMObjectPath ConcreteIdentity::Create(const OperationContext& context, const CIMObjectPath& first,
                                       const CIMObjectPath& second) {
    SMIS_TRACE(LEVEL4, "ConcreteIdentity::Craete");
    return Association::CreateAssociation(context, FORM, first, second);
}
ORVSMIS_DEFINE_DELETE(ConcreteIdentity)

const Association::Form MemberOfCollection::FORM = {
    "MemberOfCollection", "MemberOfCollection", "Collection", "CIM_Collection", "Member", "CIM_ManagedElement",
    Association::TRACE_ERROR, nullptr, false, false};
CIMObjectPath MemberOfCollection::Create(const OperationContext& context, const CIMObjectPath& first,
                                         const CIMObjectPath& second) {
    SMIS_TRACE(LEVEL4, "MemberOfCollection::Craete");
    return Association::CreateAssociation(context, FORM, first, second);
}
ORVSMIS_DEFINE_DELETE(MemberOfCollection)

const Association::Form HostedService::FORM = {
    "HostedService", "HostedService", "Antecedent", "CIM_System", "Dependent", "CIM_Service",
    Association::TRACE_NONE, nullptr, false, true};
ORVSMIS_DEFINE_CREATE(HostedService)

const Association::Form HostedCollection::FORM = {
    "HostedCollection", "HostedCollection", "Antecedent", "CIM_System", "Dependent",
    "CIM_SystemSpecificCollection", Association::TRACE_NONE, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(HostedCollection)

const Association::Form HostedStoragePool::FORM = {
    "HostedStoragePool", "HostedStoragePool", "GroupComponent", "CIM_System", "PartComponent", "CIM_StoragePool",
    Association::TRACE_NONE, nullptr, false, true};
ORVSMIS_DEFINE_CREATE(HostedStoragePool)

const Association::Form ConcreteDependency::FORM = {
    "ConcreteDependency", "ConcreteDependency", "Antecedent", "CIM_ManagedElement", "Dependent",
    "CIM_ManagedElement", Association::TRACE_CODE, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(ConcreteDependency)

const Association::Form ElementSoftwareIdentityPD::FORM = {
    "ElementSoftwareIdentityPD", "ElementSoftwareIdentity", "Antecedent", "CIM_SoftwareIdentity", "Dependent",
    "CIM_DiskDrive", Association::TRACE_ERROR, "Create CIM_ElementSoftwareIdentity instance failed.", false, false};
ORVSMIS_DEFINE_CREATE(ElementSoftwareIdentityPD)

const Association::Form ElementSoftwareIdentity::FORM = {
    "ElementSoftwareIdentity", "ElementSoftwareIdentity", "Antecedent", "CIM_SoftwareIdentity", "Dependent",
    "CIM_ManagedElement", Association::TRACE_ERROR, nullptr, true, false};
ORVSMIS_DEFINE_CREATE(ElementSoftwareIdentity)
ORVSMIS_DEFINE_DELETE(ElementSoftwareIdentity)

const Association::Form InstalledSoftwareIdentity::FORM = {
    "InstalledSoftwareIdentity", "InstalledSoftwareIdentity", "System", "CIM_System", "InstalledSoftware",
    "CIM_SoftwareIdentity", Association::TRACE_ERROR, nullptr, true, false};
ORVSMIS_DEFINE_CREATE(InstalledSoftwareIdentity)
ORVSMIS_DEFINE_DELETE(InstalledSoftwareIdentity)

const Association::Form SubProfileRequiresProfile::FORM = {
    "SubProfileRequiresProfile", "SubProfileRequiresProfile", "Antecedent", "CIM_RegisteredProfile", "Dependent",
    "CIM_RegisteredSubProfile", Association::TRACE_ERROR, nullptr, true, false};
ORVSMIS_DEFINE_CREATE(SubProfileRequiresProfile)
ORVSMIS_DEFINE_DELETE(SubProfileRequiresProfile)

const Association::Form ReferencedProfile::FORM = {
    "ReferencedProfile", "ReferencedProfile", "Antecedent", "CIM_RegisteredProfile", "Dependent",
    "CIM_RegisteredProfile", Association::TRACE_NONE, nullptr, true, false};
ORVSMIS_DEFINE_CREATE(ReferencedProfile)
ORVSMIS_DEFINE_DELETE(ReferencedProfile)

const Association::Form StorageSettingsAssociatedToCapabilities::FORM = {
    "StorageSettingsAssociatedToCapabilities", "StorageSettingsAssociatedToCapabilities", "Antecedent",
    "CIM_StorageCapabilities", "Dependent", "CIM_StorageSetting", Association::TRACE_NONE, nullptr, false, true};
CIMObjectPath StorageSettingsAssociatedToCapabilities::Create(const OperationContext& context,
                                                              const CIMObjectPath& first,
                                                              const CIMObjectPath& second) {
    std::vector<Property> extra(1, Property(CIMName("DefaultSetting"), CIMValue(Uint16(1))));
    return Association::CreateAssociation(context, FORM, first, second, extra);
}

const Association::Form AssociatedComponentExtent::FORM = {
    "AssociatedComponentExtent", "AssociatedComponentExtent", "GroupComponent", "CIM_StoragePool",
    "PartComponent", "CIM_CompositeExtent", Association::TRACE_ERROR, "create AssociatedComponentExtent failed!",
    false, true};
ORVSMIS_DEFINE_CREATE(AssociatedComponentExtent)

const Association::Form AssociatedRemainingExtent::FORM = {
    "AssociatedRemainingExtent", "AssociatedRemainingExtent", "GroupComponent", "CIM_StoragePool",
    "PartComponent", "CIM_CompositeExtent", Association::TRACE_CODE, nullptr, false, true};
ORVSMIS_DEFINE_CREATE(AssociatedRemainingExtent)

const Association::Form MediaPresent::FORM = {
    "MediaPresent", "MediaPresent", "Antecedent", "CIM_DiskDrive", "Dependent", "CIM_StorageExtent",
    Association::TRACE_ERROR, "Create CIM_MediaPresent instance failed.", false, false};
ORVSMIS_DEFINE_CREATE(MediaPresent)

const Association::Form ReplicaPoolForStorage::FORM = {
    "ReplicaPoolForStorage", "ReplicaPoolForStorage", "Antecedent", "CIM_EnabledLogicalElement", "Dependent",
    "CIM_StoragePool", Association::TRACE_ERROR, "Create CIM_ReplicaPoolForStorage instance failed.", false, false};
ORVSMIS_DEFINE_CREATE(ReplicaPoolForStorage)

const Association::Form Realizes::FORM = {
    "Realizes", "Realizes", "Antecedent", "CIM_PhysicalPackage", "Dependent", "CIM_DiskDrive",
    Association::TRACE_SUCCESS_WORDS, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(Realizes)

const Association::Form Container::FORM = {
    "Container", "Container", "GroupComponent", "CIM_PhysicalPackage", "PartComponent", "CIM_PhysicalPackage",
    Association::TRACE_SUCCESS_WORDS, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(Container)

const Association::Form ComputerSystemPackage::FORM = {
    "ComputerSystemPackage", "ComputerSystemPackage", "Dependent", "CIM_ComputerSystem", "Antecedent",
    "CIM_PhysicalPackage", Association::TRACE_SUCCESS_WORDS, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(ComputerSystemPackage)

const Association::Form ProductPhysicalComponent::FORM = {
    "ProductPhysicalComponent", "ProductPhysicalComponent", "GroupComponent", "CIM_Product", "PartComponent",
    "CIM_PhysicalElement", Association::TRACE_SUCCESS_WORDS, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(ProductPhysicalComponent)

const Association::Form ProductParentChild::FORM = {
    "ProductParentChild", "ProductParentChild", "Parent", "CIM_Product", "Child", "CIM_Product",
    Association::TRACE_SUCCESS_WORDS, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(ProductParentChild)

const Association::Form PhysicalElementLocation::FORM = {
    "PhysicalElementLocation", "PhysicalElementLocation", "Element", "CIM_Chassis", "PhysicalLocation",
    "CIM_Location", Association::TRACE_NONE, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(PhysicalElementLocation)

const Association::Form OwningJobElement::FORM = {
    "OwningJobElement", "OwningJobElement", "OwningElement", "CIM_ManagedElement", "OwnedElement", "CIM_Job",
    Association::TRACE_NONE, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(OwningJobElement)

const Association::Form AffectedJobElement::FORM = {
    "AffectedJobElement", "AffectedJobElement", "AffectedElement", "CIM_ManagedElement", "AffectingElement",
    "CIM_Job", Association::TRACE_NONE, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(AffectedJobElement)

const Association::Form AssociatedJobMethodResult::FORM = {
    "AssociatedJobMethodResult", "AssociatedJobMethodResult", "Job", "CIM_ConcreteJob", "JobParameters",
    "CIM_MethodResult", Association::TRACE_NONE, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(AssociatedJobMethodResult)

const Association::Form AuthorizedTarget::FORM = {
    "AuthorizedTarget", "AuthorizedTarget", "Privilege", "CIM_AuthorizedPrivilege", "TargetElement",
    "CIM_ManagedElement", Association::TRACE_CODE, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(AuthorizedTarget)

const Association::Form AuthorizedSubject::FORM = {
    "AuthorizedSubject", "AuthorizedSubject", "Privilege", "CIM_AuthorizedPrivilege", "PrivilegedElement",
    "CIM_ManagedElement", Association::TRACE_CODE, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(AuthorizedSubject)

const Association::Form SAPAvailableForElement::FORM = {
    "SAPAvailableForElement", "SAPAvailableForElement", "AvailableSAP", "CIM_ServiceAccessPoint",
    "ManagedElement", "CIM_ManagedElement", Association::TRACE_CODE, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(SAPAvailableForElement)

const Association::Form ProtocolControllerForPort::FORM = {
    "ProtocolControllerForPort", "ProtocolControllerForPort", "Antecedent", "CIM_ProtocolController", "Dependent",
    "CIM_LogicalPort", Association::TRACE_ENTRY_EXIT, "Create CIM_ProtocolControllerForPort Failed.", false, false};
ORVSMIS_DEFINE_CREATE(ProtocolControllerForPort)

const Association::Form DeviceSAPImplementation::FORM = {
    "DeviceSAPImplementation", "DeviceSAPImplementation", "Dependent", "CIM_ServiceAccessPoint", "Antecedent",
    "CIM_LogicalDevice", Association::TRACE_ENTRY_EXIT, "Create CIM_DeviceSAPImplementation Failed.", false, false};
ORVSMIS_DEFINE_CREATE(DeviceSAPImplementation)
ORVSMIS_DEFINE_DELETE(DeviceSAPImplementation)

const Association::Form HostedAccessPoint::FORM = {
    "HostedAccessPoint", "HostedAccessPointPort", "Antecedent", "CIM_System", "Dependent", "CIM_ServiceAccessPoint",
    Association::TRACE_ENTRY_EXIT, "Create CIM_HostedAccessPoint Failed.", false, false};
ORVSMIS_DEFINE_CREATE(HostedAccessPoint)
ORVSMIS_DEFINE_DELETE(HostedAccessPoint)

const Association::Form BindsTo::FORM = {
    "BindsTo", "BindsTo", "Antecedent", "CIM_ProtocolEndpoint", "Dependent", "CIM_ServiceAccessPoint",
    Association::TRACE_STATUS, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(BindsTo)
ORVSMIS_DEFINE_DELETE(BindsTo)

const Association::Form ServerCommMechanismForManager::FORM = {
    "ServerCommMechanismForManager", "CommMechanismForManager", "Antecedent", "CIM_ObjectManager", "Dependent",
    "CIM_CIMXMLCommunicationMechanism", Association::TRACE_NONE, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(ServerCommMechanismForManager)

const Association::Form ServerHostedAccessPoint::FORM = {
    "ServerHostedAccessPoint", "HostedAccessPoint", "Antecedent", "CIM_System", "Dependent",
    "CIM_CIMXMLCommunicationMechanism", Association::TRACE_NONE, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(ServerHostedAccessPoint)

const Association::Form ServerHostedService::FORM = {
    "ServerHostedService", "HostedService", "Antecedent", "CIM_System", "Dependent", "CIM_ObjectManager",
    Association::TRACE_NONE, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(ServerHostedService)

const Association::Form ServerNamespaceInManager::FORM = {
    "ServerNamespaceInManager", "NamespaceInManager", "Antecedent", "CIM_ObjectManager", "Dependent",
    "CIM_Namespace", Association::TRACE_NONE, nullptr, false, false};
ORVSMIS_DEFINE_CREATE(ServerNamespaceInManager)

#undef ORVSMIS_DEFINE_CREATE
#undef ORVSMIS_DEFINE_DELETE

// The members with arguments or rules of their own.

const Association::Form ElementConformsToProfile::FORM = {
    "ElementConformsToProfile", "ElementConformsToProfile", "ConformantStandard", "CIM_RegisteredProfile",
    "ManagedElement", "CIM_ManagedElement", Association::TRACE_ERROR, nullptr, true, false};

CIMObjectPath ElementConformsToProfile::Create(const OperationContext& context, const CIMObjectPath& first,
                                               const CIMObjectPath& second, const CIMNamespaceName& nameSpace) {
    return Association::CreateAssociation(context, FORM, first, second, std::vector<Property>(), nameSpace);
}

void ElementConformsToProfile::Delete(const OperationContext& context, const CIMObjectPath& first,
                                      const CIMObjectPath& second) {
    Association::DeleteAssociation(context, FORM, first, second);
}

const Association::Form ElementCapability::FORM = {
    "ElementCapability", "ElementCapabilities", "ManagedElement", "CIM_ManagedElement", "Capabilities",
    "CIM_Capabilities", Association::TRACE_NONE, nullptr, false, true};

CIMObjectPath ElementCapability::Create(const OperationContext& context, const CIMObjectPath& first,
                                        const CIMObjectPath& second) {
    Array<Uint16> characteristics;
    characteristics.append(2);
    std::vector<Property> extra(1, Property(CIMName("Characteristics"), CIMValue(characteristics)));
    return Association::CreateAssociation(context, FORM, first, second, extra);
}

const Association::Form AllocatedFromStoragePool::FORM = {
    "AllocatedFromStoragePool", "AllocatedFromStoragePool", "Antecedent", "CIM_StoragePool", "Dependent",
    "CIM_LogicalElement", Association::TRACE_NONE, nullptr, false, true};

CIMObjectPath AllocatedFromStoragePool::Create(const OperationContext& context, const CIMObjectPath& antecedent,
                                               const CIMObjectPath& dependent, Uint64 spaceConsumed) {
    std::vector<Property> extra(1, Property(CIMName("SpaceConsumed"), CIMValue(spaceConsumed)));
    return Association::CreateAssociation(context, FORM, antecedent, dependent, extra);
}

CIMObjectPath AllocatedFromStoragePool::Modify(const OperationContext& context, const CIMObjectPath& antecedent,
                                               const CIMObjectPath& dependent, const String& role,
                                               const String& resultRole, Uint64 spaceConsumed) {
    (void)resultRole;  // a reference lookup has no result role
    CimHandle* handle = Singleton<CimHandle>::Instance();
    Array<CIMObjectPath> existing;
    handle->ReferenceNames(context, MC::Namespace(), dependent, MC::ClassName(FORM.shortName), role, existing);
    for (Uint32 i = 0; i < existing.size(); ++i) handle->DeleteInstance(context, MC::Namespace(), existing[i]);
    return Create(context, Model::AdjustObjectPath(antecedent), Model::AdjustObjectPath(dependent), spaceConsumed);
}

const Association::Form ConcreteComponent::FORM = {
    "ConcreteComponent", "ConcreteComponent", "GroupComponent", "CIM_StoragePool", "PartComponent",
    "CIM_StorageExtent", Association::TRACE_NONE, nullptr, false, true};

CIMObjectPath ConcreteComponent::Create(const OperationContext& context, const CIMObjectPath& first,
                                        const CIMObjectPath& second) {
    Association::Form form = FORM;
    form.refClass2 = extentClass(second, FORM.refClass2);
    return Association::CreateAssociation(context, form, first, second);
}

const Association::Form BasedOn::FORM = {
    "BasedOn", "BasedOn", "Antecedent", "CIM_StorageExtent", "Dependent", "CIM_StorageExtent",
    Association::TRACE_NONE, nullptr, false, true};

CIMObjectPath BasedOn::Create(const OperationContext& context, const CIMObjectPath& antecedent,
                              const CIMObjectPath& dependent, unsigned short orderIndex,
                              unsigned long long startingAddress, unsigned long long endingAddress) {
    Association::Form form = FORM;
    form.refClass1 = extentClass(antecedent, FORM.refClass1);
    std::string dependentClass = MC::ToStd(dependent.getClassName().getString());
    if (dependentClass.find("StorageVolume") != std::string::npos)
        form.refClass2 = "CIM_StorageVolume";
    else if (dependentClass.find("StorageExtent") != std::string::npos)
        form.refClass2 = "CIM_StorageExtent";
    std::vector<Property> extra;
    if (orderIndex < 65535) extra.push_back(Property(CIMName("OrderIndex"), CIMValue(Uint16(orderIndex))));
    if (startingAddress != ALL_ONES)
        extra.push_back(Property(CIMName("StartingAddress"), CIMValue(Uint64(startingAddress))));
    if (endingAddress != ALL_ONES)
        extra.push_back(Property(CIMName("EndingAddress"), CIMValue(Uint64(endingAddress))));
    return Association::CreateAssociation(context, form, antecedent, dependent, extra);
}

const Association::Form CompositeExtentBasedOn::FORM = {
    "CompositeExtentBasedOn", "CompositeExtentBasedOn", "Antecedent", "CIM_CompositeExtent", "Dependent",
    "CIM_StorageExtent", Association::TRACE_NONE, nullptr, false, true};

CIMObjectPath CompositeExtentBasedOn::Create(const OperationContext& context, const CIMObjectPath& antecedent,
                                             const CIMObjectPath& dependent, unsigned short orderIndex,
                                             unsigned long long userDataStripeDepth,
                                             unsigned long long startingAddress, unsigned long long endingAddress) {
    Association::Form form = FORM;
    form.refClass1 = extentClass(antecedent, FORM.refClass1);
    form.refClass2 = extentClass(dependent, FORM.refClass2);
    std::vector<Property> extra;
    extra.push_back(Property(CIMName("OrderIndex"), CIMValue(Uint16(orderIndex))));
    extra.push_back(Property(CIMName("UserDataStripeDepth"), CIMValue(Uint64(userDataStripeDepth))));
    if (startingAddress != ALL_ONES)
        extra.push_back(Property(CIMName("StartingAddress"), CIMValue(Uint64(startingAddress))));
    if (endingAddress != ALL_ONES)
        extra.push_back(Property(CIMName("EndingAddress"), CIMValue(Uint64(endingAddress))));
    return Association::CreateAssociation(context, form, antecedent, dependent, extra);
}

}  // namespace orvsmis
