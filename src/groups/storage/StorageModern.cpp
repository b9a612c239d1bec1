// Storage of the modern sources: every drive that the kernel has, from sysfs and udev's database.
#include "groups/modern/Collectors.h"
#include "groups/storage/StorageRow.h"
#include "identity/Identity.h"

namespace quenlor {
namespace {

// Attribute ids.
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
constexpr uint32_t kDeviceName = 101;
constexpr uint32_t kBus = 102;
constexpr uint32_t kSizeBytes = 103;
constexpr uint32_t kMedium = 104;
constexpr uint32_t kFirmware = 105;
constexpr uint32_t kWorldWideName = 106;
constexpr uint32_t kLogicalSectorBytes = 107;
constexpr uint32_t kPhysicalSectorBytes = 108;
constexpr uint32_t kRemovable = 109;
constexpr uint32_t kReadOnly = 110;
constexpr uint32_t kLocation = 111;
constexpr uint32_t kDriver = 112;
constexpr uint32_t kMultipathPaths = 113;
constexpr uint32_t kNamespaceOf = 114;
constexpr uint32_t kState = 115;

uint32_t typeOf(DriveKind kind) {
  switch (kind) {
    case DriveKind::kDisk:
      return kMediaHardDisk;
    case DriveKind::kOptical:
      return kMediaCdRom;
    case DriveKind::kMagnetoOptical:
      return kMediaMagnetoOptical;
    case DriveKind::kTape:
      return kMediaTapeCartridge;
    case DriveKind::kFloppy:
      return kMediaFloppy;
    case DriveKind::kChanger:
      break;
  }
  return kMediaUnknown;
}

uint32_t securityOf(DriveSecurity security) {
  switch (security) {
    case DriveSecurity::kEnabled:
      return kSecurityYes;
    case DriveSecurity::kDisabled:
      return kSecurityNo;
    case DriveSecurity::kUnsupported:
      break;
  }
  return kSecurityUnsupported;
}

// Empty where nothing tells: most drives turn unless they say that they do not.
std::string mediumOf(const Drive& drive) {
  switch (drive.kind) {
    case DriveKind::kOptical:
    case DriveKind::kMagnetoOptical:
      return "optical";
    case DriveKind::kTape:
      return "tape";
    case DriveKind::kChanger:
      return "none";
    case DriveKind::kFloppy:
      return {};
    case DriveKind::kDisk:
      break;
  }
  if (drive.rotation == Rotation::kSolidState) return "ssd";
  return drive.rotation == Rotation::kSpinning ? "disk" : "";
}

// What stays the same when the drive is plugged in elsewhere, as far as the drive tells such.
std::string identityOf(const Drive& drive) {
  if (!drive.worldWideName.empty()) return drive.worldWideName;
  return drive.serial.empty() ? drive.place : drive.model + drive.serial;
}

void addRow(ModernTable& table, const Drive& drive) {
  table.addNumberedRow()
      .textAlways(kId, md5Text(identityOf(drive)))
      .ulong(kType, typeOf(drive.kind))
      .textAlways(kModel, drive.model)
      .textAlways(kManufacturer, drive.vendor)
      .textAlways(kSerialNumber, drive.serial)
      .ulong(kCylinders, 0)
      .ulong(kSectors, 0)
      .ulong(kHeads, 0)
      .ulong(kTotalSize, drive.sizeBytes.value_or(0) >> 20)
      .ulong(kSecurityEnabled, securityOf(drive.security))
      .text(kDeviceName, drive.deviceName)
      .text(kBus, drive.bus)
      .longlong(kSizeBytes, drive.sizeBytes)
      .text(kMedium, mediumOf(drive))
      .text(kFirmware, drive.firmware)
      .text(kWorldWideName, drive.worldWideName)
      .ulong(kLogicalSectorBytes, drive.logicalSectorBytes)
      .ulong(kPhysicalSectorBytes, drive.physicalSectorBytes)
      .yesNo(kRemovable, drive.isRemovable)
      .yesNo(kReadOnly, drive.isReadOnly)
      .text(kLocation, drive.location)
      .text(kDriver, drive.driver)
      .ulong(kMultipathPaths, drive.paths)
      .text(kNamespaceOf, drive.namespaceOf)
      .text(kState, drive.state);
}

}  // namespace

void collectStorage(ModernScan& scan, ModernTable& table) {
  const BlockInventory* inventory = scan.blockDevices(table.outcome());
  if (inventory == nullptr) return;
  table.outcome().merge(inventory->drives.outcome);
  for (const Drive& drive : inventory->drives.drives) addRow(table, drive);
  table.makeDigestsUnique(kId);
}

}  // namespace quenlor
