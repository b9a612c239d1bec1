// Reads an XML file into a sink.
#pragma once

#include "base/String.h"
#include "xmltree/NodeSink.h"

namespace quenlor {

// Parses in its constructor. The sink must live that long, and keeps the tree.
class XmlDovParser {
 public:
  XmlDovParser(const String& fileName, NodeSink& sink);
  virtual ~XmlDovParser() = default;

  // 0, or not 0 when the file cannot be read, is not well-formed XML or was refused by the sink.
  int error() const { return m_error; }

 private:
  int m_error;
};

}  // namespace quenlor
