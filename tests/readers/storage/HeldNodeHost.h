// A machine with nodes that another process holds: opening one waits, whatever the flags.
#pragma once

#include <condition_variable>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "tests/support/FakeHost.h"

namespace quenlor::test {

class HeldNodeHost : public FakeHost {
 public:
  // Whoever still waits is let go and waited for, until it has closed what it got.
  ~HeldNodeHost() override {
    release();
    waitUntilAllIsClosed();
  }

  void hold(const std::string& path) {
    const std::lock_guard lock(m_guard);
    m_held.insert(path);
  }

  void release() {
    const std::lock_guard lock(m_guard);
    m_held.clear();
    m_changed.notify_all();
  }

  // Calls of open that have not returned.
  int waiting() {
    const std::lock_guard lock(m_guard);
    return m_waiting;
  }

  void waitUntilAllIsClosed() {
    std::unique_lock lock(m_guard);
    m_changed.wait(lock, [this] { return m_waiting == 0 && m_open == 0; });
  }

  int open(const char* path, int flags, mode_t mode) override {
    waitWhileHeld(path, flags);
    const int fd = FakeHost::open(path, flags, mode);
    const std::lock_guard lock(m_guard);
    if (fd >= 0) ++m_open;
    --m_waiting;
    m_changed.notify_all();
    return fd;
  }

  int close(int fd) override {
    const int result = FakeHost::close(fd);
    const std::lock_guard lock(m_guard);
    --m_open;
    m_changed.notify_all();
    return result;
  }

  std::vector<int> usedFlags;  // of open, in order

 private:
  void waitWhileHeld(const char* path, int flags) {
    std::unique_lock lock(m_guard);
    usedFlags.push_back(flags);
    ++m_waiting;
    m_changed.wait(lock, [this, path] { return m_held.count(path) == 0; });
  }

  std::mutex m_guard;
  std::condition_variable m_changed;
  std::set<std::string> m_held;
  int m_waiting = 0;
  int m_open = 0;
};

}  // namespace quenlor::test
