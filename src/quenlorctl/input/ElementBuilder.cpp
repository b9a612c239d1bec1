#include "quenlorctl/input/ElementBuilder.h"

#include <cstring>
#include <utility>

#include "quenlorctl/input/DocumentParser.h"

namespace quenlor::ctl {
namespace {

constexpr std::string_view kRoot = "Hardware";
constexpr std::string_view kBlanks = " \t\r\n";

enum Depth : size_t { kRootDepth = 1, kGroupDepth = 2, kValueDepth = 3 };

// The schema's versions have 32 bits.
bool isInteger(std::string_view text) {
  const auto value = signedDecimal(text);
  return value && std::in_range<int32_t>(*value);
}

// What any element may carry: declarations of prefixes, and where a schema is.
bool isOfXml(std::string_view name, std::string_view value) {
  if (name == "xmlns") return value.empty();
  return name.starts_with("xmlns:") || name == "xsi:schemaLocation" ||
         name == "xsi:noNamespaceSchemaLocation";
}

std::string quoted(std::string_view name) { return "\"" + std::string(name) + "\""; }

}  // namespace

void ElementBuilder::start(Document& document) {
  m_document = &document;
  document.clear();
  m_depth = m_elements = 0;
  m_groupHint = m_fieldHint = 0;
  m_hasRoot = false;
  m_nestedTexts.clear();
  m_nested.clear();
}

std::optional<std::string> ElementBuilder::startElement(std::string_view name,
                                                        Attributes attributes) {
  if (++m_elements > kMostElements) {
    return "more than " + std::to_string(kMostElements) + " elements";
  }
  if (++m_depth > kMostDepth) {
    return "elements are nested more than " + std::to_string(kMostDepth) + " deep";
  }
  if (m_depth == kRootDepth) {
    startRoot(name, attributes);
  } else if (m_depth == kGroupDepth) {
    startGroup(name, attributes);
  } else if (m_depth == kValueDepth) {
    startValue(name, attributes);
  } else {
    startNested(name);
  }
  return {};
}

void ElementBuilder::startRoot(std::string_view name, Attributes attributes) {
  m_hasRoot = true;
  if (name == kRoot) {
    checkNoAttributes(attributes);
  } else {
    find("the root element is " + quoted(name) + ", not " + quoted(kRoot));
    m_document->setForeignRoot();
  }
}

void ElementBuilder::startGroup(std::string_view name, Attributes attributes) {
  m_group = findGroupElement(name, m_groupHint);
  m_fieldHint = 0;
  m_document->startRow(m_group, name);
  if (m_group == nullptr) {
    find("unknown group " + quoted(name));
    return;
  }
  m_groupHint = m_group->place;
  m_seen.assign(m_group->fields.size(), false);
  checkVersion(attributes);
}

void ElementBuilder::startValue(std::string_view name, Attributes attributes) {
  m_field = m_group == nullptr ? nullptr : m_group->findElement(name, m_fieldHint);
  m_element = name;
  m_textStart = m_document->texts().size();
  if (m_field != nullptr) {
    m_fieldHint = m_field->place + 1;
    m_isFirst = !m_seen[m_field->place];
    m_seen[m_field->place] = true;
    checkKey(attributes);
  } else if (m_group != nullptr) {
    find("unknown attribute " + quoted(name) + " of " + quoted(m_group->element));
  }
}

void ElementBuilder::startNested(std::string_view name) {
  if (m_depth == kValueDepth + 1) find(quoted(m_element) + " holds an element");
  m_element += '/';
  m_element += name;
  m_nestedTexts.emplace_back();
}

std::optional<std::string> ElementBuilder::addText(std::string_view text) {
  if (m_depth < kValueDepth) {
    addStrayText(text);
    return {};
  }
  std::string& target = m_nestedTexts.empty() ? m_document->texts() : m_nestedTexts.back();
  target += text;
  const size_t size = m_nestedTexts.empty() ? target.size() - m_textStart : target.size();
  if (size > kMostText) return "a text of more than " + std::to_string(kMostText) + " bytes";
  return {};
}

void ElementBuilder::addStrayText(std::string_view text) {
  if (m_depth != 0 && text.find_first_not_of(kBlanks) != text.npos) {
    find("text where only elements may stand");
  }
}

void ElementBuilder::startSection() {
  if (m_depth == kRootDepth || m_depth == kGroupDepth) find("text where only elements may stand");
}

void ElementBuilder::endElement(std::string_view name) {
  if (m_depth == kValueDepth) {
    endValue();
  } else if (m_depth > kValueDepth) {
    m_nested.emplace_back(m_element, std::move(m_nestedTexts.back()));
    m_nestedTexts.pop_back();
    m_element.resize(m_element.size() - name.size() - 1);
  }
  --m_depth;
}

// A value that is not of its form, or that the row has already, is kept as an extra text.
void ElementBuilder::endValue() {
  const std::string_view text = std::string_view(m_document->texts()).substr(m_textStart);
  if (m_field != nullptr && !isValid(*m_field, text)) {
    find("\"" + std::string(text.substr(0, 64)) + "\" is no value of " + quoted(m_element));
  }
  const auto number = m_field != nullptr && m_isFirst ? numberOf(*m_field, text) : std::nullopt;
  if (number) {
    m_document->addValue(*m_field, m_textStart, *number);
  } else {
    m_document->addExtra(m_element, m_textStart);
  }
  endNested();
}

void ElementBuilder::endNested() {
  for (const auto& [name, text] : m_nested) {
    const size_t start = m_document->texts().size();
    m_document->texts() += text;
    m_document->addExtra(name, start);
  }
  m_nested.clear();
}

template <class Known>
void ElementBuilder::checkAttributes(Attributes attributes, Known isKnown) {
  for (; *attributes != nullptr; attributes += 2) {
    if (!isKnown(attributes[0], attributes[1]) && !isOfXml(attributes[0], attributes[1])) {
      find("unexpected " + quoted(attributes[0]));
    }
  }
}

void ElementBuilder::checkNoAttributes(Attributes attributes) {
  checkAttributes(attributes, [](const char*, const char*) { return false; });
}

void ElementBuilder::checkVersion(Attributes attributes) {
  bool hasVersion = false;
  checkAttributes(attributes, [&](const char* name, const char* value) {
    if (std::strcmp(name, "version") != 0) return false;
    hasVersion = true;
    if (!isInteger(value)) find(quoted(value) + " is no version");
    return true;
  });
  if (!hasVersion) find(quoted(m_group->element) + " has no version");
}

void ElementBuilder::checkKey(Attributes attributes) {
  if (!m_isFirst) find("a second " + quoted(m_element));
  if (!m_field->isKey) return checkNoAttributes(attributes);
  bool isMarked = false;
  checkAttributes(attributes, [&](const char* name, const char* value) {
    if (std::strcmp(name, "IsKey") != 0) return false;
    isMarked = std::strcmp(value, "1") == 0;
    return true;
  });
  if (!isMarked) find("key " + quoted(m_element) + " is not marked IsKey=\"1\"");
}

}  // namespace quenlor::ctl
