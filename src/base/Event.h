// A condition that one thread signals and another waits for with a limit.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace quenlor {

// Stays signalled once signal() was called.
class Event {
 public:
  static constexpr int kTimedOut = -172;

  void signal();
  // 0 once signalled, kTimedOut after the given milliseconds; 0 or less tests without waiting.
  int wait(int32_t milliseconds);

 private:
  std::mutex m_mutex;
  std::condition_variable m_condition;
  bool m_signalled = false;
};

}  // namespace quenlor
