// Rows of a table as texts, for assertions.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tables/Render.h"
#include "tables/VelTable.h"

namespace quenlor::test {

// Attribute id and value, as the XML writer prints it without enumeration texts.
using RowValues = std::vector<std::pair<uint32_t, std::string>>;

inline std::string valueText(const VelTableAttrib& attrib) {
  char* text = nullptr;
  size_t size = 0;
  FILE* stream = open_memstream(&text, &size);
  PrintVelAttribValueToFile(stream, attrib.getAttribPtr());
  std::fclose(stream);
  const std::unique_ptr<char, decltype(&std::free)> owned(text, &std::free);
  return {text, size};
}

// All rows, in order; also checks nothing: a null table has no rows.
inline std::vector<RowValues> rowsOf(VelTable* table) {
  std::vector<RowValues> rows;
  if (table == nullptr) return rows;
  table->reset();
  while (VelTableRow* row = table->getNext()) {
    RowValues values;
    row->reset();
    while (VelTableAttrib* attrib = row->getNext()) {
      values.emplace_back(attrib->getId(), valueText(*attrib));
    }
    rows.push_back(std::move(values));
  }
  return rows;
}

// Collects a group and gives its rows.
template <class Group>
std::vector<RowValues> collect() {
  Group group;
  const std::unique_ptr<VelTable> table(group.getTable());
  return rowsOf(table.get());
}

// Value of an attribute in a row; "(absent)" when the row lacks it.
inline std::string valueOf(const RowValues& row, uint32_t id) {
  for (const auto& [attribId, value] : row) {
    if (attribId == id) return value;
  }
  return "(absent)";
}

inline bool hasValue(const RowValues& row, uint32_t id) {
  for (const auto& [attribId, value] : row) {
    if (attribId == id) return true;
  }
  return false;
}

}  // namespace quenlor::test
