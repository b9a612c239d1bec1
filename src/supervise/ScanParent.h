// The process that outlives the scan: it waits for the scan's process, and for nothing else.
#pragma once

#include <sys/types.h>

#include <chrono>

#include "host/ScanState.h"
#include "supervise/ParentEvents.h"

namespace quenlor {

// Opens no file, reads no configuration and writes nothing but what it has to complain of, so that
// nothing that stops the scan can stop it too.
class ScanParent {
 public:
  // state: shared with the child. word: the reading end of its pipe. Neither is owned.
  ScanParent(ScanState& state, SignalWatch& signals, pid_t child, int word);

  // The exit status, once the scan has ended, has said its status, or is given up. Does not return
  // when this process or the scan's was ended by a signal: dies by that signal.
  int run();

 private:
  bool hasEnded() const { return m_events.statusOf(m_child).has_value(); }
  void await();
  int statusAfterEnd(int waitStatus);
  int statusAfterWord();
  int giveUp();
  [[noreturn]] void endBy(int signal);
  void killScan(std::chrono::milliseconds grace);
  int cleanUp(int status);
  const char* group() const;  // name of the one being collected; null: none

  ScanState& m_state;
  ParentEvents m_events;
  const pid_t m_child;
};

}  // namespace quenlor
