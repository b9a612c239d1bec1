// Sizes of many file systems by statvfs, where some of the servers behind them may be gone.
#pragma once

#include <sys/statvfs.h>

#include <string>
#include <vector>

#include "limits/WorkerPool.h"

namespace quenlor {

struct FileSystem {
  std::string directory;          // where it is mounted
  bool isAutomountPoint = false;  // of type "autofs": asked without setting the automounter to work
  bool mayHang = true;            // waits for somebody else's machine or program
};

struct FileSystemSize {
  WorkerPool::Outcome outcome = WorkerPool::Outcome::kNotAsked;
  struct statvfs status {};  // zeros unless statvfs succeeded in time
};

// One size for each file system, in their order. They are measured side by side, those that may
// hang last. At most 64 workers are given up in the whole life of the process; what may hang is not
// asked any more then.
std::vector<FileSystemSize> measureFileSystems(const std::vector<FileSystem>& fileSystems,
                                               const WorkerPool::Limits& limits);

}  // namespace quenlor
