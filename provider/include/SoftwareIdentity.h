#ifndef ORVSMIS_SOFTWAREIDENTITY_H
#define ORVSMIS_SOFTWAREIDENTITY_H

#include <map>
#include <string>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

namespace orvsmis {

// The provider itself as a software identity, in the interop namespace,
// attached to each registered profile it implements.
class SoftwareIdentity {
public:
    // profiles: registered name -> the profile's path (with the interop
    // namespace). Writes the instance once (an instance there already is
    // kept) and one ElementSoftwareIdentity per profile; returns the
    // instance's path with the interop namespace.
    static Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context,
                                         const std::map<std::string, Pegasus::CIMObjectPath>& profiles);
    // Removes the associations to the given profiles, then the instance
    // unless a profile outside the map still holds it. A missing instance
    // is passed over.
    static void Delete(const Pegasus::OperationContext& context,
                       const std::map<std::string, Pegasus::CIMObjectPath>& profiles);

    static Pegasus::CIMInstance WrapInstance();
    // Class and key only.
    static Pegasus::CIMObjectPath WrapReference();
};

}  // namespace orvsmis

#endif
