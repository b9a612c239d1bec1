#include "readers/system/Security.h"

#include <array>

#include "host/WholeFile.h"
#include "readers/system/ShellAssignments.h"

namespace quenlor {
namespace {

constexpr std::array<std::string_view, 3> kSelinuxModes = {"enforcing", "permissive", "disabled"};

// The kernel's own state where its file system is mounted; a machine that has SELinux configured
// and not mounted runs without it.
std::string readSelinuxMode() {
  if (const auto enforce = readAttribute("/sys/fs/selinux/enforce")) {
    return *enforce == "1" ? "enforcing" : "permissive";
  }
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
  security.modules = readAttribute("/sys/kernel/security/lsm").value_or("");
  security.lockdown = bracketedWord(readAttribute("/sys/kernel/security/lockdown").value_or(""));
  security.selinuxMode = readSelinuxMode();
  if (const auto fips = readAttribute("/proc/sys/crypto/fips_enabled")) {
    security.fips = *fips == "1";
  }
  return security;
}

}  // namespace quenlor
