#ifndef Pegasus_Schema_ClassDecl_h
#define Pegasus_Schema_ClassDecl_h

#include <string>
#include <unordered_map>
#include <vector>

#include <Pegasus/Schema/CaseInsensitive.h>
#include <Pegasus/Schema/MethodDecl.h>
#include <Pegasus/Schema/PropertyDecl.h>
#include <Pegasus/Schema/QualifierList.h>

namespace Pegasus {

// One class. The parser fills the public members with what the class itself
// declares; ClassRegistry::addClass then resolves it against its superclass,
// which fills the effective (flattened) property and method lists: inherited
// members first in the superclass's order, each replaced in place when this
// class declares it again (same name, or named by an Override qualifier),
// then the new members of this class in declaration order. Class-level
// qualifiers Association, Indication and Abstract are taken from the
// declaration; Association and Indication are also inherited.
class ClassDecl
{
public:
    std::string name;
    std::string superClassName;   // empty for a root class
    QualifierList qualifiers;
    std::vector<PropertyDecl> localProperties;
    std::vector<MethodDecl> localMethods;
    std::string namespaceName;    // from #pragma namespace; may be empty

    std::string file;
    unsigned line = 0;

    // Set by resolve(); before it the class counts as unresolved.
    bool isAssociation() const { return _association; }
    bool isIndication() const { return _indication; }
    bool isAbstract() const { return _abstract; }
    bool isResolved() const { return _resolved; }

    // The superclass this class was resolved against (null for a root class).
    const ClassDecl* superClass() const { return _super; }

    // Number of classes above this one (0 for a root class).
    unsigned depth() const { return _depth; }

    // True when this class is `other` or derives from it (walks the
    // superclass chain; no name comparisons).
    bool isSubclassOf(const ClassDecl* other) const;

    const std::vector<PropertyDecl>& properties() const { return _properties; }
    const std::vector<MethodDecl>& methods() const { return _methods; }

    // Case-insensitive lookups in the effective lists; null when absent.
    const PropertyDecl* findProperty(const std::string& name) const;
    const MethodDecl* findMethod(const std::string& name) const;
    const PropertyDecl* findLocalProperty(const std::string& name) const;

    // Names of the key properties in effective order (names as declared).
    std::vector<std::string> keyNames() const;
    std::vector<const PropertyDecl*> keyProperties() const;
    std::vector<const PropertyDecl*> referenceProperties() const;

    // Fills the effective lists and flags from `superClass` (which must be
    // resolved, and null exactly when superClassName is empty). Throws
    // SchemaError naming this class's file and line for a duplicate member,
    // an Override naming nothing inherited, or a change of type, array-ness
    // or reference class on an inherited property; also for a reference
    // property outside an association class.
    void resolve(const ClassDecl* superClass);

private:
    typedef std::unordered_map<std::string, std::size_t,
        CaseInsensitive::Hash, CaseInsensitive::Equal> Index;

    bool _resolved = false;
    bool _association = false;
    bool _indication = false;
    bool _abstract = false;
    const ClassDecl* _super = nullptr;
    unsigned _depth = 0;
    std::vector<PropertyDecl> _properties;
    std::vector<MethodDecl> _methods;
    Index _propertyIndex;
    Index _methodIndex;
};

} // namespace Pegasus

#endif
