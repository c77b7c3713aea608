#include <Pegasus/CIMXml/CIMXmlReader.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/Char16.h>

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <strings.h>

namespace Pegasus {

namespace {

const char* const kRootName = "CIM";

// "ELEMENT (line N)" for messages.
std::string where(const xmlNode* node)
{
    if (!node)
        return "document";
    std::string s = node->name ? reinterpret_cast<const char*>(node->name) : "?";
    long line = xmlGetLineNo(const_cast<xmlNode*>(node));
    if (line > 0)
        s += " (line " + std::to_string(line) + ")";
    return s;
}

[[noreturn]] void fail(const xmlNode* node, const std::string& what)
{
    throw CIMException(CIM_ERR_INVALID_PARAMETER,
                       String::fromUtf8("CIM-XML " + where(node) + ": " + what));
}

bool equalNoCase(const std::string& a, const char* b)
{
    return strcasecmp(a.c_str(), b) == 0;
}

std::string trim(const std::string& s)
{
    const char* ws = " \t\r\n";
    size_t b = s.find_first_not_of(ws);
    if (b == std::string::npos)
        return std::string();
    size_t e = s.find_last_not_of(ws);
    return s.substr(b, e - b + 1);
}

CIMName makeName(const std::string& text, const xmlNode* node, const char* what)
{
    String s = String::fromUtf8(text);
    if (!CIMName::legal(s))
        fail(node, std::string("\"") + text + "\" is not a valid " + what);
    return CIMName(s);
}

void initParser()
{
    static std::once_flag once;
    std::call_once(once, [] { xmlInitParser(); });
}

struct ParseState
{
    bool sawDoctype = false;
};

// Called where the document declares a DOCTYPE: CIM-XML messages never need
// one, and refusing it here keeps entity declarations (and their expansion)
// out of the parser altogether.
void refuseDoctype(void* ctx, const xmlChar*, const xmlChar*, const xmlChar*)
{
    xmlParserCtxtPtr ctxt = static_cast<xmlParserCtxtPtr>(ctx);
    static_cast<ParseState*>(ctxt->_private)->sawDoctype = true;
    xmlStopParser(ctxt);
}

// Checks nesting depth and text sizes of a parsed document, without recursion.
void checkLimits(const xmlNode* root, const CIMXmlReader::Limits& limits)
{
    const xmlNode* node = root;
    unsigned depth = 1;
    while (node)
    {
        if (node->type == XML_ELEMENT_NODE)
        {
            if (depth > limits.maxDepth)
                fail(node, "elements nested deeper than " + std::to_string(limits.maxDepth));
            for (const xmlAttr* a = node->properties; a; a = a->next)
            {
                const xmlNode* v = a->children;
                if (v && v->content && std::strlen(reinterpret_cast<const char*>(v->content)) > limits.maxTextBytes)
                    fail(node, std::string("attribute ") + reinterpret_cast<const char*>(a->name)
                               + " is longer than " + std::to_string(limits.maxTextBytes) + " bytes");
            }
        }
        else if ((node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) && node->content
                 && std::strlen(reinterpret_cast<const char*>(node->content)) > limits.maxTextBytes)
        {
            fail(node->parent, "text is longer than " + std::to_string(limits.maxTextBytes) + " bytes");
        }
        if (node->type == XML_ELEMENT_NODE && node->children)
        {
            node = node->children;
            ++depth;
            continue;
        }
        while (node && !node->next && node != root)
        {
            node = node->parent;
            --depth;
        }
        if (!node || node == root)
            break;
        node = node->next;
    }
}

bool isBlank(const xmlChar* text)
{
    if (!text)
        return true;
    for (const xmlChar* p = text; *p; ++p)
        if (*p != ' ' && *p != '\t' && *p != '\r' && *p != '\n')
            return false;
    return true;
}

// Skips blank text and comments; fails on other text between elements.
const xmlNode* skipToElement(const xmlNode* node)
{
    for (; node; node = node->next)
    {
        if (node->type == XML_ELEMENT_NODE)
            return node;
        if ((node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) && !isBlank(node->content))
            fail(node->parent, "unexpected text between elements");
    }
    return nullptr;
}

// The only element child; fails when there is none or more than one.
const xmlNode* onlyChild(const xmlNode* node, const char* expected)
{
    const xmlNode* c = CIMXmlReader::firstChild(node);
    if (!c)
        fail(node, std::string("expected ") + expected + " inside it");
    if (CIMXmlReader::nextSibling(c))
        fail(node, std::string("expected only ") + expected + " inside it, found also "
                   + CIMXmlReader::name(CIMXmlReader::nextSibling(c)));
    return c;
}

const xmlNode* expectChild(const xmlNode* parent, const xmlNode* child, const char* name)
{
    if (!child)
        fail(parent, std::string("missing ") + name);
    if (!CIMXmlReader::isElement(child, name))
        fail(parent, std::string("expected ") + name + ", found " + CIMXmlReader::name(child));
    return child;
}

template <class T>
bool parseUnsigned(const std::string& text, T& out)
{
    if (text.empty() || text[0] == '-')
        return false;
    const char* s = text.c_str();
    if (*s == '+')
        ++s;
    int base = 10;
    if (s[0] == '0' && (s[1] == 'x' || s[1] == 'X'))
    {
        base = 16;
        s += 2;
    }
    if (!*s || !std::isxdigit(static_cast<unsigned char>(*s)))
        return false;
    errno = 0;
    char* end = nullptr;
    unsigned long long v = std::strtoull(s, &end, base);
    if (errno || *end || v > std::numeric_limits<T>::max())
        return false;
    out = static_cast<T>(v);
    return true;
}

template <class T>
bool parseSigned(const std::string& text, T& out)
{
    if (text.empty())
        return false;
    const char* s = text.c_str();
    bool negative = false;
    if (*s == '+' || *s == '-')
    {
        negative = *s == '-';
        ++s;
    }
    int base = 10;
    if (s[0] == '0' && (s[1] == 'x' || s[1] == 'X'))
    {
        base = 16;
        s += 2;
    }
    if (!*s || !std::isxdigit(static_cast<unsigned char>(*s)))
        return false;
    errno = 0;
    char* end = nullptr;
    unsigned long long magnitude = std::strtoull(s, &end, base);
    if (errno || *end)
        return false;
    const unsigned long long maxPositive = static_cast<unsigned long long>(std::numeric_limits<T>::max());
    if (negative)
    {
        if (magnitude > maxPositive + 1)
            return false;
        out = magnitude == maxPositive + 1 ? std::numeric_limits<T>::min()
                                           : static_cast<T>(-static_cast<long long>(magnitude));
    }
    else
    {
        if (magnitude > maxPositive)
            return false;
        out = static_cast<T>(magnitude);
    }
    return true;
}

bool parseReal(const std::string& text, double& out)
{
    if (text == "NaN" || text == "nan")
    {
        out = std::numeric_limits<double>::quiet_NaN();
        return true;
    }
    if (text == "INF" || text == "+INF" || text == "inf")
    {
        out = std::numeric_limits<double>::infinity();
        return true;
    }
    if (text == "-INF" || text == "-inf")
    {
        out = -std::numeric_limits<double>::infinity();
        return true;
    }
    if (text.empty())
        return false;
    // Only the decimal forms: no hex floats, no "infinity" spelled out.
    for (char c : text)
        if (!std::isdigit(static_cast<unsigned char>(c)) && c != '+' && c != '-' && c != '.' && c != 'e' && c != 'E')
            return false;
    errno = 0;
    char* end = nullptr;
    out = std::strtod(text.c_str(), &end);
    return !*end && errno != ERANGE;
}

template <class T>
CIMValue arrayOf(const std::vector<CIMValue>& items)
{
    Array<T> a;
    a.reserveCapacity(Uint32(items.size()));
    for (const CIMValue& v : items)
    {
        T x;
        v.get(x);
        a.append(x);
    }
    return CIMValue(a);
}

CIMValue makeArray(CIMType type, const std::vector<CIMValue>& items)
{
    switch (type)
    {
    case CIMTYPE_BOOLEAN: return arrayOf<Boolean>(items);
    case CIMTYPE_UINT8: return arrayOf<Uint8>(items);
    case CIMTYPE_SINT8: return arrayOf<Sint8>(items);
    case CIMTYPE_UINT16: return arrayOf<Uint16>(items);
    case CIMTYPE_SINT16: return arrayOf<Sint16>(items);
    case CIMTYPE_UINT32: return arrayOf<Uint32>(items);
    case CIMTYPE_SINT32: return arrayOf<Sint32>(items);
    case CIMTYPE_UINT64: return arrayOf<Uint64>(items);
    case CIMTYPE_SINT64: return arrayOf<Sint64>(items);
    case CIMTYPE_REAL32: return arrayOf<Real32>(items);
    case CIMTYPE_REAL64: return arrayOf<Real64>(items);
    case CIMTYPE_CHAR16: return arrayOf<Char16>(items);
    case CIMTYPE_STRING: return arrayOf<String>(items);
    case CIMTYPE_DATETIME: return arrayOf<CIMDateTime>(items);
    case CIMTYPE_REFERENCE: return arrayOf<CIMObjectPath>(items);
    case CIMTYPE_OBJECT: return arrayOf<CIMObject>(items);
    case CIMTYPE_INSTANCE: return arrayOf<CIMInstance>(items);
    }
    return CIMValue();
}

// The EmbeddedObject attribute in either spelling: "", "instance" or "object".
std::string embeddedKind(const xmlNode* node)
{
    std::string value;
    if (!CIMXmlReader::attribute(node, "EmbeddedObject", value))
        CIMXmlReader::attribute(node, "EMBEDDEDOBJECT", value);
    if (value.empty())
        return value;
    if (equalNoCase(value, "instance"))
        return "instance";
    if (equalNoCase(value, "object"))
        return "object";
    fail(node, "EmbeddedObject must be \"instance\" or \"object\", not \"" + value + "\"");
}

CIMType embeddedType(const std::string& kind, CIMType type, const xmlNode* node)
{
    if (kind.empty())
        return type;
    if (type != CIMTYPE_STRING)
        fail(node, "EmbeddedObject is only allowed on string values");
    return kind == "instance" ? CIMTYPE_INSTANCE : CIMTYPE_OBJECT;
}

// Runs `body`, turning the value types' own exceptions (bad names, duplicate
// properties, bad datetimes) into CIMExceptions that name the element.
template <class F>
auto guarded(const xmlNode* node, F body) -> decltype(body())
{
    try
    {
        return body();
    }
    catch (const CIMException&)
    {
        throw;
    }
    catch (const Exception& e)
    {
        fail(node, e.getMessage().toUtf8());
    }
    catch (const std::bad_alloc&)
    {
        throw;
    }
    catch (const std::exception& e)
    {
        fail(node, e.what());
    }
}

} // namespace

// ---------------------------------------------------------------------------

CIMXmlReader::CIMXmlReader(const std::string& document)
    : CIMXmlReader(document, Limits())
{
}

CIMXmlReader::CIMXmlReader(const std::string& document, const Limits& limits)
    : _doc(nullptr)
{
    initParser();
    if (document.size() > limits.maxDocumentBytes)
        throw CIMException(CIM_ERR_INVALID_PARAMETER,
            String::fromUtf8("CIM-XML document: larger than " + std::to_string(limits.maxDocumentBytes) + " bytes"));
    if (document.size() > static_cast<size_t>(std::numeric_limits<int>::max()))
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "CIM-XML document: too large");
    if (document.empty())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "CIM-XML document is not well formed: it is empty");
    xmlParserCtxtPtr ctxt = xmlCreateMemoryParserCtxt(document.data(), int(document.size()));
    if (!ctxt)
        throw CIMException(CIM_ERR_FAILED, "CIM-XML document: cannot create an XML parser");
    ParseState state;
    ctxt->_private = &state;
    ctxt->sax->internalSubset = refuseDoctype;
    ctxt->sax->externalSubset = nullptr;
    // No network, no DTD loading, no entity substitution, no messages on stderr.
    xmlCtxtUseOptions(ctxt, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    int rc = xmlParseDocument(ctxt);
    xmlDocPtr doc = ctxt->myDoc;
    const bool wellFormed = rc == 0 && ctxt->wellFormed && !state.sawDoctype;
    std::string message;
    if (state.sawDoctype)
        message = "a DOCTYPE declaration is not accepted";
    else if (!wellFormed)
    {
        const xmlError* e = xmlCtxtGetLastError(ctxt);
        if (e && e->message)
        {
            message = trim(e->message);
            if (e->line > 0)
                message += " (line " + std::to_string(e->line) + ")";
        }
        else
            message = "not well-formed XML";
    }
    xmlFreeParserCtxt(ctxt);
    if (!wellFormed || !doc)
    {
        if (doc)
            xmlFreeDoc(doc);
        throw CIMException(CIM_ERR_INVALID_PARAMETER,
                           String::fromUtf8("CIM-XML document is not well formed: " + message));
    }
    _doc = doc;
    try
    {
        const xmlNode* r = xmlDocGetRootElement(_doc);
        if (!r)
            fail(nullptr, "no root element");
        checkLimits(r, limits);
    }
    catch (...)
    {
        xmlFreeDoc(_doc);
        _doc = nullptr;
        throw;
    }
}

CIMXmlReader::~CIMXmlReader()
{
    if (_doc)
        xmlFreeDoc(_doc);
}

const xmlNode* CIMXmlReader::root() const
{
    return xmlDocGetRootElement(_doc);
}

bool CIMXmlReader::hasMajorVersion(const std::string& version, int major)
{
    const std::string m = std::to_string(major);
    if (version.compare(0, m.size(), m) != 0)
        return false;
    if (version.size() == m.size())
        return true;
    if (version[m.size()] != '.' || version.size() == m.size() + 1)
        return false;
    for (size_t i = m.size() + 1; i < version.size(); ++i)
        if (!std::isdigit(static_cast<unsigned char>(version[i])) && version[i] != '.')
            return false;
    return true;
}

CIMXmlReader::Message CIMXmlReader::readMessage() const
{
    Message m;
    const xmlNode* cim = root();
    if (!isElement(cim, kRootName))
        fail(cim, "the root element must be CIM");
    m.cimVersion = requiredAttribute(cim, "CIMVERSION");
    m.dtdVersion = requiredAttribute(cim, "DTDVERSION");
    const xmlNode* message = onlyChild(cim, "MESSAGE");
    expectChild(cim, message, "MESSAGE");
    m.id = requiredAttribute(message, "ID");
    m.protocolVersion = requiredAttribute(message, "PROTOCOLVERSION");
    const xmlNode* simple = onlyChild(message, "SIMPLEREQ");
    m.kind = name(simple);
    if (m.kind == "MULTIREQ" || m.kind == "MULTIEXPREQ")
        throw CIMException(CIM_ERR_NOT_SUPPORTED, "multiple requests are not supported");
    if (m.kind != "SIMPLEREQ" && m.kind != "SIMPLERSP" && m.kind != "SIMPLEEXPREQ" && m.kind != "SIMPLEEXPRSP")
        fail(message, "expected SIMPLEREQ, SIMPLERSP, SIMPLEEXPREQ or SIMPLEEXPRSP, found " + m.kind);
    // Correlators may come before the call; they carry nothing this server uses.
    const xmlNode* body = firstChild(simple);
    while (body && isElement(body, "CORRELATOR"))
        body = nextSibling(body);
    if (!body)
        fail(simple, "expected a call or a response inside it");
    if (nextSibling(body))
        fail(simple, std::string("unexpected ") + name(nextSibling(body)) + " after " + name(body));
    m.body = body;
    return m;
}

CIMException CIMXmlReader::readError(const xmlNode* error)
{
    if (!isElement(error, "ERROR"))
        fail(error, "expected ERROR");
    const std::string codeText = requiredAttribute(error, "CODE");
    Uint32 code = 0;
    if (!parseUnsigned(trim(codeText), code) || code == 0)
        fail(error, "CODE \"" + codeText + "\" is not a CIM status code");
    std::string description;
    attribute(error, "DESCRIPTION", description);
    // The writer puts the symbolic name in front of the message; drop it so
    // that the message comes back as it was sent.
    const std::string prefix = cimStatusCodeToString(CIMStatusCode(code));
    if (description == prefix)
        description.clear();
    else if (description.compare(0, prefix.size() + 2, prefix + ": ") == 0)
        description.erase(0, prefix.size() + 2);
    return CIMException(CIMStatusCode(code), String::fromUtf8(description));
}

CIMXmlReader::ExportIndication CIMXmlReader::readExportIndication(const std::string& document)
{
    CIMXmlReader reader(document);
    Message m = reader.readMessage();
    if (!hasMajorVersion(m.cimVersion, 2) || !hasMajorVersion(m.dtdVersion, 2))
        throw CIMException(CIM_ERR_NOT_SUPPORTED, String::fromUtf8(
            "CIM-XML version " + m.cimVersion + " / DTD " + m.dtdVersion + " is not supported"));
    if (!hasMajorVersion(m.protocolVersion, 1))
        throw CIMException(CIM_ERR_NOT_SUPPORTED, String::fromUtf8(
            "protocol version " + m.protocolVersion + " is not supported"));
    if (m.kind != "SIMPLEEXPREQ")
        fail(m.body->parent, "expected SIMPLEEXPREQ");
    if (!isElement(m.body, "EXPMETHODCALL"))
        fail(m.body, "expected EXPMETHODCALL");
    ExportIndication result;
    result.messageId = m.id;
    result.methodName = requiredAttribute(m.body, "NAME");
    if (!equalNoCase(result.methodName, "ExportIndication"))
        throw CIMException(CIM_ERR_NOT_SUPPORTED,
            String::fromUtf8("export method " + result.methodName + " is not supported"));
    bool found = false;
    for (const xmlNode* p = firstChild(m.body); p; p = nextSibling(p))
    {
        if (!isElement(p, "EXPPARAMVALUE"))
            fail(p, "expected EXPPARAMVALUE");
        const std::string paramName = requiredAttribute(p, "NAME");
        if (!equalNoCase(paramName, "NewIndication"))
            fail(p, "unknown parameter " + paramName);
        if (found)
            fail(p, "NewIndication given twice");
        const xmlNode* inst = onlyChild(p, "INSTANCE");
        result.indication = readInstance(inst);
        found = true;
    }
    if (!found)
        fail(m.body, "missing EXPPARAMVALUE NewIndication");
    return result;
}

void CIMXmlReader::readExportIndicationResponse(const std::string& document)
{
    CIMXmlReader reader(document);
    Message m = reader.readMessage();
    if (m.kind != "SIMPLEEXPRSP")
        fail(m.body->parent, "expected SIMPLEEXPRSP");
    if (!isElement(m.body, "EXPMETHODRESPONSE"))
        fail(m.body, "expected EXPMETHODRESPONSE");
    const xmlNode* c = firstChild(m.body);
    if (c && isElement(c, "ERROR"))
        throw readError(c);
    if (c && !isElement(c, "IRETURNVALUE"))
        fail(c, "expected ERROR or IRETURNVALUE");
}

// ----- element helpers -------------------------------------------------------

const char* CIMXmlReader::name(const xmlNode* node)
{
    return node && node->name ? reinterpret_cast<const char*>(node->name) : "";
}

bool CIMXmlReader::isElement(const xmlNode* node, const char* elementName)
{
    return node && node->type == XML_ELEMENT_NODE && std::strcmp(name(node), elementName) == 0;
}

const xmlNode* CIMXmlReader::firstChild(const xmlNode* node)
{
    return node ? skipToElement(node->children) : nullptr;
}

const xmlNode* CIMXmlReader::nextSibling(const xmlNode* node)
{
    return node ? skipToElement(node->next) : nullptr;
}

bool CIMXmlReader::attribute(const xmlNode* node, const char* attrName, std::string& value)
{
    for (const xmlAttr* a = node->properties; a; a = a->next)
    {
        if (std::strcmp(reinterpret_cast<const char*>(a->name), attrName) != 0)
            continue;
        value.clear();
        for (const xmlNode* t = a->children; t; t = t->next)
            if (t->content)
                value += reinterpret_cast<const char*>(t->content);
        return true;
    }
    return false;
}

std::string CIMXmlReader::requiredAttribute(const xmlNode* node, const char* attrName)
{
    std::string value;
    if (!attribute(node, attrName, value))
        fail(node, std::string("missing attribute ") + attrName);
    return value;
}

std::string CIMXmlReader::text(const xmlNode* node)
{
    std::string value;
    for (const xmlNode* c = node->children; c; c = c->next)
    {
        if (c->type == XML_TEXT_NODE || c->type == XML_CDATA_SECTION_NODE)
        {
            if (c->content)
                value += reinterpret_cast<const char*>(c->content);
        }
        else if (c->type == XML_ELEMENT_NODE)
            fail(node, std::string("expected text only, found element ") + name(c));
        else if (c->type == XML_ENTITY_REF_NODE)
            fail(node, "entity references are not accepted");
    }
    return value;
}

// ----- values ------------------------------------------------------------------

CIMType CIMXmlReader::typeFromName(const std::string& typeName, const xmlNode* node)
{
    static const struct { const char* name; CIMType type; } kTypes[] = {
        {"boolean", CIMTYPE_BOOLEAN}, {"uint8", CIMTYPE_UINT8}, {"sint8", CIMTYPE_SINT8},
        {"uint16", CIMTYPE_UINT16}, {"sint16", CIMTYPE_SINT16}, {"uint32", CIMTYPE_UINT32},
        {"sint32", CIMTYPE_SINT32}, {"uint64", CIMTYPE_UINT64}, {"sint64", CIMTYPE_SINT64},
        {"real32", CIMTYPE_REAL32}, {"real64", CIMTYPE_REAL64}, {"char16", CIMTYPE_CHAR16},
        {"string", CIMTYPE_STRING}, {"datetime", CIMTYPE_DATETIME}, {"reference", CIMTYPE_REFERENCE},
    };
    for (const auto& t : kTypes)
        if (typeName == t.name)
            return t.type;
    fail(node, "unknown type \"" + typeName + "\"");
}

CIMValue CIMXmlReader::valueFromText(const std::string& raw, CIMType type, const xmlNode* node)
{
    if (type == CIMTYPE_STRING)
        return CIMValue(String::fromUtf8(raw));
    const std::string t = trim(raw);
    auto bad = [&](const char* what) -> CIMValue {
        fail(node, "\"" + raw + "\" is not " + what);
    };
    switch (type)
    {
    case CIMTYPE_BOOLEAN:
        if (equalNoCase(t, "TRUE")) return CIMValue(Boolean(true));
        if (equalNoCase(t, "FALSE")) return CIMValue(Boolean(false));
        return bad("a boolean (TRUE or FALSE)");
    case CIMTYPE_UINT8: { Uint8 x; return parseUnsigned(t, x) ? CIMValue(x) : bad("a uint8"); }
    case CIMTYPE_UINT16: { Uint16 x; return parseUnsigned(t, x) ? CIMValue(x) : bad("a uint16"); }
    case CIMTYPE_UINT32: { Uint32 x; return parseUnsigned(t, x) ? CIMValue(x) : bad("a uint32"); }
    case CIMTYPE_UINT64: { Uint64 x; return parseUnsigned(t, x) ? CIMValue(x) : bad("a uint64"); }
    case CIMTYPE_SINT8: { Sint8 x; return parseSigned(t, x) ? CIMValue(x) : bad("a sint8"); }
    case CIMTYPE_SINT16: { Sint16 x; return parseSigned(t, x) ? CIMValue(x) : bad("a sint16"); }
    case CIMTYPE_SINT32: { Sint32 x; return parseSigned(t, x) ? CIMValue(x) : bad("a sint32"); }
    case CIMTYPE_SINT64: { Sint64 x; return parseSigned(t, x) ? CIMValue(x) : bad("a sint64"); }
    case CIMTYPE_REAL32:
    {
        double d;
        if (!parseReal(t, d) || (std::isfinite(d) && std::fabs(d) > std::numeric_limits<float>::max()))
            return bad("a real32");
        return CIMValue(Real32(d));
    }
    case CIMTYPE_REAL64:
    {
        double d;
        return parseReal(t, d) ? CIMValue(Real64(d)) : bad("a real64");
    }
    case CIMTYPE_CHAR16:
    {
        // One UTF-16 unit, taken from the raw text: a blank is a valid char16.
        String s = String::fromUtf8(raw);
        if (s.size() != 1)
            return bad("a single char16 character");
        return CIMValue(s[0]);
    }
    case CIMTYPE_DATETIME:
        return guarded(node, [&] {
            if (t.size() != 25)
                fail(node, "\"" + raw + "\" is not a datetime (25 characters)");
            return CIMValue(CIMDateTime(String::fromUtf8(t)));
        });
    case CIMTYPE_REFERENCE:
        fail(node, "a reference must be given as VALUE.REFERENCE");
    case CIMTYPE_INSTANCE:
    case CIMTYPE_OBJECT:
    {
        CIMObject object = readEmbeddedObject(raw, 0);
        if (type == CIMTYPE_INSTANCE)
            return CIMValue(CIMInstance(object));
        return CIMValue(object);
    }
    default:
        break;
    }
    fail(node, "unsupported type");
}

namespace {

CIMValue readScalar(const xmlNode* node, CIMType type, unsigned embeddedDepth)
{
    if (!CIMXmlReader::isElement(node, "VALUE"))
        fail(node, "expected VALUE");
    const std::string raw = CIMXmlReader::text(node);
    if (type == CIMTYPE_INSTANCE || type == CIMTYPE_OBJECT)
    {
        CIMObject object = CIMXmlReader::readEmbeddedObject(raw, embeddedDepth + 1);
        if (type == CIMTYPE_INSTANCE)
            return CIMValue(CIMInstance(object));
        return CIMValue(object);
    }
    return CIMXmlReader::valueFromText(raw, type, node);
}

} // namespace

CIMValue CIMXmlReader::readValue(const xmlNode* node, CIMType type, const std::string& embedded,
    unsigned embeddedDepth)
{
    type = embeddedType(embedded, type, node);
    if (isElement(node, "VALUE.REFERENCE"))
    {
        if (type != CIMTYPE_REFERENCE)
            fail(node, std::string("a reference where a ") + cimTypeToString(type) + " was expected");
        return CIMValue(readObjectPath(node));
    }
    if (isElement(node, "VALUE.REFARRAY"))
    {
        if (type != CIMTYPE_REFERENCE)
            fail(node, std::string("references where a ") + cimTypeToString(type) + " was expected");
        Array<CIMObjectPath> paths;
        for (const xmlNode* c = firstChild(node); c; c = nextSibling(c))
        {
            if (!isElement(c, "VALUE.REFERENCE"))
                fail(c, "expected VALUE.REFERENCE inside VALUE.REFARRAY");
            paths.append(readObjectPath(c));
        }
        return CIMValue(paths);
    }
    if (type == CIMTYPE_REFERENCE)
        fail(node, std::string("expected VALUE.REFERENCE or VALUE.REFARRAY, found ") + name(node));
    if (isElement(node, "VALUE"))
        return readScalar(node, type, embeddedDepth);
    if (isElement(node, "VALUE.ARRAY"))
    {
        std::vector<CIMValue> items;
        for (const xmlNode* c = firstChild(node); c; c = nextSibling(c))
        {
            if (isElement(c, "VALUE.NULL"))
                fail(c, "null array elements are not supported");
            items.push_back(readScalar(c, type, embeddedDepth));
        }
        return makeArray(type, items);
    }
    fail(node, "expected VALUE, VALUE.ARRAY, VALUE.REFERENCE or VALUE.REFARRAY");
}

// ----- names and paths -----------------------------------------------------------

CIMName CIMXmlReader::readClassName(const xmlNode* node)
{
    if (!isElement(node, "CLASSNAME"))
        fail(node, "expected CLASSNAME");
    if (firstChild(node))
        fail(node, "CLASSNAME must be empty");
    return makeName(requiredAttribute(node, "NAME"), node, "class name");
}

CIMNamespaceName CIMXmlReader::readLocalNamespacePath(const xmlNode* node)
{
    if (!isElement(node, "LOCALNAMESPACEPATH"))
        fail(node, std::string("expected LOCALNAMESPACEPATH, found ") + name(node));
    std::string ns;
    for (const xmlNode* c = firstChild(node); c; c = nextSibling(c))
    {
        if (!isElement(c, "NAMESPACE"))
            fail(c, "expected NAMESPACE inside LOCALNAMESPACEPATH");
        if (!ns.empty())
            ns += '/';
        ns += requiredAttribute(c, "NAME");
    }
    if (ns.empty())
        fail(node, "no NAMESPACE inside it");
    String s = String::fromUtf8(ns);
    if (!CIMNamespaceName::legal(s))
        fail(node, "\"" + ns + "\" is not a valid namespace name");
    return CIMNamespaceName(s);
}

namespace {

void readNamespacePath(const xmlNode* node, String& host, CIMNamespaceName& ns)
{
    expectChild(node->parent, node, "NAMESPACEPATH");
    const xmlNode* h = expectChild(node, CIMXmlReader::firstChild(node), "HOST");
    host = String::fromUtf8(trim(CIMXmlReader::text(h)));
    const xmlNode* l = CIMXmlReader::nextSibling(h);
    ns = CIMXmlReader::readLocalNamespacePath(expectChild(node, l, "LOCALNAMESPACEPATH"));
    if (CIMXmlReader::nextSibling(l))
        fail(node, "unexpected element after LOCALNAMESPACEPATH");
}

CIMKeyBinding readKeyBinding(const xmlNode* node)
{
    const CIMName keyName = makeName(CIMXmlReader::requiredAttribute(node, "NAME"), node, "key name");
    const xmlNode* v = onlyChild(node, "KEYVALUE or VALUE.REFERENCE");
    if (CIMXmlReader::isElement(v, "VALUE.REFERENCE"))
    {
        CIMObjectPath ref = CIMXmlReader::readObjectPath(v);
        return CIMKeyBinding(keyName, ref.toString(), CIMKeyBinding::REFERENCE);
    }
    if (!CIMXmlReader::isElement(v, "KEYVALUE"))
        fail(v, "expected KEYVALUE or VALUE.REFERENCE inside KEYBINDING");
    std::string valueType = "string";
    CIMXmlReader::attribute(v, "VALUETYPE", valueType);
    std::string text = CIMXmlReader::text(v);
    if (valueType == "string")
        return CIMKeyBinding(keyName, String::fromUtf8(text), CIMKeyBinding::STRING);
    text = trim(text);
    if (valueType == "boolean")
    {
        if (!equalNoCase(text, "TRUE") && !equalNoCase(text, "FALSE"))
            fail(v, "\"" + text + "\" is not a boolean key value");
        return CIMKeyBinding(keyName, String(equalNoCase(text, "TRUE") ? "TRUE" : "FALSE"),
                             CIMKeyBinding::BOOLEAN);
    }
    if (valueType == "numeric")
    {
        Sint64 s;
        Uint64 u;
        double d;
        if (!parseSigned(text, s) && !parseUnsigned(text, u) && !parseReal(text, d))
            fail(v, "\"" + text + "\" is not a numeric key value");
        return CIMKeyBinding(keyName, String::fromUtf8(text), CIMKeyBinding::NUMERIC);
    }
    fail(v, "VALUETYPE must be string, boolean or numeric, not \"" + valueType + "\"");
}

CIMObjectPath readInstanceName(const xmlNode* node)
{
    const CIMName className = makeName(CIMXmlReader::requiredAttribute(node, "CLASSNAME"), node, "class name");
    Array<CIMKeyBinding> keys;
    for (const xmlNode* c = CIMXmlReader::firstChild(node); c; c = CIMXmlReader::nextSibling(c))
    {
        if (!CIMXmlReader::isElement(c, "KEYBINDING"))
            fail(c, std::string("expected KEYBINDING inside INSTANCENAME, found ") + CIMXmlReader::name(c)
                    + " (unnamed key values are not supported)");
        CIMKeyBinding kb = readKeyBinding(c);
        for (Uint32 i = 0; i < keys.size(); ++i)
            if (keys[i].getName().equal(kb.getName()))
                fail(c, "key " + kb.getName().getString().toUtf8() + " given twice");
        keys.append(kb);
    }
    return CIMObjectPath(String(), CIMNamespaceName(), className, keys);
}

} // namespace

CIMObjectPath CIMXmlReader::readObjectPath(const xmlNode* node)
{
    return guarded(node, [&]() -> CIMObjectPath {
        const std::string n = name(node);
        if (n == "VALUE.REFERENCE" || n == "OBJECTPATH")
            return readObjectPath(onlyChild(node, "a path"));
        if (n == "INSTANCENAME")
            return readInstanceName(node);
        if (n == "CLASSNAME")
            return CIMObjectPath(String(), CIMNamespaceName(), readClassName(node));
        if (n == "INSTANCEPATH" || n == "CLASSPATH")
        {
            const bool instance = n == "INSTANCEPATH";
            const xmlNode* nsp = firstChild(node);
            String host;
            CIMNamespaceName ns;
            readNamespacePath(expectChild(node, nsp, "NAMESPACEPATH"), host, ns);
            const xmlNode* last = nextSibling(nsp);
            CIMObjectPath path = instance
                ? readInstanceName(expectChild(node, last, "INSTANCENAME"))
                : CIMObjectPath(String(), CIMNamespaceName(), readClassName(expectChild(node, last, "CLASSNAME")));
            if (nextSibling(last))
                fail(node, std::string("unexpected ") + name(nextSibling(last)));
            path.setNameSpace(ns);
            path.setHost(host);
            return path;
        }
        if (n == "LOCALINSTANCEPATH" || n == "LOCALCLASSPATH")
        {
            const bool instance = n == "LOCALINSTANCEPATH";
            const xmlNode* l = firstChild(node);
            CIMNamespaceName ns = readLocalNamespacePath(expectChild(node, l, "LOCALNAMESPACEPATH"));
            const xmlNode* last = nextSibling(l);
            CIMObjectPath path = instance
                ? readInstanceName(expectChild(node, last, "INSTANCENAME"))
                : CIMObjectPath(String(), CIMNamespaceName(), readClassName(expectChild(node, last, "CLASSNAME")));
            if (nextSibling(last))
                fail(node, std::string("unexpected ") + name(nextSibling(last)));
            path.setNameSpace(ns);
            return path;
        }
        fail(node, "expected an object path (INSTANCENAME, INSTANCEPATH, LOCALINSTANCEPATH, "
                   "CLASSNAME, CLASSPATH or LOCALCLASSPATH)");
    });
}

// ----- instances ---------------------------------------------------------------

namespace {

CIMProperty readProperty(const xmlNode* node, unsigned embeddedDepth)
{
    const std::string tag = CIMXmlReader::name(node);
    const CIMName propName = makeName(CIMXmlReader::requiredAttribute(node, "NAME"), node, "property name");
    std::string text;
    CIMName classOrigin;
    if (CIMXmlReader::attribute(node, "CLASSORIGIN", text) && !text.empty())
        classOrigin = makeName(text, node, "class origin");
    bool propagated = CIMXmlReader::attribute(node, "PROPAGATED", text) && equalNoCase(text, "true");

    // Qualifiers may precede the value; instances carry none here.
    const xmlNode* v = CIMXmlReader::firstChild(node);
    while (v && CIMXmlReader::isElement(v, "QUALIFIER"))
        v = CIMXmlReader::nextSibling(v);
    if (v && CIMXmlReader::nextSibling(v))
        fail(node, std::string("unexpected ") + CIMXmlReader::name(CIMXmlReader::nextSibling(v)) + " after the value");

    if (tag == "PROPERTY.REFERENCE")
    {
        CIMName refClass;
        if (CIMXmlReader::attribute(node, "REFERENCECLASS", text) && !text.empty())
            refClass = makeName(text, node, "reference class");
        CIMValue value(CIMTYPE_REFERENCE, false);
        if (v)
        {
            if (!CIMXmlReader::isElement(v, "VALUE.REFERENCE"))
                fail(v, "expected VALUE.REFERENCE inside PROPERTY.REFERENCE");
            value = CIMValue(CIMXmlReader::readObjectPath(v));
        }
        return CIMProperty(propName, value, 0, refClass, classOrigin, propagated);
    }
    std::string typeName = "string";
    CIMXmlReader::attribute(node, "TYPE", typeName);
    CIMType type = CIMXmlReader::typeFromName(typeName, node);
    if (type == CIMTYPE_REFERENCE)
        fail(node, "a reference property must be PROPERTY.REFERENCE");
    type = embeddedType(embeddedKind(node), type, node);
    const bool isArray = tag == "PROPERTY.ARRAY";
    CIMValue value(type, isArray);
    if (v)
    {
        if (!CIMXmlReader::isElement(v, isArray ? "VALUE.ARRAY" : "VALUE"))
            fail(v, std::string("expected ") + (isArray ? "VALUE.ARRAY" : "VALUE") + " inside " + tag);
        value = CIMXmlReader::readValue(v, type, std::string(), embeddedDepth);
    }
    Uint32 arraySize = 0;
    if (isArray && CIMXmlReader::attribute(node, "ARRAYSIZE", text) && !parseUnsigned(trim(text), arraySize))
        fail(node, "ARRAYSIZE \"" + text + "\" is not a number");
    return CIMProperty(propName, value, arraySize, CIMName(), classOrigin, propagated);
}

} // namespace

CIMInstance CIMXmlReader::readInstance(const xmlNode* node, unsigned embeddedDepth)
{
    if (!isElement(node, "INSTANCE"))
        fail(node, std::string("expected INSTANCE, found ") + name(node));
    return guarded(node, [&] {
        CIMInstance instance(makeName(requiredAttribute(node, "CLASSNAME"), node, "class name"));
        for (const xmlNode* c = firstChild(node); c; c = nextSibling(c))
        {
            const std::string tag = name(c);
            if (tag == "QUALIFIER")
                continue;
            if (tag != "PROPERTY" && tag != "PROPERTY.ARRAY" && tag != "PROPERTY.REFERENCE")
                fail(c, "expected PROPERTY, PROPERTY.ARRAY or PROPERTY.REFERENCE inside INSTANCE");
            CIMProperty p = guarded(c, [&] { return readProperty(c, embeddedDepth); });
            if (instance.findProperty(p.getName()) != PEG_NOT_FOUND)
                fail(c, "property " + p.getName().getString().toUtf8() + " given twice");
            instance.addProperty(p);
        }
        return instance;
    });
}

CIMInstance CIMXmlReader::readNamedInstance(const xmlNode* node)
{
    if (!isElement(node, "VALUE.NAMEDINSTANCE"))
        fail(node, std::string("expected VALUE.NAMEDINSTANCE, found ") + name(node));
    const xmlNode* n = expectChild(node, firstChild(node), "INSTANCENAME");
    const xmlNode* i = expectChild(node, nextSibling(n), "INSTANCE");
    if (nextSibling(i))
        fail(node, std::string("unexpected ") + name(nextSibling(i)));
    CIMObjectPath path = readObjectPath(n);
    CIMInstance instance = readInstance(i);
    if (!path.getClassName().equal(instance.getClassName()))
        fail(node, "the INSTANCENAME names class " + path.getClassName().getString().toUtf8()
                   + " but the INSTANCE is of class " + instance.getClassName().getString().toUtf8());
    instance.setPath(path);
    return instance;
}

CIMObject CIMXmlReader::readEmbeddedObject(const std::string& text, unsigned embeddedDepth)
{
    Limits limits;
    if (embeddedDepth > limits.maxEmbeddedDepth)
        throw CIMException(CIM_ERR_INVALID_PARAMETER, String::fromUtf8(
            "CIM-XML embedded object: nested deeper than " + std::to_string(limits.maxEmbeddedDepth)));
    if (trim(text).empty())
        throw CIMException(CIM_ERR_INVALID_PARAMETER, "CIM-XML embedded object: the value is empty");
    std::unique_ptr<CIMXmlReader> reader;
    try
    {
        reader.reset(new CIMXmlReader(text, limits));
    }
    catch (const CIMException& e)
    {
        throw CIMException(CIM_ERR_INVALID_PARAMETER,
                           String("embedded object: ") + e.getMessage());
    }
    const xmlNode* r = reader->root();
    if (isElement(r, "CLASS"))
        fail(r, "embedded classes are not supported");
    return CIMObject(readInstance(r, embeddedDepth));
}

// ----- parameters ---------------------------------------------------------------

CIMParamValue CIMXmlReader::readParamValue(const xmlNode* node)
{
    if (!isElement(node, "PARAMVALUE"))
        fail(node, std::string("expected PARAMVALUE, found ") + name(node));
    const std::string paramName = requiredAttribute(node, "NAME");
    if (!CIMName::legal(String::fromUtf8(paramName)))
        fail(node, "\"" + paramName + "\" is not a valid parameter name");
    std::string typeName;
    const bool hasType = attribute(node, "PARAMTYPE", typeName);
    const std::string embedded = embeddedKind(node);
    CIMType type = CIMTYPE_STRING;
    if (hasType)
        type = typeFromName(typeName, node);
    const bool typed = hasType || !embedded.empty();
    if (!embedded.empty())
        type = embeddedType(embedded, type, node);

    const xmlNode* v = firstChild(node);
    if (v && nextSibling(v))
        fail(node, std::string("unexpected ") + name(nextSibling(v)) + " after the value");
    const String pname = String::fromUtf8(paramName);
    if (!v)
        return CIMParamValue(pname, typed ? CIMValue(type, false) : CIMValue(), typed);
    return guarded(node, [&] {
        const std::string tag = name(v);
        if (tag == "VALUE.REFERENCE" || tag == "VALUE.REFARRAY" || tag == "INSTANCENAME" || tag == "CLASSNAME")
        {
            if (hasType && type != CIMTYPE_REFERENCE)
                fail(v, "a reference given for PARAMTYPE " + typeName);
            if (tag == "VALUE.REFARRAY")
                return CIMParamValue(pname, readValue(v, CIMTYPE_REFERENCE), true);
            return CIMParamValue(pname, CIMValue(readObjectPath(v)), true);
        }
        if (tag == "INSTANCE")
        {
            CIMInstance inst = readInstance(v, 1);
            if (type == CIMTYPE_OBJECT)
                return CIMParamValue(pname, CIMValue(CIMObject(inst)), true);
            if (hasType && type != CIMTYPE_INSTANCE && type != CIMTYPE_STRING)
                fail(v, "an instance given for PARAMTYPE " + typeName);
            return CIMParamValue(pname, CIMValue(inst), true);
        }
        if (tag != "VALUE" && tag != "VALUE.ARRAY")
            fail(v, "expected VALUE, VALUE.ARRAY, VALUE.REFERENCE, VALUE.REFARRAY, INSTANCENAME or INSTANCE");
        if (type == CIMTYPE_REFERENCE)
            fail(v, "PARAMTYPE reference needs VALUE.REFERENCE or VALUE.REFARRAY");
        // Without a type the text stays a string; the server gives it the
        // parameter's declared type later.
        return CIMParamValue(pname, readValue(v, type), typed);
    });
}

const xmlNode* CIMXmlReader::parameterElement(const xmlNode* iparam)
{
    const xmlNode* v = firstChild(iparam);
    if (v && nextSibling(v))
        fail(iparam, std::string("expected one element inside it, found also ") + name(nextSibling(v)));
    return v;
}

bool CIMXmlReader::readBooleanParameter(const xmlNode* iparam)
{
    const xmlNode* v = parameterElement(iparam);
    if (!v || !isElement(v, "VALUE"))
        fail(iparam, "expected VALUE with TRUE or FALSE");
    Boolean b = false;
    valueFromText(text(v), CIMTYPE_BOOLEAN, v).get(b);
    return b;
}

String CIMXmlReader::readStringParameter(const xmlNode* iparam)
{
    const xmlNode* v = parameterElement(iparam);
    if (!v)
        return String();
    if (!isElement(v, "VALUE"))
        fail(iparam, std::string("expected VALUE, found ") + name(v));
    return String::fromUtf8(text(v));
}

CIMName CIMXmlReader::readClassNameParameter(const xmlNode* iparam)
{
    const xmlNode* v = parameterElement(iparam);
    if (!v)
        return CIMName();
    return readClassName(v);
}

CIMPropertyList CIMXmlReader::readPropertyListParameter(const xmlNode* iparam)
{
    const xmlNode* v = parameterElement(iparam);
    if (!v)
        return CIMPropertyList();
    if (!isElement(v, "VALUE.ARRAY"))
        fail(iparam, std::string("expected VALUE.ARRAY of property names, found ") + name(v));
    Array<CIMName> names;
    for (const xmlNode* c = firstChild(v); c; c = nextSibling(c))
    {
        if (!isElement(c, "VALUE"))
            fail(c, "expected VALUE inside VALUE.ARRAY");
        names.append(makeName(trim(text(c)), c, "property name"));
    }
    return CIMPropertyList(names);
}

} // namespace Pegasus
