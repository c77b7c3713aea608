#ifndef ORVSMIS_REQUESTARGS_H
#define ORVSMIS_REQUESTARGS_H

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Common/String.h>

namespace orvsmis {

// The arguments common to a client request that reaches the module: built by
// the provider from the server's call and handed to the controllers. All
// references point into the server's call frame.
class RequestArgs {
public:
    RequestArgs(const Pegasus::OperationContext& ctx, const Pegasus::CIMObjectPath& path)
        : context(ctx), objectPath(path) {}
    virtual ~RequestArgs() {}

    const Pegasus::OperationContext& context;
    const Pegasus::CIMObjectPath& objectPath;
};

// An extrinsic method call. returnValue is filled by the controller.
class InvokeMethodArgs : public RequestArgs {
public:
    InvokeMethodArgs(const Pegasus::OperationContext& ctx, const Pegasus::CIMObjectPath& path,
                     const Pegasus::CIMName& method,
                     const Pegasus::Array<Pegasus::CIMParamValue>& in,
                     Pegasus::Array<Pegasus::CIMParamValue>& out,
                     Pegasus::MethodResultResponseHandler& resultHandler)
        : RequestArgs(ctx, path), methodName(method), inParameters(in), outParameters(out),
          returnValue(), handler(resultHandler) {}

    const Pegasus::CIMName& methodName;
    const Pegasus::Array<Pegasus::CIMParamValue>& inParameters;
    Pegasus::Array<Pegasus::CIMParamValue>& outParameters;
    Pegasus::CIMValue returnValue;
    Pegasus::MethodResultResponseHandler& handler;
};

// An associators request.
class AssoArgs : public RequestArgs {
public:
    AssoArgs(const Pegasus::OperationContext& ctx, const Pegasus::CIMObjectPath& path,
             const Pegasus::CIMName& assoc, const Pegasus::CIMName& result,
             const Pegasus::String& roleName, const Pegasus::String& resultRoleName,
             bool qualifiers, bool classOrigin, const Pegasus::CIMPropertyList& properties,
             Pegasus::ObjectResponseHandler& objectHandler)
        : RequestArgs(ctx, path), assocClass(assoc), resultClass(result), role(roleName),
          resultRole(resultRoleName), includeQualifiers(qualifiers),
          includeClassOrigin(classOrigin), propertyList(properties), handler(objectHandler) {}

    const Pegasus::CIMName& assocClass;
    const Pegasus::CIMName& resultClass;
    const Pegasus::String& role;
    const Pegasus::String& resultRole;
    bool includeQualifiers;
    bool includeClassOrigin;
    const Pegasus::CIMPropertyList& propertyList;
    Pegasus::ObjectResponseHandler& handler;
};

// An associatorNames request.
class AssoNameArgs : public RequestArgs {
public:
    AssoNameArgs(const Pegasus::OperationContext& ctx, const Pegasus::CIMObjectPath& path,
                 const Pegasus::CIMName& assoc, const Pegasus::CIMName& result,
                 const Pegasus::String& roleName, const Pegasus::String& resultRoleName,
                 Pegasus::ObjectPathResponseHandler& pathHandler)
        : RequestArgs(ctx, path), assocClass(assoc), resultClass(result), role(roleName),
          resultRole(resultRoleName), handler(pathHandler) {}

    const Pegasus::CIMName& assocClass;
    const Pegasus::CIMName& resultClass;
    const Pegasus::String& role;
    const Pegasus::String& resultRole;
    Pegasus::ObjectPathResponseHandler& handler;
};

}  // namespace orvsmis

#endif
