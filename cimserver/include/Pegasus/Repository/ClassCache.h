#ifndef Pegasus_Repository_ClassCache_h
#define Pegasus_Repository_ClassCache_h

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/String.h>

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace Pegasus {

class ClassDecl;
struct PropertyDecl;

// What the repository needs of a class on every write, worked out once per
// class: its properties with their names, class origins and reference classes
// as ready-made CIMNames, a lookup by name that ignores case without
// converting text, and the key properties in order. Thread-safe; entries live
// as long as the cache (the schema does not change while the server runs).
class ClassCache {
public:
    struct Property {
        const PropertyDecl* decl;
        CIMName name;
        CIMName origin;
        CIMName referenceClass;
    };
    struct Entry {
        const ClassDecl* decl = nullptr;
        CIMName name;
        std::vector<Property> properties;
        std::vector<size_t> keys;       // indexes into properties
        bool hasReferences = false;
        std::unordered_map<std::u16string, size_t> byLowerName;

        // Null when the class has no such property.
        const Property* find(const String& name) const;
    };

    const Entry& get(const ClassDecl& cls);

private:
    std::mutex _mutex;
    std::unordered_map<const ClassDecl*, std::unique_ptr<Entry>> _entries;
};

} // namespace Pegasus

#endif
