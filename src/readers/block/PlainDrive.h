// The identity of drives that stand on no SCSI host and are no NVMe: virtio, Xen, memory cards,
// persistent memory, drives across the network, floppies and the drivers of old kernels.
#pragma once

#include <optional>

#include "readers/block/BlockTree.h"
#include "readers/block/Drive.h"

namespace quenlor {

// Nothing for what is none: a network drive that is not connected, a floppy controller's drive that
// nobody has put in.
std::optional<Drive> readPlainDrive(const BlockDevice& device);

}  // namespace quenlor
