// Reads an XML file into a sink.
#pragma once

#include <cstdio>

#include "base/String.h"
#include "xmltree/NodeSink.h"

namespace quenlor {

// Parses in its constructor. The sink must live that long, and keeps the tree.
class XmlDovParser {
 public:
  XmlDovParser(const String& fileName, NodeSink& sink);
  XmlDovParser(FILE* stream, NodeSink& sink);  // the stream stays the caller's
  virtual ~XmlDovParser() = default;

  // 0, or not 0 when the file cannot be read, is not well-formed XML or was refused by the sink.
  int error() const { return m_error; }
  // True when the error is that elements are nested deeper than is taken.
  bool isTooDeep() const { return m_isTooDeep; }

 private:
  bool m_isTooDeep = false;
  int m_error = 0;
};

}  // namespace quenlor
