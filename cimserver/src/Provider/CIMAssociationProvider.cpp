#include <Pegasus/Provider/CIMAssociationProvider.h>

PEGASUS_NAMESPACE_BEGIN

CIMAssociationProvider::CIMAssociationProvider() {}
CIMAssociationProvider::~CIMAssociationProvider() {}

PEGASUS_NAMESPACE_END
