#include "readers/storage/SgUse.h"

namespace quenlor {
namespace {

constexpr const char* kModules = "/sys/module";

}  // namespace

// Whoever holds the lock alone unloads the module, which takes less than the limit, or is no scan.
SgUse::SgUse(std::chrono::milliseconds limit) {
  struct stat status {};
  if (host().stat(kModules, &status) != 0) return;
  m_lock.emplace(kModules);
  m_lock->share(limit);
}

bool SgUse::isLast(std::chrono::milliseconds limit) { return !m_lock || m_lock->takeAlone(limit); }

}  // namespace quenlor
