#include "groups/storage/PartitionGroup.h"

#include <mntent.h>
#include <sys/statvfs.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>

#include "host/Handles.h"
#include "host/LineReader.h"
#include "limits/TimeoutStatvfs.h"
#include "log/CcLogWrapper.h"
#include "readers/mounts/MountTypes.h"
#include "readers/mounts/SwapArea.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/PartitionGroup.cpp";

constexpr const char* kMountTable = "/etc/mtab";
constexpr const char* kSwapList = "/proc/swaps";
constexpr size_t kSwapLineSize = 256;
// getmntent_r drops what does not fit. A device and a directory of PATH_MAX each, every character
// written as an octal escape, take an eighth of this; only mount options can be longer still.
constexpr int kMountLineSize = 256 * 1024;

// Attribute ids.
constexpr uint32_t kIndex = 1;
constexpr uint32_t kType = 2;
constexpr uint32_t kMediaType = 3;
constexpr uint32_t kDeviceName = 4;
constexpr uint32_t kPhysicalSize = 5;
constexpr uint32_t kFsType = 6;
constexpr uint32_t kFsAccessPoint = 7;
constexpr uint32_t kFsMountPoint = 8;
constexpr uint32_t kFsTotalSize = 9;
constexpr uint32_t kFsFreeSize = 10;

constexpr uint32_t kTypeLocal = 1;
constexpr uint32_t kTypeRemote = 2;
constexpr const char* kRemoteDevice = "remote";

constexpr uint32_t kSwapMediaType = 3;
constexpr uint32_t kSwapFsType = 130;
constexpr const char* kSwapMountPoint = "swap";

struct Kilobytes {
  uint64_t total = 0;
  uint64_t free = 0;
};

// Blocks in kilobytes; split so that the product of a large file system does not overflow.
uint64_t toKilobytes(uint64_t blockSize, uint64_t blocks) {
  return blockSize * (blocks >> 10) + ((blockSize * (blocks & 1023)) >> 10);
}

bool isAutomountPoint(const char* fstype) { return std::string_view(fstype) == "autofs"; }

// Zeros for a file system that does not answer in time.
Kilobytes measure(const char* mountDir, const char* fstype) {
  const TraceFunction at{kSourcePath, "doEntry()"};
  const auto statvfsInTime = isAutomountPoint(fstype) ? timeout_statvfs_autofs : timeout_statvfs;
  struct statvfs status {};
  if (statvfsInTime(mountDir, &status, GetDOVMaxTimeout()) != 0) {
    getCcLogHw()->traceMIN(at(), "hardware %s %s", "no answer in time from", mountDir);
    return {};
  }
  getCcLogHw()->traceMAX(at(), "hardware %s %lu", "f_frsize :", status.f_frsize);
  getCcLogHw()->traceMAX(at(), "hardware %s %lu", "f_blocks :", status.f_blocks);
  return {toKilobytes(status.f_frsize, status.f_blocks),
          toKilobytes(status.f_frsize, status.f_bavail)};
}

}  // namespace

VelTable* PartitionGroup::getTable() {
  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", "PartitionGroup");
  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  m_table = table.get();
  m_rows = 0;

  // What setmntent does: a stream on the file, close-on-exec.
  const FileStream mountTable = openFile(kMountTable);
  if (!mountTable) {
    log->traceMIN(at(), "hardware %s %s", "cannot open", kMountTable);
    return nullptr;
  }
  addMounts(mountTable.get());
  log->traceMAX(at(), "hardware %s", "..Adding swap partitions...");
  addSwapPartitions();
  log->traceMidExit(at(), "hardware %s", "PartitionGroup");
  return table.release();
}

void PartitionGroup::addMounts(FILE* mountTable) {
  const auto buffer = std::make_unique_for_overwrite<char[]>(kMountLineSize);
  struct mntent entry {};
  while (::getmntent_r(mountTable, &entry, buffer.get(), kMountLineSize) != nullptr) {
    doEntry(entry.mnt_fsname, entry.mnt_dir, entry.mnt_type);
  }
}

void PartitionGroup::doEntry(const char* device, const char* mountDir, const char* fstype) {
  const TraceFunction at{kSourcePath, "doEntry()"};
  CcLogWrapper* log = getCcLogHw();
  if (isLeftOutMount(device, mountDir, fstype)) {
    log->traceMAX(at(), "hardware %s %s", "left out :", mountDir);
    return;
  }
  const bool remote = isRemote(fstype);
  const char* deviceName = remote ? kRemoteDevice : device;
  const Kilobytes size = measure(mountDir, fstype);
  log->traceMAX(at(), "hardware %s %llu",
                "totalsize : ", static_cast<unsigned long long>(size.total));
  log->traceMAX(at(), "hardware %s %llu", "freesize :", static_cast<unsigned long long>(size.free));

  auto row = std::make_unique<VelTableRow>();
  addUlong(*row, kIndex, ++m_rows);
  addUlong(*row, kType, remote ? kTypeRemote : kTypeLocal);
  addUlong(*row, kMediaType, getMediaType(fstype, deviceName));
  addText(*row, kDeviceName, deviceName);
  addUlongLong(*row, kPhysicalSize, size.total);
  addUlong(*row, kFsType, get_fstype_enum(fstype));
  addText(*row, kFsAccessPoint, device);
  addText(*row, kFsMountPoint, mountDir);
  addUlongLong(*row, kFsTotalSize, size.total);
  addUlongLong(*row, kFsFreeSize, size.free);
  m_table->addRow(row.release());
}

void PartitionGroup::addSwapPartitions() {
  const TraceFunction at{kSourcePath, "addSwapPartitions()"};
  CcLogWrapper* log = getCcLogHw();
  const FileStream swaps = openFile(kSwapList);
  if (!swaps) return;
  LineReader lines(swaps.get(), kSwapLineSize);
  if (!lines.next()) {
    log->traceMIN(at(), "hardware %s", "Unexpected end of file");
    return;
  }
  if (!isSwapHeader(lines.line())) {
    log->traceMIN(at(), "hardware %s", "Unexpected file format");
    return;
  }
  while (lines.next()) {
    if (const std::optional<SwapArea> area = parseSwapLine(lines.line())) addSwapRow(*area);
  }
}

// Sizes of swap areas are 32-bit values, unlike those of file systems: readers of the inventory
// tell the two by it.
void PartitionGroup::addSwapRow(const SwapArea& area) {
  const TraceFunction at{kSourcePath, "addSwapPartitions()"};
  const uint32_t size = saturateToUlong(area.size);
  getCcLogHw()->traceMAX(at(), "hardware %s %s", "path:", area.name.c_str());
  getCcLogHw()->traceMAX(at(), "hardware %s %u", "used:", saturateToUlong(area.used));

  auto row = std::make_unique<VelTableRow>();
  addUlong(*row, kIndex, ++m_rows);
  addUlong(*row, kType, kTypeLocal);
  addUlong(*row, kMediaType, kSwapMediaType);
  addText(*row, kDeviceName, area.name);
  addUlong(*row, kPhysicalSize, size);
  addUlong(*row, kFsType, kSwapFsType);
  addText(*row, kFsAccessPoint, area.name);
  addText(*row, kFsMountPoint, kSwapMountPoint);
  addUlong(*row, kFsTotalSize, size);
  addUlong(*row, kFsFreeSize, saturateToUlong(area.free()));
  m_table->addRow(row.release());
}

}  // namespace quenlor
