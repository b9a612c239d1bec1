// Lines of "/proc/swaps": a header, then "name type size used priority" with sizes in kilobytes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quenlor {

struct SwapArea {
  std::string name;   // as printed: a blank in it is "\040"
  uint64_t size = 0;  // kilobytes
  uint64_t used = 0;  // kilobytes

  // 0 where more is used than there is.
  uint64_t free() const { return size > used ? size - used : 0; }
};

// True when the line has at least one of the columns' names.
bool isSwapHeader(const char* line);

// No value for a comment or a line that lacks one of its first four columns. Numbers too large for
// 64 bits become the largest.
std::optional<SwapArea> parseSwapLine(const char* line);

}  // namespace quenlor
