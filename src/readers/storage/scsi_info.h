// Identifies a SCSI device by asking the kernel: its address, a standard INQUIRY through SG_IO, and
// the disk, CD or tape node with the same address.
#pragma once

#include "readers/storage/SCSIInfo.h"
#include "readers/storage/ScsiNodes.h"

namespace quenlor {

// Non-zero, with a new object owned by the caller in out, when the device behind the generic SCSI
// node was identified; else 0, and out is null.
int get_scsi_info(const char* sgNode, SCSIInfo*& out);
// The same with device nodes that earlier calls of a collection opened already.
int get_scsi_info(const char* sgNode, ScsiNodes& nodes, SCSIInfo*& out);

}  // namespace quenlor
