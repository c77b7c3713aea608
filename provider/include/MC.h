#ifndef ORVSMIS_MC_H
#define ORVSMIS_MC_H

#include <string>

#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/String.h>

namespace orvsmis {

// Helpers the model classes share: the repository's class names and
// namespace from the configuration, and typed reads of instance properties.
class MC {
public:
    // The configured class prefix plus shortName ("ComputerSystem" gives
    // "ORV_Storage_ComputerSystem" with the default prefix).
    static Pegasus::CIMName ClassName(const char* shortName);
    static std::string ClassNameText(const char* shortName);
    // The provider's namespace.
    static Pegasus::CIMNamespaceName Namespace();

    // Reads of a property of the given type. False when the instance has
    // no such property, or it is null, or it is of another type; out is
    // then left alone.
    static bool GetUint16(const Pegasus::CIMInstance& instance, const char* name, Pegasus::Uint16& out);
    static bool GetUint16Array(const Pegasus::CIMInstance& instance, const char* name,
                               Pegasus::Array<Pegasus::Uint16>& out);
    static bool GetString(const Pegasus::CIMInstance& instance, const char* name, Pegasus::String& out);

    // std::string and Pegasus::String, both ways.
    static Pegasus::String ToString(const std::string& text);
    static std::string ToStd(const Pegasus::String& text);
};

}  // namespace orvsmis

#endif
