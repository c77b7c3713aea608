#ifndef Pegasus_CIMIndication_h
#define Pegasus_CIMIndication_h

#include <Pegasus/Common/CIMInstance.h>

PEGASUS_NAMESPACE_BEGIN

typedef CIMInstance CIMIndication;

PEGASUS_NAMESPACE_END

#endif
