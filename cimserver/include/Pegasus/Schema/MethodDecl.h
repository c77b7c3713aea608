#ifndef Pegasus_Schema_MethodDecl_h
#define Pegasus_Schema_MethodDecl_h

#include <string>
#include <vector>

#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Schema/ParameterDecl.h>
#include <Pegasus/Schema/QualifierList.h>

namespace Pegasus {

// One extrinsic method of a class, e.g. "uint32 RequestStateChange(...)".
struct MethodDecl
{
    std::string name;
    CIMType returnType = CIMTYPE_UINT32;
    QualifierList qualifiers;
    std::vector<ParameterDecl> parameters; // in declaration order
    std::string classOrigin;
    bool propagated = false;               // inherited unchanged

    std::string file;
    unsigned line = 0;

    bool isStatic() const { return qualifiers.isTrue("Static"); }

    // Case-insensitive lookup; null when the method has no such parameter.
    const ParameterDecl* findParameter(const std::string& name) const;
};

} // namespace Pegasus

#endif
