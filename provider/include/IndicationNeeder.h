#ifndef ORVSMIS_INDICATIONNEEDER_H
#define ORVSMIS_INDICATIONNEEDER_H

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/String.h>

#include "IndicationSender.h"

namespace orvsmis {

// Second base of the model classes: decides whether a change is worth an
// indication and asks the sender for it. Each operation tells whether an
// indication went out.
class IndicationNeeder {
public:
    IndicationNeeder() {}
    virtual ~IndicationNeeder() {}

    virtual bool ActivateInstCreationIndication(const Pegasus::CIMInstance& instance);
    virtual bool ActivateInstDeletionIndication(const Pegasus::CIMInstance& instance);
    // At most one CIM_InstModification, and only when OperationalStatus,
    // HealthState, DeviceNumber, SyncState or RedundancyStatus differ.
    virtual bool ActivateInstModificationIndication(const Pegasus::CIMInstance& newInstance,
                                                    const Pegasus::CIMInstance& oldInstance);
    virtual bool ActivateInstMethodCallIndication(const Pegasus::CIMInstance& instance,
                                                  const Pegasus::String& methodName,
                                                  const Pegasus::CIMObjectPath& target, bool preCall,
                                                  const Pegasus::CIMInstance& parameters,
                                                  const Pegasus::CIMValue& returnValue);
    // An alert when HealthState differs; the instance must name itself
    // (ElementName or DeviceID) and its SystemName, else CIMException 4.
    virtual bool ActivateInstDeviceAlertIndication(const Pegasus::CIMObjectPath& path,
                                                   const Pegasus::CIMInstance& newInstance,
                                                   const Pegasus::CIMInstance& oldInstance);
    virtual bool ActivateInstCLIAlertIndication(const Pegasus::String& method,
                                                const Pegasus::CIMObjectPath& path);
    virtual bool ActivateInstCapacityAlertIndication(const Pegasus::CIMObjectPath& path, bool over);

protected:
    IndicationSender& Sender() { return m_sender; }

private:
    IndicationSender m_sender;
};

}  // namespace orvsmis

#endif
