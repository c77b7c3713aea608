#include <Pegasus/Schema/MethodDecl.h>

#include <Pegasus/Schema/CaseInsensitive.h>

namespace Pegasus {

const ParameterDecl* MethodDecl::findParameter(const std::string& paramName) const
{
    for (const ParameterDecl& p : parameters)
    {
        if (CaseInsensitive::equal(p.name, paramName))
            return &p;
    }
    return nullptr;
}

} // namespace Pegasus
