#include "host/ScanState.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace quenlor {
namespace {

ScanState g_unread;
std::atomic<ScanState*> g_current{&g_unread};

}  // namespace

void SharedName::set(const std::string& name) {
  clear();
  if (name.size() >= m_text.size()) return;
  std::copy_n(name.c_str(), name.size() + 1, m_text.begin());
  m_isSet = true;
}

std::string SharedName::name() const {
  if (!m_isSet) return {};
  return {m_text.begin(), std::find(m_text.begin(), m_text.end(), '\0')};
}

void ScanState::addCommand(pid_t leader) {
  for (std::atomic<pid_t>& place : commands) {
    pid_t free = 0;
    if (place.compare_exchange_strong(free, leader)) return;
  }
}

void ScanState::removeCommand(pid_t leader) {
  for (std::atomic<pid_t>& place : commands) {
    pid_t expected = leader;
    if (place.compare_exchange_strong(expected, 0)) return;
  }
}

CommandStart::CommandStart() {
  ScanState& state = scanState();
  for (;;) {
    ++state.commandsStarting;
    if (state.isToDie == 0) return;
    --state.commandsStarting;
    std::this_thread::sleep_for(std::chrono::seconds(1));
  }
}

CommandStart::~CommandStart() { --scanState().commandsStarting; }

ScanState& scanState() { return *g_current.load(std::memory_order_acquire); }

void useScanState(ScanState* state) {
  g_current.store(state == nullptr ? &g_unread : state, std::memory_order_release);
}

}  // namespace quenlor
