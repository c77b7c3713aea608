#ifndef Pegasus_Server_ParameterRetyper_h
#define Pegasus_Server_ParameterRetyper_h

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Schema/MethodDecl.h>

namespace Pegasus {

// Gives a method's in parameters the types the method declares. Clients may
// send parameters without a type; their values arrive as text and are
// converted here. Errors are CIMExceptions: an unknown parameter or a bad
// literal CIM_ERR_INVALID_PARAMETER, an array where a scalar is declared (or
// the other way round) or a typed value of another type CIM_ERR_TYPE_MISMATCH.
class ParameterRetyper {
public:
    static Array<CIMParamValue> retype(const MethodDecl& method, const Array<CIMParamValue>& in);

    // One literal as a value of `type` (not reference, object or instance);
    // throws CIM_ERR_INVALID_PARAMETER naming `what` when it does not parse.
    static CIMValue parseScalar(const String& text, CIMType type, const std::string& what);
};

} // namespace Pegasus

#endif
