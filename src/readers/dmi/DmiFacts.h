// Facts that follow from several firmware records.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "readers/dmi/DmiTable.h"

namespace quenlor {

struct DmiMemoryFacts {
  uint64_t maxModuleMiB = 0;  // largest module that a slot takes; 0: not known
  uint64_t slots = 0;
  uint64_t maxMiB = 0;  // of all slots together; 0: not known
  std::optional<uint64_t> installedMiB;
  std::string_view errorCorrection;  // word of dmiErrorCorrection(); empty: not known
};

// Of the system's memory alone: machines have arrays of flash and video memory, too. A capacity
// below what is installed is wrong, and what is installed counts.
DmiMemoryFacts dmiMemoryFacts(const DmiTable& table);

// "MM/DD/YYYY" and "MM/DD/YY" with any separator as YYYY-MM-DD; years of two digits from 96 on are
// of the last century, as in the kernel. Any other text as it is, up to its first blank.
std::string dmiDate(std::string_view text);

}  // namespace quenlor
