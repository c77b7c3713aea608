#ifndef Pegasus_CIMInstanceRep_h
#define Pegasus_CIMInstanceRep_h

// The shared state behind CIMInstance and CIMObject handles (private to the library).

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMProperty.h>

#include <vector>

PEGASUS_NAMESPACE_BEGIN

struct CIMInstanceRep {
    CIMName className;
    CIMObjectPath path;
    std::vector<CIMProperty> properties;

    Uint32 find(const CIMName& name) const {
        for (size_t i = 0; i < properties.size(); ++i) {
            if (properties[i].getName().equal(name)) return Uint32(i);
        }
        return PEG_NOT_FOUND;
    }
};

PEGASUS_NAMESPACE_END

#endif
