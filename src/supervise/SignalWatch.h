// Signals that end a program, taken as events instead.
#pragma once

#include <csignal>
#include <optional>

namespace quenlor {

// Blocks SIGCHLD and those of SIGTERM, SIGINT, SIGHUP and SIGQUIT that would end this process, and
// gives them out one by one. What the caller ignores or has blocked already does not end it, and
// stays as it is. SIGPIPE and SIGXFSZ are blocked too: a complaint that cannot be written must not
// be the end of whoever complains. To be made before any thread exists.
class SignalWatch {
 public:
  SignalWatch();
  ~SignalWatch();
  SignalWatch(const SignalWatch&) = delete;
  SignalWatch& operator=(const SignalWatch&) = delete;

  bool isWatching() const { return m_descriptor >= 0; }  // false: no descriptor could be had
  int descriptor() const { return m_descriptor; }        // readable when a signal has come

  // The next signal that has come; nothing when there is none. Does not wait.
  std::optional<int> take() const;

  // Ends the watch and puts the signal mask back.
  void stop();

 private:
  int m_descriptor = -1;
  sigset_t m_before{};
};

// Ends this process by the signal, as if it had never been caught, and leaves no second core. A
// process that its signals cannot end, the first one of a container, exits with 128 + signal.
[[noreturn]] void dieBy(int signal);

}  // namespace quenlor
