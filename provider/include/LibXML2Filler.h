#ifndef ORVSMIS_LIBXML2FILLER_H
#define ORVSMIS_LIBXML2FILLER_H

#include <list>
#include <string>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>

#include "StructFiller.h"

namespace orvsmis {

// A result document read with libxml2, either pushed in chunks while the
// tool writes it or read from a file. A bad document never throws: the
// return code stays 1.
class LibXML2Filler : public StructFiller {
public:
    static const std::string unitName;        // "name"
    static std::string cmdReturnCodePath;     // path of RETURN_CODE for the last root seen
    static std::string mArrayId;              // World Wide Name of the last array read

    // Empty, for chunks.
    LibXML2Filler();
    // Reads the whole file.
    explicit LibXML2Filler(const std::string& path);
    ~LibXML2Filler() override;

    bool LoadChunk(const char* data, int size, int flag) override;
    std::string GetRootNodeName() const override;
    std::string GetValueFromXPath(const std::string& path) const override;
    std::list<NodeSet*> GetNodeSetsFromXPath(const std::string& path, NodeSetGC& gc) const override;

    xmlXPathContext* GetXPathContext() const { return m_xpathContext; }

    // Text of the first node that path selects, "" when none.
    static std::string getNodeValue(const char* path, xmlXPathContext* context);
    // When the node's name attribute is `name` and it has text, reads a
    // decimal number from it.
    static bool fillAtr(xmlNode* node, unsigned long long& out, const char* name);

    // The name attribute of an element, "" when it has none.
    static std::string nameOf(const xmlNode* node);
    // The text content of a node, "" when it has none.
    static std::string contentOf(const xmlNode* node);

    // The same texts without copying them where they can be read in the tree
    // (the usual case: one text node). Otherwise the text is put in spill
    // and spill's characters are given; valid while node and spill are.
    static const char* nameText(const xmlNode* node, std::string& spill);
    static const char* contentText(const xmlNode* node, std::string& spill);
    // True when the name attribute of node is exactly name ("" for none).
    static bool nameIs(const xmlNode* node, const char* name);
    // A unit's number as the array writes it (decimal digits); other text is
    // read as a stream reads an unsigned number, 0 when it cannot.
    static unsigned long long decimalOf(const char* text);

private:
    bool initDoc(const std::string& path);
    bool initXPath();
    bool initTree();
    bool getReturnCode(const std::string& path, int* code);

    xmlDoc* m_doc;
    xmlNode* m_root;
    xmlParserCtxt* m_parserContext;
    xmlXPathContext* m_xpathContext;
};

// Cursor around one libxml2 node.
class LibXML2NodeSet : public NodeSet {
public:
    explicit LibXML2NodeSet(xmlNode* node) : m_node(node) {}

    std::string GetValue() const override;
    bool HasValue(const std::string& s) const override;
    NodeSet* GetSubNodeSet(NodeSetGC& gc) const override;
    NodeSet* GetNextNodeSet(NodeSetGC& gc) const override;

    xmlNode* GetNode() const { return m_node; }

private:
    xmlNode* m_node;
};

}  // namespace orvsmis

#endif
