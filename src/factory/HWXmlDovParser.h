// Reads the hardware configuration file into its sink.
#pragma once

#include "factory/HWParseNodeSink.h"
#include "xmltree/XmlDovParser.h"

namespace quenlor {

// Parses in its constructor; error() tells whether that failed. The sink keeps the tree.
class HWXmlDovParser : public XmlDovParser {
 public:
  HWXmlDovParser(const String& fileName, HWParseNodeSink& sink) : XmlDovParser(fileName, sink) {}
  HWXmlDovParser(FILE* stream, HWParseNodeSink& sink) : XmlDovParser(stream, sink) {}
};

}  // namespace quenlor
