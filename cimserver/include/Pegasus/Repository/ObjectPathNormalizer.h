#ifndef Pegasus_Repository_ObjectPathNormalizer_h
#define Pegasus_Repository_ObjectPathNormalizer_h

#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Pegasus {

class SchemaManager;

// Canonical text of an instance path, the form under which the repository
// stores instances and indexes references:
//   [namespace:]Class.key1=value,key2=value
// - no host;
// - the namespace (lower case) only when it is given and differs from the
//   namespace of the database that holds the text (contextNs);
// - class and key names as the schema spells them (keys of an unknown class in
//   lower case), keys sorted by name ignoring case;
// - string keys exact and quoted, booleans as true/false, numbers in decimal
//   (hex and leading zeros normalised), reference keys canonical recursively.
// Two paths naming the same instance give the same text whatever their host,
// case of names, order of keys or spelling of numbers.
class ObjectPathNormalizer {
public:
    explicit ObjectPathNormalizer(const SchemaManager& schema) : _schema(schema) {}

    std::string canonical(const CIMObjectPath& path, const std::string& contextNs) const;

    // The same text for an instance being stored, from its class and key
    // values (names as the schema spells them), without formatting reference
    // keys as text and parsing them again.
    struct KeyValue {
        const std::string* name;
        CIMType type;
        const CIMValue* value;
    };
    std::string canonical(const std::string& className, std::vector<KeyValue> keys,
        const std::string& contextNs) const;

    // The namespace a path refers to, lower case: its own when set, else contextNs.
    static std::string targetNamespace(const CIMObjectPath& path, const std::string& contextNs);
    // Lower case ASCII copy.
    static std::string lower(const std::string& text);
    // Decimal form of an integer or real literal; the text itself when it is neither.
    static std::string normaliseNumber(const std::string& text);
    // The 48-bit hash under which the repository files a canonical text. Two
    // texts may share one: a lookup compares the text of each row it finds.
    static int64_t hash(const std::string& canonicalText);

private:
    void append(std::string& out, const CIMObjectPath& path, const std::string& contextNs,
        int depth) const;
    const SchemaManager& _schema;
};

} // namespace Pegasus

#endif
