// Work with a limit on the caller's patience, for what the kernel may never answer.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace quenlor {

using Milliseconds = std::chrono::milliseconds;

// Runs jobs one after the other on a thread of its own. A job that does not end in time is given up
// with its thread (reportAbandonedWorker()), and the next one gets a new thread; so a job must own
// all that it touches. Where no thread can be made, jobs run on the caller's, without a limit. To
// be used by one thread at a time.
class BoundedWorker {
 public:
  enum class End : uint8_t { kDone, kTimedOut, kThrew };

  struct Result {
    End end = End::kDone;
    std::string what;  // of the exception, for kThrew
  };

  BoundedWorker();
  ~BoundedWorker();  // ends an idle thread
  BoundedWorker(const BoundedWorker&) = delete;
  BoundedWorker& operator=(const BoundedWorker&) = delete;

  // `excused` tells how much of the time since the start does not count against the limit; asked
  // when the limit is over. The limit is then put off by it.
  Result run(std::function<void()> job, Milliseconds limit,
             const std::function<Milliseconds()>& excused = {});

 private:
  class Line;

  bool haveLine();

  std::shared_ptr<Line> m_line;
};

}  // namespace quenlor
