#ifndef Pegasus_Schema_CaseInsensitive_h
#define Pegasus_Schema_CaseInsensitive_h

#include <cstddef>
#include <string>

namespace Pegasus {

// CIM names (classes, properties, methods, qualifiers, namespaces) compare
// ignoring ASCII case. These helpers are used everywhere a name is looked up;
// Less and Hash make them usable as keys of std::map / std::unordered_map.
class CaseInsensitive
{
public:
    static bool equal(const std::string& a, const std::string& b);
    static int compare(const std::string& a, const std::string& b);
    static std::string lower(const std::string& s);

    struct Less
    {
        bool operator()(const std::string& a, const std::string& b) const
        {
            return compare(a, b) < 0;
        }
    };

    struct Equal
    {
        bool operator()(const std::string& a, const std::string& b) const
        {
            return equal(a, b);
        }
    };

    struct Hash
    {
        std::size_t operator()(const std::string& s) const;
    };
};

} // namespace Pegasus

#endif
