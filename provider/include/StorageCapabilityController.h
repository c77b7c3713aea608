#ifndef ORVSMIS_STORAGECAPABILITYCONTROLLER_H
#define ORVSMIS_STORAGECAPABILITYCONTROLLER_H

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMValue.h>

#include "Controller.h"

namespace orvsmis {

// The method of a pool's capabilities: CreateSetting hands back the pool's
// existing hint.
class StorageCapabilityController : public Controller {
public:
    // "CreateSetting" (any case) is served; any other name returns 0.
    Pegasus::CIMValue Invoke(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& outParameters) override;

private:
    Pegasus::CIMValue createSetting(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& outParameters);
};

}  // namespace orvsmis

#endif
