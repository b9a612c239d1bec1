// How much memory the kernel has, and how much is left: /proc/meminfo.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "base/Outcome.h"

namespace quenlor {

// All in KiB.
struct MemoryAmounts {
  std::optional<uint64_t> total, free, available, swapTotal, swapFree;
  Outcome outcome;
};

// Lines "MemTotal:  8053064 kB"; lines of another form are skipped.
MemoryAmounts parseMemoryAmounts(std::string_view meminfo);

// From /proc/meminfo, else from the sysinfo call, which does not tell what is available.
MemoryAmounts readMemoryAmounts();

}  // namespace quenlor
