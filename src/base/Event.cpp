#include "base/Event.h"

#include <chrono>

namespace quenlor {

void Event::signal() {
  const std::lock_guard lock(m_mutex);
  m_signalled = true;
  // Under the lock: a waiter may destroy the event as soon as it has seen the state.
  m_condition.notify_all();
}

int Event::wait(int32_t milliseconds) {
  std::unique_lock lock(m_mutex);
  // The steady clock: setting the machine's date must not lengthen or cut the wait.
  const auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  const bool signalled = m_condition.wait_until(lock, limit, [this] { return m_signalled; });
  return signalled ? 0 : kTimedOut;
}

}  // namespace quenlor
