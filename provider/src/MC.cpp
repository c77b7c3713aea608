#include "MC.h"

#include <Pegasus/Common/CIMValue.h>

#include "ConfigManager.h"
#include "Singleton.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

// The property's value when the instance has it, not null and of the
// wanted type and shape.
bool valueOf(const CIMInstance& instance, const char* name, CIMType type, bool isArray, CIMValue& out) {
    if (instance.isUninitialized()) return false;
    Uint32 index = instance.findProperty(CIMName(name));
    if (index == PEG_NOT_FOUND) return false;
    CIMValue value = instance.getProperty(index).getValue();
    if (value.isNull() || value.getType() != type || value.isArray() != isArray) return false;
    out = value;
    return true;
}

}  // namespace

CIMName MC::ClassName(const char* shortName) { return CIMName(ToString(ClassNameText(shortName))); }

std::string MC::ClassNameText(const char* shortName) {
    return Singleton<ConfigManager>::Instance()->GetPrefix() + shortName;
}

CIMNamespaceName MC::Namespace() {
    return CIMNamespaceName(ToString(Singleton<ConfigManager>::Instance()->GetNamespace()));
}

bool MC::GetUint16(const CIMInstance& instance, const char* name, Uint16& out) {
    CIMValue value;
    if (!valueOf(instance, name, CIMTYPE_UINT16, false, value)) return false;
    value.get(out);
    return true;
}

bool MC::GetUint16Array(const CIMInstance& instance, const char* name, Array<Uint16>& out) {
    CIMValue value;
    if (!valueOf(instance, name, CIMTYPE_UINT16, true, value)) return false;
    value.get(out);
    return true;
}

bool MC::GetString(const CIMInstance& instance, const char* name, String& out) {
    CIMValue value;
    if (!valueOf(instance, name, CIMTYPE_STRING, false, value)) return false;
    value.get(out);
    return true;
}

String MC::ToString(const std::string& text) { return String::fromUtf8(text); }

std::string MC::ToStd(const String& text) { return text.toUtf8(); }

}  // namespace orvsmis
