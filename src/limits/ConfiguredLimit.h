// The one configuration key behind all time limits.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>

#include "config/DovCfg.h"

namespace quenlor {

// "hwscanner.timeout" as a number: 0 when it is no number, clamped to 32 bits. No value when the
// key is not set or the configuration has an error. The unit is that of the limit it is used for.
inline std::optional<int32_t> configuredLimit() {
  if (DovCfg::getError() != DovCfg::kSuccess) return std::nullopt;
  const String text = DovCfg::getKey("hwscanner.timeout");
  if (text.empty()) return std::nullopt;
  using Limits = std::numeric_limits<int32_t>;
  const long value = std::strtol(text.c_str(), nullptr, 10);
  return static_cast<int32_t>(std::clamp<long>(value, Limits::min(), Limits::max()));
}

}  // namespace quenlor
