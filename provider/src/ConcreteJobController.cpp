#include "ConcreteJobController.h"

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Provider/ProviderException.h>

#include "JobManager.h"
#include "MC.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

CIMValue ConcreteJobController::Invoke(InvokeMethodArgs& args, Array<CIMParamValue>& outParameters) {
    const String method = args.methodName.getString();
    if (method == "RequestStateChange") {
        // Jobs can be neither paused nor cancelled.
        SMIS_TRACE(LEVEL3, "Info[ RequestStateChange ] : %s", "jobs do not change state on request");
        return CIMValue(Uint32(1));
    }
    if (method == "GetError" || method == "GetErrors") {
        Array<CIMObject> errors;
        Singleton<JobManager>::Instance()->GetWorkedJobError(args.objectPath, errors);
        if (method == "GetErrors") {
            outParameters.append(CIMParamValue(String("Errors"), CIMValue(errors)));
        } else if (errors.size() > 0) {
            outParameters.append(CIMParamValue(String("Error"), CIMValue(errors[0])));
        }
        return CIMValue(Uint32(0));
    }
    throw CIMNotSupportedException("ConcreteJobController : not support " + method);
}

}  // namespace orvsmis
