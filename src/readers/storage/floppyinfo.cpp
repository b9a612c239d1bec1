#include "readers/storage/floppyinfo.h"

#include <fcntl.h>
#include <linux/fd.h>

#include <cerrno>
#include <cstring>

#include "host/LineReader.h"
#include "log/CcLogWrapper.h"
#include "readers/storage/StorageText.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/floppyinfo.cpp";
constexpr const char* kCpuInfoFile = "/proc/cpuinfo";
constexpr size_t kLineSize = 256;
constexpr int kStepFailed = 10;
constexpr const char* kUnknownDriveType = "(null)";  // the driver's text for a drive without a type

// linux/fd.h: bit 2 of the rate byte marks the 2M format, bits 3 to 5 the size code less two.
unsigned long sectorSizeOf(unsigned char rate) {
  if ((rate & FD_2M) != 0) return 512;
  return 128UL << (((rate >> 3 & 7) + 2) & 7);
}

// The field is as wide as the longest name and need not end in NUL.
std::string driveTypeOf(const floppy_drive_name& name) {
  return std::string(name, ::strnlen(name, sizeof(floppy_drive_name)));
}

}  // namespace

floppyinfo::floppyinfo(const char* device) {
  DeviceOpener opener;
  probe(device, opener);
}

floppyinfo::floppyinfo(const char* device, DeviceOpener& opener) { probe(device, opener); }

void floppyinfo::probe(const char* device, DeviceOpener& opener) {
  const TraceFunction at{kSourcePath, "floppyinfo()"};
  if (!itaniumIA64()) {
    m_fd = opener.open(device, O_RDONLY);
    m_isHeld = !m_fd && errno == EBUSY;
  }
  if (m_fd.get() < 1) {
    m_errorcode = kCannotOpen;
  } else {
    const int geometry = determineGeometry();
    const int type = determineType();
    if (geometry == 0 || type == 0) m_errorcode = 0;
  }
  getCcLogHw()->traceMAX(at(), "hardware %s %s %d", "floppyinfo", device, m_errorcode);
}

int floppyinfo::determineGeometry() {
  floppy_struct geometry = {};
  if (host().ioctl(m_fd.get(), FDGETPRM, &geometry) != 0) {
    m_errorcode = errno;
    return kStepFailed;
  }
  m_heads = geometry.head;
  m_sectors = geometry.sect;
  m_cylinders = geometry.track;
  m_sectorSize = sectorSizeOf(geometry.rate);
  m_totalsize = saturatingProduct({m_cylinders, m_heads, m_sectors, m_sectorSize}) / 1024;
  m_geometryValid = true;
  return 0;
}

int floppyinfo::determineType() {
  floppy_drive_name name = {};
  if (host().ioctl(m_fd.get(), FDGETDRVTYP, name) != 0) {
    m_errorcode = errno;
    return kStepFailed;
  }
  m_model = driveTypeOf(name);
  return m_model == kUnknownDriveType ? kStepFailed : 0;
}

// On other processors the word stands in the line "cpu family" only.
bool floppyinfo::itaniumIA64() {
  const FileStream cpuinfo = openFile(kCpuInfoFile);
  LineReader reader(cpuinfo.get(), kLineSize);
  while (reader.next()) {
    if (std::strncmp(reader.line(), "family", 6) == 0) {
      return std::strstr(reader.line(), "Itanium") != nullptr;
    }
  }
  return false;
}

}  // namespace quenlor
