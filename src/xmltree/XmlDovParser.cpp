#include "xmltree/XmlDovParser.h"

#include "xmltree/NodeReader.h"

namespace quenlor {

XmlDovParser::XmlDovParser(const String& fileName, NodeSink& sink)
    : m_error(NodeReader(sink).readFile(fileName)) {}

}  // namespace quenlor
