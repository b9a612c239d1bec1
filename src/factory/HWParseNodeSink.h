// Finds the sections of the hardware configuration file.
#pragma once

#include "xmltree/NodeSink.h"

namespace quenlor {

// Keeps the last "Processors" and the last "QCMs" element of a document, wherever they are in it.
class HWParseNodeSink : public NodeSink {
 public:
  int onNodeTree(Node* node) override;
  int onWarning(const String& message, int line) override;        // 0: reading goes on
  int onError(const String& message, int line) override;          // kStop
  int onCriticalError(const String& message, int line) override;  // kStop

  // The stored "Processors" node for section 5, the "QCMs" node for 6, else null. Handed over once:
  // the caller deletes it, and a later call for the same section gives null.
  Node* getNode(int tagType);

 private:
  Node* m_processors = nullptr;
  Node* m_qcms = nullptr;
};

}  // namespace quenlor
