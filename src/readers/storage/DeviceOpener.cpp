#include "readers/storage/DeviceOpener.h"

#include <fcntl.h>

#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "base/Thread.h"
#include "limits/GetTableThread.h"

namespace quenlor {
namespace {

struct OpenResult {
  Descriptor descriptor;
  int error = 0;
};

OpenResult openNow(const std::string& path, int flags) {
  OpenResult result{Descriptor(host().open(path.c_str(), flags, 0))};
  if (!result.descriptor) result.error = errno;
  return result;
}

// One open() on its own thread.
class Opening : public Thread {
 public:
  Opening(std::string path, int flags) : m_path(std::move(path)), m_flags(flags) {}

  void run() override {
    OpenResult result = openNow(m_path, m_flags);
    const std::lock_guard lock(m_mutex);
    if (m_isGivenUp) return;  // nobody wants it any more: closed at once
    m_result = std::move(result);
    m_changed.notify_all();
  }

  // What open() gave; nothing when the limit is over, and then nobody may delete this object.
  std::optional<OpenResult> wait(std::chrono::milliseconds limit) {
    std::unique_lock lock(m_mutex);
    const auto end = std::chrono::steady_clock::now() + limit;
    m_isGivenUp = !m_changed.wait_until(lock, end, [this] { return m_result.has_value(); });
    return std::exchange(m_result, std::nullopt);
  }

 private:
  const std::string m_path;
  const int m_flags;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::optional<OpenResult> m_result;
  bool m_isGivenUp = false;
};

// Kept reachable, so that leak checkers can tell this from a mistake; never destroyed.
void abandon(std::unique_ptr<Opening> opening) {
  static std::mutex& guard = *new std::mutex;
  static auto& abandoned = *new std::set<Opening*>;
  opening->detach();
  const std::lock_guard lock(guard);
  abandoned.insert(opening.release());
  reportAbandonedWorker();
}

// Nothing when it did not return in time. Without a thread it is tried all the same: the limit of
// the whole collection still stands.
std::optional<OpenResult> openWithin(std::chrono::milliseconds limit, const std::string& path,
                                     int flags) {
  auto opening = std::make_unique<Opening>(path, flags);
  if (!opening->start()) return openNow(path, flags);
  std::optional<OpenResult> result = opening->wait(limit);
  if (result) {
    opening->join();
  } else {
    abandon(std::move(opening));
  }
  return result;
}

void reportStuck(const std::string& path, std::chrono::milliseconds limit) {
  std::fprintf(stderr, "quenlor: %s did not open within %lld ms and is left out\n", path.c_str(),
               static_cast<long long>(limit.count()));
}

}  // namespace

void reportHeld(const char* path) {
  std::fprintf(stderr, "quenlor: %s is held exclusively by another process and is left out\n",
               path);
}

Descriptor DeviceOpener::open(const std::string& path, int accessMode) {
  std::optional<OpenResult> result;
  if (m_stuck.count(path) == 0) {
    result = openWithin(m_limit, path, accessMode | O_NONBLOCK);
    if (!result) reportStuck(path, m_limit);
  }
  if (!result) m_stuck.insert(path);
  errno = result ? result->error : ETIMEDOUT;
  return result ? std::move(result->descriptor) : Descriptor();
}

}  // namespace quenlor
