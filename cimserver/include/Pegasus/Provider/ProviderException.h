#ifndef Pegasus_ProviderException_h
#define Pegasus_ProviderException_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

#define PEGASUS_PROVIDER_EXCEPTION(NAME, CODE)                                      \
    class PEGASUS_PROVIDER_LINKAGE NAME : public CIMException {                     \
    public:                                                                          \
        NAME(const String& message = String::EMPTY) : CIMException(CODE, message) {} \
    };

PEGASUS_PROVIDER_EXCEPTION(CIMOperationFailedException, CIM_ERR_FAILED)
PEGASUS_PROVIDER_EXCEPTION(CIMAccessDeniedException, CIM_ERR_ACCESS_DENIED)
PEGASUS_PROVIDER_EXCEPTION(CIMInvalidParameterException, CIM_ERR_INVALID_PARAMETER)
PEGASUS_PROVIDER_EXCEPTION(CIMInvalidClassException, CIM_ERR_INVALID_CLASS)
PEGASUS_PROVIDER_EXCEPTION(CIMObjectNotFoundException, CIM_ERR_NOT_FOUND)
PEGASUS_PROVIDER_EXCEPTION(CIMNotSupportedException, CIM_ERR_NOT_SUPPORTED)
PEGASUS_PROVIDER_EXCEPTION(CIMObjectAlreadyExistsException, CIM_ERR_ALREADY_EXISTS)
PEGASUS_PROVIDER_EXCEPTION(CIMPropertyNotFoundException, CIM_ERR_NO_SUCH_PROPERTY)
PEGASUS_PROVIDER_EXCEPTION(CIMInvalidQueryException, CIM_ERR_INVALID_QUERY)
PEGASUS_PROVIDER_EXCEPTION(CIMMethodNotFoundException, CIM_ERR_METHOD_NOT_FOUND)

#undef PEGASUS_PROVIDER_EXCEPTION

PEGASUS_NAMESPACE_END

#endif
