#ifndef ORVSMIS_PROPERTY_H
#define ORVSMIS_PROPERTY_H

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMValue.h>

namespace orvsmis {

// One property of an instance in the making: WrapInstance lays its
// properties out as a table of these before adding them in order.
struct Property {
    Property(const Pegasus::CIMName& propertyName, const Pegasus::CIMValue& propertyValue)
        : name(propertyName), value(propertyValue) {}

    Pegasus::CIMName name;
    Pegasus::CIMValue value;
};

}  // namespace orvsmis

#endif
