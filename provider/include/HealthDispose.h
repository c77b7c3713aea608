#ifndef ORVSMIS_HEALTHDISPOSE_H
#define ORVSMIS_HEALTHDISPOSE_H

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>

#include "IndicationNeeder.h"

namespace orvsmis {

// Tells a change of health from a change of operational status and sends
// the indication that fits: an alert for the first, a modification for the
// second.
class HealthDispose : public IndicationNeeder {
public:
    // true when a CIM_InstModification went out.
    bool OperationalStatusChangeOperating(const Pegasus::CIMInstance& newInstance,
                                          const Pegasus::CIMInstance& oldInstance);
    // true when a device alert went out.
    bool HealthStateChangeOperating(const Pegasus::CIMObjectPath& path,
                                    const Pegasus::CIMInstance& oldInstance,
                                    const Pegasus::CIMInstance& newInstance);
};

}  // namespace orvsmis

#endif
