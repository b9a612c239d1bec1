#include "quenlorctl/document/Document.h"

#include <algorithm>

namespace quenlor::ctl {
namespace {

// What a document of unusual size has taken is given back.
constexpr size_t kKeptTexts = 1 << 20;
constexpr size_t kKeptEntries = 1 << 16;

template <class Container>
void emptyOut(Container& container, size_t kept) {
  container.clear();
  if (container.capacity() > kept) Container().swap(container);
}

}  // namespace

void Document::clear() {
  m_file.clear();
  m_isInventory = true;
  emptyOut(m_texts, kKeptTexts);
  emptyOut(m_rows, kKeptEntries);
  emptyOut(m_values, kKeptEntries);
  emptyOut(m_extras, kKeptEntries);
  m_findings.clear();
  m_counts.assign(groups().size(), 0);
  m_unknownCounts.clear();
}

std::string_view Document::elementOf(const Row& row) const {
  return row.group == nullptr ? text(row.element) : row.group->element;
}

const Document::Row* Document::firstRow(uint32_t groupId) const {
  const auto found = std::find_if(m_rows.begin(), m_rows.end(), [groupId](const Row& row) {
    return row.group != nullptr && row.group->id == groupId;
  });
  return found == m_rows.end() ? nullptr : &*found;
}

const Document::Value* Document::find(const Row& row, uint32_t id) const {
  const Value* first = valuesOf(row);
  const Value* end = first + row.valueCount;
  const Value* found = std::find_if(first, end, [id](const Value& v) { return v.field->id == id; });
  return found == end ? nullptr : found;
}

std::string_view Document::textOf(uint32_t groupId, uint32_t id) const {
  const Row* row = firstRow(groupId);
  return row == nullptr ? std::string_view() : textOf(*row, id);
}

std::string_view Document::textOf(const Row& row, uint32_t id) const {
  const Value* value = find(row, id);
  return value == nullptr ? std::string_view() : text(value->text);
}

Sources Document::sources() const {
  return textOf(group::kScanInfo, kSourcesOfScan) == "modern" ? Sources::kModern
                                                              : Sources::kClassic;
}

void Document::startRow(const Group* group, std::string_view element) {
  Row row;
  row.group = group;
  if (group == nullptr) row.element = append(element);
  row.firstValue = static_cast<uint32_t>(m_values.size());
  row.firstExtra = static_cast<uint32_t>(m_extras.size());
  row.number = ++countOf(group, element);
  m_rows.push_back(row);
}

bool Document::hasValue(const Field& field) const { return find(m_rows.back(), field.id); }

void Document::addValue(const Field& field, size_t start, Number number) {
  const Text text{static_cast<uint32_t>(start), static_cast<uint32_t>(m_texts.size() - start)};
  m_values.push_back({&field, text, number});
  ++m_rows.back().valueCount;
}

void Document::addExtra(std::string_view name, size_t start) {
  const Text text{static_cast<uint32_t>(start), static_cast<uint32_t>(m_texts.size() - start)};
  m_extras.push_back({append(name), text});
  ++m_rows.back().extraCount;
}

void Document::addFinding(Place place, std::string text) {
  if (m_findings.size() < kMostFindings) m_findings.push_back({place, std::move(text)});
}

uint32_t& Document::countOf(const Group* group, std::string_view element) {
  return group == nullptr ? m_unknownCounts[std::string(element)] : m_counts[group->place];
}

Document::Text Document::append(std::string_view text) {
  const Text appended{static_cast<uint32_t>(m_texts.size()), static_cast<uint32_t>(text.size())};
  m_texts += text;
  return appended;
}

}  // namespace quenlor::ctl
