#include "host/Host.h"

#include <atomic>

#include "host/SystemHost.h"

namespace quenlor {
namespace {

// Never destroyed: an abandoned worker may use it until the process is gone.
SystemHost& theMachine() {
  static SystemHost& instance = *new SystemHost;
  return instance;
}

// Atomic, because a worker that was given up may still ask while a test's host goes away.
std::atomic<Host*>& currentHost() {
  static std::atomic<Host*> current{&systemHost()};
  return current;
}

}  // namespace

Host& systemHost() { return theMachine(); }

void killCommands() { theMachine().killCommands(); }

Host& host() { return *currentHost().load(std::memory_order_acquire); }

ScopedHost::ScopedHost(Host& replacement)
    : m_previous(currentHost().exchange(&replacement, std::memory_order_acq_rel)) {}

ScopedHost::~ScopedHost() { currentHost().store(m_previous, std::memory_order_release); }

}  // namespace quenlor
