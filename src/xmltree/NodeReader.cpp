#include "xmltree/NodeReader.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <string_view>
#include <utility>

#define XML_DTD  // declares the limits on entity expansion
#include <expat.h>

namespace quenlor {
namespace {

constexpr int kBlockSize = 64 * 1024;

// Long and nested entities are what expansion attacks are made of.
constexpr int kLongestEntity = 1024;

// Expanded text may be ten times the document's size, once it exceeds one megabyte.
constexpr float kExpansionFactor = 10.0F;
constexpr unsigned long long kExpansionStart = 1024ULL * 1024;

// The parser walks through the declared attributes of an element's type at each such element.
constexpr int kMostDeclaredAttributes = 64;

struct StreamCloser {
  void operator()(FILE* stream) const { std::fclose(stream); }
};

struct ParserFree {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

}  // namespace

// What expat calls back.
struct NodeReader::Events {
  static NodeReader& reader(void* user) { return *static_cast<NodeReader*>(user); }

  static void install(XML_Parser parser, NodeReader* reader) {
    XML_SetUserData(parser, reader);
    XML_SetElementHandler(parser, onStart, onEnd);
    XML_SetStartDoctypeDeclHandler(parser, onDoctype);
    XML_SetEntityDeclHandler(parser, onEntity);
    XML_SetAttlistDeclHandler(parser, onAttribute);
    XML_SetSkippedEntityHandler(parser, onSkippedEntity);
  }

  static void XMLCALL onStart(void* user, const XML_Char* name, const XML_Char** attributes) {
    reader(user).startElement(name, attributes);
  }

  static void XMLCALL onEnd(void* user, const XML_Char*) { reader(user).endElement(); }

  static void XMLCALL onDoctype(void* user, const XML_Char*, const XML_Char* systemId,
                                const XML_Char*, int) {
    if (systemId != nullptr) reader(user).warn("the external document type is not read");
  }

  static void XMLCALL onEntity(void* user, const XML_Char*, int isParameterEntity,
                               const XML_Char* value, int length, const XML_Char*, const XML_Char*,
                               const XML_Char*, const XML_Char*) {
    reader(user).declareEntity(isParameterEntity != 0, value, length);
  }

  static void XMLCALL onAttribute(void* user, const XML_Char*, const XML_Char*, const XML_Char*,
                                  const XML_Char* defaultValue, int) {
    reader(user).declareAttribute(defaultValue != nullptr);
  }

  static void XMLCALL onSkippedEntity(void* user, const XML_Char*, int) {
    reader(user).refuse("reference to an entity that is not declared here");
  }
};

int NodeReader::readFile(const String& fileName) {
  const std::unique_ptr<FILE, StreamCloser> stream(std::fopen(fileName.c_str(), "re"));
  if (stream == nullptr) {
    fail(std::strerror(errno), 0);
    return m_result;
  }
  return read(stream.get());
}

int NodeReader::read(FILE* stream) {
  const std::unique_ptr<XML_ParserStruct, ParserFree> parser(XML_ParserCreate(nullptr));
  if (parser == nullptr) {
    fail("no memory for a parser", 0);
    return m_result;
  }
  m_parser = parser.get();
  XML_SetBillionLaughsAttackProtectionMaximumAmplification(m_parser, kExpansionFactor);
  XML_SetBillionLaughsAttackProtectionActivationThreshold(m_parser, kExpansionStart);
  Events::install(m_parser, this);
  parse(stream);
  m_parser = nullptr;
  if (m_result == 0) m_result = m_sink.deliver(std::move(m_root));
  return m_result;
}

void NodeReader::parse(FILE* stream) {
  for (bool atEnd = false; !atEnd && m_result == 0;) {
    void* block = XML_GetBuffer(m_parser, kBlockSize);
    if (block == nullptr) return fail("no memory for the document", line());
    const size_t count = std::fread(block, 1, kBlockSize, stream);
    if (std::ferror(stream) != 0) return fail(std::strerror(errno), 0);
    atEnd = count < kBlockSize;
    const XML_Status status = XML_ParseBuffer(m_parser, static_cast<int>(count), atEnd);
    // A callback that stopped the parser has reported the reason already.
    if (status != XML_STATUS_OK && m_result == 0) {
      return fail(XML_ErrorString(XML_GetErrorCode(m_parser)), line());
    }
  }
}

void NodeReader::startElement(const char* name, const char** attributes) {
  if (m_result != 0) return;
  if (++m_depth > kMaxDepth) return refuse("elements are nested too deep");
  auto node = std::make_unique<Node>(name);
  for (; *attributes != nullptr; attributes += 2) node->setAttribute(attributes[0], attributes[1]);
  if (m_current == nullptr) {
    m_root = std::move(node);
    m_current = m_root.get();
  } else {
    m_current = m_current->addChild(std::move(node));
  }
}

void NodeReader::endElement() {
  // The parser still closes an empty element at which it was stopped.
  if (m_result != 0) return;
  m_current = m_current->parent();
  --m_depth;
}

void NodeReader::declareEntity(bool isParameterEntity, const char* value, int length) {
  if (isParameterEntity) return refuse("parameter entities are not taken");
  if (value == nullptr) return refuse("external entities are not taken");
  if (length > kLongestEntity) return refuse("an entity is too long");
  const std::string_view text(value, static_cast<size_t>(length));
  if (text.find('&') != std::string_view::npos) refuse("nested entities are not taken");
}

void NodeReader::declareAttribute(bool hasDefault) {
  if (hasDefault) return refuse("default values of attributes are not taken");
  if (++m_declaredAttributes > kMostDeclaredAttributes) refuse("too many attributes are declared");
}

void NodeReader::warn(const char* message) {
  if (m_result == 0) stop(m_sink.onWarning(message, line()));
}

void NodeReader::refuse(const char* message) {
  if (m_result != 0) return;
  const int answer = m_sink.onError(message, line());
  stop(answer != 0 ? answer : kFailed);
}

void NodeReader::fail(const char* message, int line) {
  const int answer = m_sink.onCriticalError(message, line);
  m_result = answer != 0 ? answer : kFailed;
}

void NodeReader::stop(int result) {
  m_result = result;
  if (result != 0) XML_StopParser(m_parser, XML_FALSE);
}

int NodeReader::line() const {
  const XML_Size number = XML_GetCurrentLineNumber(m_parser);
  return number > INT_MAX ? INT_MAX : static_cast<int>(number);
}

}  // namespace quenlor
