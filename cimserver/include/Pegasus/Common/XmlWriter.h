#ifndef Pegasus_XmlWriter_h
#define Pegasus_XmlWriter_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/String.h>

#include <string>

PEGASUS_NAMESPACE_BEGIN

// Writes CIM objects as CIM-XML elements (VALUE, PROPERTY, INSTANCE,
// INSTANCENAME, VALUE.REFERENCE, ...) into a UTF-8 buffer. Text is always
// escaped: & < > " ' as entities; tab, line feed and carriage return as
// character references (so that attribute normalisation and line-end
// handling cannot change them); a leading, trailing or second consecutive
// space as &#32;. Characters that XML 1.0 cannot carry at all (other control
// characters, U+FFFE, U+FFFF, bytes that are not UTF-8) are written as U+FFFD,
// so the output is well formed whatever the data holds.
class PEGASUS_COMMON_LINKAGE XmlWriter {
public:
    static void appendEscaped(std::string& out, const String& text);
    static void appendEscaped(std::string& out, const std::string& utf8);

    // VALUE, VALUE.ARRAY, VALUE.REFERENCE or VALUE.REFARRAY; nothing for a null value.
    static void appendValueElement(std::string& out, const CIMValue& value);
    // The TYPE attribute text of a value's type ("string" for embedded objects).
    static const char* typeName(CIMType type);
    // PROPERTY, PROPERTY.ARRAY or PROPERTY.REFERENCE. Embedded instances and
    // objects are typed "string" with both EmbeddedObject and EMBEDDEDOBJECT.
    static void appendPropertyElement(std::string& out, const CIMConstProperty& property);
    static void appendPropertyElement(std::string& out, const CIMConstProperty& property,
                                      Boolean includeClassOrigin);
    static void appendInstanceElement(std::string& out, const CIMConstInstance& instance);
    // INSTANCE with only the properties the list names (all for a null list).
    static void appendInstanceElement(std::string& out, const CIMConstInstance& instance,
                                      const CIMPropertyList& propertyList,
                                      Boolean includeClassOrigin);
    static void appendObjectElement(std::string& out, const CIMConstObject& object);
    static void appendClassNameElement(std::string& out, const CIMName& className);
    static void appendInstanceNameElement(std::string& out, const CIMObjectPath& path);
    static void appendLocalNamespacePathElement(std::string& out, const CIMNamespaceName& ns);
    // NAMESPACEPATH: HOST and LOCALNAMESPACEPATH.
    static void appendNamespacePathElement(std::string& out, const String& host,
                                           const CIMNamespaceName& ns);
    // INSTANCEPATH, LOCALINSTANCEPATH or INSTANCENAME (CLASSPATH, LOCALCLASSPATH
    // or CLASSNAME when the path has no keys), by how much of the path is set.
    static void appendValueReferenceElement(std::string& out, const CIMObjectPath& path);
    // The same path element without the VALUE.REFERENCE around it.
    static void appendPathElement(std::string& out, const CIMObjectPath& path);
    // VALUE.NAMEDINSTANCE: the instance's name and the instance.
    static void appendValueNamedInstanceElement(std::string& out, const CIMConstInstance& instance);
};

PEGASUS_NAMESPACE_END

#endif
