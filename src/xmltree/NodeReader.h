// Turns an XML document into a tree of nodes.
#pragma once

#include <cstdio>
#include <memory>

#include "base/String.h"
#include "xmltree/Node.h"
#include "xmltree/NodeSink.h"

struct XML_ParserStruct;  // the XML parser's own type, so that its header stays out of this one

namespace quenlor {

// Reads one document and tells the sink its tree or what is wrong with it. Takes time and memory in
// proportion to the document's size: elements nested deeper than kMaxDepth are refused, and so is
// everything in a document type definition that can make a small document a large one. Nothing but
// the document itself is ever opened.
class NodeReader {
 public:
  static constexpr int kMaxDepth = 1024;
  // The result where the sink's own answer to an error was 0.
  static constexpr int kFailed = -1;

  explicit NodeReader(NodeSink& sink) : m_sink(sink) {}
  NodeReader(const NodeReader&) = delete;
  NodeReader& operator=(const NodeReader&) = delete;

  // 0 when the whole document was read and the sink took its tree. One call per reader.
  int readFile(const String& fileName);
  int read(FILE* stream);

  // True when the document was refused for its depth.
  bool isTooDeep() const { return m_depth > kMaxDepth; }

 private:
  struct Events;  // the parser's callbacks

  void parse(FILE* stream);
  void startElement(const char* name, const char** attributes);
  void endElement();
  void declareEntity(bool isParameterEntity, const char* value, int length);
  void declareAttribute(bool hasDefault);

  void warn(const char* message);
  void refuse(const char* message);
  void fail(const char* message, int line);
  void stop(int result);
  int line() const;

  NodeSink& m_sink;
  XML_ParserStruct* m_parser = nullptr;
  int m_result = 0;
  std::unique_ptr<Node> m_root;
  Node* m_current = nullptr;
  int m_depth = 0;
  int m_declaredAttributes = 0;
};

}  // namespace quenlor
