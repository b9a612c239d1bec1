// Logical drives of DAC960 and Smart Array RAID controllers, with fdisk's geometry.
#include "groups/storage/StorageGatherers.h"
#include "log/CcLogWrapper.h"
#include "readers/storage/FdiskOutput.h"
#include "readers/storage/RaidStatus.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/RaidDrives.cpp";
constexpr const char* kCompaqModel = "Compaq Smart Array 5i Controller";
constexpr const char* kCompaqManufacturer = "Compaq";

// Geometry and kilobytes of a disk as one of the fdisk functions finds them.
struct RaidDisk {
  DriveGeometry geometry;
  unsigned long kilobytes = 0;
};

using FdiskFunction = int (*)(const char*, unsigned long*, unsigned long*, unsigned long*,
                              unsigned long*);

bool readDisk(FdiskFunction ask, const std::string& name, RaidDisk& disk) {
  unsigned long cylinders = 0;
  unsigned long heads = 0;
  unsigned long sectors = 0;
  if (ask(name.c_str(), &cylinders, &heads, &sectors, &disk.kilobytes) == 0) return false;
  disk.geometry = {cylinders, sectors, heads};
  return true;
}

std::string asInt(uint64_t value) { return std::to_string(static_cast<int32_t>(value)); }

// The numbers as "%i" prints them, and the last character of the disk's name, its number on the
// controller: without it the equal disks of an array would share one digest.
std::string ccissIdText(const RaidDisk& disk, const std::string& name) {
  return asInt(disk.geometry.cylinders) + asInt(disk.geometry.sectors) +
         asInt(disk.geometry.heads) + asInt(disk.kilobytes) + name.back();
}

StorageDrive compaqDrive() {
  StorageDrive drive;
  drive.type = kMediaHardDisk;
  drive.model = kCompaqModel;
  drive.manufacturer = kCompaqManufacturer;
  return drive;
}

}  // namespace

int gatherDAC960RAIDDriveInformation(StorageCollection& collection) {
  const TraceFunction at{kSourcePath, "gatherDAC960RAIDDriveInformation()"};
  RAIDInfo info;
  if (getFromCurrentStatus(&info) == 0) return 0;
  int added = 0;
  for (const RAIDLogicalDrive& logical : info.drives) {
    RaidDisk disk;
    if (!readDisk(getFromFdisk, logical.name, disk)) continue;
    StorageDrive drive;
    drive.type = kMediaHardDisk;
    drive.model = info.model;
    drive.manufacturer = info.controller;
    drive.geometry = disk.geometry;
    drive.idText = geometryIdText(disk.geometry, disk.kilobytes);
    drive.megabytes = disk.kilobytes >> 10;
    addDriveRow(collection, drive);
    ++added;
    getCcLogHw()->traceMAX(at(), "hardware %s %d", "Add DAC960 index=>", collection.index);
  }
  return added;
}

int gatherCCISSDriveInformation(StorageCollection& collection) {
  const TraceFunction at{kSourcePath, "gatherCCISSDriveInformation()"};
  int added = 0;
  for (const std::string& name : getMountedCcissDisks()) {
    RaidDisk disk;
    if (!readDisk(getFromFdiskMount, name, disk)) continue;
    StorageDrive drive = compaqDrive();
    drive.geometry = disk.geometry;
    drive.idText = ccissIdText(disk, name);
    drive.megabytes = disk.kilobytes >> 10;
    addDriveRow(collection, drive);
    ++added;
    getCcLogHw()->traceMAX(at(), "hardware %s %d", "Add CCISS index=>", collection.index);
  }
  return added;
}

int gatherCompaqSmartRAIDDriveInformation(StorageCollection& collection) {
  const TraceFunction at{kSourcePath, "gatherCompaqSmartRAIDDriveInformation()"};
  const int count = getCompaqSmartDiskNum();
  for (int number = 0; number < count; ++number) {
    StorageDrive drive = compaqDrive();
    drive.megabytes = getCompaqSmartDiskSize(number);
    drive.idText = geometryIdText({}, drive.megabytes) + std::to_string(number);
    addDriveRow(collection, drive);
    getCcLogHw()->traceMAX(at(), "hardware %s %d", "Add Smart Array index=>", collection.index);
  }
  return count;
}

}  // namespace quenlor
