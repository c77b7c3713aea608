#ifndef ORVSMIS_INVOKEARGS_H
#define ORVSMIS_INVOKEARGS_H

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/String.h>

#include "RequestArgs.h"

namespace orvsmis {

// What a method call looked like, copied out of the server's call frame so
// that the job can outlive the request.
class InvokeArgs {
public:
    InvokeArgs() {}
    InvokeArgs(const Pegasus::OperationContext& ctx, const Pegasus::CIMObjectPath& target,
               const Pegasus::String& method, const Pegasus::Array<Pegasus::CIMParamValue>& in)
        : context(ctx), objectPath(target), methodName(method), inParameters(in) {}
    // The controller's own request record.
    explicit InvokeArgs(const InvokeMethodArgs& args)
        : context(args.context), objectPath(args.objectPath),
          methodName(args.methodName.getString()), inParameters(args.inParameters) {}

    Pegasus::OperationContext context;
    // The target object of the method (the service the client called).
    Pegasus::CIMObjectPath objectPath;
    Pegasus::String methodName;
    Pegasus::Array<Pegasus::CIMParamValue> inParameters;
};

}  // namespace orvsmis

#endif
