// Builds a document from the elements of its XML. Knows no parser: it is told of elements and texts
// as they come, and where they stand.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quenlorctl/document/Document.h"

namespace quenlor::ctl {

class ElementBuilder {
 public:
  // Names and values by turns, ended by null, as expat gives them.
  using Attributes = const char* const*;

  // Tells where the parser stands; asked for only when there is something to say.
  explicit ElementBuilder(std::function<Place()> place) : m_place(std::move(place)) {}

  // Clears the document that is to be filled; it must live as long as it is.
  void start(Document& document);

  // Those that return a text say why the document is refused, or nothing.
  std::optional<std::string> startElement(std::string_view name, Attributes attributes);
  std::optional<std::string> addText(std::string_view text);
  void startSection();  // a CDATA section
  void endElement(std::string_view name);

  bool hasRoot() const { return m_hasRoot; }
  bool isComplete() const { return m_hasRoot && m_depth == 0; }

 private:
  void startRoot(std::string_view name, Attributes attributes);
  void startGroup(std::string_view name, Attributes attributes);
  void startValue(std::string_view name, Attributes attributes);
  void startNested(std::string_view name);
  void endValue();
  void endNested();
  void addStrayText(std::string_view text);
  // Tells of attributes that neither `isKnown` (a name, a value) nor XML itself knows.
  template <class Known>
  void checkAttributes(Attributes attributes, Known isKnown);
  void checkNoAttributes(Attributes attributes);
  void checkVersion(Attributes attributes);
  void checkKey(Attributes attributes);
  void find(const std::string& what) { m_document->addFinding(m_place(), what); }

  std::function<Place()> m_place;
  Document* m_document = nullptr;
  size_t m_depth = 0;
  size_t m_elements = 0;
  bool m_hasRoot = false;
  uint32_t m_groupHint = 0;
  uint32_t m_fieldHint = 0;
  const Group* m_group = nullptr;  // of the open row
  const Field* m_field = nullptr;  // of the open value; null: the catalogue does not know it
  bool m_isFirst = false;          // of its attribute in the row
  std::vector<bool> m_seen;        // attributes of the open row, by place
  std::string m_element;           // the open value's; with its children's behind it
  size_t m_textStart = 0;          // of the open value, in the document's texts
  // Elements inside a value are none of ours: they become extra texts behind it.
  std::vector<std::string> m_nestedTexts;
  std::vector<std::pair<std::string, std::string>> m_nested;
};

}  // namespace quenlor::ctl
