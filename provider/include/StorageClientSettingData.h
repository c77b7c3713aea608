#ifndef ORVSMIS_STORAGECLIENTSETTINGDATA_H
#define ORVSMIS_STORAGECLIENTSETTINGDATA_H

#include <map>
#include <string>

#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/String.h>

#include "EventArgs.h"

namespace orvsmis {

// One host platform of the array's LD sets.
struct _sPlatformInfo {
    Pegasus::String code;         // two characters, the head of an LD set's name
    Pegasus::Uint16 clientType;   // the value for ClientTypes
    Pegasus::String description;  // for OtherClientTypeDescriptions
};

// The host platforms the array knows, one instance each, bound to the
// array's system.
class StorageClientSettingData {
public:
    static const _sPlatformInfo m_platforms[11];
    static const unsigned m_platformCount = 11;

    // Subscriber of the array's creation.
    static void OnCreate(ParentArgs& args);
    static void OnDelete(ParentArgs& args);

    // One instance per platform, in table order; returns the last path.
    static Pegasus::CIMObjectPath Create(ParentArgs& args);
    static void Delete(ParentArgs& args);
    // CIMException 4 unless the record is the array's.
    static Pegasus::CIMInstance WrapInstance(ParentArgs& args, const _sPlatformInfo& platform);
    // The path of a platform's instance; CIMException 4 "GetObjectPath fail."
    // for a code without one.
    static Pegasus::CIMObjectPath GetObjectPath(const Pegasus::String& code);

private:
    static std::map<std::string, Pegasus::CIMObjectPath> m_vOpMap;
};

}  // namespace orvsmis

#endif
