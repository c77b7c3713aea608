#include "IndicationNeeder.h"

#include <Pegasus/Common/Exception.h>

#include "MC.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

// A property that one of the two instances lacks counts as unchanged.
bool uint16Differs(const CIMInstance& a, const CIMInstance& b, const char* name) {
    Uint16 x = 0, y = 0;
    if (!MC::GetUint16(a, name, x) || !MC::GetUint16(b, name, y)) return false;
    return x != y;
}

bool stringDiffers(const CIMInstance& a, const CIMInstance& b, const char* name) {
    String x, y;
    if (!MC::GetString(a, name, x) || !MC::GetString(b, name, y)) return false;
    return x != y;
}

}  // namespace

bool IndicationNeeder::ActivateInstCreationIndication(const CIMInstance& instance) {
    return m_sender.SendInstCreationIndication(instance);
}

bool IndicationNeeder::ActivateInstDeletionIndication(const CIMInstance& instance) {
    return m_sender.SendInstDeletionIndication(instance);
}

bool IndicationNeeder::ActivateInstModificationIndication(const CIMInstance& newInstance,
                                                          const CIMInstance& oldInstance) {
    Array<Uint16> newStatus, oldStatus;
    if (MC::GetUint16Array(newInstance, "OperationalStatus", newStatus) &&
        MC::GetUint16Array(oldInstance, "OperationalStatus", oldStatus)) {
        if (newStatus.size() != oldStatus.size()) {
            bool sent = m_sender.SendInstModificationIndication(newInstance, oldInstance);
            if (sent) SMIS_TRACE(LEVEL3, "Send indicaiton:(opeationStatus size change) successful.");
            return sent;
        }
        // Every element of the new array against every element of the old
        // one: two-element arrays of distinct values always count as a
        // change, whatever their order.
        for (Uint32 i = 0; i < newStatus.size(); ++i) {
            for (Uint32 j = 0; j < oldStatus.size(); ++j) {
                if (newStatus[i] != oldStatus[j]) {
                    bool sent = m_sender.SendInstModificationIndication(newInstance, oldInstance);
                    if (sent) SMIS_TRACE(LEVEL3, "Send indication:(opeationStatus change) successful.");
                    return sent;
                }
            }
        }
    }
    if (uint16Differs(newInstance, oldInstance, "HealthState")) {
        bool sent = m_sender.SendInstModificationIndication(newInstance, oldInstance);
        if (sent) SMIS_TRACE(LEVEL3, "Send indication:(healthState change) successful.");
        return sent;
    }
    if (stringDiffers(newInstance, oldInstance, "DeviceNumber")) {
        bool sent = m_sender.SendInstModificationIndication(newInstance, oldInstance);
        if (sent) SMIS_TRACE(LEVEL3, "Send indication:(deviceNumber change) successful.");
        return sent;
    }
    if (uint16Differs(newInstance, oldInstance, "SyncState")) {
        bool sent = m_sender.SendInstModificationIndication(newInstance, oldInstance);
        if (sent) SMIS_TRACE(LEVEL3, "Send indication:(SyncState change) successful.");
        return sent;
    }
    if (uint16Differs(newInstance, oldInstance, "RedundancyStatus")) {
        bool sent = m_sender.SendInstModificationIndication(newInstance, oldInstance);
        if (sent) SMIS_TRACE(LEVEL3, "Send indication:(RedundancyStatus change) successful.");
        return sent;
    }
    return false;
}

bool IndicationNeeder::ActivateInstMethodCallIndication(const CIMInstance& instance, const String& methodName,
                                                        const CIMObjectPath& target, bool preCall,
                                                        const CIMInstance& parameters,
                                                        const CIMValue& returnValue) {
    return m_sender.SendMethodCallIndication(instance, methodName, target, preCall, parameters, returnValue);
}

bool IndicationNeeder::ActivateInstDeviceAlertIndication(const CIMObjectPath& path, const CIMInstance& newInstance,
                                                         const CIMInstance& oldInstance) {
    Uint16 newHealth = 0, oldHealth = 0;
    if (!MC::GetUint16(newInstance, "HealthState", newHealth) ||
        !MC::GetUint16(oldInstance, "HealthState", oldHealth) || newHealth == oldHealth)
        return false;
    SMIS_TRACE(LEVEL3, "Sending indication:(HealthState change)");
    String name;
    if (!MC::GetString(newInstance, "ElementName", name)) {
        SMIS_TRACE(LEVEL3, "No ElementName.");
        if (!MC::GetString(newInstance, "DeviceID", name)) {
            SMIS_TRACE(LEVEL1, "No ElementName and DeviceID.");
            throw CIMException(CIM_ERR_INVALID_PARAMETER, "No ElementName and DeviceID");
        }
    }
    String system;
    if (!MC::GetString(newInstance, "SystemName", system)) {
        SMIS_TRACE(LEVEL1, "No SystemName.");
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "No SystemName");
    }
    return m_sender.SendDeviceAlertIndication(path, name, oldHealth, newHealth, system);
}

bool IndicationNeeder::ActivateInstCLIAlertIndication(const String& method, const CIMObjectPath& path) {
    return m_sender.SendCLIAlertIndication(method, path);
}

bool IndicationNeeder::ActivateInstCapacityAlertIndication(const CIMObjectPath& path, bool over) {
    return m_sender.SendCapacityAlertIndication(path, over);
}

}  // namespace orvsmis
