#include "readers/system/ZoneAndLocale.h"

#include <array>
#include <cerrno>

#include "base/Text.h"
#include "host/Host.h"
#include "host/WholeFile.h"
#include "readers/system/ShellAssignments.h"

namespace quenlor {
namespace {

constexpr std::string_view kZoneDirectory = "zoneinfo/";
constexpr std::array<std::string_view, 2> kVariants = {"posix/", "right/"};
constexpr std::array kLocaleFiles = {"/etc/locale.conf", "/etc/default/locale",
                                     "/etc/sysconfig/i18n"};

}  // namespace

std::string zoneOfPath(std::string_view path) {
  const size_t directory = path.rfind(kZoneDirectory);
  if (directory == std::string_view::npos) return {};
  std::string_view zone = path.substr(directory + kZoneDirectory.size());
  for (const std::string_view variant : kVariants) {
    if (zone.substr(0, variant.size()) == variant) zone.remove_prefix(variant.size());
  }
  return std::string(zone);
}

std::string readZone() {
  std::string target;
  if (host().readLink("/etc/localtime", target)) return zoneOfPath(target);
  const bool isMissing = errno == ENOENT;
  const WholeFile file = readWholeFile("/etc/timezone");
  std::string zone(trimmed(std::string_view(file.bytes).substr(0, file.bytes.find('\n'))));
  return zone.empty() && isMissing ? "UTC" : zone;
}

SystemLocale readSystemLocale() {
  for (const char* path : kLocaleFiles) {
    const auto values = parseAssignments(readWholeFile(path).bytes);
    const auto found = values.find("LANG");
    if (found != values.end() && !found->second.empty()) return {found->second};
  }
  return {};
}

}  // namespace quenlor
