#ifndef Pegasus_CIMIndicationProvider_h
#define Pegasus_CIMIndicationProvider_h

#include <Pegasus/Provider/CIMProvider.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_PROVIDER_LINKAGE CIMIndicationProvider : public virtual CIMProvider {
public:
    CIMIndicationProvider();
    virtual ~CIMIndicationProvider();

    virtual void enableIndications(IndicationResponseHandler& handler) = 0;
    virtual void disableIndications() = 0;
    virtual void createSubscription(const OperationContext& context,
        const CIMObjectPath& subscriptionName, const Array<CIMObjectPath>& classNames,
        const CIMPropertyList& propertyList, const Uint16 repeatNotificationPolicy) = 0;
    virtual void modifySubscription(const OperationContext& context,
        const CIMObjectPath& subscriptionName, const Array<CIMObjectPath>& classNames,
        const CIMPropertyList& propertyList, const Uint16 repeatNotificationPolicy) = 0;
    virtual void deleteSubscription(const OperationContext& context,
        const CIMObjectPath& subscriptionName, const Array<CIMObjectPath>& classNames) = 0;
};

PEGASUS_NAMESPACE_END

#endif
