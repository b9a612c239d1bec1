#include "readers/mounts/SwapAreas.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "host/WholeFile.h"
#include "readers/mounts/MountInfo.h"

namespace quenlor {
namespace {

constexpr const char* kSwaps = "/proc/swaps";
constexpr std::string_view kDeleted = " (deleted)";
constexpr std::string_view kBlanks = " \t";

std::string_view takeWord(std::string_view& line) {
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
  const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
  line.remove_prefix(word.size());
  return word;
}

bool takeNumber(std::string_view& line, uint64_t& value) {
  const std::string_view word = takeWord(line);
  const char* end = word.data() + word.size();
  const auto result = std::from_chars(word.data(), end, value);
  return result.ec == std::errc() && result.ptr == end;
}

std::optional<ActiveSwapArea> parseLine(std::string_view line) {
  ActiveSwapArea swap;
  swap.area.name = decodeOctalEscapes(takeWord(line));
  const std::string_view type = takeWord(line);
  swap.isDevice = type == "partition";
  const bool isKnown = swap.isDevice || type == "file";
  if (!isKnown || !takeNumber(line, swap.area.size) || !takeNumber(line, swap.area.used)) return {};
  if (swap.area.name.ends_with(kDeleted)) {
    swap.area.name.erase(swap.area.name.size() - kDeleted.size());
    swap.isDeleted = true;
  }
  return swap;
}

}  // namespace

SwapList readSwapAreas() {
  SwapList list;
  const WholeFile file = readWholeFile(kSwaps);
  list.areas = parseSwapAreas(file.bytes);
  const bool isTold = file.status == FileStatus::kRead || file.status == FileStatus::kAbsent;
  if (!isTold) list.outcome.note(OutcomeStatus::kPartial, "swap areas: refused");
  return list;
}

std::vector<ActiveSwapArea> parseSwapAreas(std::string_view text) {
  std::vector<ActiveSwapArea> areas;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    if (auto area = parseLine(text.substr(0, end))) areas.push_back(*std::move(area));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return areas;
}

}  // namespace quenlor
