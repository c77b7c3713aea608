#ifndef ORVSMIS_CONCRETEJOBCONTROLLER_H
#define ORVSMIS_CONCRETEJOBCONTROLLER_H

#include "Controller.h"

namespace orvsmis {

// The methods of <prefix>ConcreteJob: RequestStateChange (jobs cannot be
// paused or cancelled: 1), GetError and GetErrors.
class ConcreteJobController : public Controller {
public:
    Pegasus::CIMValue Invoke(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>& outParameters) override;
};

}  // namespace orvsmis

#endif
