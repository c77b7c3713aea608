#include "Controller.h"

#include <Pegasus/Provider/ProviderException.h>

namespace orvsmis {

Pegasus::CIMValue Controller::Invoke(InvokeMethodArgs&, Pegasus::Array<Pegasus::CIMParamValue>&) {
    throw Pegasus::CIMNotSupportedException("The class has no invokable functions");
}

void Controller::Associator(AssoArgs&, const std::string&, const std::string&) {
    throw Pegasus::CIMNotSupportedException("This class not support associator");
}

void Controller::AssociatorNames(AssoNameArgs&, const std::string&, const std::string&) {
    throw Pegasus::CIMNotSupportedException("This class not support associatorNames");
}

}  // namespace orvsmis
