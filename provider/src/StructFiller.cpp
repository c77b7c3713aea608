#include "StructFiller.h"

namespace orvsmis {

NodeSetGC::~NodeSetGC() {
    for (NodeSet* node : m_nodes) delete node;
}

void NodeSetGC::Trusteeship(NodeSet* node) {
    if (node != nullptr) m_nodes.push_back(node);
}

void NodeSetGC::Trusteeship(const std::list<NodeSet*>& nodes) {
    for (NodeSet* node : nodes) Trusteeship(node);
}

}  // namespace orvsmis
