#include "readers/display/Displays.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <utility>

#include "base/NaturalOrder.h"
#include "host/Host.h"
#include "host/WholeFile.h"

namespace quenlor {
namespace {

constexpr const char* kOutputs = "/sys/class/drm";
constexpr const char* kConnected = "connected";
constexpr size_t kEdidLimit = 32768;  // a base block and as many extensions as it can count

std::string pathOf(const std::string& entry, const char* file) {
  return std::string(kOutputs) + "/" + entry + "/" + file;
}

// A display without data is usual: analogue cables, broken wires, displays of virtual machines.
Edid readEdid(const std::string& entry, Outcome& outcome) {
  const WholeFile file = readWholeFile(pathOf(entry, "edid"), kEdidLimit);
  if (file.bytes.empty()) return {};
  auto edid = parseEdid(file.bytes);
  if (!edid) outcome.note(OutcomeStatus::kPartial, "displays: data of one damaged");
  return std::move(edid).value_or(Edid());
}

Display readDisplay(const std::string& entry, Outcome& outcome) {
  Display display;
  display.connector = connectorOf(entry);
  std::string path;
  if (host().readLink((std::string(kOutputs) + "/" + entry).c_str(), path)) {
    display.adapter = pciAddressOf(path);
  }
  display.edid = readEdid(entry, outcome);
  display.preferredMode = display.edid.preferredMode;
  if (!display.preferredMode) {
    display.preferredMode = parseFirstMode(readAttribute(pathOf(entry, "modes")).value_or(""));
  }
  return display;
}

bool isBefore(const Display& left, const Display& right) {
  if (left.adapter != right.adapter) return left.adapter < right.adapter;
  return naturalLess(left.connector, right.connector);
}

}  // namespace

std::string connectorOf(std::string_view entry) {
  constexpr std::string_view kCard = "card";
  if (!entry.starts_with(kCard)) return {};
  const size_t dash = entry.find_first_not_of("0123456789", kCard.size());
  if (dash == entry.npos || dash == kCard.size() || entry[dash] != '-') return {};
  return std::string(entry.substr(dash + 1));
}

std::optional<DisplayMode> parseFirstMode(std::string_view modes) {
  const std::string_view line = modes.substr(0, modes.find('\n'));
  const char* end = line.data() + line.size();
  DisplayMode mode;
  const auto width = std::from_chars(line.data(), end, mode.width);
  if (width.ec != std::errc() || width.ptr == end || *width.ptr != 'x') return {};
  const auto height = std::from_chars(width.ptr + 1, end, mode.height);
  const bool isMode = height.ec == std::errc() && mode.width != 0 && mode.height != 0;
  return isMode ? std::optional(mode) : std::nullopt;
}

Displays readDisplays() {
  Displays result;
  std::vector<DirectoryEntry> entries;
  if (!host().listEntries(kOutputs, entries)) {
    const bool isRefused = fileStatusOf(errno) == FileStatus::kRefused;
    result.outcome.note(isRefused ? OutcomeStatus::kRefused : OutcomeStatus::kNoSource,
                        isRefused ? "displays: refused" : "displays: no graphics driver");
    return result;
  }
  for (const DirectoryEntry& entry : entries) {
    if (connectorOf(entry.name).empty()) continue;
    if (readAttribute(pathOf(entry.name, "status")) != kConnected) continue;
    result.displays.push_back(readDisplay(entry.name, result.outcome));
  }
  std::sort(result.displays.begin(), result.displays.end(), isBefore);
  return result;
}

}  // namespace quenlor
