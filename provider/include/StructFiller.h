#ifndef ORVSMIS_STRUCTFILLER_H
#define ORVSMIS_STRUCTFILLER_H

#include <list>
#include <string>

namespace orvsmis {

class NodeSetGC;

// A cursor on one element of a result document.
class NodeSet {
public:
    // The element's text content, "" when it has none.
    virtual std::string GetValue() const = 0;
    // True when the element's "name" attribute is exactly s.
    virtual bool HasValue(const std::string& s) const = 0;
    // The first child (text nodes count), null when there is none.
    virtual NodeSet* GetSubNodeSet(NodeSetGC& gc) const = 0;
    // The next sibling, null at the end.
    virtual NodeSet* GetNextNodeSet(NodeSetGC& gc) const = 0;
    virtual ~NodeSet() {}
};

// Owns cursors for the length of one fill operation.
class NodeSetGC {
public:
    NodeSetGC() {}
    ~NodeSetGC();
    void Trusteeship(NodeSet* node);
    void Trusteeship(const std::list<NodeSet*>& nodes);

private:
    NodeSetGC(const NodeSetGC&) = delete;
    NodeSetGC& operator=(const NodeSetGC&) = delete;
    std::list<NodeSet*> m_nodes;
};

// Reader of one result document. The return code is 1 until the document's
// RETURN_CODE has been read.
class StructFiller {
public:
    StructFiller() : m_returnCode(1) {}
    virtual ~StructFiller() {}

    virtual bool LoadChunk(const char* data, int size, int flag) = 0;
    virtual std::string GetRootNodeName() const = 0;
    virtual std::string GetValueFromXPath(const std::string& path) const = 0;
    virtual std::list<NodeSet*> GetNodeSetsFromXPath(const std::string& path, NodeSetGC& gc) const = 0;

    int GetReturnCode() const { return m_returnCode; }

protected:
    int m_returnCode;

private:
    StructFiller(const StructFiller&) = delete;
    StructFiller& operator=(const StructFiller&) = delete;
};

}  // namespace orvsmis

#endif
