#include "supervise/SignalWatch.h"

#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace quenlor {
namespace {

constexpr int kEndingSignals[] = {SIGTERM, SIGINT, SIGHUP, SIGQUIT};
constexpr int kUnwatchedSignals[] = {SIGPIPE, SIGXFSZ};
constexpr int kExitBySignal = 128;

bool isIgnored(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

sigset_t watchedBeside(const sigset_t& alreadyBlocked) {
  sigset_t watched;
  sigemptyset(&watched);
  sigaddset(&watched, SIGCHLD);
  for (const int signal : kEndingSignals) {
    if (!isIgnored(signal) && sigismember(&alreadyBlocked, signal) == 0) {
      sigaddset(&watched, signal);
    }
  }
  return watched;
}

}  // namespace

SignalWatch::SignalWatch() {
  ::pthread_sigmask(SIG_BLOCK, nullptr, &m_before);
  const sigset_t watched = watchedBeside(m_before);
  sigset_t blocked = watched;
  for (const int signal : kUnwatchedSignals) sigaddset(&blocked, signal);
  ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
  m_descriptor = ::signalfd(-1, &watched, SFD_CLOEXEC | SFD_NONBLOCK);
  if (m_descriptor < 0) stop();
}

SignalWatch::~SignalWatch() {
  if (m_descriptor >= 0) ::close(m_descriptor);
}

std::optional<int> SignalWatch::take() const {
  signalfd_siginfo info{};
  ssize_t count = 0;
  do {
    count = ::read(m_descriptor, &info, sizeof info);
  } while (count < 0 && errno == EINTR);
  if (count != sizeof info) return std::nullopt;
  return static_cast<int>(info.ssi_signo);
}

void SignalWatch::stop() {
  if (m_descriptor >= 0) ::close(std::exchange(m_descriptor, -1));
  ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

void dieBy(int signal) {
  ::prctl(PR_SET_DUMPABLE, 0);  // where a core is wanted, that of the scan tells more
  struct sigaction action {};
  action.sa_handler = SIG_DFL;
  ::sigaction(signal, &action, nullptr);
  sigset_t unblocked;
  sigemptyset(&unblocked);
  sigaddset(&unblocked, signal);
  ::pthread_sigmask(SIG_UNBLOCK, &unblocked, nullptr);
  ::raise(signal);
  ::_exit(kExitBySignal + signal);
}

}  // namespace quenlor
