#ifndef Pegasus_Schema_MofInstanceBuilder_h
#define Pegasus_Schema_MofInstanceBuilder_h

#include <map>
#include <string>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Schema/CaseInsensitive.h>
#include <Pegasus/Schema/ClassRegistry.h>
#include <Pegasus/Schema/InstanceDecl.h>
#include <Pegasus/Schema/MofValue.h>
#include <Pegasus/Schema/PropertyDecl.h>

namespace Pegasus {

// Turns instance declarations of MOF into CIMInstances typed by their class:
// each literal is converted to its property's type (integers range-checked,
// reals, booleans, char16, datetimes parsed, references from object path
// text or from an alias of an instance built earlier by the same builder),
// and the instance's path is built from the key properties (class name as
// the schema spells it, no host, no namespace). Properties not assigned are
// left out. Any fault (unknown class or property, abstract class, a literal
// that does not fit, a key without a value, an unknown alias) throws
// SchemaError naming the declaration's file and line.
class MofInstanceBuilder
{
public:
    explicit MofInstanceBuilder(const ClassRegistry& registry);

    // Builds the instance; when the declaration has an alias, remembers its
    // path for later "$alias" references.
    CIMInstance build(const InstanceDecl& decl);

    // Converts one literal to the type of `prop`. `file` and `line` name the
    // literal in a SchemaError.
    static CIMValue toValue(const MofValue& value, const PropertyDecl& prop,
                            const std::string& file, unsigned line);

private:
    CIMValue _referenceValue(const MofValue& value, const PropertyDecl& prop,
                             const std::string& file, unsigned line) const;

    const ClassRegistry& _registry;
    std::map<std::string, CIMObjectPath, CaseInsensitive::Less> _aliases;
};

} // namespace Pegasus

#endif
