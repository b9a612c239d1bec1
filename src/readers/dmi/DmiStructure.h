// The structures of an SMBIOS table (DMTF SMBIOS 3.6, 6.1), each seen through bounds: a field is
// there if, and only if, the structure's own length covers all of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "readers/dmi/DmiEntryPoint.h"
#include "readers/dmi/LittleEndian.h"

namespace quenlor {

// Refers to the table's bytes, which must outlive it. Offsets count from the structure's start.
class DmiStructure {
 public:
  // fields: the formatted area with its header of 4 bytes; strings: the string set without the
  // zeros at its end.
  DmiStructure(std::string_view fields, std::string_view strings)
      : m_fields(fields), m_strings(strings) {}

  uint8_t type() const { return byte(0).value_or(0); }
  uint8_t length() const { return static_cast<uint8_t>(m_fields.size()); }
  uint16_t handle() const { return word(2).value_or(0); }

  std::optional<uint8_t> byte(size_t offset) const { return number<uint8_t>(offset); }
  std::optional<uint16_t> word(size_t offset) const { return number<uint16_t>(offset); }
  std::optional<uint32_t> dword(size_t offset) const { return number<uint32_t>(offset); }
  std::optional<uint64_t> qword(size_t offset) const { return number<uint64_t>(offset); }
  // Raw bytes; nothing unless all of them are there.
  std::optional<std::string_view> bytes(size_t offset, size_t count) const;
  // The string whose number stands at the offset, as it is; nothing for number 0 and for a string
  // that the set does not have.
  std::optional<std::string> text(size_t offset) const;

 private:
  template <class Number>
  std::optional<Number> number(size_t offset) const {
    return littleEndian<Number>(m_fields, offset);
  }

  std::string_view m_fields;
  std::string_view m_strings;
};

struct DmiWalk {
  std::vector<DmiStructure> structures;  // in table order, inactive ones left out
  bool isDamaged = false;  // the walk met bytes that are no structure, and ended there
};

// Walks a table, cut to what the entry point announces.
DmiWalk walkDmiTable(std::string_view table, const DmiEntryPoint& entryPoint);

}  // namespace quenlor
