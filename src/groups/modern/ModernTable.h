// The table of one group of a modern scan while it is collected: rows of known values, and what is
// missing.
#pragma once

#include <cstdint>
#include <ctime>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "base/Outcome.h"
#include "catalogue/Catalogue.h"
#include "tables/VelTable.h"

namespace quenlor {

// One row. What is not known is left out; the others may be set in any order, and are written in
// the catalogue's. Texts are cleaned and cut (cleanUtf8()); an empty one is not known.
class ModernRow {
 public:
  ModernRow& text(uint32_t id, const std::optional<std::string>& value);
  ModernRow& ulong(uint32_t id, std::optional<uint64_t> value);     // saturates at 32 bits
  ModernRow& longlong(uint32_t id, std::optional<uint64_t> value);  // saturates at 63 bits
  // For those attributes of classic tables that have always held more than 32 bits.
  ModernRow& ulonglong(uint32_t id, std::optional<uint64_t> value);
  ModernRow& real(uint32_t id, std::optional<float> value);
  ModernRow& yesNo(uint32_t id, std::optional<bool> value);
  ModernRow& time(uint32_t id, std::optional<time_t> secondsSinceEpoch);

  // What is always there: empty, or the value given for what is not known.
  ModernRow& textAlways(uint32_t id, const std::optional<std::string>& value);
  ModernRow& ulongAlways(uint32_t id, std::optional<uint64_t> value, uint32_t unknown);
  // A text of the environment, in the locale's encoding; always there.
  ModernRow& localeText(uint32_t id, const char* value);

  // The text that is set, as UTF-8; empty when there is none.
  std::string textOf(uint32_t id) const;

 private:
  friend class ModernTable;

  struct LocaleText {
    std::string bytes;
  };
  struct Time {
    time_t seconds;
  };
  using Value = std::variant<uint32_t, int64_t, uint64_t, float, std::u32string, LocaleText, Time>;

  const Value* find(uint32_t id) const;  // null: not set
  Value& valueOf(uint32_t id);
  static void addTo(VelTableRow& row, uint32_t id, const Value& value);
  std::unique_ptr<VelTableRow> build(const velGroupDef& group) const;

  std::vector<std::pair<uint32_t, Value>> m_values;  // a few dozen, by their ids
};

// Not thread safe: handed from the group's worker to the driver when it is complete.
class ModernTable {
 public:
  explicit ModernTable(const velGroupDef& group) : m_group(group) {}

  ModernRow& addRow();  // stays valid as long as the table
  // The same with the row's number, from 1, as attribute 1 ("Index").
  ModernRow& addNumberedRow();
  size_t rowCount() const { return m_rows.size(); }

  // Where two rows have the same digest in this attribute, the later ones get that of digest and
  // row number.
  void makeDigestsUnique(uint32_t id);

  Outcome& outcome() { return m_outcome; }
  const Outcome& outcome() const { return m_outcome; }

  // The finished table of the group's modern record; a new one with each call.
  std::unique_ptr<VelTable> build() const;

 private:
  const velGroupDef& m_group;
  std::deque<ModernRow> m_rows;
  Outcome m_outcome;
};

}  // namespace quenlor
