#include "groups/modern/SharedReader.h"

namespace quenlor {
namespace {

constexpr Milliseconds kMoment{50};

Milliseconds since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now() - start);
}

}  // namespace

void noteEnd(Outcome& outcome, const BoundedWorker::Result& result, const std::string& what) {
  if (result.end == BoundedWorker::End::kTimedOut) {
    outcome.note(OutcomeStatus::kTimedOut, what + ": timed out");
  } else if (result.end == BoundedWorker::End::kThrew) {
    outcome.note(OutcomeStatus::kFailed, what + ": " + result.what);
  }
}

ReaderLine::Turn::Turn(ReaderLine& line) : m_line(line), m_lock(line.m_turns, std::defer_lock) {
  {
    const std::lock_guard lock(m_line.m_guard);
    m_line.m_waitingSince = Clock::now();
  }
  m_lock.lock();
}

ReaderLine::Turn::~Turn() {
  const std::lock_guard lock(m_line.m_guard);
  if (m_line.m_waitingSince) m_line.m_waited += since(*m_line.m_waitingSince);
  m_line.m_waitingSince.reset();
}

BoundedWorker::Result ReaderLine::Turn::run(std::function<void()> job) {
  const Milliseconds limit = m_line.m_limit();
  if (limit.count() <= 0) return {BoundedWorker::End::kTimedOut, {}};
  return m_line.m_worker.run(std::move(job), limit);
}

void ReaderLine::beginGroup() {
  const std::lock_guard lock(m_guard);
  m_waited = Milliseconds(0);
  m_waitingSince.reset();
}

Milliseconds ReaderLine::waited() const {
  const std::lock_guard lock(m_guard);
  const Milliseconds waited =
      m_waitingSince ? m_waited + since(*m_waitingSince) + kMoment : m_waited;
  return waited < kMoment ? waited : waited + kMoment;
}

}  // namespace quenlor
