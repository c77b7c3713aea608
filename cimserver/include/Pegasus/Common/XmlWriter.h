#ifndef Pegasus_XmlWriter_h
#define Pegasus_XmlWriter_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/String.h>

#include <string>

PEGASUS_NAMESPACE_BEGIN

// Writes CIM objects as CIM-XML elements (VALUE, PROPERTY, INSTANCE,
// INSTANCENAME, VALUE.REFERENCE, ...) into a UTF-8 buffer. Text is always
// escaped; characters that XML 1.0 cannot carry (control characters other
// than tab, line feed and carriage return) are written as U+FFFD.
class PEGASUS_COMMON_LINKAGE XmlWriter {
public:
    static void appendEscaped(std::string& out, const String& text);
    static void appendEscaped(std::string& out, const std::string& utf8);

    // VALUE, VALUE.ARRAY, VALUE.REFERENCE or VALUE.REFARRAY; nothing for a null value.
    static void appendValueElement(std::string& out, const CIMValue& value);
    // The TYPE attribute text of a value's type ("string" for embedded objects).
    static const char* typeName(CIMType type);
    // PROPERTY, PROPERTY.ARRAY or PROPERTY.REFERENCE.
    static void appendPropertyElement(std::string& out, const CIMConstProperty& property);
    static void appendInstanceElement(std::string& out, const CIMConstInstance& instance);
    static void appendObjectElement(std::string& out, const CIMConstObject& object);
    static void appendClassNameElement(std::string& out, const CIMName& className);
    static void appendInstanceNameElement(std::string& out, const CIMObjectPath& path);
    static void appendLocalNamespacePathElement(std::string& out, const CIMNamespaceName& ns);
    // INSTANCEPATH, LOCALINSTANCEPATH or INSTANCENAME (CLASSPATH, LOCALCLASSPATH
    // or CLASSNAME when the path has no keys), by how much of the path is set.
    static void appendValueReferenceElement(std::string& out, const CIMObjectPath& path);
    // VALUE.NAMEDINSTANCE: the instance's name and the instance.
    static void appendValueNamedInstanceElement(std::string& out, const CIMConstInstance& instance);
};

PEGASUS_NAMESPACE_END

#endif
