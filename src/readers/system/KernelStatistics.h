// Processor times and load of a modern scan: /proc/stat, /proc/loadavg and /proc/uptime, each read
// once for the groups that need them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "base/Outcome.h"

namespace quenlor {

// Ticks of 1/100 s summed over all processors since the boot; nothing for a column that the kernel
// does not print.
struct ProcessorTimes {
  std::optional<uint64_t> user;
  std::optional<uint64_t> nice;
  std::optional<uint64_t> system;
  std::optional<uint64_t> idle;
  std::optional<uint64_t> wait;
  std::optional<uint64_t> interrupts;
  std::optional<uint64_t> softInterrupts;
  std::optional<uint64_t> steal;
  uint32_t processors = 0;  // lines of single processors: those online
};

struct LoadAverages {
  std::optional<float> one;
  std::optional<float> five;
  std::optional<float> fifteen;
};

ProcessorTimes parseProcessorTimes(std::string_view stat);
LoadAverages parseLoadAverages(std::string_view loadavg);

struct KernelStatistics {
  ProcessorTimes times;
  LoadAverages load;
  std::optional<uint64_t> uptime;  // 1/100 s, whole seconds
  Outcome timesOutcome;
  Outcome loadOutcome;
};

KernelStatistics readKernelStatistics();

}  // namespace quenlor
