#include "LibXML2Filler.h"

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sstream>

#include <libxml/xpathInternals.h>

#include "SmisTrace.h"

namespace orvsmis {

const std::string LibXML2Filler::unitName = "name";
std::string LibXML2Filler::cmdReturnCodePath;
std::string LibXML2Filler::mArrayId;

namespace {

// libxml2 would otherwise write its complaints about a broken document to
// standard error; the caller traces the failure itself.
void ignoreStructuredError(void*, xmlErrorPtr) {}

std::string xmlText(xmlChar* text) {
    if (text == nullptr) return std::string();
    std::string result(reinterpret_cast<const char*>(text));
    xmlFree(text);
    return result;
}

}  // namespace

LibXML2Filler::LibXML2Filler() : m_doc(nullptr), m_root(nullptr), m_parserContext(nullptr), m_xpathContext(nullptr) {
    xmlInitParser();
}

LibXML2Filler::LibXML2Filler(const std::string& path)
    : m_doc(nullptr), m_root(nullptr), m_parserContext(nullptr), m_xpathContext(nullptr) {
    xmlInitParser();
    if (!initDoc(path)) return;
    if (!initXPath()) return;
    initTree();
}

LibXML2Filler::~LibXML2Filler() {
    if (m_xpathContext != nullptr) xmlXPathFreeContext(m_xpathContext);
    if (m_parserContext != nullptr) {
        // A document the parser built but that was never taken (a broken
        // last chunk) belongs to nobody else.
        if (m_parserContext->myDoc != nullptr && m_parserContext->myDoc != m_doc) xmlFreeDoc(m_parserContext->myDoc);
        m_parserContext->myDoc = nullptr;
        xmlFreeParserCtxt(m_parserContext);
    }
    if (m_doc != nullptr) xmlFreeDoc(m_doc);
    // xmlCleanupParser is deliberately not called: it frees libxml2's global
    // state while other threads may still parse their own documents.
}

bool LibXML2Filler::LoadChunk(const char* data, int size, int flag) {
    if (size < 0 || (data == nullptr && size > 0)) {
        SMIS_TRACE(LEVEL1, "xmlParserChunk failed.");
        return false;
    }
    if (m_doc != nullptr) {
        // A finished document takes no more input.
        SMIS_TRACE(LEVEL1, "xmlParserChunk failed.");
        return false;
    }
    if (m_parserContext == nullptr) {
        m_parserContext = xmlCreatePushParserCtxt(nullptr, nullptr, nullptr, 0, nullptr);
        if (m_parserContext == nullptr) {
            SMIS_TRACE(LEVEL1, "xmlParserChunk failed.");
            return false;
        }
        if (m_parserContext->sax != nullptr) {
            m_parserContext->sax->warning = nullptr;
            m_parserContext->sax->error = nullptr;
            m_parserContext->sax->fatalError = nullptr;
            if (m_parserContext->sax->initialized == XML_SAX2_MAGIC)
                m_parserContext->sax->serror = ignoreStructuredError;
        }
        m_parserContext->vctxt.error = nullptr;
        m_parserContext->vctxt.warning = nullptr;
        xmlCtxtUseOptions(m_parserContext, m_parserContext->options | XML_PARSE_NSCLEAN | XML_PARSE_COMPACT | XML_PARSE_NOBLANKS |
                                               XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    }
    if (xmlParseChunk(m_parserContext, data, size, flag) != 0) {
        SMIS_TRACE(LEVEL1, "xmlParserChunk failed.");
        return false;
    }
    if (flag != 1) return true;

    xmlDoc* doc = m_parserContext->myDoc;
    if (doc == nullptr || !m_parserContext->wellFormed) {
        SMIS_TRACE(LEVEL1, "doc error bad xml data.");
        return false;
    }
    m_parserContext->myDoc = nullptr;
    m_doc = doc;
    if (!initXPath()) {
        SMIS_TRACE(LEVEL1, "initXPath failed.");
        return false;
    }
    if (!initTree()) {
        SMIS_TRACE(LEVEL1, "initTree failed.");
        return false;
    }
    return true;
}

bool LibXML2Filler::initDoc(const std::string& path) {
    xmlKeepBlanksDefault(0);
    m_doc = xmlReadFile(path.c_str(), nullptr,
                        XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NSCLEAN | XML_PARSE_COMPACT);
    if (m_doc == nullptr) {
        std::cerr << "Error: bad xml file\n";
        return false;
    }
    return true;
}

bool LibXML2Filler::initXPath() {
    if (m_doc == nullptr) return false;
    m_xpathContext = xmlXPathNewContext(m_doc);
    return m_xpathContext != nullptr;
}

bool LibXML2Filler::initTree() {
    if (m_doc == nullptr || m_xpathContext == nullptr) return false;
    m_root = xmlDocGetRootElement(m_doc);
    if (m_root == nullptr || m_root->name == nullptr) return false;
    std::string rootName(reinterpret_cast<const char*>(m_root->name));
    if (rootName == "REQUEST") {
        cmdReturnCodePath = "/REQUEST/CMD_REQUEST/RETURN_CODE";
    } else if (rootName == "CMD_REQUEST") {
        cmdReturnCodePath = "/CMD_REQUEST/RETURN_CODE";
    } else {
        std::cerr << "Error: root node wrong : " << rootName << std::endl;
        return false;
    }
    return getReturnCode(cmdReturnCodePath, &m_returnCode);
}

bool LibXML2Filler::getReturnCode(const std::string& path, int* code) {
    xmlXPathObject* result = xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(path.c_str()), m_xpathContext);
    if (result == nullptr) return false;
    bool found = result->nodesetval != nullptr && result->nodesetval->nodeNr > 0;
    if (found) {
        std::string text = xmlText(xmlXPathCastToString(result));
        *code = std::atoi(text.c_str());
    }
    xmlXPathFreeObject(result);
    return found;
}

std::string LibXML2Filler::GetRootNodeName() const {
    if (m_root == nullptr || m_root->name == nullptr) return std::string();
    return reinterpret_cast<const char*>(m_root->name);
}

std::string LibXML2Filler::GetValueFromXPath(const std::string& path) const {
    return getNodeValue(path.c_str(), m_xpathContext);
}

std::list<NodeSet*> LibXML2Filler::GetNodeSetsFromXPath(const std::string& path, NodeSetGC& gc) const {
    std::list<NodeSet*> nodes;
    if (m_xpathContext == nullptr) return nodes;
    xmlXPathObject* result = xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(path.c_str()), m_xpathContext);
    if (result == nullptr) return nodes;
    if (result->nodesetval != nullptr) {
        for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
            NodeSet* node = new LibXML2NodeSet(result->nodesetval->nodeTab[i]);
            gc.Trusteeship(node);
            nodes.push_back(node);
        }
    }
    xmlXPathFreeObject(result);
    return nodes;
}

std::string LibXML2Filler::getNodeValue(const char* path, xmlXPathContext* context) {
    if (path == nullptr || context == nullptr) return std::string();
    xmlXPathObject* result = xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(path), context);
    if (result == nullptr) return std::string();
    std::string value;
    if (result->nodesetval != nullptr && result->nodesetval->nodeNr > 0)
        value = contentOf(result->nodesetval->nodeTab[0]);
    xmlXPathFreeObject(result);
    return value;
}

bool LibXML2Filler::fillAtr(xmlNode* node, unsigned long long& out, const char* name) {
    if (node == nullptr || name == nullptr || !nameIs(node, name)) return false;
    std::string spill;
    const char* text = contentText(node, spill);
    if (*text == '\0') return false;
    out = decimalOf(text);
    return true;
}

unsigned long long LibXML2Filler::decimalOf(const char* text) {
    // Plain digits, as the array writes its numbers, are read here; anything
    // else (signs, spaces, more digits than fit) the stream reads as always.
    unsigned long long value = 0;
    size_t digits = 0;
    for (; text[digits] >= '0' && text[digits] <= '9'; ++digits) {
        if (digits == 19) break;
        value = value * 10 + static_cast<unsigned long long>(text[digits] - '0');
    }
    if (digits > 0 && text[digits] == '\0') return value;
    std::istringstream stream(text);
    value = 0;
    stream >> value;
    return stream.fail() ? 0 : value;
}

namespace {

// The text of a node list that is one text node, which can be read where
// it stands; null for anything else.
const xmlChar* singleText(const xmlNode* children) {
    if (children == nullptr || children->next != nullptr) return nullptr;
    if (children->type != XML_TEXT_NODE && children->type != XML_CDATA_SECTION_NODE) return nullptr;
    return children->content != nullptr ? children->content : reinterpret_cast<const xmlChar*>("");
}

const xmlChar* const kNameAttribute = reinterpret_cast<const xmlChar*>("name");

}  // namespace

const char* LibXML2Filler::nameText(const xmlNode* node, std::string& spill) {
    if (node == nullptr || node->type != XML_ELEMENT_NODE) return "";
    for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
        if (attribute->name == nullptr || !xmlStrEqual(attribute->name, kNameAttribute)) continue;
        if (const xmlChar* text = singleText(attribute->children)) return reinterpret_cast<const char*>(text);
        break;
    }
    // Values made of several pieces, and defaults a document type may give,
    // are left to libxml2.
    spill = xmlText(xmlGetProp(node, kNameAttribute));
    return spill.c_str();
}

const char* LibXML2Filler::contentText(const xmlNode* node, std::string& spill) {
    if (node == nullptr) return "";
    if (node->type == XML_ELEMENT_NODE) {
        if (const xmlChar* text = singleText(node->children)) return reinterpret_cast<const char*>(text);
    }
    spill = xmlText(xmlNodeGetContent(node));
    return spill.c_str();
}

bool LibXML2Filler::nameIs(const xmlNode* node, const char* name) {
    std::string spill;
    return std::strcmp(nameText(node, spill), name) == 0;
}

std::string LibXML2Filler::nameOf(const xmlNode* node) {
    std::string spill;
    const char* text = nameText(node, spill);
    return text == spill.c_str() ? spill : std::string(text);
}

std::string LibXML2Filler::contentOf(const xmlNode* node) {
    std::string spill;
    const char* text = contentText(node, spill);
    return text == spill.c_str() ? spill : std::string(text);
}

std::string LibXML2NodeSet::GetValue() const { return LibXML2Filler::contentOf(m_node); }

bool LibXML2NodeSet::HasValue(const std::string& s) const {
    if (m_node == nullptr || m_node->type != XML_ELEMENT_NODE) return false;
    xmlChar* attr = xmlGetProp(m_node, reinterpret_cast<const xmlChar*>(LibXML2Filler::unitName.c_str()));
    if (attr == nullptr) return false;
    bool equal = xmlStrcmp(attr, reinterpret_cast<const xmlChar*>(s.c_str())) == 0;
    xmlFree(attr);
    return equal;
}

NodeSet* LibXML2NodeSet::GetSubNodeSet(NodeSetGC& gc) const {
    if (m_node == nullptr || m_node->children == nullptr) return nullptr;
    NodeSet* node = new LibXML2NodeSet(m_node->children);
    gc.Trusteeship(node);
    return node;
}

NodeSet* LibXML2NodeSet::GetNextNodeSet(NodeSetGC& gc) const {
    if (m_node == nullptr || m_node->next == nullptr) return nullptr;
    NodeSet* node = new LibXML2NodeSet(m_node->next);
    gc.Trusteeship(node);
    return node;
}

}  // namespace orvsmis
