#include "RepositoryCleaner.h"

#include <iostream>

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Constants.h>
#include <Pegasus/Common/Exception.h>

#include "CimHandle.h"
#include "ConfigManager.h"
#include "Exception.h"
#include "RegisteredProfile.h"
#include "SmisTrace.h"

using Pegasus::Array;
using Pegasus::CIMNamespaceName;
using Pegasus::CIMObjectPath;

namespace orvsmis {

const char* const RepositoryCleaner::INTEROP_CLASSES[] = {
    "System", "CIMXMLCommunicationMechanism", "Namespace", "ObjectManager",
    "CommMechanismForManager", "HostedAccessPoint", "HostedService", "NamespaceInManager",
    "RegisteredProfile", "RegisteredSubProfile", "SubProfileRequiresProfile",
    "ElementConformsToProfile", "SoftwareIdentity", "ElementSoftwareIdentity"
};
const int RepositoryCleaner::INTEROP_CLASS_COUNT =
    static_cast<int>(sizeof(INTEROP_CLASSES) / sizeof(INTEROP_CLASSES[0]));

const char* const RepositoryCleaner::PROVIDER_CLASSES[] = {
    "AffectedJobElement", "AllocatedFromStoragePool", "AssociatedComponentExtent",
    "AssociatedJobMethodResult", "AssociatedRemainingExtent", "AuthorizedPrivilege",
    "AuthorizedSubject", "AuthorizedTarget", "BasedOn", "CIMXMLCommunicationMechanism",
    "Chassis", "CommMechanismForManager", "CompositeExtent", "CompositeExtentBasedOn",
    "ComputerSystem", "ConcreteComponent", "ConcreteDependency", "ConcreteJob", "Container",
    "ControllerConfigurationService", "DeviceSAPImplementation", "DiskDrive",
    "ElementCapabilities", "ElementConformsToProfile", "ElementSettingData",
    "ElementSoftwareIdentity", "EnabledLogicalElementCapabilities", "FCPort",
    "HostedAccessPointPort", "HostedAccessPoint", "HostedCollection", "HostedService",
    "HostedStoragePool", "InstalledSoftwareIdentity", "Location", "LogicalDisk",
    "MediaPresent", "MethodResult", "Namespace", "NamespaceInManager", "ObjectManager",
    "OwningJobElement", "PhysicalElementLocation", "PhysicalPackage",
    "PrivilegeManagementService", "Product", "ProductParentChild", "ProductPhysicalComponent",
    "ProtocolControllerForPort", "ProtocolControllerForUnit",
    "ProtocolControllerMaskingCapabilities", "Realizes", "RegisteredProfile",
    "RegisteredSubProfile", "SAPAvailableForElement", "SCSIProtocolController",
    "SoftwareIdentity", "SCSIProtocolEndpoint", "StorageCapabilities",
    "StorageClientSettingData", "StorageConfigurationCapabilities",
    "StorageConfigurationService", "StorageExtent", "StorageHardwareID",
    "StorageHardwareIDManagementService", "StoragePool", "StorageSetting",
    "StorageSettingWithHints", "StorageSettingsAssociatedToCapabilities",
    "StorageSettingsGeneratedFromCapabilities", "StorageVolume", "SystemDevicePort",
    "SubProfileRequiresProfile", "System", "SystemDevice", "ComputerSystemPackage",
    "iSCSIProtocolEndpoint", "EthernetPort", "IPProtocolEndpoint", "TCPProtocolEndpoint",
    "iSCSICapabilities", "iSCSIConfigurationCapabilities", "iSCSIConfigurationService",
    "BindsTo", "ConcreteComponent_SASPort_and_SASPHY",
    "DeviceSAPImplementation_SASPort_and_SCSIProtocolEndpointSAS", "SASPort",
    "SCSIProtocolEndpointSAS", "SASPHY", "ReplicationService",
    "ReplicationServiceCapabilities", "StorageReplicationCapabilities", "ComponentCS",
    "StorageSynchronized", "ReplicaPoolForStorage", "RedundancySet", "ConcreteIdentity",
    "MemberOfCollection"
};
const int RepositoryCleaner::PROVIDER_CLASS_COUNT =
    static_cast<int>(sizeof(PROVIDER_CLASSES) / sizeof(PROVIDER_CLASSES[0]));

namespace {

void printCimError(const Pegasus::CIMException& e) {
    std::cout << "Error[ " << Pegasus::cimStatusCodeToString(e.getCode()) << " ] "
              << e.getMessage().getCString() << std::endl;
}

// Runs body inside one transaction on nameSpace; when body or the commit
// fails, the transaction is rolled back before the failure goes on.
template <class Body>
void inTransaction(CimHandle& handle, const CIMNamespaceName& nameSpace, Body body) {
    handle.beginTransaction(nameSpace);
    try {
        body();
        handle.commitTransaction();
    } catch (...) {
        try {
            handle.rollBackTransaction();
        } catch (...) {
            SMIS_TRACE(LEVEL1, "roll back failed.");
        }
        throw;
    }
}

}  // namespace

int RepositoryCleaner::CleanInstancesByName(const Pegasus::OperationContext& context,
    const std::string& namespaceName, const std::string& shortName) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    const std::string className = Singleton<ConfigManager>::Instance()->GetPrefix() + shortName;
    int deleted = 0;
    try {
        const CIMNamespaceName nameSpace(namespaceName.c_str());
        Array<CIMObjectPath> paths;
        handle->EnumerateInstanceNames(context, nameSpace, Pegasus::CIMName(className.c_str()), paths);
        for (Pegasus::Uint32 i = 0; i < paths.size(); ++i) {
            handle->DeleteInstance(context, nameSpace, paths[i]);
            ++deleted;
        }
    } catch (const Pegasus::CIMException& e) {
        if (e.getCode() == Pegasus::CIM_ERR_INVALID_CLASS) {
            // Classes of features this array's schema does not hold: nothing to clean.
            SMIS_TRACE(LEVEL4, "Info[ CleanInstancesByName ] : no class %s", className.c_str());
        } else {
            printCimError(e);
        }
    } catch (const Pegasus::Exception& e) {
        // A class name the configured prefix made invalid, and the like.
        std::cout << "Error[ " << className << " ] " << e.getMessage().getCString() << std::endl;
    }
    return deleted;
}

void RepositoryCleaner::Clean(bool includeInterop) {
    const Pegasus::OperationContext context;
    CimHandle* handle = Singleton<CimHandle>::Instance();
    // The array's tie to its profile goes with the array, also when the
    // profiles themselves stay.
    RegisteredProfile::DisconnectToArray();
    if (includeInterop) {
        const std::string interop(Pegasus::PEGASUS_NAMESPACENAME_INTEROP.getString().getCString());
        inTransaction(*handle, Pegasus::PEGASUS_NAMESPACENAME_INTEROP, [&] {
            for (int i = 0; i < INTEROP_CLASS_COUNT; ++i)
                CleanInstancesByName(context, interop, INTEROP_CLASSES[i]);
        });
    }
    const std::string nameSpace = Singleton<ConfigManager>::Instance()->GetNamespace();
    if (nameSpace.empty()) throw InvalidParamException("No namespace is configured");
    inTransaction(*handle, CIMNamespaceName(nameSpace.c_str()), [&] {
        for (int i = 0; i < PROVIDER_CLASS_COUNT; ++i)
            CleanInstancesByName(context, nameSpace, PROVIDER_CLASSES[i]);
    });
    std::cout << "Delete data successfully" << std::endl;
}

}  // namespace orvsmis
