#include "host/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <thread>

namespace quenlor {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kNap{5};

}  // namespace

FileLock::FileLock(const char* path) : m_file(host().open(path, O_RDONLY | O_NONBLOCK, 0)) {}

bool FileLock::share(milliseconds limit) { return take(LOCK_SH, limit); }

bool FileLock::takeAlone(milliseconds limit) { return take(LOCK_EX, limit); }

// Tried again and again, because waiting in the kernel has no limit.
bool FileLock::take(int operation, milliseconds limit) {
  const Clock::time_point end = Clock::now() + limit;
  while (::flock(m_file.get(), operation | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return true;
    const auto left = std::chrono::duration_cast<milliseconds>(end - Clock::now());
    if (left.count() <= 0) return false;
    std::this_thread::sleep_for(std::min(kNap, left));
  }
  return true;
}

}  // namespace quenlor
