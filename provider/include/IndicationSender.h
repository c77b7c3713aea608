#ifndef ORVSMIS_INDICATIONSENDER_H
#define ORVSMIS_INDICATIONSENDER_H

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/String.h>

namespace orvsmis {

// Builds the indication instances the module sends and hands them to the
// indication handle. Every Send... first checks that indications may go
// out (a subscriber asked for them and the server gave a handler) and
// returns false, sending nothing, when they may not.
class IndicationSender {
public:
    IndicationSender();
    virtual ~IndicationSender() {}

    bool IsEnabled() const { return m_bEnabled; }
    bool CheckPrepareSend();

    bool SendInstCreationIndication(const Pegasus::CIMInstance& instance);
    bool SendInstDeletionIndication(const Pegasus::CIMInstance& instance);
    bool SendInstModificationIndication(const Pegasus::CIMInstance& newInstance,
                                        const Pegasus::CIMInstance& oldInstance);
    bool SendMethodCallIndication(const Pegasus::CIMInstance& instance, const Pegasus::String& methodName,
                                  const Pegasus::CIMObjectPath& target, bool preCall,
                                  const Pegasus::CIMInstance& parameters,
                                  const Pegasus::CIMValue& returnValue);
    // previous and current are HealthState values, in that order.
    bool SendDeviceAlertIndication(const Pegasus::CIMObjectPath& path, const Pegasus::String& name,
                                   int previous, int current, const Pegasus::String& system);
    bool SendCLIAlertIndication(const Pegasus::String& method, const Pegasus::CIMObjectPath& path);
    bool SendSyncAlertIndication(const Pegasus::String& text, const Pegasus::CIMObjectPath& path);
    // over: the pool is full ("DRM29"), otherwise its threshold is passed
    // ("DRM28").
    bool SendCapacityAlertIndication(const Pegasus::CIMObjectPath& path, bool over = false);
    bool SendCriticalAlertIndication(const Pegasus::String& text);

    // Sets the alert's path and delivers it.
    bool DeliverAlert(Pegasus::CIMInstance& alert, const Pegasus::CIMObjectPath& alerting);

    // The severity an alert about a health change gets from the previous
    // HealthState: 5 gives 2, 10 and 0 give 3, 20 gives 5, others 0.
    static Pegasus::Uint16 SeverityOfHealth(int previousHealth);

private:
    bool deliver(Pegasus::CIMInstance& indication, const char* className, const Pegasus::String& about);
    Pegasus::CIMInstance makeAlert(Pegasus::Uint16 severity, Pegasus::Uint16 alertType,
                                   Pegasus::Uint16 probableCause, const Pegasus::String& system,
                                   const Pegasus::CIMObjectPath& alerting,
                                   const Pegasus::String& description);

    bool m_bEnabled;
};

}  // namespace orvsmis

#endif
