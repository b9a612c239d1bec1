#include "supervise/ParentEvents.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace quenlor {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// timeout(1) sends its signal to the program and then to the program's group, so it comes twice.
constexpr milliseconds kOneOrder{100};

}  // namespace

std::optional<int> ParentEvents::statusOf(pid_t child) const {
  const auto found = m_expected.find(child);
  return found == m_expected.end() ? std::nullopt : found->second;
}

milliseconds ParentEvents::look(milliseconds limit) {
  const Clock::time_point start = Clock::now();
  pollfd sources[] = {{m_signals.descriptor(), POLLIN, 0}, {m_word, POLLIN, 0}};
  ::poll(sources, 2, static_cast<int>(limit.count()));  // a negative descriptor is passed over
  readWord();
  takeSignals();
  return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
}

bool ParentEvents::lookUntil(const std::function<bool()>& condition, milliseconds limit,
                             milliseconds step) {
  const Clock::time_point end = Clock::now() + limit;
  while (!condition()) {
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now());
    if (left.count() <= 0) return false;
    look(std::min(left, step));
  }
  return true;
}

void ParentEvents::takeSignals() {
  while (const std::optional<int> signal = m_signals.take()) {
    if (*signal == SIGCHLD) {
      reap();
    } else {
      takeOrder(*signal);
    }
  }
}

void ParentEvents::takeOrder(int signal) {
  if (!m_told) {
    m_told = signal;
    m_toldAt = Clock::now();
  } else if (signal != *m_told || Clock::now() - m_toldAt > kOneOrder) {
    dieBy(signal);
  }
}

// Whoever comes to us when the scan's process has ended is reaped as well.
void ParentEvents::reap() {
  int status = 0;
  for (;;) {
    const pid_t child = ::waitpid(-1, &status, WNOHANG);
    if (child <= 0) return;
    const auto found = m_expected.find(child);
    if (found != m_expected.end()) found->second = status;
  }
}

// Two bytes: the status, and that all descriptors are given up.
void ParentEvents::readWord() {
  while (m_word >= 0) {
    unsigned char byte = 0;
    const ssize_t count = ::read(m_word, &byte, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) return;
    if (count != 1) {
      m_word = -1;
    } else if (m_saidStatus) {
      m_saidAll = true;
    } else {
      m_saidStatus = byte;
    }
  }
}

}  // namespace quenlor
