#ifndef Pegasus_CIMMethodProvider_h
#define Pegasus_CIMMethodProvider_h

#include <Pegasus/Provider/CIMProvider.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_PROVIDER_LINKAGE CIMMethodProvider : public virtual CIMProvider {
public:
    CIMMethodProvider();
    virtual ~CIMMethodProvider();

    virtual void invokeMethod(const OperationContext& context,
        const CIMObjectPath& objectReference, const CIMName& methodName,
        const Array<CIMParamValue>& inParameters, MethodResultResponseHandler& handler) = 0;
};

PEGASUS_NAMESPACE_END

#endif
