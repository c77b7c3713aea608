#include "HealthDispose.h"

#include <Pegasus/Common/Array.h>

#include "MC.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

bool HealthDispose::OperationalStatusChangeOperating(const CIMInstance& newInstance,
                                                     const CIMInstance& oldInstance) {
    Array<Uint16> newStatus, oldStatus;
    MC::GetUint16Array(newInstance, "OperationalStatus", newStatus);
    MC::GetUint16Array(oldInstance, "OperationalStatus", oldStatus);
    if (newStatus.size() != oldStatus.size()) {
        SMIS_TRACE(LEVEL3, "OperationalStatus size changed: %u -> %u", oldStatus.size(), newStatus.size());
        return ActivateInstModificationIndication(newInstance, oldInstance);
    }
    for (Uint32 i = 0; i < newStatus.size(); ++i) {
        if (newStatus[i] != oldStatus[i]) {
            SMIS_TRACE(LEVEL3, "OperationalStatus[%u] changed: %u -> %u", i, unsigned(oldStatus[i]),
                       unsigned(newStatus[i]));
            return ActivateInstModificationIndication(newInstance, oldInstance);
        }
    }
    return false;
}

bool HealthDispose::HealthStateChangeOperating(const CIMObjectPath& path, const CIMInstance& oldInstance,
                                               const CIMInstance& newInstance) {
    Uint16 oldHealth = 0, newHealth = 0;
    if (!MC::GetUint16(oldInstance, "HealthState", oldHealth) ||
        !MC::GetUint16(newInstance, "HealthState", newHealth) || oldHealth == newHealth)
        return false;
    SMIS_TRACE(LEVEL3, "HealthState changed: old %u new %u", unsigned(oldHealth), unsigned(newHealth));
    return ActivateInstDeviceAlertIndication(path, newInstance, oldInstance);
}

}  // namespace orvsmis
