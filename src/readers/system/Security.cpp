#include "readers/system/Security.h"

#include <array>

#include "host/WholeFile.h"
#include "readers/system/ShellAssignments.h"

namespace quenlor {
namespace {

constexpr std::array<std::string_view, 3> kSelinuxModes = {"enforcing", "permissive", "disabled"};

struct Fact {
  FileStatus status = FileStatus::kAbsent;
  std::optional<std::string> value;
};

Fact readFact(const char* path, const char* what, Outcome& outcome) {
  Fact fact;
  fact.value = readAttribute(path, fact.status);
  if (fact.status == FileStatus::kRefused) {
    outcome.note(OutcomeStatus::kPartial, std::string(what) + ": refused");
  }
  return fact;
}

// The kernel's own state where its file system is mounted; a machine that has SELinux configured
// and not mounted runs without it.
std::string readSelinuxMode(Outcome& outcome) {
  const Fact enforce = readFact("/sys/fs/selinux/enforce", "SELinux mode", outcome);
  if (enforce.value) return *enforce.value == "1" ? "enforcing" : "permissive";
  if (enforce.status == FileStatus::kRefused) return {};
  const WholeFile configuration = readWholeFile("/etc/selinux/config");
  if (configuration.status != FileStatus::kRead) return {};
  return configuredSelinuxMode(configuration.bytes).empty() ? "" : "disabled";
}

}  // namespace

std::string bracketedWord(std::string_view text) {
  const size_t open = text.find('[');
  if (open == std::string_view::npos) return {};
  const size_t close = text.find(']', open);
  if (close == std::string_view::npos) return {};
  return std::string(text.substr(open + 1, close - open - 1));
}

std::string configuredSelinuxMode(std::string_view text) {
  const auto values = parseAssignments(text);
  const auto found = values.find("SELINUX");
  if (found == values.end()) return {};
  for (const std::string_view mode : kSelinuxModes) {
    if (found->second == mode) return std::string(mode);
  }
  return {};
}

Security readSecurity() {
  Security security;
  Outcome& outcome = security.outcome;
  const Fact modules = readFact("/sys/kernel/security/lsm", "security modules", outcome);
  const Fact lockdown = readFact("/sys/kernel/security/lockdown", "lockdown", outcome);
  security.modules = modules.value.value_or("");
  security.lockdown = bracketedWord(lockdown.value.value_or(""));
  security.isLockedDown = lockdown.status != FileStatus::kAbsent && security.lockdown != "none";
  security.selinuxMode = readSelinuxMode(outcome);
  const Fact fips = readFact("/proc/sys/crypto/fips_enabled", "FIPS", outcome);
  if (fips.value) security.fips = *fips.value == "1";
  return security;
}

}  // namespace quenlor
