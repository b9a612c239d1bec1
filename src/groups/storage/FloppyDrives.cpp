// Floppy drives, from /dev/fd0 on.
#include "groups/storage/StorageGatherers.h"
#include "log/CcLogWrapper.h"
#include "readers/storage/SgEnumeration.h"
#include "readers/storage/floppyinfo.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/FloppyDrives.cpp";
constexpr const char* kFloppyPrefix = "/dev/fd";

StorageDrive describe(const floppyinfo& info) {
  StorageDrive drive;
  drive.type = kMediaFloppy;
  drive.model = info.model();
  drive.geometry = {info.numcylinders(), info.numsectors(), info.numheads()};
  drive.idText = geometryIdText(drive.geometry, info.totalsize());
  drive.megabytes = info.totalsize() >> 10;
  return drive;
}

}  // namespace

int gatherFloppyDriveInformation(StorageCollection& collection) {
  const TraceFunction at{kSourcePath, "gatherFloppyDriveInformation()"};
  DriveCounter& counter = collection.enumeration.counter;
  int added = 0;
  while (const DrivePath node = DrivePath(getNextDrive(counter, kFloppyPrefix, 0))) {
    const floppyinfo info(node.get(), collection.opener);
    if (info.isHeld()) reportHeld(node.get());
    if (info.errorcode() != 0) continue;
    addDriveRow(collection, describe(info));
    ++added;
    getCcLogHw()->traceMAX(at(), "hardware %s %d", "Add floppy index=>", collection.index);
  }
  return added;
}

}  // namespace quenlor
