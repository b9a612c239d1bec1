#include "groups/storage/PartitionGroup.h"

#include <mntent.h>
#include <sys/statvfs.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Text.h"
#include "host/Handles.h"
#include "host/LineReader.h"
#include "limits/FileSystemSizes.h"
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
const std::string kRemoteDevice = "remote";

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

std::vector<MountTableEntry> readMounts(FILE* mountTable) {
  std::vector<MountTableEntry> mounts;
  const auto buffer = std::make_unique_for_overwrite<char[]>(kMountLineSize);
  struct mntent entry {};
  while (::getmntent_r(mountTable, &entry, buffer.get(), kMountLineSize) != nullptr) {
    mounts.push_back({entry.mnt_fsname, entry.mnt_dir, entry.mnt_type});
  }
  return mounts;
}

bool isLeftOut(const MountTableEntry& mount) {
  return isLeftOutMount(mount.device.c_str(), mount.directory.c_str(), mount.fstype.c_str());
}

// Sizes of the mounts that are not left out, in their order.
std::vector<FileSystemSize> measure(const std::vector<MountTableEntry>& mounts, int microseconds) {
  std::vector<FileSystem> fileSystems;
  for (const MountTableEntry& mount : mounts) {
    if (isLeftOut(mount)) continue;
    const char* fstype = mount.fstype.c_str();
    fileSystems.push_back({mount.directory, isAutomountPoint(fstype), mayHang(fstype)});
  }
  // Without time to wait, not one server is to be left with a question.
  if (microseconds <= 0) return std::vector<FileSystemSize>(fileSystems.size());
  return measureFileSystems(fileSystems, {wholeSteps(microseconds)});
}

// Says which rows have no sizes. Nobody may be reading, so nothing depends on it.
class Unmeasured {
 public:
  explicit Unmeasured(int microseconds)
      : m_milliseconds(std::chrono::ceil<std::chrono::milliseconds>(wholeSteps(microseconds))) {}
  ~Unmeasured() {
    if (m_notAsked == 0) return;
    std::fprintf(stderr, "quenlor: %zu file systems were not measured, their sizes are 0\n",
                 m_notAsked);
  }
  Unmeasured(const Unmeasured&) = delete;
  Unmeasured& operator=(const Unmeasured&) = delete;

  void add(const std::string& directory, WorkerPool::Outcome outcome) {
    if (outcome == WorkerPool::Outcome::kNotAsked) ++m_notAsked;
    if (outcome != WorkerPool::Outcome::kNoAnswer) return;
    std::fprintf(stderr, "quenlor: %s did not answer within %lld ms, its sizes are 0\n",
                 onOneLine(directory).c_str(), static_cast<long long>(m_milliseconds.count()));
  }

 private:
  const std::chrono::milliseconds m_milliseconds;
  size_t m_notAsked = 0;
};

// Zeros for a file system that does not answer in time.
Kilobytes kilobytesOf(const FileSystemSize& size, const std::string& mountDir) {
  const TraceFunction at{kSourcePath, "doEntry()"};
  if (size.outcome != WorkerPool::Outcome::kAnswered) {
    getCcLogHw()->traceMIN(at(), "hardware %s %s", "no answer in time from", mountDir.c_str());
    return {};
  }
  const struct statvfs& status = size.status;
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
  const TraceFunction at{kSourcePath, "doEntry()"};
  const int limit = GetDOVMaxTimeout();
  const std::vector<MountTableEntry> mounts = readMounts(mountTable);
  const std::vector<FileSystemSize> sizes = measure(mounts, limit);
  Unmeasured unmeasured(limit);
  auto size = sizes.begin();
  for (const MountTableEntry& mount : mounts) {
    if (isLeftOut(mount)) {
      getCcLogHw()->traceMAX(at(), "hardware %s %s", "left out :", mount.directory.c_str());
      continue;
    }
    unmeasured.add(mount.directory, size->outcome);
    doEntry(mount, *size++);
  }
}

void PartitionGroup::doEntry(const MountTableEntry& mount, const FileSystemSize& measured) {
  const TraceFunction at{kSourcePath, "doEntry()"};
  CcLogWrapper* log = getCcLogHw();
  const char* fstype = mount.fstype.c_str();
  const bool remote = isRemote(fstype);
  const std::string& deviceName = remote ? kRemoteDevice : mount.device;
  const Kilobytes size = kilobytesOf(measured, mount.directory);
  log->traceMAX(at(), "hardware %s %llu",
                "totalsize : ", static_cast<unsigned long long>(size.total));
  log->traceMAX(at(), "hardware %s %llu", "freesize :", static_cast<unsigned long long>(size.free));

  auto row = std::make_unique<VelTableRow>();
  addUlong(*row, kIndex, ++m_rows);
  addUlong(*row, kType, remote ? kTypeRemote : kTypeLocal);
  addUlong(*row, kMediaType, getMediaType(fstype, deviceName.c_str()));
  addText(*row, kDeviceName, deviceName);
  addUlongLong(*row, kPhysicalSize, size.total);
  addUlong(*row, kFsType, get_fstype_enum(fstype));
  addText(*row, kFsAccessPoint, mount.device);
  addText(*row, kFsMountPoint, mount.directory);
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
