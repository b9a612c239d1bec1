#include "xmltree/NodeSink.h"

#include <utility>

namespace quenlor {

int NodeSink::deliver(std::unique_ptr<Node> tree) {
  m_tree = std::move(tree);
  return onNodeTree(m_tree.get());
}

Node* NodeSink::handOver(Node* node) {
  if (node == nullptr) return nullptr;
  if (node == m_tree.get()) return m_tree.release();
  return node->parent() == nullptr ? node : node->detach().release();
}

}  // namespace quenlor
