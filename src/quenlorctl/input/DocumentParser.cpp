#include "quenlorctl/input/DocumentParser.h"

#include <expat.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

#include "quenlorctl/input/ElementBuilder.h"

namespace quenlor::ctl {
namespace {

constexpr size_t kChunk = 65536;  // what the source is asked for
constexpr size_t kPiece = 16384;  // what the parser is given at once
constexpr std::string_view kDeclaration = "<?xml";

struct ParserEnd {
  void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using Parser = std::unique_ptr<XML_ParserStruct, ParserEnd>;

// The parser of one source. Expat takes one document; where it meets something behind the root's
// end, that is where the next one starts.
class StreamParser {
 public:
  StreamParser(ByteSource& source, const std::string& file, const InputSinks& sinks)
      : m_source(source),
        m_file(file),
        m_sinks(sinks),
        m_parser(XML_ParserCreate(nullptr)),
        m_builder([this] { return place(); }) {
    if (!m_parser) throw std::bad_alloc();
  }

  void run() {
    do {
      startDocument();
      while (feed()) {
      }
    } while (!m_isAtEnd || m_next < m_input.size());
  }

 private:
  static StreamParser& self(void* user) { return *static_cast<StreamParser*>(user); }

  static void onStart(void* user, const XML_Char* name, const XML_Char** attributes) {
    self(user).refuseFor(self(user).m_builder.startElement(name, attributes));
  }

  static void onEnd(void* user, const XML_Char* name) {
    StreamParser& at = self(user);
    at.m_builder.endElement(name);
    if (!at.m_builder.isComplete()) return;
    at.m_end = static_cast<size_t>(XML_GetCurrentByteIndex(at.m_parser.get())) +
               static_cast<size_t>(XML_GetCurrentByteCount(at.m_parser.get()));
  }

  static void onText(void* user, const XML_Char* text, int size) {
    self(user).refuseFor(self(user).m_builder.addText({text, static_cast<size_t>(size)}));
  }

  static void onSection(void* user) { self(user).m_builder.startSection(); }

  static void onDoctype(void* user, const XML_Char*, const XML_Char*, const XML_Char*, int) {
    self(user).refuseFor("a DOCTYPE is not taken");
  }

  void refuseFor(const std::optional<std::string>& reason) {
    if (!reason || m_refusal) return;
    m_refusal = reason;
    m_refused = place();
    XML_StopParser(m_parser.get(), XML_FALSE);
  }

  void startDocument() {
    XML_ParserReset(m_parser.get(), nullptr);
    XML_SetUserData(m_parser.get(), this);
    XML_SetElementHandler(m_parser.get(), onStart, onEnd);
    XML_SetCharacterDataHandler(m_parser.get(), onText);
    XML_SetStartCdataSectionHandler(m_parser.get(), onSection);
    XML_SetStartDoctypeDeclHandler(m_parser.get(), onDoctype);
    m_builder.start(m_document);
    m_document.setFile(m_file);
    m_refusal.reset();
    m_refused.reset();
    m_isGiven = false;
    m_bytes.clear();
    m_fed = 0;
  }

  // Parses the next bytes; false when this document is through.
  bool feed() {
    void* buffer = XML_GetBuffer(m_parser.get(), static_cast<int>(kPiece));
    if (buffer == nullptr) throw std::bad_alloc();
    const size_t count = take(static_cast<char*>(buffer));
    if (m_sinks.wantsBytes) m_bytes.append(static_cast<const char*>(buffer), count);
    m_fed += count;
    const bool isFinal = count == 0;
    return handled(XML_ParseBuffer(m_parser.get(), static_cast<int>(count), isFinal), isFinal);
  }

  bool handled(XML_Status status, bool isFinal) {
    if (m_builder.isComplete() && !m_isGiven) giveDocument();
    if (status == XML_STATUS_ERROR) {
      handleError();
      return false;
    }
    refuseSize();
    if (!m_refusal) return !isFinal;
    handleError();
    return false;
  }

  // Expat starts anew with a token whose end it has not seen, so that a long one takes time that
  // grows with the square of its length: comments, names and attributes are bounded as texts are.
  void refuseSize() {
    const auto parsed = static_cast<size_t>(XML_GetCurrentByteIndex(m_parser.get()));
    if (!m_builder.isComplete() && m_fed > kMostBytes) {
      m_refusal = "more than " + std::to_string(kMostBytes >> 20) + " MiB";
    } else if (m_fed - parsed > kMostText + kPiece) {
      m_refusal = "markup of more than " + std::to_string(kMostText) + " bytes";
    }
  }

  void giveDocument() {
    m_isGiven = true;
    if (m_sinks.wantsBytes) m_bytes.resize(std::min(m_end, m_bytes.size()));
    if (m_document.isInventory() || m_sinks.wantsForeign) {
      m_sinks.document(m_document, m_bytes);
    } else {
      const Finding& root = m_document.findings().front();
      trouble(root.place, root.text);
    }
  }

  // Behind a complete document starts the next one; else the rest is searched for one.
  void handleError() {
    const bool isNext = m_builder.isComplete() && !m_refusal;
    const Place at = isNext ? placeOfRest() : place();
    const bool isAtStart = XML_GetCurrentByteIndex(m_parser.get()) <= 0;
    if (!isNext) trouble(m_refused.value_or(at), m_refusal ? *m_refusal : errorText());
    keepRest();
    m_base = at;
    if (!isNext) skipToDeclaration(isAtStart ? 1 : 0);
  }

  std::string errorText() const {
    const XML_Error error = XML_GetErrorCode(m_parser.get());
    if (error == XML_ERROR_NO_ELEMENTS && !m_builder.hasRoot()) return "no document";
    if (error == XML_ERROR_NO_ELEMENTS || error == XML_ERROR_UNCLOSED_TOKEN) {
      return "the document is cut off";
    }
    return std::string("not XML: ") + XML_ErrorString(error);
  }

  // The bytes from where the parser stopped on are for the next one. They are the last that it was
  // given, and most often all of them still lie in m_input.
  void keepRest() {
    int offset = 0;
    int size = 0;
    const char* context = XML_GetInputContext(m_parser.get(), &offset, &size);
    if (context == nullptr || offset > size) return;
    const auto rest = static_cast<size_t>(size - offset);
    const size_t lost = rest - std::min(rest, m_next);
    m_input.insert(0, context + offset, lost);
    m_next -= rest - lost;
  }

  // Where the parser stopped: counted here where it still has the whole document, for it counts
  // slowly.
  Place placeOfRest() const {
    int offset = 0;
    int size = 0;
    const char* context = XML_GetInputContext(m_parser.get(), &offset, &size);
    if (context == nullptr || offset != XML_GetCurrentByteIndex(m_parser.get())) return place();
    Place at = m_base;
    const char* line = context;
    const char* end = context + offset;
    while (const void* found = std::memchr(line, '\n', static_cast<size_t>(end - line))) {
      line = static_cast<const char*>(found) + 1;
      at = {at.line + 1, 1};
    }
    return {at.line, at.column + static_cast<uint64_t>(end - line)};
  }

  // Searches the input for an XML declaration.
  void skipToDeclaration(size_t from) {
    for (;;) {
      const size_t found = m_input.find(kDeclaration, m_next + from);
      if (found != m_input.npos) return drop(found - m_next);
      const size_t left = m_input.size() - m_next;
      drop(left - std::min(left, kDeclaration.size() - 1));
      if (!append()) return drop(m_input.size() - m_next);
      from = 0;
    }
  }

  // The place follows what is dropped.
  void drop(size_t count) {
    for (const size_t end = m_next + count; m_next < end; ++m_next) {
      ++m_base.column;
      if (m_input[m_next] == '\n') m_base = {m_base.line + 1, 1};
    }
  }

  // Puts more of the source behind what is left of the input; false at its end.
  bool append() {
    m_input.erase(0, m_next);
    m_next = 0;
    const size_t left = m_input.size();
    m_input.resize(left + kChunk);
    const size_t count = m_isAtEnd ? 0 : m_source.read(m_input.data() + left, kChunk);
    m_input.resize(left + count);
    m_isAtEnd = count == 0;
    return !m_isAtEnd;
  }

  size_t take(char* buffer) {
    if (m_next == m_input.size() && !append()) return 0;
    const size_t count = m_input.copy(buffer, kPiece, m_next);
    m_next += count;
    return count;
  }

  // Where the parser stands, in the whole source.
  Place place() const {
    const uint64_t line = XML_GetCurrentLineNumber(m_parser.get());
    const uint64_t column = XML_GetCurrentColumnNumber(m_parser.get());
    if (line == 1) return {m_base.line, m_base.column + column};
    return {m_base.line + line - 1, column + 1};
  }

  void trouble(const Place& at, const std::string& text) { m_sinks.trouble({m_file, at, text}); }

  friend void quenlor::ctl::parseDocuments(ByteSource&, const std::string&, const InputSinks&);

  ByteSource& m_source;
  const std::string& m_file;
  const InputSinks& m_sinks;
  Parser m_parser;
  ElementBuilder m_builder;
  Document m_document;
  std::optional<std::string> m_refusal;
  std::optional<Place> m_refused;  // where it was; the parser has gone on by then
  std::string m_bytes;             // of the document so far, where they are wanted
  std::string m_input;             // read from the source
  size_t m_next = 0;               // of it, for the parser
  size_t m_fed = 0;                // bytes that the parser has of this document
  Place m_base{1, 1};              // where the document starts
  size_t m_end = 0;                // of the root, in the document
  bool m_isGiven = false;          // the document, to its sink
  bool m_isAtEnd = false;
};

}  // namespace

void parseDocuments(ByteSource& source, const std::string& file, const InputSinks& sinks) {
  StreamParser parser(source, file, sinks);
  try {
    parser.run();
  } catch (const InputError& error) {
    sinks.trouble({file, parser.place(), error.what()});
  }
}

}  // namespace quenlor::ctl
