#include "groups/modern/ModernScan.h"

#include <algorithm>

namespace quenlor {

ModernScan::ModernScan(const ScanSettings& settings)
    : m_settings(settings), m_start(Clock::now()), m_readers([this] { return limit(); }) {}

Milliseconds ModernScan::limit() const {
  const auto spent = std::chrono::duration_cast<Milliseconds>(Clock::now() - m_start);
  const Milliseconds left = Milliseconds(m_settings.scanLimit) - spent;
  return std::clamp(left, Milliseconds(0), Milliseconds(m_settings.groupLimit));
}

BoundedWorker::Result ModernScan::runGroup(std::function<void()> job) {
  const Milliseconds granted = limit();
  if (granted.count() == 0) return {BoundedWorker::End::kTimedOut, {}};
  m_readers.beginGroup();
  return m_groupWorker.run(std::move(job), granted, [this] { return m_readers.waited(); });
}

const DmiTable* ModernScan::dmi(Outcome& outcome) {
  Outcome ignored;  // the group that tells of the lockdown says what is missing there
  const Security* found = security(ignored);
  return m_dmi.get(m_readers, outcome, found == nullptr || found->isLockedDown);
}

}  // namespace quenlor
