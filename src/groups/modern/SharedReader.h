// Facts that several groups need: read once in a scan, in a worker of their own, within a limit.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "base/Outcome.h"
#include "limits/BoundedWorker.h"

namespace quenlor {

// The note that a piece of work leaves that did not end well.
void noteEnd(Outcome& outcome, const BoundedWorker::Result& result, const std::string& what);

// The worker of all shared readers of a scan, and how long the present group has waited for it. A
// group that was given up may still ask while the next one does: they take turns.
class ReaderLine {
 public:
  // `limit` tells how long the next reader may take.
  explicit ReaderLine(std::function<Milliseconds()> limit) : m_limit(std::move(limit)) {}

  // While one lives, the asking group waits for a reader; the line is its own.
  class Turn {
   public:
    explicit Turn(ReaderLine& line);
    ~Turn();
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    BoundedWorker::Result run(std::function<void()> job);

   private:
    ReaderLine& m_line;
    std::unique_lock<std::mutex> m_lock;
  };

  void beginGroup();  // the next group has not waited yet
  // What the present group has waited, and a moment to take notice of a reader that was given up.
  Milliseconds waited() const;

 private:
  using Clock = std::chrono::steady_clock;

  std::function<Milliseconds()> m_limit;
  BoundedWorker m_worker;
  std::mutex m_turns;
  mutable std::mutex m_guard;  // of the two below
  Milliseconds m_waited{0};
  std::optional<Clock::time_point> m_waitingSince;
};

// `Inputs` are what the reader has to know beforehand.
template <class Facts, class... Inputs>
class SharedReader {
 public:
  // `what` names the facts for a person ("processors").
  SharedReader(const char* what, Facts (*function)(Inputs...)) : m_what(what), m_read(function) {}

  // Null, with a note in `outcome`, when reading did not end in time or failed; that is not tried
  // again. The facts stay the reader's and are the same for all groups.
  const Facts* get(ReaderLine& line, Outcome& outcome, Inputs... inputs) {
    ReaderLine::Turn turn(line);
    if (!std::exchange(m_isRead, true)) read(turn, inputs...);
    outcome.merge(m_failure);
    return m_facts.get();
  }

 private:
  void read(ReaderLine::Turn& turn, Inputs... inputs) {
    auto facts = std::make_shared<Facts>();  // a worker that is given up keeps it
    const auto result =
        turn.run([facts, function = m_read, inputs...] { *facts = function(inputs...); });
    noteEnd(m_failure, result, m_what);
    if (result.end == BoundedWorker::End::kDone) m_facts = std::move(facts);
  }

  const char* m_what;
  Facts (*m_read)(Inputs...);
  bool m_isRead = false;
  std::shared_ptr<Facts> m_facts;
  Outcome m_failure;
};

}  // namespace quenlor
