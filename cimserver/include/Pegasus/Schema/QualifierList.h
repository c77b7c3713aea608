#ifndef Pegasus_Schema_QualifierList_h
#define Pegasus_Schema_QualifierList_h

#include <cstddef>
#include <string>
#include <vector>

#include <Pegasus/Schema/QualifierDecl.h>

namespace Pegasus {

// The qualifiers of one element, in the order written; lookups ignore case.
class QualifierList
{
public:
    const std::vector<QualifierDecl>& all() const { return _items; }
    bool empty() const { return _items.empty(); }
    std::size_t size() const { return _items.size(); }

    const QualifierDecl* find(const std::string& name) const;
    bool has(const std::string& name) const { return find(name) != nullptr; }

    // True when the qualifier is present with a TRUE boolean value (or no
    // value). Key(false) gives false.
    bool isTrue(const std::string& name) const;

    // The value of a string qualifier (Description, EmbeddedInstance, Override,
    // ...), or "" when absent or not a string.
    std::string stringValue(const std::string& name) const;

    // The values of a string array qualifier (ValueMap, Values), or empty.
    std::vector<std::string> stringArray(const std::string& name) const;

    // Adds a qualifier, replacing one with the same name (used when a
    // subclass overrides an inherited qualifier).
    void set(const QualifierDecl& q);

    // Adds a qualifier; false (and nothing changed) when the name is present.
    bool add(const QualifierDecl& q);

private:
    std::vector<QualifierDecl> _items;
};

} // namespace Pegasus

#endif
