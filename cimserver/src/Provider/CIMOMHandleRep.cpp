#include <Pegasus/Provider/CIMOMHandle.h>

PEGASUS_NAMESPACE_BEGIN

CIMOMHandleRep::~CIMOMHandleRep() {}

PEGASUS_NAMESPACE_END
