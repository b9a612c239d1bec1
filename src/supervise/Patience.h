// When a scan that shows no progress is given up.
#pragma once

#include <chrono>
#include <cstdint>

#include "host/ScanState.h"

namespace quenlor {

// Reads no clock: it is told how long each wait took, and counts no more of it than it had asked
// for. The hours for which the terminal or an administrator had both processes stopped are no time
// that the scan has had.
class Patience {
 public:
  explicit Patience(const ScanState& state) : m_state(state), m_progress(state.progress) {}

  // How long to wait at most before the next look; at least a millisecond.
  std::chrono::milliseconds nextWait() const;
  // Takes a wait into account; true when the scan has had its time.
  bool isOverAfter(std::chrono::milliseconds waited);

 private:
  const ScanState& m_state;
  uint64_t m_progress;
  std::chrono::milliseconds m_idle{0};
  std::chrono::milliseconds m_total{0};
};

}  // namespace quenlor
