// The identity of one SCSI logical unit, be it on a disk of SATA, USB, SAS or a hypervisor's.
#pragma once

#include <optional>

#include "readers/block/Drive.h"
#include "readers/block/ScsiHosts.h"
#include "readers/block/SysfsAttributes.h"
#include "readers/block/UdevRecord.h"

namespace quenlor {

// Kind of a peripheral device type (SPC-4 table 141); nothing for what stores nothing: printers,
// enclosures, controllers.
std::optional<DriveKind> driveKindOf(uint64_t peripheralType);

// Fills all but what the block device tells. `unit` is the directory of the logical unit. Nothing
// for a unit that is no drive. Notes what only an open of the device could tell.
std::optional<Drive> readScsiDrive(const SysfsAttributes& unit, const UdevRecord& udev,
                                   ScsiHosts& hosts, Outcome& outcome);

}  // namespace quenlor
