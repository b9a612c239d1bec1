// Drives of the old IDE driver, from /proc/ide and drive ioctls.
#include <cstring>

#include "groups/storage/StorageGatherers.h"
#include "log/CcLogWrapper.h"
#include "readers/storage/ideinfo.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/IdeDrives.cpp";

uint32_t securityOf(int type, int securityEnabled) {
  if (type != kMediaHardDisk || securityEnabled < 0) return kSecurityUnsupported;
  return securityEnabled == 1 ? kSecurityYes : kSecurityNo;
}

StorageDrive describe(const ideinfo& info) {
  StorageDrive drive;
  drive.type = resolveIDEtype(info.type());
  drive.model = info.model();
  drive.manufacturer = info.manufacturer();
  drive.serialNumber = info.serialnumber();
  drive.geometry = {info.numcylinders(), info.numsectors(), info.numheads()};
  drive.idText = geometryIdText(drive.geometry, info.totalsize());
  drive.megabytes = info.totalsize() >> 10;
  drive.security = securityOf(drive.type, info.security_enabled());
  return drive;
}

}  // namespace

int resolveIDEtype(const char* text) {
  if (std::strstr(text, "cdrom") != nullptr) return kMediaCdRom;
  if (std::strstr(text, "disk") != nullptr) return kMediaHardDisk;
  return kMediaUnknown;
}

int gatherIDEDriveInformation(StorageCollection& collection) {
  const TraceFunction at{kSourcePath, "gatherIDEDriveInformation()"};
  int added = 0;
  for (const std::string& directory : ideDriveDirectories()) {
    addDriveRow(collection, describe(ideinfo(directory.c_str(), collection.opener)));
    ++added;
    getCcLogHw()->traceMAX(at(), "hardware %s %d", "Add IDE index=>", collection.index);
  }
  return added;
}

}  // namespace quenlor
