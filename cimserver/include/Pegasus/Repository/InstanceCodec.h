#ifndef Pegasus_Repository_InstanceCodec_h
#define Pegasus_Repository_InstanceCodec_h

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMValue.h>

#include <string>
#include <vector>

namespace Pegasus {

class NameDictionary;

// Compact binary form of an instance as stored in the repository.
//
// Format 2 (written): names are numbers of the database's NameDictionary:
// the class, then the path, then each property as the number of its shape
// (name, class origin, reference class, propagated, array size) and its
// value. A path made of the instance's own key properties (what the
// repository stores: no host, no namespace, bindings built from the key
// values) is kept as the positions of those properties, not as text again.
// Text is UTF-8; integers are varints (signed ones zigzag); a string equal to
// a name the dictionary knows (a class name as CreationClassName) is that
// number. Values carry their type, array-ness and null flag; embedded
// instances/objects and reference values are encoded recursively.
//
// Format 1 (the first layout's: UTF-16 text, every name spelled out) is
// still read, so that an older database can be converted.
//
// decode() checks every length and number against the buffer and the
// dictionary and throws CIMException(CIM_ERR_FAILED) naming the fault on
// damaged data instead of reading past it.
class InstanceCodec {
public:
    struct KeyValue {
        CIMName name;
        CIMValue value;
    };

    static void encode(const CIMConstInstance& instance, NameDictionary& names, std::string& out);
    static std::string encode(const CIMConstInstance& instance, NameDictionary& names);
    // withClassOrigin false leaves the class origins of the top-level
    // properties out (most reads do not ask for them).
    static CIMInstance decode(const char* data, size_t size, const NameDictionary& names,
        bool withClassOrigin = true);
    static CIMInstance decode(const std::string& data, const NameDictionary& names,
        bool withClassOrigin = true)
    {
        return decode(data.data(), data.size(), names, withClassOrigin);
    }
    // keys: as decodeKeyValues gives them; empty when the path is not made
    // of the key properties.
    static CIMInstance decode(const char* data, size_t size, const NameDictionary& names,
        bool withClassOrigin, std::vector<KeyValue>* keys);

    // The path of an encoded instance, without decoding the other properties.
    static CIMObjectPath decodeInstancePath(const std::string& data, const NameDictionary& names);
    // The class and the key values, in the path's order, of an instance
    // whose path is made of its key properties (as the repository stores
    // them); false for any other path.
    static bool decodeKeyValues(const std::string& data, const NameDictionary& names,
        CIMName& className, std::vector<KeyValue>& keys);

    // An object path alone.
    static std::string encodePath(const CIMObjectPath& path, NameDictionary& names);
    static CIMObjectPath decodePath(const std::string& data, const NameDictionary& names);

    // The format of encoded data (its first byte), 0 when empty.
    static int format(const std::string& data)
    {
        return data.empty() ? 0 : static_cast<unsigned char>(data[0]);
    }
    static constexpr int CURRENT_FORMAT = 2;
    static constexpr int FIRST_FORMAT = 1;
};

} // namespace Pegasus

#endif
