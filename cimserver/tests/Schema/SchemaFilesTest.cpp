#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <Pegasus/Schema/SchemaManager.h>

using namespace Pegasus;

// Facts about the schema/ folder the server ships with.

namespace {

const SchemaManager& schema()
{
    static std::unique_ptr<SchemaManager> loaded;
    if (!loaded)
    {
        loaded.reset(new SchemaManager);
        loaded->loadDirectory(std::string(TEST_SOURCE_DIR) + "/schema");
    }
    return *loaded;
}

const ClassRegistry& orv()
{
    return *schema().registry("root/orv");
}

std::vector<std::string> chain(const ClassRegistry& reg, const std::string& name)
{
    std::vector<std::string> out;
    for (const ClassDecl* c = reg.findClass(name); c; c = c->superClass())
        out.push_back(c->name);
    return out;
}

} // namespace

TEST(SchemaFiles, LoadsBothNamespaces)
{
    ASSERT_NO_THROW(schema());
    EXPECT_TRUE(schema().hasNamespace("root/interop"));
    EXPECT_TRUE(schema().hasNamespace("root/orv"));
}

TEST(SchemaFiles, InheritanceChains)
{
    EXPECT_EQ((std::vector<std::string>{"CIM_StorageVolume", "CIM_StorageExtent", "CIM_LogicalDevice",
                                        "CIM_EnabledLogicalElement", "CIM_LogicalElement",
                                        "CIM_ManagedSystemElement", "CIM_ManagedElement"}),
              chain(orv(), "CIM_StorageVolume"));
    EXPECT_EQ((std::vector<std::string>{"CIM_FCPort", "CIM_NetworkPort", "CIM_LogicalPort", "CIM_LogicalDevice",
                                        "CIM_EnabledLogicalElement", "CIM_LogicalElement",
                                        "CIM_ManagedSystemElement", "CIM_ManagedElement"}),
              chain(orv(), "CIM_FCPort"));
    EXPECT_EQ((std::vector<std::string>{"CIM_iSCSIProtocolEndpoint", "CIM_SCSIProtocolEndpoint",
                                        "CIM_ProtocolEndpoint", "CIM_ServiceAccessPoint",
                                        "CIM_EnabledLogicalElement", "CIM_LogicalElement",
                                        "CIM_ManagedSystemElement", "CIM_ManagedElement"}),
              chain(orv(), "CIM_iSCSIProtocolEndpoint"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_ComputerSystem", "CIM_System"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_DiskDrive", "CIM_MediaAccessDevice"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_StoragePool", "CIM_LogicalElement"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_ConcreteJob", "CIM_Job"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_Chassis", "CIM_PhysicalPackage"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_StorageSettingWithHints", "CIM_SettingData"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_RedundancySet", "CIM_SystemSpecificCollection"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_PrivilegeManagementService", "CIM_Service"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_ObjectManager", "CIM_Service"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_CIMXMLCommunicationMechanism", "CIM_ServiceAccessPoint"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_RegisteredSubProfile", "CIM_RegisteredProfile"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_AuthorizedPrivilege", "CIM_Privilege"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_StorageHardwareID", "CIM_Identity"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_ComponentCS", "CIM_SystemComponent"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_SubProfileRequiresProfile", "CIM_ReferencedProfile"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_CompositeExtentBasedOn", "CIM_BasedOn"));
    EXPECT_TRUE(orv().isSubclassOf("CIM_ProtocolControllerForUnit", "CIM_ProtocolControllerForDevice"));
}

TEST(SchemaFiles, KeysOfWellKnownClasses)
{
    typedef std::vector<std::string> Names;
    EXPECT_EQ((Names{"SystemCreationClassName", "SystemName", "CreationClassName", "DeviceID"}),
              orv().findClass("CIM_StorageVolume")->keyNames());
    EXPECT_EQ((Names{"Name", "CreationClassName"}), orv().findClass("CIM_ComputerSystem")->keyNames());
    EXPECT_EQ((Names{"InstanceID"}), orv().findClass("CIM_StoragePool")->keyNames());
    EXPECT_EQ((Names{"InstanceID"}), orv().findClass("CIM_ConcreteJob")->keyNames());
    EXPECT_EQ((Names{"Tag", "CreationClassName"}), orv().findClass("CIM_Chassis")->keyNames());
    EXPECT_EQ((Names{"Name", "IdentifyingNumber", "Vendor", "Version"}), orv().findClass("CIM_Product")->keyNames());
    EXPECT_EQ(4u, orv().findClass("CIM_StorageConfigurationService")->keyNames().size());
    EXPECT_EQ(6u, orv().findClass("CIM_Namespace")->keyNames().size());
    EXPECT_TRUE(orv().findClass("CIM_ManagedElement")->keyNames().empty());

    const ClassRegistry& interop = *schema().registry("root/interop");
    EXPECT_EQ((Names{"Name"}), interop.findClass("PG_ProviderModule")->keyNames());
    // Name is inherited (from CIM_ManagedSystemElement), so it comes first.
    EXPECT_EQ((Names{"Name", "ProviderModuleName"}), interop.findClass("PG_Provider")->keyNames());
    EXPECT_EQ((Names{"ProviderModuleName", "ProviderName", "CapabilityID"}),
              interop.findClass("PG_ProviderCapabilities")->keyNames());

    // Every class that can have instances stored by path has keys.
    for (const std::string& ns : schema().namespaces())
    {
        const ClassRegistry& reg = *schema().registry(ns);
        for (const std::string& name : reg.classNames())
        {
            const ClassDecl* c = reg.findClass(name);
            if (c->isAbstract() || c->isIndication() || name == "CIM_Error")
                continue;
            EXPECT_FALSE(c->keyNames().empty()) << ns << ":" << name << " has no key";
        }
    }
}

TEST(SchemaFiles, AssociationsAndTheirReferences)
{
    const ClassDecl* alloc = orv().findClass("CIM_AllocatedFromStoragePool");
    ASSERT_TRUE(alloc->isAssociation());
    EXPECT_EQ("CIM_StoragePool", alloc->findProperty("Antecedent")->referenceClass);
    EXPECT_EQ("CIM_LogicalElement", alloc->findProperty("Dependent")->referenceClass);
    EXPECT_EQ(CIMTYPE_UINT64, alloc->findProperty("SpaceConsumed")->type);
    EXPECT_EQ("CIM_LogicalDevice", orv().findClass("CIM_SystemDevice")->findProperty("PartComponent")->referenceClass);
    EXPECT_EQ("CIM_Job", orv().findClass("CIM_AffectedJobElement")->findProperty("AffectingElement")->referenceClass);

    std::vector<std::string> names;
    for (const ClassDecl* c : orv().associationClassesReferencing("CIM_StorageVolume"))
        names.push_back(c->name);
    for (const char* expected : {"CIM_Dependency", "CIM_SystemDevice", "CIM_AllocatedFromStoragePool", "CIM_BasedOn",
                                 "CIM_ProtocolControllerForUnit", "CIM_ElementSettingData", "CIM_MediaPresent",
                                 "CIM_AffectedJobElement", "CIM_StorageSynchronized"})
        EXPECT_NE(names.end(), std::find(names.begin(), names.end(), expected)) << expected;
    EXPECT_EQ(names.end(), std::find(names.begin(), names.end(), "CIM_HostedService"));

    const ClassDecl* sub = schema().findClass("root/interop", "CIM_IndicationSubscription");
    ASSERT_NE(nullptr, sub);
    EXPECT_EQ("CIM_ListenerDestination", sub->findProperty("Handler")->referenceClass);
}

TEST(SchemaFiles, IndicationsAndMethods)
{
    for (const char* ns : {"root/interop", "root/orv"})
    {
        const ClassRegistry& reg = *schema().registry(ns);
        for (const char* cls : {"CIM_InstCreation", "CIM_InstDeletion", "CIM_InstModification",
                                "CIM_InstMethodCall", "CIM_AlertIndication"})
        {
            ASSERT_NE(nullptr, reg.findClass(cls)) << ns << ":" << cls;
            EXPECT_TRUE(reg.findClass(cls)->isIndication()) << cls;
            EXPECT_TRUE(reg.isSubclassOf(cls, "CIM_Indication")) << cls;
        }
    }
    EXPECT_TRUE(orv().findClass("CIM_InstModification")->findProperty("PreviousInstance")->embeddedObject);

    const MethodDecl* m = orv().findClass("CIM_StorageConfigurationService")
                              ->findMethod("CreateOrModifyElementFromStoragePool");
    ASSERT_NE(nullptr, m);
    const ParameterDecl* element = m->findParameter("TheElement");
    ASSERT_NE(nullptr, element);
    EXPECT_TRUE(element->isIn && element->isOut);
    EXPECT_EQ(CIMTYPE_REFERENCE, element->type);
    const ParameterDecl* job = m->findParameter("Job");
    EXPECT_TRUE(job->isOut && !job->isIn);
    EXPECT_EQ(CIMTYPE_UINT64, m->findParameter("Size")->type);

    const MethodDecl* errors = orv().findClass("CIM_ConcreteJob")->findMethod("GetErrors");
    ASSERT_NE(nullptr, errors);
    EXPECT_EQ("CIM_Error", errors->findParameter("Errors")->embeddedInstanceClass);
    EXPECT_TRUE(errors->findParameter("Errors")->isArray);

    // Inherited by every volume, disk and port.
    EXPECT_NE(nullptr, orv().findClass("CIM_StorageVolume")->findMethod("RequestStateChange"));
}

TEST(SchemaFiles, ParentsOfTheStorageProviderClasses)
{
    // The storage provider names its classes by a prefix and these short
    // names; each derives from the CIM class of the same short name. The few
    // names of its own (SystemDevicePort, SASPHY, ...) derive from others.
    const char* shortNames[] = {
        "AffectedJobElement", "AllocatedFromStoragePool", "AssociatedComponentExtent",
        "AssociatedJobMethodResult", "AssociatedRemainingExtent", "AuthorizedPrivilege",
        "AuthorizedSubject", "AuthorizedTarget", "BasedOn", "CIMXMLCommunicationMechanism", "Chassis",
        "CommMechanismForManager", "CompositeExtent", "CompositeExtentBasedOn", "ComputerSystem",
        "ConcreteComponent", "ConcreteDependency", "ConcreteJob", "Container",
        "ControllerConfigurationService", "DeviceSAPImplementation", "DiskDrive", "ElementCapabilities",
        "ElementConformsToProfile", "ElementSettingData", "ElementSoftwareIdentity",
        "EnabledLogicalElementCapabilities", "FCPort", "HostedAccessPoint", "HostedCollection",
        "HostedService", "HostedStoragePool", "InstalledSoftwareIdentity", "Location", "LogicalDisk",
        "MediaPresent", "MethodResult", "Namespace", "NamespaceInManager", "ObjectManager",
        "OwningJobElement", "PhysicalElementLocation", "PhysicalPackage", "PrivilegeManagementService",
        "Product", "ProductParentChild", "ProductPhysicalComponent", "ProtocolControllerForPort",
        "ProtocolControllerForUnit", "ProtocolControllerMaskingCapabilities", "Realizes",
        "RegisteredProfile", "RegisteredSubProfile", "SAPAvailableForElement", "SCSIProtocolController",
        "SoftwareIdentity", "SCSIProtocolEndpoint", "StorageCapabilities", "StorageClientSettingData",
        "StorageConfigurationCapabilities", "StorageConfigurationService", "StorageExtent",
        "StorageHardwareID", "StorageHardwareIDManagementService", "StoragePool", "StorageSetting",
        "StorageSettingWithHints", "StorageSettingsAssociatedToCapabilities",
        "StorageSettingsGeneratedFromCapabilities", "StorageVolume", "SubProfileRequiresProfile", "System",
        "SystemDevice", "ComputerSystemPackage", "iSCSIProtocolEndpoint", "EthernetPort",
        "IPProtocolEndpoint", "TCPProtocolEndpoint", "iSCSICapabilities", "iSCSIConfigurationCapabilities",
        "iSCSIConfigurationService", "BindsTo", "SASPort", "ReplicationService",
        "ReplicationServiceCapabilities", "StorageReplicationCapabilities", "ComponentCS",
        "StorageSynchronized", "ReplicaPoolForStorage", "RedundancySet", "ConcreteIdentity",
        "MemberOfCollection"};
    for (const char* name : shortNames)
        EXPECT_NE(nullptr, orv().findClass(std::string("CIM_") + name)) << name;

    // The interop namespace holds what the server and the profiles need.
    const ClassRegistry& interop = *schema().registry("root/interop");
    for (const char* name : {"System", "ComputerSystem", "CIMXMLCommunicationMechanism", "Namespace",
                             "ObjectManager", "CommMechanismForManager", "HostedAccessPoint", "HostedService",
                             "NamespaceInManager", "RegisteredProfile", "RegisteredSubProfile",
                             "SubProfileRequiresProfile", "ElementConformsToProfile", "SoftwareIdentity",
                             "ElementSoftwareIdentity", "IndicationFilter", "ListenerDestinationCIMXML",
                             "IndicationHandlerCIMXML", "IndicationSubscription", "Error"})
        EXPECT_NE(nullptr, interop.findClass(std::string("CIM_") + name)) << name;
}
