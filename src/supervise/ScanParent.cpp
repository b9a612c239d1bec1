#include "supervise/ScanParent.h"

#include <sys/wait.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "base/ExitStatus.h"
#include "catalogue/Catalogue.h"
#include "supervise/CleanUp.h"
#include "supervise/Patience.h"
#include "supervise/ScanChild.h"

namespace quenlor {
namespace {

using std::chrono::milliseconds;

// A scan that was killed ends within this time, unless it is stuck in the kernel.
constexpr milliseconds kGraceAfterKill{1000};
// After its word nobody needs its end; it is only waited for so that it is seldom left behind.
constexpr milliseconds kGraceAfterWord{100};
// Giving up descriptors takes no time, unless closing one of them hangs as well.
constexpr milliseconds kGraceBeforeLastWord{1000};

// A command is started, and descriptors are given up, in a millisecond, unless a dead file system
// has to do with it.
constexpr milliseconds kLongestPreparation{100};
constexpr milliseconds kPreparationStep{1};

// Signals that somebody sends to end a program, or that a reader or a limit of the caller's causes:
// the scan could not help it.
constexpr int kOrdinaryEnds[] = {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGPIPE, SIGXFSZ};

bool isOrdinaryEnd(int signal) {
  return std::find(std::begin(kOrdinaryEnds), std::end(kOrdinaryEnds), signal) !=
         std::end(kOrdinaryEnds);
}

}  // namespace

ScanParent::ScanParent(ScanState& state, SignalWatch& signals, pid_t child, int word)
    : m_state(state), m_events(signals, word), m_child(child) {
  m_events.expect(child);
}

int ScanParent::run() {
  await();
  if (m_events.saidStatus()) return statusAfterWord();
  if (const auto waitStatus = m_events.statusOf(m_child)) return statusAfterEnd(*waitStatus);
  if (const auto signal = m_events.told()) {
    killScan(kGraceAfterKill);
    endBy(*signal);
  }
  return giveUp();
}

// Returns without an event when the scan has had its time.
void ScanParent::await() {
  Patience patience(m_state);
  while (!m_events.saidStatus() && !hasEnded() && !m_events.told()) {
    if (patience.isOverAfter(m_events.look(patience.nextWait()))) return;
  }
}

int ScanParent::statusAfterEnd(int waitStatus) {
  if (WIFEXITED(waitStatus)) return WEXITSTATUS(waitStatus);
  const int signal = WTERMSIG(waitStatus);
  // Whoever means to end us may have ended the scan first.
  if (m_events.told() && (signal == SIGKILL || isOrdinaryEnd(signal))) endBy(*m_events.told());
  if (isOrdinaryEnd(signal)) endBy(signal);
  complain("the scan crashed" + (group() ? std::string(" in ") + group() : "") + " (signal " +
           std::to_string(signal) + ")");
  return cleanUp(kExitCrashed);
}

int ScanParent::statusAfterWord() {
  const int status = *m_events.saidStatus();
  m_events.lookUntil([this] { return m_events.hasSaidAll() || hasEnded(); }, kGraceBeforeLastWord);
  killScan(kGraceAfterWord);
  return cleanUp(status);
}

int ScanParent::giveUp() {
  complain(group() ? std::string(group()) + " does not end; the scan is given up"
                   : "the scan does not end and is given up");
  killScan(kGraceAfterKill);
  return cleanUp(kExitGivenUp);
}

void ScanParent::endBy(int signal) {
  CleanUp(m_state, m_events).run();
  dieBy(m_events.told().value_or(signal));
}

void ScanParent::killScan(milliseconds grace) {
  if (hasEnded()) return;
  callCaretaker(m_state);
  const auto isReady = [this] {
    return hasEnded() || (m_state.commandsStarting == 0 && !m_state.hasCaretaker);
  };
  m_events.lookUntil(isReady, kLongestPreparation, kPreparationStep);
  if (hasEnded()) return;
  ::kill(m_child, SIGKILL);
  m_events.lookUntil([this] { return hasEnded(); }, grace);
}

int ScanParent::cleanUp(int status) {
  CleanUp(m_state, m_events).run();
  if (const auto signal = m_events.told()) dieBy(*signal);
  return status;
}

const char* ScanParent::group() const {
  const velGroupDef* definition = getGroupDefinitionFromId(m_state.group);
  return definition == nullptr ? nullptr : definition->name;
}

}  // namespace quenlor
