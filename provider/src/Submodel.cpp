#include "Submodel.h"

#include <Pegasus/Provider/ProviderException.h>

using namespace Pegasus;

namespace orvsmis {

CIMObjectPath Submodel::Create(ParentArgs&) {
    throw CIMNotSupportedException("Create function not support");
}

void Submodel::Delete(ParentArgs&) {
    throw CIMNotSupportedException("Delete function not support");
}

void Submodel::Modify(ParentArgs&) {
    throw CIMNotSupportedException("Modify function not support");
}

}  // namespace orvsmis
