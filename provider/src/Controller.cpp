#include "Controller.h"

#include <Pegasus/Common/Exception.h>

namespace orvsmis {

Pegasus::CIMValue Controller::Invoke(InvokeMethodArgs&, Pegasus::Array<Pegasus::CIMParamValue>&) {
    throw Pegasus::CIMException(Pegasus::CIM_ERR_NOT_SUPPORTED, "The class has no invokable functions");
}

void Controller::Associator(AssoArgs&, const std::string&, const std::string&) {
    throw Pegasus::CIMException(Pegasus::CIM_ERR_NOT_SUPPORTED, "This class not support associator");
}

void Controller::AssociatorNames(AssoNameArgs&, const std::string&, const std::string&) {
    throw Pegasus::CIMException(Pegasus::CIM_ERR_NOT_SUPPORTED, "This class not support associatorNames");
}

}  // namespace orvsmis
