// A thread of execution with a virtual body.
#pragma once

#include <pthread.h>

namespace quenlor {

// The object must live until join() returned, or for ever once detach() was called.
class Thread {
 public:
  Thread() = default;
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;
  virtual ~Thread() = default;

  bool start();   // false when no thread could be made, or one is running already
  void join();    // waits for run() to return; nothing when the thread was never started
  void detach();  // nobody will join it: what the system holds for the thread goes when it ends
  virtual void run() = 0;

 private:
  static void* entry(void* self);

  pthread_t m_thread{};
  bool m_started = false;
};

}  // namespace quenlor
