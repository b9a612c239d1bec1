// One drive as a row of the "Storage" table.
#pragma once

#include <cstdint>
#include <string>

#include "readers/storage/DeviceOpener.h"
#include "tables/VelTable.h"

namespace quenlor {

struct DriveEnumeration;

// Values of the enumeration of "Type".
enum StorageMedia : int {
  kMediaUnknown = 1,
  kMediaTapeCartridge = 3,
  kMediaCdRom = 17,
  kMediaMagnetoOptical = 22,
  kMediaFloppy = 29,
  kMediaHardDisk = 30,
};

// Values of the enumeration of "Security Enabled".
enum StorageSecurity : uint32_t { kSecurityYes = 0, kSecurityNo = 1, kSecurityUnsupported = 2 };

struct DriveGeometry {
  uint64_t cylinders = 0;
  uint64_t sectors = 0;  // per track
  uint64_t heads = 0;
};

struct StorageDrive {
  std::string idText;  // its digest becomes the "ID"
  int type = kMediaUnknown;
  std::string model;
  std::string manufacturer;
  std::string serialNumber;
  DriveGeometry geometry;
  uint64_t megabytes = 0;
  uint32_t security = kSecurityUnsupported;
};

// One collection: the table it fills and what it remembers from gatherer to gatherer. Used by one
// thread at a time.
struct StorageCollection {
  VelTable& table;
  DriveEnumeration& enumeration;
  int index = 0;  // of the last row; runs on across all kinds of drives
  DeviceOpener opener{};
};

// Cylinders, sectors, heads and size in decimal digits without anything between them. The size is
// in kilobytes for IDE, RAID and floppy drives and in megabytes for SCSI drives: inventories are
// matched by the digest of this text, so neither the order nor the units can change.
std::string geometryIdText(const DriveGeometry& geometry, uint64_t size);

// Appends the drive's row with the next index.
void addDriveRow(StorageCollection& collection, const StorageDrive& drive);

}  // namespace quenlor
