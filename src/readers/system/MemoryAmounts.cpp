#include "readers/system/MemoryAmounts.h"

#include <charconv>

#include "host/Host.h"
#include "host/WholeFile.h"

namespace quenlor {
namespace {

constexpr char kPath[] = "/proc/meminfo";

struct Label {
  std::string_view name;
  std::optional<uint64_t> MemoryAmounts::*amount;
};

constexpr Label LABELS[] = {{"MemTotal", &MemoryAmounts::total},
                            {"MemFree", &MemoryAmounts::free},
                            {"MemAvailable", &MemoryAmounts::available},
                            {"SwapTotal", &MemoryAmounts::swapTotal},
                            {"SwapFree", &MemoryAmounts::swapFree}};

std::optional<uint64_t> numberBehind(std::string_view text) {
  const size_t start = text.find_first_not_of(" \t");
  if (start == text.npos) return {};
  uint64_t value = 0;
  const auto parsed = std::from_chars(text.data() + start, text.data() + text.size(), value);
  return parsed.ec == std::errc() ? std::optional(value) : std::nullopt;
}

void addLine(MemoryAmounts& amounts, std::string_view line) {
  const size_t colon = line.find(':');
  if (colon == line.npos) return;
  for (const Label& label : LABELS) {
    if (label.name == line.substr(0, colon)) {
      amounts.*label.amount = numberBehind(line.substr(colon + 1));
    }
  }
}

MemoryAmounts readSysinfo() {
  struct sysinfo info {};
  MemoryAmounts amounts;
  if (host().sysinfo(&info) != 0) {
    amounts.outcome.note(OutcomeStatus::kNoSource, "memory: not told");
    return amounts;
  }
  const uint64_t unit = info.mem_unit == 0 ? 1 : info.mem_unit;
  const auto kib = [unit](uint64_t units) { return units * unit / 1024; };
  amounts.total = kib(info.totalram);
  amounts.free = kib(info.freeram);
  amounts.swapTotal = kib(info.totalswap);
  amounts.swapFree = kib(info.freeswap);
  amounts.outcome.note(OutcomeStatus::kPartial, "available memory: not told");
  return amounts;
}

}  // namespace

MemoryAmounts parseMemoryAmounts(std::string_view meminfo) {
  MemoryAmounts amounts;
  while (!meminfo.empty()) {
    const size_t end = meminfo.find('\n');
    addLine(amounts, meminfo.substr(0, end));
    meminfo = end == meminfo.npos ? std::string_view() : meminfo.substr(end + 1);
  }
  return amounts;
}

MemoryAmounts readMemoryAmounts() {
  const WholeFile file = readWholeFile(kPath);
  const MemoryAmounts amounts = parseMemoryAmounts(file.bytes);
  return amounts.total.value_or(0) != 0 ? amounts : readSysinfo();
}

}  // namespace quenlor
