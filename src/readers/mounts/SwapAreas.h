// The swap areas in use, as /proc/swaps lists them with names decoded.
#pragma once

#include <string_view>
#include <vector>

#include "base/Outcome.h"
#include "readers/mounts/SwapArea.h"

namespace quenlor {

struct ActiveSwapArea {
  SwapArea area;           // its name as it is, without escapes
  bool isDevice = false;   // "partition"; else a file
  bool isDeleted = false;  // a file that has been removed since
};

struct SwapList {
  std::vector<ActiveSwapArea> areas;  // in the kernel's order
  Outcome outcome;
};

// Reads the list; a kernel without swapping has none, and no area.
SwapList readSwapAreas();

// Nothing of the header and of lines that say too little.
std::vector<ActiveSwapArea> parseSwapAreas(std::string_view text);

}  // namespace quenlor
