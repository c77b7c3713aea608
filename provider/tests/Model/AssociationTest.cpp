// The association family: what each member writes, and the members with
// rules of their own.

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMProperty.h>

#include "Association.h"
#include "ModelTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;
using modeltest::prop;
using modeltest::propertyNames;

namespace {

typedef std::vector<std::string> Names;

CIMObjectPath fullPath(const char* className, const char* id) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), id, CIMKeyBinding::STRING));
    return CIMObjectPath("host1", CIMNamespaceName("root/orv"), CIMName(className), keys);
}

std::string referenceClass(const CIMInstance& instance, Uint32 index) {
    return instance.getProperty(index).getReferenceClassName().getString().toUtf8();
}

class Associations : public modeltest::ModelFixture {
protected:
    CIMObjectPath first = fullPath("ORV_Storage_First", "1");
    CIMObjectPath second = fullPath("ORV_Storage_Second", "2");
};

TEST_F(Associations, EachMemberWritesItsClassRolesAndReferenceClasses) {
    typedef std::function<CIMObjectPath(const OperationContext&, const CIMObjectPath&, const CIMObjectPath&)> Create;
    struct Case {
        Create create;
        std::string className, role1, ref1, role2, ref2;
        bool stripped, keys;
    };
    const Case cases[] = {
        {SystemDevicePD::Create, "SystemDevice", "GroupComponent", "CIM_System", "PartComponent", "CIM_LogicalDevice", false, false},
        {SystemDevicePort::Create, "SystemDevicePort", "GroupComponent", "CIM_System", "PartComponent", "CIM_LogicalDevice", false, false},
        {ComponentCS::Create, "ComponentCS", "GroupComponent", "CIM_ComputerSystem", "PartComponent", "CIM_ComputerSystem", false, false},
        {ConcreteIdentity::Create, "ConcreteIdentity", "SystemElement", "CIM_ManagedElement", "SameElement", "CIM_ManagedElement", false, false},
        {MemberOfCollection::Create, "MemberOfCollection", "Collection", "CIM_Collection", "Member", "CIM_ManagedElement", false, false},
        {HostedService::Create, "HostedService", "Antecedent", "CIM_System", "Dependent", "CIM_Service", true, false},
        {HostedCollection::Create, "HostedCollection", "Antecedent", "CIM_System", "Dependent", "CIM_SystemSpecificCollection", false, false},
        {HostedStoragePool::Create, "HostedStoragePool", "GroupComponent", "CIM_System", "PartComponent", "CIM_StoragePool", true, false},
        {ConcreteDependency::Create, "ConcreteDependency", "Antecedent", "CIM_ManagedElement", "Dependent", "CIM_ManagedElement", false, false},
        {ElementSoftwareIdentityPD::Create, "ElementSoftwareIdentity", "Antecedent", "CIM_SoftwareIdentity", "Dependent", "CIM_DiskDrive", false, false},
        {ElementSoftwareIdentity::Create, "ElementSoftwareIdentity", "Antecedent", "CIM_SoftwareIdentity", "Dependent", "CIM_ManagedElement", false, true},
        {InstalledSoftwareIdentity::Create, "InstalledSoftwareIdentity", "System", "CIM_System", "InstalledSoftware", "CIM_SoftwareIdentity", false, true},
        {SubProfileRequiresProfile::Create, "SubProfileRequiresProfile", "Antecedent", "CIM_RegisteredProfile", "Dependent", "CIM_RegisteredSubProfile", false, true},
        {ReferencedProfile::Create, "ReferencedProfile", "Antecedent", "CIM_RegisteredProfile", "Dependent", "CIM_RegisteredProfile", false, true},
        {AssociatedComponentExtent::Create, "AssociatedComponentExtent", "GroupComponent", "CIM_StoragePool", "PartComponent", "CIM_CompositeExtent", true, false},
        {AssociatedRemainingExtent::Create, "AssociatedRemainingExtent", "GroupComponent", "CIM_StoragePool", "PartComponent", "CIM_CompositeExtent", true, false},
        {MediaPresent::Create, "MediaPresent", "Antecedent", "CIM_DiskDrive", "Dependent", "CIM_StorageExtent", false, false},
        {ReplicaPoolForStorage::Create, "ReplicaPoolForStorage", "Antecedent", "CIM_EnabledLogicalElement", "Dependent", "CIM_StoragePool", false, false},
        {Realizes::Create, "Realizes", "Antecedent", "CIM_PhysicalPackage", "Dependent", "CIM_DiskDrive", false, false},
        {Container::Create, "Container", "GroupComponent", "CIM_PhysicalPackage", "PartComponent", "CIM_PhysicalPackage", false, false},
        {ComputerSystemPackage::Create, "ComputerSystemPackage", "Dependent", "CIM_ComputerSystem", "Antecedent", "CIM_PhysicalPackage", false, false},
        {ProductPhysicalComponent::Create, "ProductPhysicalComponent", "GroupComponent", "CIM_Product", "PartComponent", "CIM_PhysicalElement", false, false},
        {ProductParentChild::Create, "ProductParentChild", "Parent", "CIM_Product", "Child", "CIM_Product", false, false},
        {PhysicalElementLocation::Create, "PhysicalElementLocation", "Element", "CIM_Chassis", "PhysicalLocation", "CIM_Location", false, false},
        {OwningJobElement::Create, "OwningJobElement", "OwningElement", "CIM_ManagedElement", "OwnedElement", "CIM_Job", false, false},
        {AffectedJobElement::Create, "AffectedJobElement", "AffectedElement", "CIM_ManagedElement", "AffectingElement", "CIM_Job", false, false},
        {AssociatedJobMethodResult::Create, "AssociatedJobMethodResult", "Job", "CIM_ConcreteJob", "JobParameters", "CIM_MethodResult", false, false},
        {AuthorizedTarget::Create, "AuthorizedTarget", "Privilege", "CIM_AuthorizedPrivilege", "TargetElement", "CIM_ManagedElement", false, false},
        {AuthorizedSubject::Create, "AuthorizedSubject", "Privilege", "CIM_AuthorizedPrivilege", "PrivilegedElement", "CIM_ManagedElement", false, false},
        {SAPAvailableForElement::Create, "SAPAvailableForElement", "AvailableSAP", "CIM_ServiceAccessPoint", "ManagedElement", "CIM_ManagedElement", false, false},
        {ProtocolControllerForPort::Create, "ProtocolControllerForPort", "Antecedent", "CIM_ProtocolController", "Dependent", "CIM_LogicalPort", false, false},
        {DeviceSAPImplementation::Create, "DeviceSAPImplementation", "Dependent", "CIM_ServiceAccessPoint", "Antecedent", "CIM_LogicalDevice", false, false},
        {HostedAccessPoint::Create, "HostedAccessPointPort", "Antecedent", "CIM_System", "Dependent", "CIM_ServiceAccessPoint", false, false},
        {BindsTo::Create, "BindsTo", "Antecedent", "CIM_ProtocolEndpoint", "Dependent", "CIM_ServiceAccessPoint", false, false},
        {ServerCommMechanismForManager::Create, "CommMechanismForManager", "Antecedent", "CIM_ObjectManager", "Dependent", "CIM_CIMXMLCommunicationMechanism", false, false},
        {ServerHostedAccessPoint::Create, "HostedAccessPoint", "Antecedent", "CIM_System", "Dependent", "CIM_CIMXMLCommunicationMechanism", false, false},
        {ServerHostedService::Create, "HostedService", "Antecedent", "CIM_System", "Dependent", "CIM_ObjectManager", false, false},
        {ServerNamespaceInManager::Create, "NamespaceInManager", "Antecedent", "CIM_ObjectManager", "Dependent", "CIM_Namespace", false, false},
    };
    for (const Case& c : cases) {
        repository->instances.clear();
        c.create(context, first, second);
        const CIMInstance& made = repository->lastCreated;
        const std::string what = c.className;
        EXPECT_EQ("ORV_Storage_" + c.className, made.getClassName().getString().toUtf8()) << what;
        ASSERT_EQ(2u, made.getPropertyCount()) << what;
        EXPECT_EQ((Names{c.role1, c.role2}), propertyNames(made)) << what;
        EXPECT_EQ(c.ref1, referenceClass(made, 0)) << what;
        EXPECT_EQ(c.ref2, referenceClass(made, 1)) << what;
        CIMObjectPath held = prop<CIMObjectPath>(made, c.role1.c_str());
        EXPECT_EQ(c.stripped ? String() : String("host1"), held.getHost()) << what;
        EXPECT_EQ(modeltest::canonical(first), modeltest::canonical(held)) << what;
        EXPECT_EQ(c.keys, made.getPath().getKeyBindings().size() == 2) << what;
        if (c.keys) EXPECT_EQ(String("root/orv"), made.getPath().getNameSpace().getString()) << what;
    }
}

TEST_F(Associations, DeleteRemovesTheInstanceOfTheTwoReferences) {
    typedef std::function<void(const OperationContext&, const CIMObjectPath&, const CIMObjectPath&)> Call;
    const std::pair<Call, Call> members[] = {
        {SystemDevicePort::Create, SystemDevicePort::Delete},
        {ElementSoftwareIdentity::Create, ElementSoftwareIdentity::Delete},
        {InstalledSoftwareIdentity::Create, InstalledSoftwareIdentity::Delete},
        {SubProfileRequiresProfile::Create, SubProfileRequiresProfile::Delete},
        {ReferencedProfile::Create, ReferencedProfile::Delete},
        {DeviceSAPImplementation::Create, DeviceSAPImplementation::Delete},
        {HostedAccessPoint::Create, HostedAccessPoint::Delete},
        {BindsTo::Create, BindsTo::Delete},
        {ComponentCS::Create, ComponentCS::Delete},
        {ConcreteIdentity::Create, ConcreteIdentity::Delete},
        {MemberOfCollection::Create, MemberOfCollection::Delete},
    };
    for (const auto& member : members) {
        member.first(context, first, second);
        ASSERT_EQ(1u, repository->instances.size());
        // The paths given at delete may lack host and namespace.
        member.second(context, Model::AdjustObjectPath(first), Model::AdjustObjectPath(second));
        EXPECT_TRUE(repository->instances.empty());
        EXPECT_THROW(member.second(context, first, second), CIMException);
    }
}

TEST_F(Associations, FailuresReachTheCallerWhetherTracedOrNot) {
    typedef std::function<CIMObjectPath(const OperationContext&, const CIMObjectPath&, const CIMObjectPath&)> Create;
    const std::pair<const char*, Create> members[] = {
        {"ORV_Storage_ComponentCS", ComponentCS::Create},               // traced, then thrown on
        {"ORV_Storage_HostedCollection", HostedCollection::Create},     // passed untouched
        {"ORV_Storage_Realizes", Realizes::Create},                     // success words
        {"ORV_Storage_BindsTo", BindsTo::Create},                       // status form
        {"ORV_Storage_ConcreteDependency", ConcreteDependency::Create}, // code form
        {"ORV_Storage_SystemDevicePort", SystemDevicePort::Create},     // entry and exit
    };
    for (const auto& member : members) {
        repository->failCreateOfClass = member.first;
        try {
            member.second(context, first, second);
            ADD_FAILURE() << member.first << ": no exception";
        } catch (const CIMException& e) {
            EXPECT_EQ(CIM_ERR_FAILED, e.getCode()) << member.first;
        }
    }
    EXPECT_TRUE(repository->instances.empty());
}

TEST_F(Associations, ExtentLinksFollowTheClassesOfTheirPathsAndLeaveOutUnsetValues) {
    CIMObjectPath pool = fullPath("ORV_Storage_StoragePool", "p");
    CIMObjectPath composite = fullPath("ORV_Storage_CompositeExtent", "c");
    CIMObjectPath extent = fullPath("ORV_Storage_StorageExtent", "e");
    CIMObjectPath volume = fullPath("ORV_Storage_StorageVolume", "v");

    ConcreteComponent::Create(context, pool, composite);
    EXPECT_EQ("CIM_StoragePool", referenceClass(repository->lastCreated, 0));
    EXPECT_EQ("CIM_CompositeExtent", referenceClass(repository->lastCreated, 1));
    ConcreteComponent::Create(context, pool, extent);
    EXPECT_EQ("CIM_StorageExtent", referenceClass(repository->lastCreated, 1));

    BasedOn::Create(context, extent, volume, 65535, ~0ULL, ~0ULL);
    EXPECT_EQ((Names{"Antecedent", "Dependent"}), propertyNames(repository->lastCreated));
    EXPECT_EQ("CIM_StorageExtent", referenceClass(repository->lastCreated, 0));
    EXPECT_EQ("CIM_StorageVolume", referenceClass(repository->lastCreated, 1));
    EXPECT_EQ(String(), prop<CIMObjectPath>(repository->lastCreated, "Antecedent").getHost());

    BasedOn::Create(context, composite, extent, 0, 0, 2047);
    EXPECT_EQ((Names{"Antecedent", "Dependent", "OrderIndex", "StartingAddress", "EndingAddress"}),
              propertyNames(repository->lastCreated));
    EXPECT_EQ("CIM_CompositeExtent", referenceClass(repository->lastCreated, 0));
    EXPECT_EQ("CIM_StorageExtent", referenceClass(repository->lastCreated, 1));
    EXPECT_EQ(Uint64(2047), prop<Uint64>(repository->lastCreated, "EndingAddress"));

    CompositeExtentBasedOn::Create(context, composite, extent, 65535, 64, ~0ULL, ~0ULL);
    EXPECT_EQ((Names{"Antecedent", "Dependent", "OrderIndex", "UserDataStripeDepth"}),
              propertyNames(repository->lastCreated));
    EXPECT_EQ(Uint64(64), prop<Uint64>(repository->lastCreated, "UserDataStripeDepth"));
}

TEST_F(Associations, MembersWithFixedValuesAndTheirOwnRules) {
    CIMObjectPath pool = fullPath("ORV_Storage_StoragePool", "p");
    CIMObjectPath other = fullPath("ORV_Storage_StoragePool", "q");
    CIMObjectPath volume = fullPath("ORV_Storage_StorageVolume", "v");

    ElementCapability::Create(context, first, second);
    Array<Uint16> characteristics = prop<Array<Uint16>>(repository->lastCreated, "Characteristics");
    ASSERT_EQ(1u, characteristics.size());
    EXPECT_EQ(2, characteristics[0]);
    EXPECT_EQ("ORV_Storage_ElementCapabilities", repository->lastCreated.getClassName().getString().toUtf8());

    StorageSettingsAssociatedToCapabilities::Create(context, first, second);
    EXPECT_EQ(Uint16(1), prop<Uint16>(repository->lastCreated, "DefaultSetting"));

    ElementConformsToProfile::Create(context, first, second, CIMNamespaceName("root/interop"));
    EXPECT_EQ("root/interop", repository->lastNamespace);
    EXPECT_EQ(String("root/interop"), repository->lastCreated.getPath().getNameSpace().getString());

    // A new allocation replaces the old one of the same volume.
    AllocatedFromStoragePool::Create(context, pool, volume, 1024);
    AllocatedFromStoragePool::Modify(context, other, volume, String("Dependent"), String("Antecedent"), 4096);
    std::vector<CIMInstance> allocations = repository->of("ORV_Storage_AllocatedFromStoragePool");
    ASSERT_EQ(1u, allocations.size());
    EXPECT_EQ(Uint64(4096), prop<Uint64>(allocations[0], "SpaceConsumed"));
    EXPECT_EQ(modeltest::canonical(other),
              modeltest::canonical(prop<CIMObjectPath>(allocations[0], "Antecedent")));
}

}  // namespace
