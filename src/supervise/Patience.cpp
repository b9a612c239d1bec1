#include "supervise/Patience.h"

#include <algorithm>

namespace quenlor {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLongestWait{1000};

}  // namespace

milliseconds Patience::nextWait() const {
  const int64_t scanLimit = m_state.scanLimit;
  milliseconds wait = std::min(kLongestWait, milliseconds(m_state.idleLimit) - m_idle);
  if (scanLimit > 0) wait = std::min(wait, milliseconds(scanLimit) - m_total);
  return std::max(wait, milliseconds(1));
}

bool Patience::isOverAfter(milliseconds waited) {
  const milliseconds counted = std::min(waited, nextWait());
  const uint64_t progress = m_state.progress;
  m_idle = progress == m_progress ? m_idle + counted : milliseconds(0);
  m_progress = progress;
  if (!m_state.isReadersTurn) m_total += counted;
  const int64_t scanLimit = m_state.scanLimit;
  return m_idle.count() >= m_state.idleLimit || (scanLimit > 0 && m_total.count() >= scanLimit);
}

}  // namespace quenlor
