#ifndef ORVSMIS_SYSTEMDEVICE_H
#define ORVSMIS_SYSTEMDEVICE_H

#include <string>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/OperationContext.h>

#include "Controller.h"

namespace orvsmis {

// The association between a system and its logical devices. It also answers
// associator requests between the array and its volumes.
class SystemDevice : public Controller {
public:
    static Pegasus::CIMObjectPath Create(const Pegasus::OperationContext& context,
                                         const Pegasus::CIMObjectPath& system,
                                         const Pegasus::CIMObjectPath& device);

    void Associator(AssoArgs& args, const std::string& objectClass, const std::string& resultClass) override;
    void AssociatorNames(AssoNameArgs& args, const std::string& objectClass,
                         const std::string& resultClass) override;

private:
    // The volumes of the system named by the source path; none throws
    // CIMException 6.
    void getStorageVolumeObject(RequestArgs* args, Pegasus::Array<Pegasus::CIMInstance>& out);
    // The array system that holds the source volume; none throws
    // CIMException 6.
    void getComputerSystemObject(RequestArgs* args, Pegasus::Array<Pegasus::CIMInstance>& out);
    // Both kinds by the class of the source; another class gives nothing.
    bool collect(RequestArgs* args, const std::string& objectClass, const std::string& resultClass,
                 Pegasus::Array<Pegasus::CIMInstance>& out);
};

}  // namespace orvsmis

#endif
