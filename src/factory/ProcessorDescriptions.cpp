#include "factory/ProcessorDescriptions.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "factory/HWXmlDovParser.h"
#include "host/Handles.h"
#include "host/WholeFile.h"
#include "xmltree/Node.h"

namespace quenlor {
namespace {

constexpr std::string_view kElement = "<Processor ";
constexpr std::string_view kCommentStart = "<!--";
constexpr std::string_view kCommentEnd = "-->";

// The tag or comment at the front of the text; up to its end where it has none.
std::string_view markupAt(std::string_view text) {
  if (text.starts_with(kCommentStart)) {
    const size_t end = text.find(kCommentEnd, kCommentStart.size());
    return end == std::string_view::npos ? text : text.substr(0, end + kCommentEnd.size());
  }
  char quote = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const char character = text[i];
    if (quote != 0) {
      if (character == quote) quote = 0;
    } else if (character == '"' || character == '\'') {
      quote = character;
    } else if (character == '>') {
      return text.substr(0, i + 1);
    }
  }
  return text;
}

// Nothing in it but tags, comments and the XML declaration.
bool isPlain(std::string_view document) {
  if (document.find('&') != std::string_view::npos) return false;
  for (size_t at = document.find("<!"); at != std::string_view::npos;
       at = document.find("<!", at + 1)) {
    if (!document.substr(at).starts_with(kCommentStart)) return false;
  }
  return true;
}

bool hasEither(std::string_view tag, const std::string& text, const std::string& other) {
  return tag.find(text) != std::string_view::npos || tag.find(other) != std::string_view::npos;
}

}  // namespace

std::string withModelOnly(std::string_view document, int model) {
  if (!isPlain(document)) return std::string(document);
  const std::string number = '"' + std::to_string(model) + '"';
  const std::string inApostrophes = '\'' + std::to_string(model) + '\'';
  std::string kept;
  while (!document.empty()) {
    document.remove_prefix(std::min(document.find('<'), document.size()));
    const std::string_view markup = markupAt(document);
    document.remove_prefix(markup.size());
    if (markup.starts_with(kCommentStart)) continue;
    const bool isOther = !markup.starts_with(kElement) || !markup.ends_with("/>");
    if (isOther || hasEither(markup, number, inApostrophes)) kept += markup;
  }
  return kept;
}

ProcessorDescriptions::ProcessorDescriptions(const std::string& path)
    : m_document(readWholeFile(path).bytes) {}

const ProcessorDescriptions::Descriptions& ProcessorDescriptions::ofModel(int model) {
  const auto [found, isNew] = m_found.try_emplace(model);
  if (isNew) found->second = parse(model);
  return found->second;
}

ProcessorDescriptions::Descriptions ProcessorDescriptions::parse(int model) const {
  Descriptions found;
  std::string document = withModelOnly(m_document, model);
  if (document.empty()) return found;
  const FileStream stream(::fmemopen(document.data(), document.size(), "r"));
  if (!stream) return found;
  HWParseNodeSink sink;
  const HWXmlDovParser parser(stream.get(), sink);
  const std::unique_ptr<Node> section(sink.getNode(kProcessorsSection));
  if (parser.error() != 0 || !section) return found;
  for (const auto& child : section->children()) {
    if (child->name() == "Processor") found.push_back(std::make_unique<ProcessorInfo>(*child));
  }
  return found;
}

}  // namespace quenlor
