#include "groups/modern/ModernTable.h"

#include <algorithm>
#include <limits>
#include <set>

#include "base/Utf8.h"
#include "identity/Identity.h"

namespace quenlor {
namespace {

constexpr uint32_t kVersion = 1;
constexpr uint32_t kIndex = 1;
constexpr size_t kUsualAttributes = 16;
constexpr uint64_t kLargest = std::numeric_limits<int64_t>::max();

}  // namespace

const ModernRow::Value* ModernRow::find(uint32_t id) const {
  for (const auto& [known, value] : m_values) {
    if (known == id) return &value;
  }
  return nullptr;
}

ModernRow::Value& ModernRow::valueOf(uint32_t id) {
  for (auto& [known, value] : m_values) {
    if (known == id) return value;
  }
  if (m_values.empty()) m_values.reserve(kUsualAttributes);
  return m_values.emplace_back(id, uint32_t{0}).second;
}

ModernRow& ModernRow::text(uint32_t id, const std::optional<std::string>& value) {
  if (!value) return *this;
  std::u32string characters = cleanCharacters(*value);
  if (!characters.empty()) valueOf(id) = std::move(characters);
  return *this;
}

ModernRow& ModernRow::ulong(uint32_t id, std::optional<uint64_t> value) {
  if (value) valueOf(id) = saturateToUlong(*value);
  return *this;
}

ModernRow& ModernRow::longlong(uint32_t id, std::optional<uint64_t> value) {
  if (value) valueOf(id) = static_cast<int64_t>(std::min(*value, kLargest));
  return *this;
}

ModernRow& ModernRow::ulonglong(uint32_t id, std::optional<uint64_t> value) {
  if (value) valueOf(id) = *value;
  return *this;
}

ModernRow& ModernRow::real(uint32_t id, std::optional<float> value) {
  if (value) valueOf(id) = *value;
  return *this;
}

ModernRow& ModernRow::yesNo(uint32_t id, std::optional<bool> value) {
  if (value) valueOf(id) = std::u32string(*value ? U"Y" : U"N");
  return *this;
}

ModernRow& ModernRow::time(uint32_t id, std::optional<time_t> secondsSinceEpoch) {
  if (secondsSinceEpoch) valueOf(id) = Time{*secondsSinceEpoch};
  return *this;
}

ModernRow& ModernRow::textAlways(uint32_t id, const std::optional<std::string>& value) {
  valueOf(id) = cleanCharacters(value.value_or(""));
  return *this;
}

ModernRow& ModernRow::ulongAlways(uint32_t id, std::optional<uint64_t> value, uint32_t unknown) {
  return ulong(id, value.value_or(unknown));
}

ModernRow& ModernRow::localeText(uint32_t id, const char* value) {
  valueOf(id) = LocaleText{value == nullptr ? "" : value};
  return *this;
}

std::string ModernRow::textOf(uint32_t id) const {
  const Value* value = find(id);
  const auto* characters = value == nullptr ? nullptr : std::get_if<std::u32string>(value);
  return characters == nullptr ? std::string() : toUtf8(*characters);
}

void ModernRow::addTo(VelTableRow& row, uint32_t id, const Value& value) {
  struct Adder {
    void operator()(uint32_t number) const { addUlong(row, id, number); }
    void operator()(int64_t number) const { addLongLong(row, id, number); }
    void operator()(uint64_t number) const { addUlongLong(row, id, number); }
    void operator()(float number) const { addFloat(row, id, number); }
    void operator()(const std::u32string& text) const { addCharacters(row, id, text); }
    void operator()(const LocaleText& text) const { addText(row, id, text.bytes); }
    void operator()(const Time& time) const { addTime(row, id, time.seconds); }
    VelTableRow& row;
    uint32_t id;
  };
  std::visit(Adder{row, id}, value);
}

std::unique_ptr<VelTableRow> ModernRow::build(const velGroupDef& group) const {
  auto row = std::make_unique<VelTableRow>();
  for (const velAttribDef* attrib = group.attribs; attrib->id != kCatalogueEnd; ++attrib) {
    if (const Value* value = find(attrib->id)) addTo(*row, attrib->id, *value);
  }
  return row;
}

ModernRow& ModernTable::addRow() { return m_rows.emplace_back(); }

ModernRow& ModernTable::addNumberedRow() {
  ModernRow& row = addRow();
  row.ulong(kIndex, m_rows.size());
  return row;
}

void ModernTable::makeDigestsUnique(uint32_t id) {
  std::set<std::string> seen;
  size_t number = 0;
  for (ModernRow& row : m_rows) {
    ++number;
    const std::string digest = row.textOf(id);
    if (digest.empty() || seen.insert(digest).second) continue;
    row.text(id, md5Text(digest + std::to_string(number)));
  }
}

std::unique_ptr<VelTable> ModernTable::build() const {
  auto table = std::make_unique<VelTable>(MODERN_GROUPS_DEF, m_group.id, kVersion);
  for (const ModernRow& row : m_rows) table->addRow(row.build(m_group).release());
  return table;
}

}  // namespace quenlor
