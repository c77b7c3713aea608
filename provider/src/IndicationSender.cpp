#include "IndicationSender.h"

#include <atomic>
#include <string>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/System.h>

#include "ConfigManager.h"
#include "Exception.h"
#include "IndicationHandle.h"
#include "MC.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

// The start-up traces of the sender appear once per state for the life of
// the module.
std::atomic<bool> s_tracedNoSubscription(false);
std::atomic<bool> s_tracedNoHandler(false);
std::atomic<bool> s_tracedReady(false);

void traceOnce(std::atomic<bool>& flag, const char* text) {
    if (!flag.exchange(true)) SMIS_TRACE(LEVEL3, "%s", text);
}

String numberText(int value) {
    return MC::ToString(std::to_string(value));
}

void add(CIMInstance& instance, const char* name, const CIMValue& value) {
    instance.addProperty(CIMProperty(CIMName(name), value));
}

}  // namespace

IndicationSender::IndicationSender() : m_bEnabled(false) {
    IndicationHandle* handle = Singleton<IndicationHandle>::Instance();
    bool subscribed = handle->IsEnabled();
    bool hasHandler = handle->HasHandler();
    m_bEnabled = subscribed && hasHandler;
    if (!subscribed)
        traceOnce(s_tracedNoSubscription, "Indication is disable:Maybe subscript is zero or ur setting.");
    else if (!hasHandler)
        traceOnce(s_tracedNoHandler, "Indication handle disable.");
    else
        traceOnce(s_tracedReady, "Indication initialization is successful.");
}

bool IndicationSender::CheckPrepareSend() {
    IndicationHandle* handle = Singleton<IndicationHandle>::Instance();
    if (!handle->IsEnabled()) {
        SMIS_TRACE(LEVEL4, "Indication is disable:Maybe subscript is zero or your setting.");
        m_bEnabled = false;
        return false;
    }
    if (!handle->HasHandler()) {
        SMIS_TRACE(LEVEL4, "Indication handle disable.");
        m_bEnabled = false;
        return false;
    }
    m_bEnabled = true;
    return true;
}

bool IndicationSender::deliver(CIMInstance& indication, const char* className, const String& about) {
    CIMObjectPath path;
    path.setNameSpace(MC::Namespace());
    path.setClassName(CIMName(className));
    indication.setPath(path);
    std::string aboutText = MC::ToStd(about);
    try {
        Singleton<IndicationHandle>::Instance()->Deliver(indication);
    } catch (const Pegasus::Exception& e) {
        // The listener side failed or the handler went away meanwhile: the
        // change itself stands, only its notice is lost.
        SMIS_TRACE(LEVEL2, "deliverEvent(%s) of (%s) is failed. %s", className, aboutText.c_str(),
                   MC::ToStd(e.getMessage()).c_str());
        return false;
    } catch (const std::exception& e) {
        SMIS_TRACE(LEVEL2, "deliverEvent(%s) of (%s) is failed. %s", className, aboutText.c_str(), e.what());
        return false;
    }
    SMIS_TRACE(LEVEL3, "deliverEvent(%s) of (%s) is successful.", className, aboutText.c_str());
    return true;
}

bool IndicationSender::SendInstCreationIndication(const CIMInstance& instance) {
    if (!CheckPrepareSend()) return false;
    CIMInstance indication(CIMName("CIM_InstCreation"));
    add(indication, "IndicationTime", CIMValue(CIMDateTime::getCurrentDateTime()));
    add(indication, "SourceInstance", CIMValue(instance));
    add(indication, "SourceInstanceModelPath", CIMValue(instance.getPath().toString()));
    return deliver(indication, "CIM_InstCreation", instance.getClassName().getString());
}

bool IndicationSender::SendInstDeletionIndication(const CIMInstance& instance) {
    if (!CheckPrepareSend()) return false;
    CIMInstance indication(CIMName("CIM_InstDeletion"));
    add(indication, "IndicationTime", CIMValue(CIMDateTime::getCurrentDateTime()));
    add(indication, "SourceInstance", CIMValue(instance));
    add(indication, "SourceInstanceModelPath", CIMValue(instance.getPath().toString()));
    return deliver(indication, "CIM_InstDeletion", instance.getClassName().getString());
}

bool IndicationSender::SendInstModificationIndication(const CIMInstance& newInstance,
                                                      const CIMInstance& oldInstance) {
    if (!CheckPrepareSend()) return false;
    CIMInstance indication(CIMName("CIM_InstModification"));
    add(indication, "IndicationTime", CIMValue(CIMDateTime::getCurrentDateTime()));
    add(indication, "SourceInstance", CIMValue(newInstance));
    add(indication, "PreviousInstance", CIMValue(oldInstance));
    add(indication, "SourceInstanceModelPath", CIMValue(newInstance.getPath().toString()));
    return deliver(indication, "CIM_InstModification", newInstance.getClassName().getString());
}

bool IndicationSender::SendMethodCallIndication(const CIMInstance& instance, const String& methodName,
                                                const CIMObjectPath& target, bool preCall,
                                                const CIMInstance& parameters, const CIMValue& returnValue) {
    if (!CheckPrepareSend()) return false;
    CIMInstance indication(CIMName("CIM_InstMethodCall"));
    add(indication, "IndicationTime", CIMValue(CIMDateTime::getCurrentDateTime()));
    add(indication, "SourceInstance", CIMValue(instance));
    add(indication, "MethodName", CIMValue(methodName));
    if (!parameters.isUninitialized()) add(indication, "MethodParameters", CIMValue(parameters));
    add(indication, "PreCall", CIMValue(Boolean(preCall)));
    if (!returnValue.isNull()) add(indication, "ReturnValue", CIMValue(returnValue.toString()));
    return deliver(indication, "CIM_InstMethodCall", target.getClassName().getString());
}

Uint16 IndicationSender::SeverityOfHealth(int previousHealth) {
    switch (previousHealth) {
    case 5: return 2;
    case 0:
    case 10: return 3;
    case 20: return 5;
    default: return 0;
    }
}

CIMInstance IndicationSender::makeAlert(Uint16 severity, Uint16 alertType, Uint16 probableCause,
                                        const String& system, const CIMObjectPath& alerting,
                                        const String& description) {
    CIMInstance alert(CIMName("CIM_AlertIndication"));
    add(alert, "IndicationTime", CIMValue(CIMDateTime::getCurrentDateTime()));
    add(alert, "PerceivedSeverity", CIMValue(severity));
    add(alert, "AlertType", CIMValue(alertType));
    add(alert, "AlertingElementFormat", CIMValue(Uint16(2)));
    add(alert, "ProbableCause", CIMValue(probableCause));
    add(alert, "SystemCreationClassName", CIMValue(MC::ClassName("ComputerSystem").getString()));
    add(alert, "ProviderName",
        CIMValue(MC::ToString(Singleton<ConfigManager>::Instance()->GetProviderModuleName())));
    add(alert, "SystemName", CIMValue(system));
    add(alert, "AlertingManagedElement", CIMValue(alerting.toString()));
    add(alert, "Description", CIMValue(description));
    return alert;
}

bool IndicationSender::DeliverAlert(CIMInstance& alert, const CIMObjectPath& alerting) {
    return deliver(alert, "CIM_AlertIndication", alerting.getClassName().getString());
}

bool IndicationSender::SendDeviceAlertIndication(const CIMObjectPath& path, const String& name, int previous,
                                                 int current, const String& system) {
    if (!CheckPrepareSend()) return false;
    // The text names the current value first and the previous one last.
    String description("The HealthState of ");
    description.append(name);
    description.append(" in ");
    description.append(system);
    description.append(" has changed from ");
    description.append(numberText(current));
    description.append(" to ");
    description.append(numberText(previous));
    CIMInstance alert = makeAlert(SeverityOfHealth(previous), 5, 0, system, path, description);
    return DeliverAlert(alert, path);
}

bool IndicationSender::SendCLIAlertIndication(const String& method, const CIMObjectPath& path) {
    if (!CheckPrepareSend()) return false;
    String description("The call to method ");
    description.append(method);
    description.append(" has failed.");
    CIMInstance alert = makeAlert(5, 4, 0, System::getHostName(), path, description);
    return DeliverAlert(alert, path);
}

bool IndicationSender::SendSyncAlertIndication(const String& text, const CIMObjectPath& path) {
    if (!CheckPrepareSend()) return false;
    SMIS_TRACE(LEVEL3, "Send sync alert: %s", MC::ToStd(text).c_str());
    String description("The replication has been");
    description.append(" Broken.");
    CIMInstance alert = makeAlert(5, 4, 0, System::getHostName(), path, description);
    return DeliverAlert(alert, path);
}

bool IndicationSender::SendCapacityAlertIndication(const CIMObjectPath& path, bool over) {
    if (!CheckPrepareSend()) return false;
    CIMInstance alert =
        over ? makeAlert(5, 5, 33, System::getHostName(), path, String("Capacity is over."))
             : makeAlert(4, 5, 52, System::getHostName(), path, String("Threshold of the capacity is exceeded."));
    add(alert, "OwningEntity", CIMValue(String("SNIA")));
    add(alert, "MessageID", CIMValue(String(over ? "DRM29" : "DRM28")));
    return DeliverAlert(alert, path);
}

bool IndicationSender::SendCriticalAlertIndication(const String& text) {
    if (!CheckPrepareSend()) return false;
    CIMInstance alert(CIMName("CIM_AlertIndication"));
    add(alert, "IndicationTime", CIMValue(CIMDateTime::getCurrentDateTime()));
    add(alert, "AlertType", CIMValue(Uint16(6)));
    add(alert, "AlertingElementFormat", CIMValue(Uint16(0)));
    add(alert, "SystemCreationClassName", CIMValue(MC::ClassName("ComputerSystem").getString()));
    add(alert, "ProviderName",
        CIMValue(MC::ToString(Singleton<ConfigManager>::Instance()->GetProviderModuleName())));
    add(alert, "PerceivedSeverity", CIMValue(Uint16(6)));
    add(alert, "Description", CIMValue(text));
    add(alert, "SystemName", CIMValue(System::getFullyQualifiedHostName()));
    return deliver(alert, "CIM_AlertIndication", String("critical"));
}

}  // namespace orvsmis
