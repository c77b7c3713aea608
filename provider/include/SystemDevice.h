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
    // The paths of the volumes of the system named by the source path; none
    // is traced.
    void getStorageVolumeObject(RequestArgs* args, Pegasus::Array<Pegasus::CIMObjectPath>& out);
    // The path of the array system that holds the source volume; none is
    // traced.
    void getComputerSystemObject(RequestArgs* args, Pegasus::Array<Pegasus::CIMObjectPath>& out);
    // Both kinds by the class of the source; another class gives nothing.
    bool collect(RequestArgs* args, const std::string& objectClass, const std::string& resultClass,
                 Pegasus::Array<Pegasus::CIMObjectPath>& out);
};

}  // namespace orvsmis

#endif
