#ifndef Pegasus_CIMXml_CIMXmlReader_h
#define Pegasus_CIMXml_CIMXmlReader_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <libxml/tree.h>

#include <cstddef>
#include <string>

namespace Pegasus {

// Reads CIM-XML with libxml2. A reader owns one parsed document; the static
// functions read CIM objects from elements of any document. The parser never
// touches the network, loads no DTD and substitutes no entities, and the
// document is refused when it breaks the limits below, so hostile input
// cannot exhaust the server.
//
// Every fault throws CIMException(CIM_ERR_INVALID_PARAMETER) whose message
// names the element and what was expected. A document that is not well
// formed XML is refused by the constructor; the handler tells the two apart
// by where the exception comes from.
class CIMXmlReader
{
public:
    struct Limits
    {
        std::size_t maxDocumentBytes = 256u * 1024u * 1024u;
        unsigned maxDepth = 64;               // element nesting
        std::size_t maxTextBytes = 8u * 1024u * 1024u;   // one attribute or text node
        unsigned maxEmbeddedDepth = 8;        // instances embedded in instances
    };

    // Parses `document`. Throws when it is not well formed, is too large or
    // too deep, or declares a DOCTYPE.
    explicit CIMXmlReader(const std::string& document);
    CIMXmlReader(const std::string& document, const Limits& limits);
    ~CIMXmlReader();
    CIMXmlReader(const CIMXmlReader&) = delete;
    CIMXmlReader& operator=(const CIMXmlReader&) = delete;

    // The CIM element.
    const xmlNode* root() const;

    // The CIM / MESSAGE envelope: CIM with CIMVERSION and DTDVERSION, MESSAGE
    // with ID and PROTOCOLVERSION, one of SIMPLEREQ / SIMPLERSP / SIMPLEEXPREQ
    // / SIMPLEEXPRSP, and the one call or response element inside it. The
    // version values are returned, not judged (see hasMajorVersion).
    struct Message
    {
        std::string cimVersion;
        std::string dtdVersion;
        std::string id;
        std::string protocolVersion;
        std::string kind;          // "SIMPLEREQ", "SIMPLERSP", "SIMPLEEXPREQ" or "SIMPLEEXPRSP"
        const xmlNode* body = nullptr;   // IMETHODCALL, METHODCALL, EXPMETHODCALL, ...
    };
    // Throws CIMException(CIM_ERR_NOT_SUPPORTED) for MULTIREQ / MULTIEXPREQ.
    Message readMessage() const;
    // True for "2", "2.0", "2.3", ... when major is 2.
    static bool hasMajorVersion(const std::string& version, int major);
    // The CIMException an ERROR element describes.
    static CIMException readError(const xmlNode* error);

    // ----- ExportIndication --------------------------------------------
    struct ExportIndication
    {
        std::string messageId;
        std::string methodName;    // "ExportIndication"
        CIMInstance indication;
    };
    // Reads an ExportIndication request document as a listener receives it.
    static ExportIndication readExportIndication(const std::string& document);
    // Reads a listener's reply; returns normally for success and throws the
    // CIMException the reply's ERROR carries.
    static void readExportIndicationResponse(const std::string& document);

    // ----- elements --------------------------------------------------------
    // Helpers on element nodes.
    static const char* name(const xmlNode* node);
    static bool isElement(const xmlNode* node, const char* name);
    // Element children only (text other than white space is an error).
    static const xmlNode* firstChild(const xmlNode* node);
    static const xmlNode* nextSibling(const xmlNode* node);
    // Attribute value; throws when `required` and absent.
    static bool attribute(const xmlNode* node, const char* name, std::string& value);
    static std::string requiredAttribute(const xmlNode* node, const char* name);
    // Text content of an element (VALUE, KEYVALUE, HOST, ...).
    static std::string text(const xmlNode* node);

    // CIMType from a TYPE / PARAMTYPE string.
    static CIMType typeFromName(const std::string& typeName, const xmlNode* where);
    // A scalar of `type` from its text.
    static CIMValue valueFromText(const std::string& text, CIMType type, const xmlNode* where);
    // VALUE, VALUE.ARRAY, VALUE.REFERENCE or VALUE.REFARRAY as `type`;
    // `embedded` is "", "instance" or "object" (from the EmbeddedObject
    // attribute), which makes string values embedded instances or objects.
    static CIMValue readValue(const xmlNode* node, CIMType type,
        const std::string& embedded = std::string(), unsigned embeddedDepth = 0);
    // Any path element: INSTANCENAME, LOCALINSTANCEPATH, INSTANCEPATH,
    // CLASSNAME, LOCALCLASSPATH, CLASSPATH, or a VALUE.REFERENCE / OBJECTPATH
    // wrapping one of them.
    static CIMObjectPath readObjectPath(const xmlNode* node);
    static CIMNamespaceName readLocalNamespacePath(const xmlNode* node);
    static CIMName readClassName(const xmlNode* node);
    // INSTANCE (also as escaped text for embedded instances).
    static CIMInstance readInstance(const xmlNode* node, unsigned embeddedDepth = 0);
    // VALUE.NAMEDINSTANCE: the instance with its path set.
    static CIMInstance readNamedInstance(const xmlNode* node);
    // PARAMVALUE: typed when PARAMTYPE is given or the value is a reference,
    // otherwise a string (array) marked untyped.
    static CIMParamValue readParamValue(const xmlNode* node);
    // The content of an IPARAMVALUE, by what the operation expects.
    static bool readBooleanParameter(const xmlNode* iparam);
    static String readStringParameter(const xmlNode* iparam);      // VALUE
    static CIMName readClassNameParameter(const xmlNode* iparam);  // CLASSNAME; null when empty
    static CIMPropertyList readPropertyListParameter(const xmlNode* iparam);
    // The only element child of an IPARAMVALUE; null when it is empty.
    static const xmlNode* parameterElement(const xmlNode* iparam);
    // An embedded instance or object given as CIM-XML text.
    static CIMObject readEmbeddedObject(const std::string& text, unsigned embeddedDepth);

private:
    xmlDoc* _doc;
};

} // namespace Pegasus

#endif
