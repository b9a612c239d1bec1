// Opens device nodes without waiting for whoever holds them.
#pragma once

#include <chrono>
#include <set>
#include <string>

#include "host/Handles.h"

namespace quenlor {

// Asks every driver not to wait (O_NONBLOCK). Some wait all the same while another process is busy
// with the device; so each open() runs on a thread of its own and has a limit. One opener for a
// collection: a node that has not opened in time is not tried again. Used by one thread at a time.
class DeviceOpener {
 public:
  static constexpr std::chrono::milliseconds kLimit{10000};

  explicit DeviceOpener(std::chrono::milliseconds limit = kLimit) : m_limit(limit) {}

  // The node opened with the access mode (O_RDONLY, O_RDWR) and O_NONBLOCK. False, with errno, when
  // that failed: EBUSY where another process holds the device exclusively and the driver says so,
  // ETIMEDOUT where it has not returned within the limit; that is said on standard error, the
  // thread is left behind and reported with reportAbandonedWorker().
  Descriptor open(const std::string& path, int accessMode);

 private:
  const std::chrono::milliseconds m_limit;
  std::set<std::string> m_stuck;
};

// Says on standard error that a device is left out since the driver answered EBUSY.
void reportHeld(const char* path);

}  // namespace quenlor
