#include "readers/system/Distribution.h"

#include <array>

#include "base/Text.h"
#include "host/WholeFile.h"
#include "readers/system/Release.h"
#include "readers/system/ShellAssignments.h"

namespace quenlor {
namespace {

constexpr std::array kOsReleaseFiles = {"/etc/os-release", "/usr/lib/os-release"};
constexpr std::array kReleaseFiles = {"/etc/redhat-release", "/etc/turbolinux-release",
                                      "/etc/SuSE-release", "/etc/UnitedLinux-release"};
constexpr char kDefaultName[] = "Linux";  // os-release(5): PRETTY_NAME

// True when the file decides: it was read, or is there and cannot be.
bool isDecisive(const WholeFile& file, Outcome& outcome) {
  if (file.status == FileStatus::kAbsent) return false;
  if (file.status == FileStatus::kRead) return true;
  outcome.note(OutcomeStatus::kPartial, "distribution: release file cannot be read");
  return false;
}

std::string readReleaseFiles(Outcome& outcome) {
  for (const char* path : kReleaseFiles) {
    const WholeFile file = readWholeFile(path);
    if (!isDecisive(file, outcome)) continue;
    if (std::string name = parseReleaseFile(file.bytes); !name.empty()) return name;
  }
  return {};
}

}  // namespace

Distribution parseOsRelease(std::string_view text) {
  auto values = parseAssignments(text);
  Distribution distribution;
  distribution.name = values["PRETTY_NAME"];
  if (distribution.name.empty()) distribution.name = values["NAME"];
  if (distribution.name.empty()) distribution.name = kDefaultName;
  distribution.id = values["ID"];
  distribution.version = values["VERSION_ID"];
  distribution.codename = values["VERSION_CODENAME"];
  return distribution;
}

std::string parseReleaseFile(std::string_view text) {
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find('\n', start), text.size());
    const std::string_view line = trimmed(text.substr(start, end - start));
    if (!line.empty()) return foldControlCharacters(std::string(line));
    start = end + 1;
  }
  return {};
}

Distribution readDistribution(Outcome& outcome) {
  for (const char* path : kOsReleaseFiles) {
    const WholeFile file = readWholeFile(path);
    if (isDecisive(file, outcome)) return parseOsRelease(file.bytes);
  }
  Distribution distribution;
  distribution.name = readReleaseFiles(outcome);
  return distribution;
}

}  // namespace quenlor
