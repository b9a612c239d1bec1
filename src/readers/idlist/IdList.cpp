#include "readers/idlist/IdList.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "host/WholeFile.h"

namespace quenlor {
namespace {

constexpr size_t kIdDigits = 4;
constexpr size_t kClassDigits = 2;
constexpr std::string_view kClassSection = "C ";
constexpr std::string_view kBlanks = " \t\r";

// One entry of a list: an id of the given number of digits, blanks, and a name.
struct Line {
  uint16_t id = 0;
  std::string_view name;
};

std::optional<Line> parseLine(std::string_view text, size_t digits) {
  if (text.size() <= digits || text[digits] != ' ') return {};
  Line line;
  const char* end = text.data() + digits;
  const auto [stop, error] = std::from_chars(text.data(), end, line.id, 16);
  if (error != std::errc() || stop != end) return {};
  line.name = text.substr(digits);
  line.name.remove_prefix(std::min(line.name.find_first_not_of(kBlanks), line.name.size()));
  line.name = line.name.substr(0, line.name.find_last_not_of(kBlanks) + 1);
  return line;
}

std::string_view takeLine(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(line.size() + 1, text.size()));
  return line;
}

void keepFirst(std::string& name, std::string_view found) {
  if (name.empty()) name = found;
}

std::optional<std::string> known(const std::string& name) {
  return name.empty() ? std::nullopt : std::optional(name);
}

}  // namespace

void IdNames::wantDevice(uint16_t vendor, uint16_t device) { m_vendors[vendor].below[device]; }

void IdNames::wantClass(uint8_t baseClass, uint8_t subclass) {
  m_classes[baseClass].below[subclass];
}

// A line at the left margin: a vendor, a class, or the head of a section that is not asked for.
IdNames::Entry* IdNames::takeTop(std::string_view line) {
  const bool isClass = line.starts_with(kClassSection);
  const auto top = isClass ? parseLine(line.substr(kClassSection.size()), kClassDigits)
                           : parseLine(line, kIdDigits);
  if (!top) return nullptr;
  Entries& entries = isClass ? m_classes : m_vendors;
  const auto found = entries.find(top->id);
  if (found == entries.end()) return nullptr;
  keepFirst(found->second.name, top->name);
  return &found->second;
}

void IdNames::take(std::string_view list) {
  Entry* above = nullptr;
  size_t digits = 0;
  while (!list.empty()) {
    const std::string_view line = takeLine(list);
    if (line.empty() || line[0] == '#') continue;
    if (line[0] != '\t') {
      above = takeTop(line);
      digits = line.starts_with(kClassSection) ? kClassDigits : kIdDigits;
      continue;
    }
    if (above == nullptr) continue;
    const auto below = parseLine(line.substr(1), digits);  // no line two tabs deep has an id there
    const auto found = below ? above->below.find(below->id) : above->below.end();
    if (found != above->below.end()) keepFirst(found->second, below->name);
  }
}

std::optional<std::string> IdNames::vendor(uint16_t vendor) const {
  const auto found = m_vendors.find(vendor);
  return found == m_vendors.end() ? std::nullopt : known(found->second.name);
}

std::optional<std::string> IdNames::device(uint16_t vendor, uint16_t device) const {
  const auto above = m_vendors.find(vendor);
  if (above == m_vendors.end()) return {};
  const auto found = above->second.below.find(device);
  return found == above->second.below.end() ? std::nullopt : known(found->second);
}

std::optional<std::string> IdNames::className(uint8_t baseClass, uint8_t subclass) const {
  const auto above = m_classes.find(baseClass);
  if (above == m_classes.end()) return {};
  const auto found = above->second.below.find(subclass);
  const bool isKnown = found != above->second.below.end() && !found->second.empty();
  return isKnown ? std::optional(found->second) : known(above->second.name);
}

bool readIdList(std::span<const char* const> paths, const char* what, IdNames& names,
                Outcome& outcome) {
  for (const char* path : paths) {
    const WholeFile list = readWholeFile(path, kIdListLimit);
    if (list.status == FileStatus::kAbsent) continue;
    if (list.status == FileStatus::kRead) {
      names.take(list.bytes);
      return true;
    }
    outcome.note(OutcomeStatus::kPartial, std::string(what) + ": list not readable");
  }
  return false;
}

}  // namespace quenlor
