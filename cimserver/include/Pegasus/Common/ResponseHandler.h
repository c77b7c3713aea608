#ifndef Pegasus_ResponseHandler_h
#define Pegasus_ResponseHandler_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMIndication.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/OperationContext.h>

PEGASUS_NAMESPACE_BEGIN

// What a provider hands its results to. processing() says work began,
// complete() that everything was delivered.
class PEGASUS_COMMON_LINKAGE ResponseHandler {
public:
    virtual ~ResponseHandler();
    virtual void processing() = 0;
    virtual void complete() = 0;
    void setContext(const OperationContext& context);

protected:
    ResponseHandler();
    ResponseHandler(const ResponseHandler& handler);
    ResponseHandler& operator=(const ResponseHandler& handler);
    OperationContext getContext() const;

private:
    OperationContext _context;
};

class PEGASUS_COMMON_LINKAGE InstanceResponseHandler : virtual public ResponseHandler {
public:
    virtual void deliver(const CIMInstance& instance) = 0;
    virtual void deliver(const Array<CIMInstance>& instances);
};

class PEGASUS_COMMON_LINKAGE ObjectPathResponseHandler : virtual public ResponseHandler {
public:
    virtual void deliver(const CIMObjectPath& objectPath) = 0;
    virtual void deliver(const Array<CIMObjectPath>& objectPaths);
};

class PEGASUS_COMMON_LINKAGE MethodResultResponseHandler : virtual public ResponseHandler {
public:
    virtual void deliverParamValue(const CIMParamValue& outParamValue) = 0;
    virtual void deliverParamValue(const Array<CIMParamValue>& outParamValues);
    virtual void deliver(const CIMValue& returnValue) = 0;
};

class PEGASUS_COMMON_LINKAGE IndicationResponseHandler : virtual public ResponseHandler {
public:
    virtual void deliver(const CIMIndication& indication) = 0;
    virtual void deliver(const Array<CIMIndication>& indications);
    virtual void deliver(const OperationContext& context, const CIMIndication& indication) = 0;
    virtual void deliver(const OperationContext& context, const Array<CIMIndication>& indications);
};

class PEGASUS_COMMON_LINKAGE ObjectResponseHandler : virtual public ResponseHandler {
public:
    virtual void deliver(const CIMObject& object) = 0;
    virtual void deliver(const Array<CIMObject>& objects);
};

PEGASUS_NAMESPACE_END

#endif
