// One element of an XML document, as a tree.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "base/String.h"
#include "base/StringMap.h"

namespace quenlor {

// Owns its children. Name and attributes are UTF-8 text; character data, comments and processing
// instructions are not kept.
class Node {
 public:
  explicit Node(String name);
  ~Node();
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  const String& name() const { return m_name; }
  const StringMap& attributes() const { return m_attributes; }
  // The attribute's value; the empty text when it is absent.
  String attribute(const String& key) const { return m_attributes.get(key); }
  void setAttribute(String key, String value);
  // In document order.
  const std::vector<std::unique_ptr<Node>>& children() const { return m_children; }
  // Null for the root of a tree.
  Node* parent() const { return m_parent; }
  // True when this node is the ancestor or lies anywhere below it.
  bool isWithin(const Node& ancestor) const;

  // Appends a child and returns it.
  Node* addChild(std::unique_ptr<Node> child);
  // Takes this node, with everything below it, out of its parent; null when it has none. Takes time
  // in proportion to the parent's children.
  std::unique_ptr<Node> detach();
  // Takes all children out.
  std::vector<std::unique_ptr<Node>> takeChildren();

 private:
  String m_name;
  StringMap m_attributes;
  std::vector<std::unique_ptr<Node>> m_children;
  Node* m_parent = nullptr;
};

}  // namespace quenlor
