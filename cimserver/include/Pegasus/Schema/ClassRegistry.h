#ifndef Pegasus_Schema_ClassRegistry_h
#define Pegasus_Schema_ClassRegistry_h

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include <Pegasus/Schema/CaseInsensitive.h>
#include <Pegasus/Schema/ClassDecl.h>

namespace Pegasus {

// The classes of one namespace. Classes are added while the schema loads
// (superclass first); afterwards the registry is only read, and any number
// of threads may read it at once without locking. Pointers returned stay
// valid for the life of the registry. Names compare ignoring ASCII case.
class ClassRegistry
{
public:
    explicit ClassRegistry(const std::string& namespaceName = std::string());
    ~ClassRegistry();

    ClassRegistry(const ClassRegistry&) = delete;
    ClassRegistry& operator=(const ClassRegistry&) = delete;

    const std::string& namespaceName() const { return _namespace; }

    // Resolves `cls` against its superclass and adds it. Throws SchemaError
    // naming cls.file and cls.line when the superclass is not in this
    // registry, when a class of the same name exists, or when resolving
    // fails. Returns the stored class.
    const ClassDecl* addClass(ClassDecl cls);

    // Null when there is no such class.
    const ClassDecl* findClass(const std::string& name) const;
    bool hasClass(const std::string& name) const { return findClass(name) != nullptr; }

    // True when `cls` is `base` or derives from it; false when either class
    // is unknown.
    bool isSubclassOf(const std::string& cls, const std::string& base) const;

    // Direct subclasses (deep false) or all descendants (deep true) of `cls`,
    // not including `cls`; names as declared, in order of adding. Empty for
    // an unknown class.
    std::vector<std::string> subclassesOf(const std::string& cls, bool deep) const;

    // All class names, in order of adding (so every superclass comes before
    // its subclasses).
    std::vector<std::string> classNames() const;

    // Classes without a superclass, in order of adding.
    std::vector<std::string> topClasses() const;

    // Association classes having a reference property whose reference class
    // is `cls` or one of its superclasses; in order of adding. Empty for an
    // unknown class.
    std::vector<const ClassDecl*> associationClassesReferencing(const std::string& cls) const;

    std::size_t size() const { return _classes.size(); }

private:
    struct Entry;

    const Entry* _entry(const std::string& name) const;

    std::string _namespace;
    std::vector<std::unique_ptr<Entry>> _classes;
    std::unordered_map<std::string, Entry*, CaseInsensitive::Hash, CaseInsensitive::Equal> _byName;
};

} // namespace Pegasus

#endif
