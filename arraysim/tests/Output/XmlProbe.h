#pragma once
// Reads a result document the way the module does: libxml2, XPath on the
// name attributes of chapters, objects, sections and units.

#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <string>
#include <vector>

class XmlProbe {
public:
    explicit XmlProbe(const std::string& text) {
        m_doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                              XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
        if (m_doc) m_ctx = xmlXPathNewContext(m_doc);
    }
    ~XmlProbe() {
        if (m_ctx) xmlXPathFreeContext(m_ctx);
        if (m_doc) xmlFreeDoc(m_doc);
    }
    XmlProbe(const XmlProbe&) = delete;
    XmlProbe& operator=(const XmlProbe&) = delete;

    bool Ok() const { return m_ctx != nullptr; }

    std::string RootName() const {
        xmlNode* root = m_doc ? xmlDocGetRootElement(m_doc) : nullptr;
        return root ? reinterpret_cast<const char*>(root->name) : "";
    }

    // Text of every node the path selects, in document order.
    std::vector<std::string> All(const std::string& path) const {
        std::vector<std::string> values;
        if (!m_ctx) return values;
        xmlXPathObject* result = xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(path.c_str()), m_ctx);
        if (result && result->nodesetval) {
            for (int i = 0; i < result->nodesetval->nodeNr; ++i) {
                xmlChar* text = xmlNodeGetContent(result->nodesetval->nodeTab[i]);
                values.push_back(text ? reinterpret_cast<const char*>(text) : "");
                xmlFree(text);
            }
        }
        xmlXPathFreeObject(result);
        return values;
    }

    std::string First(const std::string& path) const {
        std::vector<std::string> values = All(path);
        return values.empty() ? "<none>" : values.front();
    }

    size_t Count(const std::string& path) const { return All(path).size(); }

    // The name attributes of the children of the node the path selects.
    std::vector<std::string> UnitNames(const std::string& sectionPath) const { return All(sectionPath + "/UNIT/@name"); }

private:
    xmlDoc* m_doc = nullptr;
    xmlXPathContext* m_ctx = nullptr;
};
