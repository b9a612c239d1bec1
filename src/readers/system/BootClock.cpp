#include "readers/system/BootClock.h"

#include "host/Host.h"

namespace quenlor {

std::optional<time_t> readUptime() {
  struct timespec boot {};
  if (host().clockGettime(CLOCK_BOOTTIME, &boot) != 0 || boot.tv_sec < 0) return {};
  return boot.tv_sec;
}

std::optional<time_t> readBootTime() {
  const auto uptime = readUptime();
  struct timespec now {};
  if (!uptime || host().clockGettime(CLOCK_REALTIME, &now) != 0) return {};
  return now.tv_sec - *uptime;
}

}  // namespace quenlor
