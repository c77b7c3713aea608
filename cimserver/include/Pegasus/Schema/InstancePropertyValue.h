#ifndef Pegasus_Schema_InstancePropertyValue_h
#define Pegasus_Schema_InstancePropertyValue_h

#include <string>

#include <Pegasus/Schema/MofValue.h>

namespace Pegasus {

// One property assignment inside "instance of Class { ... };".
struct InstancePropertyValue
{
    std::string name;
    MofValue value;
    unsigned line = 0;
};

} // namespace Pegasus

#endif
