#include "xmltree/Node.h"

#include <algorithm>
#include <utility>

namespace quenlor {

Node::Node(String name) : m_name(std::move(name)) {}

// Nodes go one after the other: each inside the end of its parent, a deep tree would need as deep a
// stack.
Node::~Node() {
  std::vector<std::unique_ptr<Node>> rest = takeChildren();
  while (!rest.empty()) {
    const std::unique_ptr<Node> node = std::move(rest.back());
    rest.pop_back();
    for (auto& child : node->takeChildren()) rest.push_back(std::move(child));
  }
}

void Node::setAttribute(String key, String value) {
  m_attributes.set(std::move(key), std::move(value));
}

bool Node::isWithin(const Node& ancestor) const {
  const Node* node = this;
  while (node != nullptr && node != &ancestor) node = node->m_parent;
  return node != nullptr;
}

Node* Node::addChild(std::unique_ptr<Node> child) {
  child->m_parent = this;
  return m_children.emplace_back(std::move(child)).get();
}

std::unique_ptr<Node> Node::detach() {
  if (m_parent == nullptr) return nullptr;
  auto& siblings = m_parent->m_children;
  const auto self = std::find_if(siblings.begin(), siblings.end(),
                                 [this](const auto& sibling) { return sibling.get() == this; });
  std::unique_ptr<Node> detached = std::move(*self);
  siblings.erase(self);
  m_parent = nullptr;
  return detached;
}

std::vector<std::unique_ptr<Node>> Node::takeChildren() {
  for (const auto& child : m_children) child->m_parent = nullptr;
  return std::exchange(m_children, {});
}

}  // namespace quenlor
