// The gatherers of the "Storage" table, one per kind of drive, and the media types they report.
#pragma once

#include "groups/storage/StorageRow.h"

namespace quenlor {

// Each appends the rows of its kind and returns their number.
int gatherIDEDriveInformation(StorageCollection& collection);
int gatherDAC960RAIDDriveInformation(StorageCollection& collection);
int gatherCCISSDriveInformation(StorageCollection& collection);
int gatherCompaqSmartRAIDDriveInformation(StorageCollection& collection);
int gatherSCSIDriveInformation(StorageCollection& collection);
int gatherFloppyDriveInformation(StorageCollection& collection);

// Media type of an IDE drive's media text.
int resolveIDEtype(const char* text);
// Media type of a SCSI peripheral device type (SPC-3, table 83); -1 for what is no storage.
int resolveSCSItype(int peripheralType);

}  // namespace quenlor
