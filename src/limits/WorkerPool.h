// Calls that may never return, made side by side by workers that can be given up.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace quenlor {

// How many workers may still be given up, for all pools that share it: each of them stays in the
// kernel for as long as what it asked does not answer. Not to be used by two pools at once.
class WorkerBudget {
 public:
  explicit WorkerBudget(size_t most) : m_left(most) {}

  size_t left() const { return m_left; }
  void spend() { m_left -= m_left > 0 ? 1 : 0; }

 private:
  size_t m_left;
};

// Makes calls and waits for them within limits. A worker makes many calls, one after the other. It
// gets company while it is kept waiting, at once where a call may hang, so that calls that hang
// cost their limit once and not one after the other. A worker whose call exceeds the limit is given
// up (cancelled, detached, reported with reportAbandonedWorker()) and another takes its place.
class WorkerPool {
 public:
  struct Request {
    std::function<void()> call;  // may outlive the pool: it shares what it touches with the caller
    bool mayHang = true;         // made after all the others
  };

  enum class Outcome : uint8_t {
    kAnswered,  // the call has returned; what it wrote may be read
    kNoAnswer,  // it had not returned in time; what it writes must not be looked at
    kNotAsked,  // it was not made: no worker could be had, or no time was left
  };

  struct Limits {
    std::chrono::microseconds each;  // for one call; 0 or less looks once, without waiting
    std::optional<std::chrono::microseconds> together = std::nullopt;  // for all of them
  };

  // So many workers run at once at most.
  static constexpr size_t kMostWorkers = 64;
  // Calls that may hang leave so much of the budget to those that should not.
  static constexpr size_t kReserve = 1;

  WorkerPool(const Limits& limits, WorkerBudget& budget) : m_limits(limits), m_budget(budget) {}

  // One outcome for each request, in their order. Returns when each has one.
  std::vector<Outcome> run(std::vector<Request> requests);

 private:
  Limits m_limits;
  WorkerBudget& m_budget;
};

}  // namespace quenlor
