// The generic sink: finds the sections that every kind of configuration file may hold.
#pragma once

#include "xmltree/NodeSink.h"

namespace quenlor {

// Keeps the document's root and silently stops at errors.
class ParseNodeSink : public NodeSink {
 public:
  static constexpr int kHardwareTag = 1;

  int onNodeTree(Node* node) override;
  int onWarning(const String& message, int line) override;
  int onError(const String& message, int line) override;
  int onCriticalError(const String& message, int line) override;

  // Section kHardwareTag: the outermost "Hardware" element, wherever in the tree it is. When there
  // are several, a new "Hardware" node that holds them all in document order. Null when there is
  // none, for other sections, and from the second call on. The caller deletes the node.
  Node* getNode(int tagType);

 private:
  Node* m_root = nullptr;
};

}  // namespace quenlor
