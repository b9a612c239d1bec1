#include "limits/BoundedWorker.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <new>
#include <utility>

#include "base/Thread.h"
#include "limits/AbandonedWorkers.h"

namespace quenlor {
namespace {

using Clock = std::chrono::steady_clock;

BoundedWorker::Result runHere(const std::function<void()>& job) {
  using End = BoundedWorker::End;
  try {
    job();
    return {End::kDone, {}};
  } catch (const std::bad_alloc&) {
    return {End::kThrew, "out of memory"};
  } catch (const std::exception& error) {
    return {End::kThrew, error.what()};
  }
}

}  // namespace

// The thread and what it shares with the caller. It keeps itself alive while its thread runs, so
// that a thread that was given up finds it when it wakes after all.
class BoundedWorker::Line : public Thread {
 public:
  // False when no thread can be made.
  static bool start(const std::shared_ptr<Line>& line) {
    line->m_self = line;
    if (line->Thread::start()) return true;
    line->m_self.reset();
    return false;
  }

  void run() override {
    const std::shared_ptr<Line> self = std::move(m_self);
    std::unique_lock lock(m_mutex);
    while (true) {
      m_changed.wait(lock, [this] { return m_job || m_isEnding; });
      if (!m_job) return;
      const std::function<void()> job = std::exchange(m_job, nullptr);
      lock.unlock();
      Result result = runHere(job);
      lock.lock();
      m_result = std::move(result);
      m_isDone = true;
      lock.unlock();
      m_changed.notify_all();
      lock.lock();
    }
  }

  // Whoever is woken finds the lock free: with it held, each hand-over would cost two more switches
  // between threads, and a scan has a hundred.
  void give(std::function<void()> job) {
    {
      const std::lock_guard lock(m_mutex);
      m_isDone = false;
      m_job = std::move(job);
    }
    m_changed.notify_all();
  }

  // False when the job has not ended by then.
  bool waitUntil(Clock::time_point end, Result& result) {
    std::unique_lock lock(m_mutex);
    if (!m_changed.wait_until(lock, end, [this] { return m_isDone; })) return false;
    result = m_result;
    return true;
  }

  void end() {
    const std::lock_guard lock(m_mutex);
    m_isEnding = true;
    m_changed.notify_all();
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::function<void()> m_job;
  Result m_result;
  bool m_isDone = false;
  bool m_isEnding = false;
  std::shared_ptr<Line> m_self;
};

BoundedWorker::BoundedWorker() = default;

BoundedWorker::~BoundedWorker() {
  if (!m_line) return;
  m_line->end();
  m_line->join();
}

bool BoundedWorker::haveLine() {
  if (m_line) return true;
  auto line = std::make_shared<Line>();
  if (!Line::start(line)) return false;
  m_line = std::move(line);
  return true;
}

BoundedWorker::Result BoundedWorker::run(std::function<void()> job, Milliseconds limit,
                                         const std::function<Milliseconds()>& excused) {
  if (!haveLine()) return runHere(job);
  const auto start = Clock::now();
  m_line->give(std::move(job));
  Result result;
  Milliseconds patience = limit;
  while (!m_line->waitUntil(start + patience, result)) {
    const Milliseconds extended = excused ? limit + excused() : limit;
    if (extended <= patience) {
      reportAbandonedWorker();
      m_line->end();  // should the job end after all
      m_line->detach();
      m_line.reset();
      return {End::kTimedOut, {}};
    }
    patience = extended;
  }
  return result;
}

}  // namespace quenlor
