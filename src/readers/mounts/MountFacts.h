// The mounts and swap areas of the scanner's own namespace.
#pragma once

#include "readers/mounts/MountInfo.h"
#include "readers/mounts/SwapAreas.h"

namespace quenlor {

struct MountFacts {
  MountTable table;
  SwapList swaps;
};

inline MountFacts readMountFacts() { return {readMounts(), readSwapAreas()}; }

}  // namespace quenlor
