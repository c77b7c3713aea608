#ifndef Pegasus_CIMXml_CIMXmlWriter_h
#define Pegasus_CIMXml_CIMXmlWriter_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/String.h>

#include <string>

namespace Pegasus {

class ClassDecl;

// Writes CIM-XML messages and elements into a UTF-8 buffer. Every function
// appends to `out`; the format* functions return a whole document. Values,
// properties, instances and names are written by XmlWriter, so there is one
// escaping rule for everything the server sends: the output is well formed
// whatever the data holds.
class CIMXmlWriter
{
public:
    // How an instance is written: the property list (null = all properties),
    // and whether qualifiers and class origins go with it.
    struct InstanceOptions
    {
        CIMPropertyList propertyList;
        bool includeQualifiers = false;
        bool includeClassOrigin = false;
    };

    // How a class is written.
    struct ClassOptions
    {
        bool localOnly = true;
        bool includeQualifiers = true;
        bool includeClassOrigin = false;
        CIMPropertyList propertyList;
    };

    // ----- values and names ----------------------------------------------
    static void appendEscaped(std::string& out, const String& text);
    // VALUE / VALUE.ARRAY / VALUE.REFERENCE / VALUE.REFARRAY; nothing for null.
    static void appendValue(std::string& out, const CIMValue& value);
    static void appendClassName(std::string& out, const CIMName& className);
    static void appendInstanceName(std::string& out, const CIMObjectPath& path);
    static void appendLocalNamespacePath(std::string& out, const CIMNamespaceName& nameSpace);
    // NAMESPACEPATH: HOST and LOCALNAMESPACEPATH.
    static void appendNamespacePath(std::string& out, const String& host,
        const CIMNamespaceName& nameSpace);
    static void appendLocalInstancePath(std::string& out, const CIMObjectPath& path);
    static void appendInstancePath(std::string& out, const CIMObjectPath& path);
    static void appendLocalClassPath(std::string& out, const CIMObjectPath& path);
    static void appendClassPath(std::string& out, const CIMObjectPath& path);
    // VALUE.REFERENCE with the fullest form the path allows.
    static void appendValueReference(std::string& out, const CIMObjectPath& path);
    // OBJECTPATH holding INSTANCEPATH (path with keys) or CLASSPATH.
    static void appendObjectPath(std::string& out, const CIMObjectPath& path);

    // ----- instances and classes -----------------------------------------
    // INSTANCE, filtered by the options.
    static void appendInstance(std::string& out, const CIMConstInstance& instance,
        const InstanceOptions& options);
    // VALUE.NAMEDINSTANCE: INSTANCENAME (the instance's path) and INSTANCE.
    static void appendValueNamedInstance(std::string& out, const CIMConstInstance& instance,
        const InstanceOptions& options);
    // VALUE.OBJECTWITHPATH: INSTANCEPATH and INSTANCE (the object's path must
    // carry host and namespace).
    static void appendValueObjectWithPath(std::string& out, const CIMConstObject& object,
        const InstanceOptions& options);
    // CLASS from a resolved class declaration.
    static void appendClass(std::string& out, const ClassDecl& cls, const ClassOptions& options);
    // VALUE.OBJECTWITHPATH: CLASSPATH and CLASS.
    static void appendClassWithPath(std::string& out, const String& host,
        const CIMNamespaceName& nameSpace, const ClassDecl& cls, const ClassOptions& options);
    // PARAMVALUE NAME [PARAMTYPE] with the value (embedded objects typed string
    // with both EmbeddedObject spellings).
    static void appendParamValue(std::string& out, const CIMParamValue& param);
    // ERROR CODE DESCRIPTION ("CIM_ERR_X" or "CIM_ERR_X: message"), with the
    // exception's CIM_Error instances as children.
    static void appendError(std::string& out, const CIMException& error);

    // ----- whole messages ------------------------------------------------
    // <?xml ...?><CIM ...><MESSAGE ID PROTOCOLVERSION="1.0">
    static void appendMessageStart(std::string& out, const std::string& messageId);
    // </MESSAGE></CIM>
    static void appendMessageEnd(std::string& out);
    // IMETHODRESPONSE; `returnValue` is the content of IRETURNVALUE, and
    // IRETURNVALUE is left out when hasReturnValue is false.
    static std::string formatIMethodResponse(const std::string& messageId,
        const std::string& methodName, const std::string& returnValue, bool hasReturnValue);
    // The same IMETHODRESPONSE with an IRETURNVALUE, written in place for
    // answers too large to be copied: beginIMethodResponse writes everything
    // up to the content of IRETURNVALUE, the caller appends the content (to
    // `out` or to pieces of its own that follow it), endIMethodResponse
    // closes the message.
    static void beginIMethodResponse(std::string& out, const std::string& messageId,
        const std::string& methodName);
    static void endIMethodResponse(std::string& out);
    static std::string formatIMethodError(const std::string& messageId,
        const std::string& methodName, const CIMException& error);
    // METHODRESPONSE: RETURNVALUE when the return value is not null, then the
    // out parameters in order.
    static std::string formatMethodResponse(const std::string& messageId,
        const std::string& methodName, const CIMValue& returnValue,
        const Array<CIMParamValue>& outParameters);
    static std::string formatMethodError(const std::string& messageId,
        const std::string& methodName, const CIMException& error);
    // The ExportIndication request a listener receives, and its replies.
    static std::string formatExportIndication(const CIMInstance& indication,
        const std::string& messageId);
    static std::string formatExportIndicationResponse(const std::string& messageId);
    static std::string formatExportIndicationError(const std::string& messageId,
        const CIMException& error);
};

} // namespace Pegasus

#endif
