// What a computation costs, however busy the machine is that runs the test.
#pragma once

#include <chrono>
#include <ctime>

namespace quenlor::test {

// Processor time of the calling thread. Waiting does not count: not for measuring what may sleep.
inline std::chrono::nanoseconds processorTime() {
  timespec spent{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &spent);
  return std::chrono::seconds(spent.tv_sec) + std::chrono::nanoseconds(spent.tv_nsec);
}

}  // namespace quenlor::test
