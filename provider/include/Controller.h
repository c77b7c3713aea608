#ifndef ORVSMIS_CONTROLLER_H
#define ORVSMIS_CONTROLLER_H

#include <string>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMValue.h>

#include "RequestArgs.h"

namespace orvsmis {

// Holds the logic of a class's extrinsic methods or of an association's
// traversal for one request. Each operation refuses unless a controller
// overrides it.
class Controller {
public:
    virtual ~Controller() {}
    virtual Pegasus::CIMValue Invoke(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& outParameters);
    virtual void Associator(AssoArgs& args, const std::string& objectClass, const std::string& resultClass);
    virtual void AssociatorNames(AssoNameArgs& args, const std::string& objectClass, const std::string& resultClass);
};

}  // namespace orvsmis

#endif
