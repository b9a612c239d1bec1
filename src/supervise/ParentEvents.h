// Everything that the process that outlives the scan can see: signals, children that ended, and the
// word of the scan.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <map>
#include <optional>

#include "supervise/SignalWatch.h"

namespace quenlor {

// Waits for nothing that could fail to come: every wait has a limit and ends at once when something
// happens. A second signal that ends programs ends this process there and then; the same one that
// comes twice at once is one.
class ParentEvents {
 public:
  // word: the reading end of the scan's pipe; not owned.
  ParentEvents(SignalWatch& signals, int word) : m_signals(signals), m_word(word) {}

  // The wait status of this child will be wanted.
  void expect(pid_t child) { m_expected[child]; }
  // Its wait status once it has ended.
  std::optional<int> statusOf(pid_t child) const;

  std::optional<int> told() const { return m_told; }  // the signal that this process was sent
  // The status that the scan has said of itself.
  std::optional<int> saidStatus() const { return m_saidStatus; }
  // The scan has nothing more to say: it holds nothing that a caller could wait for.
  bool hasSaidAll() const { return m_saidAll; }

  // Waits for the next event, at most as long as given; gives the time that it took.
  std::chrono::milliseconds look(std::chrono::milliseconds limit);
  // Looks until the condition holds; false when it does not in time. A condition that no event
  // tells of is tested again after each step.
  bool lookUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit,
                 std::chrono::milliseconds step = std::chrono::milliseconds::max());

 private:
  void takeSignals();
  void takeOrder(int signal);
  void reap();
  void readWord();

  SignalWatch& m_signals;
  int m_word;  // -1 once nobody can write to it any more
  std::map<pid_t, std::optional<int>> m_expected;
  std::optional<int> m_told;
  std::chrono::steady_clock::time_point m_toldAt;
  std::optional<int> m_saidStatus;
  bool m_saidAll = false;
};

}  // namespace quenlor
