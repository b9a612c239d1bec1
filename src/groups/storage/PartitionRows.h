// The rows of the modern "Partition" table before they are written: mounted file systems, swap
// areas, and the partitions that are neither.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "readers/block/BlockInventory.h"
#include "readers/mounts/FileSystems.h"
#include "readers/mounts/MountFacts.h"

namespace quenlor {

// What statvfs tells of a file system.
struct FileSystemSpace {
  uint64_t totalKilobytes = 0;
  uint64_t freeKilobytes = 0;  // for users
  std::optional<uint64_t> totalBytes;
  std::optional<uint64_t> inodes;  // nothing where the type has none
  std::optional<uint64_t> freeInodes;
};

// Texts are empty where unknown.
struct PartitionRow {
  std::string kernelName;  // of the device; empty without one
  std::string deviceName;  // "remote" for another machine's
  std::string accessPoint;
  std::string mountPoint;
  bool isRemote = false;
  bool isSwap = false;
  uint32_t mediaType = 0;
  std::string fileSystem;
  std::optional<uint64_t> sizeBytes;  // of the device
  FileSystemSpace space;
  OnDiskNames names;
  std::string mountOptions;
  std::string disk;
  std::optional<uint32_t> partitionNumber;
  std::optional<uint64_t> startSector;
  std::optional<bool> isReadOnly;
  std::optional<bool> isEncrypted;
  uint32_t furtherMounts = 0;
};

// `spaces` has one element for each file system. In natural order of kernel names, what has none
// behind them.
std::vector<PartitionRow> partitionRows(const BlockInventory& inventory, const SwapList& swaps,
                                        const std::vector<MountedFileSystem>& fileSystems,
                                        const std::vector<FileSystemSpace>& spaces);

}  // namespace quenlor
