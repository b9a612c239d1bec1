#include "groups/storage/StorageRow.h"

#include "host/ScanState.h"
#include "identity/Identity.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kIndex = 1;
constexpr uint32_t kId = 2;
constexpr uint32_t kType = 3;
constexpr uint32_t kModel = 4;
constexpr uint32_t kManufacturer = 5;
constexpr uint32_t kSerialNumber = 6;
constexpr uint32_t kCylinders = 7;
constexpr uint32_t kSectors = 8;
constexpr uint32_t kHeads = 9;
constexpr uint32_t kTotalSize = 10;
constexpr uint32_t kSecurityEnabled = 11;

}  // namespace

std::string geometryIdText(const DriveGeometry& geometry, uint64_t size) {
  return std::to_string(geometry.cylinders) + std::to_string(geometry.sectors) +
         std::to_string(geometry.heads) + std::to_string(size);
}

void addDriveRow(StorageCollection& collection, const StorageDrive& drive) {
  countProgress();
  auto row = std::make_unique<VelTableRow>();
  addUlong(*row, kIndex, static_cast<uint32_t>(++collection.index));
  addText(*row, kId, md5Text(drive.idText));
  addUlong(*row, kType, static_cast<uint32_t>(drive.type));
  addText(*row, kModel, drive.model);
  addText(*row, kManufacturer, drive.manufacturer);
  addText(*row, kSerialNumber, drive.serialNumber);
  addUlong(*row, kCylinders, saturateToUlong(drive.geometry.cylinders));
  addUlong(*row, kSectors, saturateToUlong(drive.geometry.sectors));
  addUlong(*row, kHeads, saturateToUlong(drive.geometry.heads));
  addUlong(*row, kTotalSize, saturateToUlong(drive.megabytes));
  addUlong(*row, kSecurityEnabled, drive.security);
  collection.table.addRow(row.release());
}

}  // namespace quenlor
