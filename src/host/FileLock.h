// An advisory lock by which running scans know of each other, without a file made for it.
#pragma once

#include <chrono>

#include "host/Handles.h"

namespace quenlor {

// flock(2) on a file or directory that is there anyway. The lock lasts as long as the descriptor:
// until the object goes, or the process does. Where the path cannot be opened, or its file system
// knows no locks, nobody can be known of, and whatever is asked for is granted.
class FileLock {
 public:
  explicit FileLock(const char* path);

  explicit operator bool() const { return static_cast<bool>(m_file); }
  int descriptor() const { return m_file.get(); }

  // Takes the lock together with others, or alone; false when that cannot be had within the limit,
  // and whatever was held before is then gone. A limit of zero tries once.
  bool share(std::chrono::milliseconds limit = {});
  bool takeAlone(std::chrono::milliseconds limit = {});

 private:
  bool take(int operation, std::chrono::milliseconds limit);

  Descriptor m_file;
};

}  // namespace quenlor
