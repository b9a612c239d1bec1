#include "readers/system/KernelStatistics.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>

#include "base/Text.h"
#include "host/WholeFile.h"
#include "readers/system/UnixCpuMeter.h"

namespace quenlor {
namespace {

constexpr uint64_t kHundredthsPerSecond = 100;
// The "intr" line of a large machine alone has tens of kilobytes.
constexpr size_t kStatLimit = 4u << 20;

// The next word of the text, which is taken off it; empty at the end.
std::string_view takeWord(std::string_view& text) {
  text = trimmed(text);
  const std::string_view word = text.substr(0, std::min(text.find_first_of(" \t\n"), text.size()));
  text.remove_prefix(word.size());
  return word;
}

std::optional<uint64_t> takeNumber(std::string_view& text) {
  const std::string_view word = takeWord(text);
  uint64_t number = 0;
  const char* const end = word.data() + word.size();
  const auto [rest, error] = std::from_chars(word.data(), end, number);
  if (word.empty() || error != std::errc() || rest != end) return {};
  return number;
}

std::optional<float> takeAverage(std::string_view& text) {
  const std::string word(takeWord(text));
  char* end = nullptr;
  const double value = parseDouble(word.c_str(), &end);
  if (word.empty() || *end != '\0' || !(value >= 0)) return {};
  return static_cast<float>(value);
}

void noteFile(const WholeFile& file, const char* what, Outcome& outcome) {
  if (file.status == FileStatus::kAbsent) {
    outcome.note(OutcomeStatus::kNoSource, std::string(what) + ": not told by this kernel");
  } else if (file.status != FileStatus::kRead) {
    outcome.note(OutcomeStatus::kRefused, std::string(what) + ": cannot be read");
  }
}

}  // namespace

ProcessorTimes parseProcessorTimes(std::string_view stat) {
  ProcessorTimes times;
  const auto takeLine = [&stat] {
    const std::string_view line = stat.substr(0, std::min(stat.find('\n'), stat.size()));
    stat.remove_prefix(std::min(line.size() + 1, stat.size()));
    return line;
  };
  std::string_view totals = takeLine();
  if (takeWord(totals) != "cpu") return times;
  const std::array columns = {&times.user, &times.nice,       &times.system,         &times.idle,
                              &times.wait, &times.interrupts, &times.softInterrupts, &times.steal};
  for (auto* column : columns) {
    *column = takeNumber(totals);
    if (!*column) break;
  }
  while (takeLine().substr(0, 3) == "cpu") ++times.processors;
  return times;
}

LoadAverages parseLoadAverages(std::string_view loadavg) {
  LoadAverages load;
  load.one = takeAverage(loadavg);
  load.five = takeAverage(loadavg);
  load.fifteen = takeAverage(loadavg);
  return load;
}

KernelStatistics readKernelStatistics() {
  KernelStatistics statistics;
  const WholeFile stat = readWholeFile("/proc/stat", kStatLimit);
  noteFile(stat, "processor times", statistics.timesOutcome);
  statistics.times = parseProcessorTimes(stat.bytes);

  const WholeFile loadavg = readWholeFile("/proc/loadavg");
  noteFile(loadavg, "load averages", statistics.loadOutcome);
  statistics.load = parseLoadAverages(loadavg.bytes);

  const WholeFile uptime = readWholeFile("/proc/uptime");
  const long long seconds = parseUptimeSeconds(uptime.bytes.c_str());
  if (seconds >= 0) statistics.uptime = static_cast<uint64_t>(seconds) * kHundredthsPerSecond;
  return statistics;
}

}  // namespace quenlor
