// Scans that use the kernel module "sg" at the same time.
#pragma once

#include <optional>

#include "host/FileLock.h"

namespace quenlor {

// How long another scan is waited for before the module stays loaded for its sake.
inline constexpr std::chrono::milliseconds kSgUseLimit{10000};

// Says, while it lives, that this scan needs the module: one that loaded it must not take it from
// under another that found it loaded. The lock lies on the kernel's list of modules; on a machine
// without that list every scan counts as the only one.
class SgUse {
 public:
  // Waits at most as long as given for a scan that is unloading the module.
  explicit SgUse(std::chrono::milliseconds limit = kSgUseLimit);

  // To be asked for the scan that loaded the module, once it needs it no longer. Waits for the
  // others at most as long as given. True: nobody begins to use the module as long as this lives.
  bool isLast(std::chrono::milliseconds limit);

 private:
  std::optional<FileLock> m_lock;
};

}  // namespace quenlor
