#include "base/Thread.h"

namespace quenlor {

void* Thread::entry(void* self) {
  static_cast<Thread*>(self)->run();
  return nullptr;
}

bool Thread::start() {
  if (m_started) return false;
  m_started = pthread_create(&m_thread, nullptr, &Thread::entry, this) == 0;
  return m_started;
}

void Thread::join() {
  if (!m_started) return;
  pthread_join(m_thread, nullptr);
  m_started = false;
}

void Thread::detach() {
  if (!m_started) return;
  pthread_detach(m_thread);
  m_started = false;
}

}  // namespace quenlor
