// All that is known of block devices: the tree, the drives in it and what is built on them.
#pragma once

#include "readers/block/BlockTree.h"
#include "readers/block/Drive.h"
#include "readers/block/Volumes.h"

namespace quenlor {

struct BlockInventory {
  BlockTree tree;
  DriveList drives;
  VolumeList volumes;
};

// No program is started and no device node is opened; each file is read once.
BlockInventory readBlockInventory();

}  // namespace quenlor
