// A VMware guest: the backdoor port answers, and the agent knows the keys it is given.
#pragma once

#include <string>

#include "tests/support/FakeHost.h"

namespace quenlor::test {

inline std::string agentCommand(const std::string& key) {
  return "vmware-guestd --cmd 'info-get guestinfo." + key + "' 2>/dev/null";
}

inline void becomeVmwareGuest(FakeHost& host) {
  host.port = [](PortRegisters* registers) {
    registers->eax = 6;
    registers->ebx = 0x564D5868;
    registers->ecx = 2;
  };
}

inline void setAgentValue(FakeHost& host, const std::string& key, const std::string& value) {
  host.commands[agentCommand(key)] = {value + "\n", 0};
}

// What the agent answers for a key that nobody set.
inline void setAgentIgnorant(FakeHost& host, const std::string& key) {
  host.commands[agentCommand(key)] = {"No value found\n", 1 << 8};
}

}  // namespace quenlor::test
