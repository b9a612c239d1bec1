// Partition of the modern sources: the file systems of the scanner's mount namespace, the swap
// areas and the partitions that are neither. Sizes come from statvfs, all else from /proc and
// sysfs.
#include <algorithm>
#include <chrono>

#include "groups/modern/Collectors.h"
#include "groups/storage/PartitionRows.h"
#include "limits/EarlierScan.h"
#include "limits/FileSystemSizes.h"
#include "readers/mounts/MountTypes.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kType = 2;
constexpr uint32_t kMediaType = 3;
constexpr uint32_t kDeviceName = 4;
constexpr uint32_t kPhysicalSize = 5;
constexpr uint32_t kFsType = 6;
constexpr uint32_t kFsAccessPoint = 7;
constexpr uint32_t kFsMountPoint = 8;
constexpr uint32_t kFsTotalSize = 9;
constexpr uint32_t kFsFreeSize = 10;
constexpr uint32_t kFileSystem = 101;
constexpr uint32_t kLabel = 102;
constexpr uint32_t kUuid = 103;
constexpr uint32_t kMountOptions = 104;
constexpr uint32_t kDisk = 105;
constexpr uint32_t kPartitionNumber = 106;
constexpr uint32_t kStartSector = 107;
constexpr uint32_t kPartitionUuid = 108;
constexpr uint32_t kPartitionLabel = 109;
constexpr uint32_t kSizeBytes = 110;
constexpr uint32_t kInodesTotal = 111;
constexpr uint32_t kInodesFree = 112;
constexpr uint32_t kReadOnly = 113;
constexpr uint32_t kFurtherMounts = 114;
constexpr uint32_t kEncrypted = 115;

constexpr uint32_t kTypeLocal = 1;
constexpr uint32_t kTypeRemote = 2;

// Blocks in kilobytes; split so that the product of a large file system does not overflow.
uint64_t toKilobytes(uint64_t blockSize, uint64_t blocks) {
  return blockSize * (blocks >> 10) + ((blockSize * (blocks & 1023)) >> 10);
}

FileSystemSpace spaceOf(const struct statvfs& status) {
  const uint64_t blockSize = status.f_frsize == 0 ? status.f_bsize : status.f_frsize;
  FileSystemSpace space;
  space.totalKilobytes = toKilobytes(blockSize, status.f_blocks);
  space.freeKilobytes = toKilobytes(blockSize, status.f_bavail);
  uint64_t bytes = 0;
  if (!__builtin_mul_overflow(blockSize, uint64_t{status.f_blocks}, &bytes)) {
    space.totalBytes = bytes;
  }
  if (status.f_files != 0) {
    space.inodes = status.f_files;
    space.freeInodes = status.f_ffree;
  }
  return space;
}

void noteMeasuring(const FileSystemSize& size, Outcome& outcome) {
  switch (size.outcome) {
    case WorkerPool::Outcome::kNoAnswer:
      outcome.note(OutcomeStatus::kPartial, "sizes: file systems without an answer in time");
      break;
    case WorkerPool::Outcome::kNotAsked:
      outcome.note(OutcomeStatus::kPartial, "sizes: file systems not measured");
      break;
    case WorkerPool::Outcome::kAnswered:
      if (size.status.f_bsize == 0)
        outcome.note(OutcomeStatus::kPartial, "sizes: not told by some file systems");
      break;
  }
}

bool isUnanswered(const FileSystemSize& size) {
  return size.outcome == WorkerPool::Outcome::kNoAnswer;
}

bool tellsNothing(const Outcome& source) {
  return source.status() == OutcomeStatus::kNoSource || source.status() == OutcomeStatus::kRefused;
}

// Mounts are told without the devices below them, and partitions without the mounts.
void noteSources(const Outcome& devices, const Outcome& mounts, Outcome& outcome) {
  const bool isNothingTold = tellsNothing(devices) && tellsNothing(mounts);
  for (const Outcome* source : {&devices, &mounts}) {
    if (source->status() == OutcomeStatus::kComplete) continue;
    outcome.note(isNothingTold ? source->status() : OutcomeStatus::kPartial, source->reason());
  }
}

// At a mount point that another mount hides, statvfs would tell of the other one.
std::vector<FileSystemSpace> measure(const std::vector<MountedFileSystem>& systems,
                                     Milliseconds limit, Outcome& outcome) {
  // A process that waits for a dead mount for ever is enough; another one a day is not needed.
  const bool leavesRemoteOnes = EarlierScan().isStillWaiting();
  std::vector<FileSystem> questions;
  std::vector<size_t> asked;
  for (size_t index = 0; index < systems.size(); ++index) {
    if (leavesRemoteOnes && mayHang(systems[index].kind)) {
      outcome.note(OutcomeStatus::kPartial, "not measured: an earlier scan still waits");
      continue;
    }
    if (systems[index].mount->isHidden) {
      outcome.note(OutcomeStatus::kPartial, "sizes: hidden mount points");
      continue;
    }
    questions.push_back({systems[index].mount->point, false, mayHang(systems[index].kind)});
    asked.push_back(index);
  }
  const auto sizes = measureFileSystems(questions, {limit, limit});
  if (std::any_of(sizes.begin(), sizes.end(), isUnanswered)) EarlierScan().mark();
  std::vector<FileSystemSpace> spaces(systems.size());
  for (size_t number = 0; number < sizes.size(); ++number) {
    noteMeasuring(sizes[number], outcome);
    if (sizes[number].status.f_bsize != 0) spaces[asked[number]] = spaceOf(sizes[number].status);
  }
  return spaces;
}

// Sizes of swap areas are 32-bit values, unlike those of file systems: readers of the inventory
// tell the two by it.
void addSizes(ModernRow& row, const PartitionRow& facts) {
  const uint64_t physical = facts.sizeBytes.value_or(0) >> 10;
  if (facts.isSwap) {
    row.ulong(kPhysicalSize, physical)
        .ulong(kFsTotalSize, facts.space.totalKilobytes)
        .ulong(kFsFreeSize, facts.space.freeKilobytes);
  } else {
    row.ulonglong(kPhysicalSize, physical)
        .ulonglong(kFsTotalSize, facts.space.totalKilobytes)
        .ulonglong(kFsFreeSize, facts.space.freeKilobytes);
  }
  row.longlong(kSizeBytes, facts.sizeBytes)
      .longlong(kInodesTotal, facts.space.inodes)
      .longlong(kInodesFree, facts.space.freeInodes);
}

void addRow(ModernTable& table, const PartitionRow& facts) {
  ModernRow& row = table.addNumberedRow();
  row.ulong(kType, facts.isRemote ? kTypeRemote : kTypeLocal)
      .ulong(kMediaType, facts.mediaType)
      .textAlways(kDeviceName, facts.deviceName)
      .ulong(kFsType, get_fstype_enum(facts.fileSystem.c_str()))
      .textAlways(kFsAccessPoint, facts.accessPoint)
      .textAlways(kFsMountPoint, facts.mountPoint)
      .text(kFileSystem, facts.fileSystem)
      .text(kLabel, facts.names.label)
      .text(kUuid, facts.names.uuid)
      .text(kMountOptions, facts.mountOptions)
      .text(kDisk, facts.disk)
      .ulong(kPartitionNumber, facts.partitionNumber)
      .longlong(kStartSector, facts.startSector)
      .text(kPartitionUuid, facts.names.partitionUuid)
      .text(kPartitionLabel, facts.names.partitionLabel)
      .yesNo(kReadOnly, facts.isReadOnly)
      .yesNo(kEncrypted, facts.isEncrypted);
  if (facts.furtherMounts != 0) row.ulong(kFurtherMounts, facts.furtherMounts);
  addSizes(row, facts);
}

}  // namespace

void collectPartition(ModernScan& scan, ModernTable& table) {
  const BlockInventory* inventory = scan.blockDevices(table.outcome());
  const MountFacts* mounts = scan.mounts(table.outcome());
  const BlockInventory noDevices;
  if (mounts == nullptr) return;
  const BlockInventory& devices = inventory == nullptr ? noDevices : *inventory;
  noteSources(devices.tree.outcome, mounts->table.outcome, table.outcome());
  table.outcome().merge(mounts->swaps.outcome);
  const std::vector<MountedFileSystem> systems = fileSystemsOf(mounts->table.mounts);
  const Milliseconds limit = std::min(scan.limit(), Milliseconds(scan.settings().mountLimit));
  const auto spaces = measure(systems, limit, table.outcome());
  for (const PartitionRow& row : partitionRows(devices, mounts->swaps, systems, spaces)) {
    addRow(table, row);
  }
}

}  // namespace quenlor
