// When the machine was started and how long it runs.
#pragma once

#include <ctime>
#include <optional>

namespace quenlor {

// Seconds since the boot, time asleep included (CLOCK_BOOTTIME).
std::optional<time_t> readUptime();

// Now less the up-time, seconds since the epoch; btime of /proc/stat drifts after a snapshot of a
// guest is restored.
std::optional<time_t> readBootTime();

}  // namespace quenlor
