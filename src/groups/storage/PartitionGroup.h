// The "Partition" group: mounted file systems from "/etc/mtab", measured with statvfs, and swap
// areas from "/proc/swaps".
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "tables/VelTable.h"

namespace quenlor {

struct FileSystemSize;
struct SwapArea;

// An entry of the mount table.
struct MountTableEntry {
  std::string device;
  std::string directory;
  std::string fstype;
};

class PartitionGroup : public VelGroup {
 public:
  PartitionGroup() : VelGroup(group::kPartition, 1) {}

  // A new table, owned by the caller; null when the mount table cannot be opened.
  VelTable* getTable() override;

 private:
  void addMounts(FILE* mountTable);
  void doEntry(const MountTableEntry& mount, const FileSystemSize& measured);
  void addSwapPartitions();
  void addSwapRow(const SwapArea& area);

  // During getTable() only.
  VelTable* m_table = nullptr;
  uint32_t m_rows = 0;  // "Index" counts file systems and swap areas on
};

}  // namespace quenlor
