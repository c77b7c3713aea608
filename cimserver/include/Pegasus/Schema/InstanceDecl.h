#ifndef Pegasus_Schema_InstanceDecl_h
#define Pegasus_Schema_InstanceDecl_h

#include <string>
#include <vector>

#include <Pegasus/Schema/InstancePropertyValue.h>
#include <Pegasus/Schema/QualifierList.h>

namespace Pegasus {

// "instance of Class [as $Alias] { Prop = value; ... };" as written. The
// values are typed later against the class (MofInstanceBuilder).
struct InstanceDecl
{
    std::string className;
    std::string alias;                 // without '$'; empty when none
    QualifierList qualifiers;
    std::vector<InstancePropertyValue> properties; // in order written
    std::string namespaceName;         // from #pragma namespace; may be empty

    std::string file;
    unsigned line = 0;

    // Case-insensitive; null when the property was not assigned.
    const InstancePropertyValue* findProperty(const std::string& name) const;
};

} // namespace Pegasus

#endif
