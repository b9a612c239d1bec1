// What a scan that was cut short has left on the machine.
#pragma once

#include <string>

#include "host/ScanState.h"
#include "supervise/ParentEvents.h"

namespace quenlor {

// Kills the commands that still run, unloads the module and removes the file that the state names.
// What cannot be done is said on standard error.
class CleanUp {
 public:
  CleanUp(ScanState& state, ParentEvents& events) : m_state(state), m_events(events) {}

  void run();

 private:
  void killCommands();
  void unloadModule();
  bool runModprobe();  // true when it ended with success
  void removeFile(const std::string& name);

  ScanState& m_state;
  ParentEvents& m_events;
};

// One line on standard error, after the program's name. Left unsaid when standard error takes
// nothing for a second.
void complain(const std::string& text);

}  // namespace quenlor
