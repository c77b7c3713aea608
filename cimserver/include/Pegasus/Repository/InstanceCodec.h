#ifndef Pegasus_Repository_InstanceCodec_h
#define Pegasus_Repository_InstanceCodec_h

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>

#include <string>

namespace Pegasus {

// Compact binary form of an instance as stored in the repository: class name,
// path (host, namespace, class, keys), then each property with its name, class
// origin, propagated flag, reference class and value. Values carry their type,
// array-ness and null flag; strings are stored as their UTF-16 code units so
// that no conversion is needed either way; embedded instances/objects and
// reference values are encoded recursively. decode() checks every length
// against the buffer and throws CIMException(CIM_ERR_FAILED) naming the fault
// on damaged data instead of reading past it.
class InstanceCodec {
public:
    static void encode(const CIMConstInstance& instance, std::string& out);
    static std::string encode(const CIMConstInstance& instance);
    // withClassOrigin false leaves the class origins of the top-level
    // properties out (most reads do not ask for them).
    static CIMInstance decode(const char* data, size_t size, bool withClassOrigin = true);
    static CIMInstance decode(const std::string& data, bool withClassOrigin = true)
    {
        return decode(data.data(), data.size(), withClassOrigin);
    }

    // The path of an encoded instance, without decoding its properties.
    static CIMObjectPath decodeInstancePath(const std::string& data);

    // An object path alone.
    static std::string encodePath(const CIMObjectPath& path);
    static CIMObjectPath decodePath(const char* data, size_t size);
    static CIMObjectPath decodePath(const std::string& data) { return decodePath(data.data(), data.size()); }
};

} // namespace Pegasus

#endif
