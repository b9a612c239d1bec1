#include "host/CommandRunner.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <optional>
#include <set>
#include <thread>
#include <utility>

#include "host/ScanState.h"

namespace quenlor {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Output that nobody wants is read up to here, so that a command in its last words is not stopped
// by SIGPIPE and reports its own status.
constexpr size_t kDrainLimit = 1 << 20;
// No listing that is worth reading is longer; a command that prints for ever would fill the memory
// before its time is over.
constexpr size_t kLongestOutput = 32 << 20;
// A killed child that does not end within this time sits in the kernel and is left alone.
constexpr milliseconds kGraceAfterKill{1000};

}  // namespace

// The process groups of all commands that are not reaped. Until then a leader, or its zombie, keeps
// the group's number from reuse, so that no stranger is killed. May be used from several threads.
class CommandRunner::Groups {
 public:
  bool areKilled() const {
    const std::lock_guard lock(m_mutex);
    return m_areKilled;
  }

  void add(pid_t leader) {
    const std::lock_guard lock(m_mutex);
    m_leaders.insert(leader);
    scanState().addCommand(leader);
    if (m_areKilled) ::kill(-leader, SIGKILL);  // all the others were, while this one was started
  }

  // As waitpid() that does not wait. The leader is looked at first and reaped once nobody has its
  // number any more.
  pid_t reap(pid_t leader, int* status) {
    const std::lock_guard lock(m_mutex);
    siginfo_t ended{};
    const int found = ::waitid(P_PID, static_cast<id_t>(leader), &ended, kLookOnly);
    if (found < 0 && errno == EINTR) return -1;
    if (found == 0 && ended.si_pid != leader) return 0;
    m_leaders.erase(leader);
    scanState().removeCommand(leader);
    return ::waitpid(leader, status, WNOHANG);
  }

  void killAll() {
    const std::lock_guard lock(m_mutex);
    m_areKilled = true;
    for (const pid_t leader : m_leaders) ::kill(-leader, SIGKILL);
  }

 private:
  static constexpr int kLookOnly = WEXITED | WNOHANG | WNOWAIT;

  mutable std::mutex m_mutex;
  std::set<pid_t> m_leaders;
  bool m_areKilled = false;
};

// One running command and the reading end of its output.
class CommandRunner::Child {
 public:
  Child(Groups& groups, pid_t pid, OwnedDescriptor output, Clock::time_point deadline,
        std::function<void()> onCutOff)
      : m_groups(groups),
        m_pid(pid),
        m_output(std::move(output)),
        m_deadline(deadline),
        m_onCutOff(std::move(onCutOff)) {
    m_groups.add(m_pid);
  }

  void limit(milliseconds rest) {
    m_deadline = std::min(m_deadline, Clock::now() + rest);
    m_onCutOff = nullptr;
  }

  // As read(); 0 also for ever after the deadline or the longest output, once what was written
  // before is consumed.
  ssize_t read(char* buffer, size_t size) {
    if (!m_leftover && (m_delivered >= kLongestOutput || !waitForOutput())) cutOff();
    if (m_leftover) size = std::min(size, *m_leftover);
    if (size == 0) return 0;
    ssize_t count = 0;
    do {
      count = ::read(m_output.get(), buffer, size);
    } while (count < 0 && errno == EINTR);
    if (count > 0) m_delivered += static_cast<size_t>(count);
    if (m_leftover && count > 0) *m_leftover -= static_cast<size_t>(count);
    return count;
  }

  void drain() {
    std::array<char, 4096> unwanted;  // the stack of the caller may be small
    for (size_t drained = 0; drained < kDrainLimit;) {
      const ssize_t count = read(unwanted.data(), unwanted.size());
      if (count <= 0) return;
      drained += static_cast<size_t>(count);
    }
  }

  void closeOutput() { m_output = OwnedDescriptor(); }

  // Wait status, or -1 when the child cannot be reaped.
  int reap() {
    int status = -1;
    if (reapUntil(m_deadline, &status)) return status;
    killGroup();
    reapUntil(Clock::now() + kGraceAfterKill, &status);
    return status;
  }

 private:
  // Only before the leader is reaped.
  void killGroup() const { ::kill(-m_pid, SIGKILL); }

  // False when the deadline has come.
  bool waitForOutput() {
    for (;;) {
      const auto left = std::chrono::ceil<milliseconds>(m_deadline - Clock::now()).count();
      if (left <= 0) return false;
      pollfd output{m_output.get(), POLLIN, 0};
      if (::poll(&output, 1, static_cast<int>(left)) > 0) return true;
    }
  }

  // Nobody holds the writing end any more.
  bool hasOutputEnded() const {
    pollfd output{m_output.get(), POLLIN, 0};
    return ::poll(&output, 1, 0) > 0 && (output.revents & POLLHUP) != 0;
  }

  void cutOff() {
    if (m_onCutOff && !hasOutputEnded()) m_onCutOff();
    killGroup();
    int waiting = 0;
    if (::ioctl(m_output.get(), FIONREAD, &waiting) != 0 || waiting < 0) waiting = 0;
    m_leftover = static_cast<size_t>(waiting);
  }

  // True when there is nothing to wait for any more. A shell whose output has ended is gone within
  // microseconds, so the first naps are short.
  bool reapUntil(Clock::time_point end, int* status) const {
    for (auto nap = std::chrono::microseconds(20);; nap = std::min(nap * 2, kLongestNap)) {
      int found = 0;
      const pid_t pid = m_groups.reap(m_pid, &found);
      if (pid == m_pid) *status = found;
      if (pid == m_pid || (pid < 0 && errno != EINTR)) return true;
      if (Clock::now() >= end) return false;
      std::this_thread::sleep_for(nap);
    }
  }

  static constexpr std::chrono::microseconds kLongestNap{5000};

  Groups& m_groups;
  const pid_t m_pid;
  OwnedDescriptor m_output;
  Clock::time_point m_deadline;
  std::function<void()> m_onCutOff;
  size_t m_delivered = 0;
  std::optional<size_t> m_leftover;  // set once killed: bytes that were in the pipe by then
};

CommandRunner::CommandRunner(milliseconds ceiling, OnCutOff onCutOff)
    : m_ceiling(ceiling), m_onCutOff(std::move(onCutOff)), m_groups(std::make_unique<Groups>()) {}

CommandRunner::~CommandRunner() = default;

FILE* CommandRunner::start(const char* commandLine) {
  return start(shellCall(commandLine), commandLine);
}

FILE* CommandRunner::startProgram(const char* path, const std::vector<std::string>& arguments) {
  return start({path, arguments}, path);
}

FILE* CommandRunner::start(const ProgramCall& call, const std::string& told) {
  if (m_groups->areKilled()) {
    errno = ECANCELED;
    return nullptr;
  }
  const Clock::time_point deadline = Clock::now() + m_ceiling;
  std::optional<Pipe> pipe = makePipe();
  const OwnedDescriptor input = openNoInput();
  const OwnedDescriptor errors = openNoErrors();
  if (!pipe || input.get() < 0) return nullptr;

  const CommandStart starting;
  pid_t pid = -1;
  const int error = spawnProgram(call, input.get(), pipe->writeEnd.get(), errors.get(), &pid);
  if (error != 0) {
    errno = error;
    return nullptr;
  }
  std::function<void()> onCutOff;
  if (m_onCutOff) onCutOff = [this, told] { m_onCutOff(told); };
  auto child = std::make_unique<Child>(*m_groups, pid, std::move(pipe->readEnd), deadline,
                                       std::move(onCutOff));

  cookie_io_functions_t functions{};
  functions.read = [](void* cookie, char* buffer, size_t size) {
    return static_cast<Child*>(cookie)->read(buffer, size);
  };
  FILE* stream = ::fopencookie(child.get(), "r", functions);
  if (stream == nullptr) {
    child->closeOutput();
    child->reap();
    errno = ENOMEM;
    return nullptr;
  }
  const std::lock_guard lock(m_mutex);
  m_children[stream] = std::move(child);
  return stream;
}

int CommandRunner::finish(FILE* stream) {
  std::unique_ptr<Child> child;
  {
    const std::lock_guard lock(m_mutex);
    const auto found = m_children.find(stream);
    if (found == m_children.end()) return -1;
    child = std::move(found->second);
    m_children.erase(found);
  }
  child->drain();
  std::fclose(stream);
  child->closeOutput();
  const int status = child->reap();
  countProgress();
  return status;
}

void CommandRunner::limit(FILE* stream, milliseconds rest) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_children.find(stream);
  if (found != m_children.end()) found->second->limit(rest);
}

void CommandRunner::killAll() { m_groups->killAll(); }

}  // namespace quenlor
