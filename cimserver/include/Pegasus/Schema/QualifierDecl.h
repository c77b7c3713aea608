#ifndef Pegasus_Schema_QualifierDecl_h
#define Pegasus_Schema_QualifierDecl_h

#include <string>
#include <vector>

#include <Pegasus/Schema/MofValue.h>

namespace Pegasus {

// One qualifier as applied to a class, property, method or parameter, e.g.
// Key, Description("..."), ValueMap{"1","2"}. A qualifier written without a
// value (Key, Abstract) has the boolean value TRUE. Flavors written after a
// colon (ToSubclass, Translatable, ...) are kept as written.
struct QualifierDecl
{
    std::string name;
    MofValue value;
    std::vector<std::string> flavors;
    unsigned line = 0;

    QualifierDecl() = default;
    QualifierDecl(const std::string& n, const MofValue& v) : name(n), value(v) {}
};

} // namespace Pegasus

#endif
