#include <Pegasus/Schema/InstanceDecl.h>

#include <Pegasus/Schema/CaseInsensitive.h>

namespace Pegasus {

const InstancePropertyValue* InstanceDecl::findProperty(const std::string& propName) const
{
    for (const InstancePropertyValue& p : properties)
    {
        if (CaseInsensitive::equal(p.name, propName))
            return &p;
    }
    return nullptr;
}

} // namespace Pegasus
