#include "supervise/CleanUp.h"

#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <vector>

#include "readers/storage/SgModule.h"
#include "readers/storage/SgUse.h"
#include "supervise/ScanChild.h"

namespace quenlor {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kReapLimit{1000};
constexpr milliseconds kUnloadLimit{10000};
constexpr milliseconds kRemovalLimit{1000};
constexpr milliseconds kGraceAfterKill{1000};
constexpr milliseconds kLockStep{50};
constexpr int kComplaintMilliseconds = 1000;

// The scan may have gone mad before it died, and -1 as a group is everybody: only what still looks
// like a command that it has started is killed. A leader that is gone was taken from the state
// before its number could be another's.
bool isCommandGroup(pid_t group) {
  return group > 1 && group != ::getpgrp() && ::getpgid(group) == group &&
         ::getsid(group) == ::getsid(0);
}

std::vector<pid_t> commandGroups(const ScanState& state) {
  std::vector<pid_t> groups;
  for (const std::atomic<pid_t>& place : state.commands) {
    if (const pid_t group = place; isCommandGroup(group)) groups.push_back(group);
  }
  return groups;
}

// Once the scan's process is gone its commands are children of this one.
bool hasChildIn(pid_t group) {
  siginfo_t ended{};
  return ::waitid(P_PGID, static_cast<id_t>(group), &ended, WEXITED | WNOHANG | WNOWAIT) == 0;
}

bool hasNoChild() {
  siginfo_t ended{};
  return ::waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) != 0;
}

// Runs a program in a group of its own, with nothing to read and nothing to say: our standard input
// is the end of a pipe that can be neither written nor waited for. -1 when it cannot be started.
pid_t startQuietly(const char* const* arguments) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDERR_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t signals;
  sigfillset(&signals);
  posix_spawnattr_setsigdefault(&attributes, &signals);
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&attributes, &signals);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(&attributes,
                           POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  pid_t child = -1;
  const int error = posix_spawn(&child, arguments[0], &actions, &attributes,
                                const_cast<char* const*>(arguments), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return error == 0 ? child : -1;
}

}  // namespace

void CleanUp::run() {
  killCommands();
  if (m_state.sgLoaded != Certainty::kNo) unloadModule();
  if (m_state.temporaryMade) removeFile(kModprobeErrorFile);
  if (const std::string document = m_state.incompleteDocument.name(); !document.empty()) {
    removeFile(document);
  }
}

void CleanUp::killCommands() {
  std::vector<pid_t> groups = commandGroups(m_state);
  for (const pid_t group : groups) ::kill(-group, SIGKILL);
  const auto allReaped = [&groups] {
    return std::none_of(groups.begin(), groups.end(), hasChildIn);
  };
  if (!m_events.lookUntil(allReaped, kReapLimit)) {
    complain("a command of the scan was killed and does not end");
  }
  // A command that the scan was starting when it died is not known; most end by themselves.
  if (m_state.commandsStarting > 0) m_events.lookUntil(hasNoChild, kReapLimit);
}

void CleanUp::unloadModule() {
  SgUse use{milliseconds(0)};
  const auto isLast = [&use] { return use.isLast({}); };
  if (!m_events.lookUntil(isLast, kSgUseLimit, kLockStep)) {
    complain("the module sg stays loaded, another scan uses it");
    return;
  }
  // A module that may have been loaded or unloaded when the scan ended need not be there.
  const bool isCertain = m_state.sgLoaded == Certainty::kYes;
  if (!runModprobe() && isCertain) {
    complain("the module sg, which was loaded for the scan, could not be unloaded");
  }
}

bool CleanUp::runModprobe() {
  const pid_t modprobe = startQuietly(kUnloadSgCommand);
  if (modprobe < 0) return false;
  m_events.expect(modprobe);
  const auto hasEnded = [&] { return m_events.statusOf(modprobe).has_value(); };
  if (!m_events.lookUntil(hasEnded, kUnloadLimit)) {
    ::kill(-modprobe, SIGKILL);
    m_events.lookUntil(hasEnded, kGraceAfterKill);
  }
  return m_events.statusOf(modprobe) == 0;
}

// In a process of its own: the file may lie where the scan is stuck.
void CleanUp::removeFile(const std::string& name) {
  const pid_t remover = ::fork();
  if (remover == 0) {
    ::dup2(STDIN_FILENO, STDERR_FILENO);
    closeFrom(STDERR_FILENO + 1);
    ::_exit(::unlink(name.c_str()) == 0 || errno == ENOENT ? 0 : 1);
  }
  m_events.expect(remover);
  m_events.lookUntil([&] { return m_events.statusOf(remover).has_value(); }, kRemovalLimit);
  if (m_events.statusOf(remover) != 0) complain(name + " could not be removed");
}

void complain(const std::string& text) {
  const std::string line = "quenlor: " + text + "\n";
  pollfd errors{STDERR_FILENO, POLLOUT, 0};
  if (::poll(&errors, 1, kComplaintMilliseconds) <= 0) return;
  // Nobody is left to hear of it when this fails.
  static_cast<void>(!::write(STDERR_FILENO, line.data(), line.size()));
}

}  // namespace quenlor
