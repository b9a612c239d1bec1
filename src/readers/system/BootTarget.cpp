#include "readers/system/BootTarget.h"

#include <algorithm>
#include <array>
#include <string>

#include "base/Text.h"
#include "host/Host.h"
#include "host/WholeFile.h"

namespace quenlor {
namespace {

struct Target {
  std::string_view name;
  uint32_t level;
};

constexpr Target kTargets[] = {
    {"poweroff", 0},   {"halt", 0},      {"rescue", 1}, {"emergency", 1},
    {"multi-user", 3}, {"graphical", 5}, {"reboot", 6},
};

// In systemd's order of precedence.
constexpr std::array kDefaultTargets = {
    "/etc/systemd/system/default.target",           "/run/systemd/system/default.target",
    "/usr/local/lib/systemd/system/default.target", "/usr/lib/systemd/system/default.target",
    "/lib/systemd/system/default.target",
};

constexpr std::string_view kUnitWord = "systemd.unit=";
constexpr std::string_view kSuffix = ".target";
constexpr std::string_view kRunLevelName = "runlevel";

std::optional<uint32_t> digit(std::string_view text, char lowest, char highest) {
  if (text.size() != 1 || text[0] < lowest || text[0] > highest) return {};
  return static_cast<uint32_t>(text[0] - '0');
}

std::optional<uint32_t> runLevelOfWord(std::string_view word) {
  if (word.substr(0, kUnitWord.size()) == kUnitWord) {
    return runLevelOfTarget(word.substr(kUnitWord.size()));
  }
  if (word == "single" || word == "s" || word == "S") return 1;
  if (word == "rescue" || word == "emergency") return 1;
  return digit(word, '1', '5');
}

std::string_view fileName(std::string_view path) {
  const size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::optional<uint32_t> readDefaultTarget() {
  for (const char* path : kDefaultTargets) {
    std::string target;
    if (!host().readLink(path, target)) continue;
    return runLevelOfTarget(fileName(target));
  }
  return {};
}

}  // namespace

std::optional<uint32_t> runLevelOfTarget(std::string_view unit) {
  if (unit.size() < kSuffix.size() || unit.substr(unit.size() - kSuffix.size()) != kSuffix) {
    return {};
  }
  unit.remove_suffix(kSuffix.size());
  if (unit.substr(0, kRunLevelName.size()) == kRunLevelName) {
    return digit(unit.substr(kRunLevelName.size()), '0', '6');
  }
  const auto* target = std::find_if(std::begin(kTargets), std::end(kTargets),
                                    [&](const Target& known) { return known.name == unit; });
  if (target == std::end(kTargets)) return {};
  return target->level;
}

std::optional<uint32_t> runLevelOfCommandLine(std::string_view commandLine) {
  std::optional<uint32_t> level;
  commandLine = trimmed(commandLine);
  while (!commandLine.empty()) {
    const size_t end = std::min(commandLine.find_first_of(" \t\n"), commandLine.size());
    if (const auto found = runLevelOfWord(commandLine.substr(0, end))) level = found;
    commandLine = trimmed(commandLine.substr(end));
  }
  return level;
}

std::optional<uint32_t> runLevelOfInittab(std::string_view text) {
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    const size_t first = line.find(':');
    const size_t second = first == std::string_view::npos ? first : line.find(':', first + 1);
    if (line.substr(0, 1) == "#" || second == std::string_view::npos) continue;
    if (line.substr(second + 1, 11) != "initdefault") continue;
    return digit(line.substr(first + 1, second - first - 1), '0', '6');
  }
  return {};
}

std::optional<uint32_t> readBootRunLevel() {
  const WholeFile commandLine = readWholeFile("/proc/cmdline");
  if (const auto level = runLevelOfCommandLine(commandLine.bytes)) return level;
  if (const auto level = readDefaultTarget()) return level;
  return runLevelOfInittab(readWholeFile("/etc/inittab").bytes);
}

}  // namespace quenlor
