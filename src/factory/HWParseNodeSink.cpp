#include "factory/HWParseNodeSink.h"

#include <utility>

#include "base/Trace.h"
#include "factory/GroupFactory.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/com/HWParseNodeSink.cpp";

void traceMessage(const char* function, const String& message, int line) {
  Trace(function, kSourcePath) << "Message is " << message << " at line " << line;
}

}  // namespace

int HWParseNodeSink::onNodeTree(Node* node) {
  const Trace trace("HWParseNodeSink::onNodeTree", kSourcePath);
  trace << "Node name is " << node->name();
  if (node->name() == "QCMs") {
    m_qcms = node;
    trace << "QCM node stored";
  } else if (node->name() == "Processors") {
    m_processors = node;
    trace << "Processor node stored";
  }
  if (node->children().empty()) trace << "no children";
  for (const auto& child : node->children()) onNodeTree(child.get());
  return 0;
}

int HWParseNodeSink::onWarning(const String& message, int line) {
  traceMessage("HWParseNodeSink::onWarning", message, line);
  return 0;
}

int HWParseNodeSink::onError(const String& message, int line) {
  traceMessage("HWParseNodeSink::onError", message, line);
  return kStop;
}

int HWParseNodeSink::onCriticalError(const String& message, int line) {
  traceMessage("HWParseNodeSink::onCriticalError", message, line);
  return kStop;
}

Node* HWParseNodeSink::getNode(int tagType) {
  Node* node = nullptr;
  if (tagType == kProcessorsSection) node = m_processors;
  if (tagType == kQcmsSection) node = m_qcms;
  if (node == nullptr) return nullptr;
  // The other section may lie inside the one that leaves.
  if (m_processors != nullptr && m_processors->isWithin(*node)) m_processors = nullptr;
  if (m_qcms != nullptr && m_qcms->isWithin(*node)) m_qcms = nullptr;
  return handOver(node);
}

}  // namespace quenlor
