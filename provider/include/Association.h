#ifndef ORVSMIS_ASSOCIATION_H
#define ORVSMIS_ASSOCIATION_H

#include <string>
#include <vector>

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

#include "Property.h"

namespace orvsmis {

// The associations the module writes. Each is a small class of static
// operations: Create writes one instance holding the two references, in
// role order, and returns its path; Delete, where a class has it, removes
// the instance that holds the two references. Failures of the repository
// come back as CIMException, traced in the words of each class.
class Association {
public:
    // How a failure (and for some classes the success) is traced.
    enum TraceStyle {
        TRACE_NONE,           // exceptions pass untouched
        TRACE_ERROR,          // "Error[ <status> ] : <message> ,<text>"
        TRACE_CODE,           // "Error Code:( <code> ) Message:<message>"
        TRACE_SUCCESS_WORDS,  // "Create <name> instance successfully." and its kin
        TRACE_ENTRY_EXIT,     // "Entering method <name>::Create" ... and TRACE_ERROR
        TRACE_STATUS          // "Failed to CreateInstance. CIMStatusCode : <code>, Message : <message>"
    };

    // How one association class is written.
    struct Form {
        const char* name;           // the class's own name, used in traces
        const char* shortName;      // repository class = prefix + shortName
        const char* role1;          // role of the first path
        const char* refClass1;      // its reference class
        const char* role2;
        const char* refClass2;
        TraceStyle style;
        const char* createFailure;  // the text of a failed create; null: "Create <name> association class failed."
        bool setKeys;               // the instance carries its full key path
        bool stripped;              // the references hold the paths without host and namespace
    };

    // Builds the instance (references first, then extra properties in
    // order), writes it into nameSpace (the provider's when null) and
    // returns its path.
    static Pegasus::CIMObjectPath CreateAssociation(const Pegasus::OperationContext& context, const Form& form,
                                                    const Pegasus::CIMObjectPath& first,
                                                    const Pegasus::CIMObjectPath& second,
                                                    const std::vector<Property>& extra = std::vector<Property>(),
                                                    const Pegasus::CIMNamespaceName& nameSpace =
                                                        Pegasus::CIMNamespaceName());
    // Deletes the instance keyed by the two references; a failure is traced
    // "Delete <name> association class failed." unless the class lets
    // exceptions pass.
    static void DeleteAssociation(const Pegasus::OperationContext& context, const Form& form,
                                  const Pegasus::CIMObjectPath& first, const Pegasus::CIMObjectPath& second);
    // The key path (class and keys only) of the instance that holds the two
    // references.
    static Pegasus::CIMObjectPath KeyPath(const Form& form, const Pegasus::CIMObjectPath& first,
                                          const Pegasus::CIMObjectPath& second);
};

#define ORVSMIS_ASSOCIATION(NAME)                                                                          \
    class NAME {                                                                                           \
    public:                                                                                                \
        static const Association::Form FORM;                                                               \
        static Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context,                     \
                                             const Pegasus::CIMObjectPath& first,                          \
                                             const Pegasus::CIMObjectPath& second);                        \
    };

#define ORVSMIS_ASSOCIATION_WITH_DELETE(NAME)                                                              \
    class NAME {                                                                                           \
    public:                                                                                                \
        static const Association::Form FORM;                                                               \
        static Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context,                     \
                                             const Pegasus::CIMObjectPath& first,                          \
                                             const Pegasus::CIMObjectPath& second);                        \
        static void Delete(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& first,  \
                           const Pegasus::CIMObjectPath& second);                                          \
    };

// Systems and their parts.
ORVSMIS_ASSOCIATION(SystemDevicePD)
ORVSMIS_ASSOCIATION_WITH_DELETE(SystemDevicePort)
ORVSMIS_ASSOCIATION_WITH_DELETE(ComponentCS)
ORVSMIS_ASSOCIATION_WITH_DELETE(ConcreteIdentity)
ORVSMIS_ASSOCIATION_WITH_DELETE(MemberOfCollection)
ORVSMIS_ASSOCIATION(HostedService)
ORVSMIS_ASSOCIATION(HostedCollection)
ORVSMIS_ASSOCIATION(HostedStoragePool)
ORVSMIS_ASSOCIATION(ConcreteDependency)

// Software and profiles.
ORVSMIS_ASSOCIATION(ElementSoftwareIdentityPD)
ORVSMIS_ASSOCIATION_WITH_DELETE(ElementSoftwareIdentity)
ORVSMIS_ASSOCIATION_WITH_DELETE(InstalledSoftwareIdentity)
ORVSMIS_ASSOCIATION_WITH_DELETE(SubProfileRequiresProfile)
ORVSMIS_ASSOCIATION_WITH_DELETE(ReferencedProfile)

// Capabilities and settings.
ORVSMIS_ASSOCIATION(StorageSettingsAssociatedToCapabilities)

// Pools and extents.
ORVSMIS_ASSOCIATION(AssociatedComponentExtent)
ORVSMIS_ASSOCIATION(AssociatedRemainingExtent)
ORVSMIS_ASSOCIATION(MediaPresent)
ORVSMIS_ASSOCIATION(ReplicaPoolForStorage)

// Physical packages and products.
ORVSMIS_ASSOCIATION(Realizes)
ORVSMIS_ASSOCIATION(Container)
ORVSMIS_ASSOCIATION(ComputerSystemPackage)
ORVSMIS_ASSOCIATION(ProductPhysicalComponent)
ORVSMIS_ASSOCIATION(ProductParentChild)
ORVSMIS_ASSOCIATION(PhysicalElementLocation)

// Jobs.
ORVSMIS_ASSOCIATION(OwningJobElement)
ORVSMIS_ASSOCIATION(AffectedJobElement)
ORVSMIS_ASSOCIATION(AssociatedJobMethodResult)

// Privileges, access points and protocol controllers.
ORVSMIS_ASSOCIATION(AuthorizedTarget)
ORVSMIS_ASSOCIATION(AuthorizedSubject)
ORVSMIS_ASSOCIATION(SAPAvailableForElement)
ORVSMIS_ASSOCIATION(ProtocolControllerForPort)
ORVSMIS_ASSOCIATION_WITH_DELETE(DeviceSAPImplementation)
ORVSMIS_ASSOCIATION_WITH_DELETE(HostedAccessPoint)
ORVSMIS_ASSOCIATION_WITH_DELETE(BindsTo)

// The server's own view: object manager, namespaces, access points.
ORVSMIS_ASSOCIATION(ServerCommMechanismForManager)
ORVSMIS_ASSOCIATION(ServerHostedAccessPoint)
ORVSMIS_ASSOCIATION(ServerHostedService)
ORVSMIS_ASSOCIATION(ServerNamespaceInManager)

#undef ORVSMIS_ASSOCIATION
#undef ORVSMIS_ASSOCIATION_WITH_DELETE

// A profile and an element that conforms to it. The instance is written
// into nameSpace, where the profiles live.
class ElementConformsToProfile {
public:
    static const Association::Form FORM;
    static Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& first,
                                         const Pegasus::CIMObjectPath& second,
                                         const Pegasus::CIMNamespaceName& nameSpace);
    static void Delete(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& first,
                       const Pegasus::CIMObjectPath& second);
};

// An element and its capabilities; Characteristics is always {2}.
class ElementCapability {
public:
    static const Association::Form FORM;
    static Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& first,
                                         const Pegasus::CIMObjectPath& second);
};

// A volume or extent and the pool it takes its space from.
class AllocatedFromStoragePool {
public:
    static const Association::Form FORM;
    static Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context,
                                         const Pegasus::CIMObjectPath& antecedent,
                                         const Pegasus::CIMObjectPath& dependent, Pegasus::Uint64 spaceConsumed);
    // Replaces every association of dependent by one to antecedent with the
    // new space consumed.
    static Pegasus::CIMObjectPath Modify(const Pegasus::OperationContext& context,
                                         const Pegasus::CIMObjectPath& antecedent,
                                         const Pegasus::CIMObjectPath& dependent, const Pegasus::String& role,
                                         const Pegasus::String& resultRole, Pegasus::Uint64 spaceConsumed);
};

// A pool and the extents it is made of; the reference classes follow the
// class names of the paths.
class ConcreteComponent {
public:
    static const Association::Form FORM;
    static Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context, const Pegasus::CIMObjectPath& first,
                                         const Pegasus::CIMObjectPath& second);
};

// An extent or volume and the extent it is based on. An orderIndex of
// 65535 and addresses of all ones stand for "not given".
class BasedOn {
public:
    static const Association::Form FORM;
    static Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context,
                                         const Pegasus::CIMObjectPath& antecedent,
                                         const Pegasus::CIMObjectPath& dependent, unsigned short orderIndex,
                                         unsigned long long startingAddress, unsigned long long endingAddress);
};

// A composite extent and the extents below it.
class CompositeExtentBasedOn {
public:
    static const Association::Form FORM;
    static Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context,
                                         const Pegasus::CIMObjectPath& antecedent,
                                         const Pegasus::CIMObjectPath& dependent, unsigned short orderIndex,
                                         unsigned long long userDataStripeDepth, unsigned long long startingAddress,
                                         unsigned long long endingAddress);
};

}  // namespace orvsmis

#endif
