#include "xmltree/XmlDovParser.h"

#include "xmltree/NodeReader.h"

namespace quenlor {

XmlDovParser::XmlDovParser(const String& fileName, NodeSink& sink) {
  NodeReader reader(sink);
  m_error = reader.readFile(fileName);
  m_isTooDeep = reader.isTooDeep();
}

XmlDovParser::XmlDovParser(FILE* stream, NodeSink& sink) {
  NodeReader reader(sink);
  m_error = reader.read(stream);
  m_isTooDeep = reader.isTooDeep();
}

}  // namespace quenlor
