// What receives the outcome of reading an XML document.
#pragma once

#include <memory>

#include "base/String.h"
#include "xmltree/Node.h"

namespace quenlor {

// A result other than 0 of an on... function ends the reading and becomes its result. After an
// error the reading ends in any case. Lines count from 1.
class NodeSink {
 public:
  // What sinks return from onError() and onCriticalError().
  static constexpr int kStop = -1009;

  NodeSink() = default;
  NodeSink(const NodeSink&) = delete;
  NodeSink& operator=(const NodeSink&) = delete;
  virtual ~NodeSink() = default;

  // The document's root element, once the whole document has been read and is well-formed. The node
  // stays valid while the sink lives, unless handOver() gave it away.
  virtual int onNodeTree(Node* node) = 0;
  // Something that does not change what the document means to us.
  virtual int onWarning(const String& message, int line) = 0;
  // Content that is well-formed but refused: too deep, entities of a kind that is not taken.
  virtual int onError(const String& message, int line) = 0;
  // The file cannot be read (line 0), or the document is not well-formed.
  virtual int onCriticalError(const String& message, int line) = 0;

  // Keeps the tree for this sink's lifetime and reports its root with onNodeTree().
  int deliver(std::unique_ptr<Node> tree);

 protected:
  // Gives a node of the kept tree, with all below it, to the caller, who deletes it. Pointers to
  // nodes within it must be forgotten (Node::isWithin). A node that belongs to no tree is the
  // caller's already and returned as it is; null gives null.
  Node* handOver(Node* node);

 private:
  std::unique_ptr<Node> m_tree;
};

}  // namespace quenlor
