// Security state of the kernel.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/Outcome.h"

namespace quenlor {

// The word in brackets: "none [integrity] confidentiality"; empty when there is none.
std::string bracketedWord(std::string_view text);

// "enforcing", "permissive" or "disabled" of an SELinux configuration file; empty for anything
// else.
std::string configuredSelinuxMode(std::string_view text);

struct Security {
  std::string modules;        // /sys/kernel/security/lsm, comma list; empty: not told
  std::string lockdown;       // "none", "integrity", "confidentiality"; empty: not told
  bool isLockedDown = false;  // by any word but "none", and where the word may not be read
  std::string selinuxMode;    // "enforcing", "permissive", "disabled"; empty: no SELinux here
  std::optional<bool> fips;
  Outcome outcome;  // what was refused
};

Security readSecurity();

}  // namespace quenlor
