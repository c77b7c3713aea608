#ifndef Pegasus_CIMPropertyRep_h
#define Pegasus_CIMPropertyRep_h

// The shared state behind CIMProperty handles (private to the library).

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMValue.h>

PEGASUS_NAMESPACE_BEGIN

struct CIMPropertyRep {
    CIMName name;
    CIMValue value;
    Uint32 arraySize = 0;
    CIMName referenceClassName;
    CIMName classOrigin;
    Boolean propagated = false;
    Boolean contained = false;  // held by an instance: the name is fixed
};

PEGASUS_NAMESPACE_END

#endif
