// Integers in texts of the kernel and of agents.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace quenlor {

// Leading decimal integer as strtol reads it (0 when there is none), held within the bounds of int.
inline int decimalValue(const char* text) {
  return static_cast<int>(std::clamp<long>(std::strtol(text, nullptr, 10), INT_MIN, INT_MAX));
}

}  // namespace quenlor
