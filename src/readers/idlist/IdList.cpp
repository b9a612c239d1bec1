#include "readers/idlist/IdList.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <utility>

#include "host/WholeFile.h"

namespace quenlor {
namespace {

constexpr size_t kIdDigits = 4;
constexpr size_t kClassDigits = 2;
constexpr std::string_view kClassSection = "C ";
constexpr std::string_view kBlanks = " \t\r";

// An entry of a list is an id of so many digits, blanks, and a name.
std::optional<uint16_t> idOf(std::string_view text, size_t digits) {
  if (text.size() <= digits || text[digits] != ' ') return {};
  uint16_t id = 0;
  const char* end = text.data() + digits;
  const auto [stop, error] = std::from_chars(text.data(), end, id, 16);
  return error == std::errc() && stop == end ? std::optional(id) : std::nullopt;
}

std::string_view nameOf(std::string_view text, size_t digits) {
  text.remove_prefix(digits);
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
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
void IdNames::takeTop(std::string_view line) {
  const bool isClass = line.starts_with(kClassSection);
  if (isClass) line.remove_prefix(kClassSection.size());
  m_digits = isClass ? kClassDigits : kIdDigits;
  Entries& entries = isClass ? m_classes : m_vendors;
  const auto id = idOf(line, m_digits);
  const auto found = id ? entries.find(*id) : entries.end();
  m_above = found == entries.end() ? nullptr : &found->second;
  if (m_above != nullptr) keepFirst(m_above->name, nameOf(line, m_digits));
}

// No line two tabs deep has an id here.
void IdNames::takeBelow(std::string_view line) {
  const auto id = idOf(line, m_digits);
  const auto found = id ? m_above->below.find(*id) : m_above->below.end();
  if (found != m_above->below.end()) keepFirst(found->second, nameOf(line, m_digits));
}

void IdNames::takeLine(std::string_view line) {
  if (line.empty() || line[0] == '#') return;
  if (line[0] != '\t') {
    takeTop(line);
  } else if (m_above != nullptr) {
    takeBelow(line.substr(1));
  }
}

// The piece behind the line that the piece before it began.
std::string_view IdNames::takeRest(std::string_view piece) {
  const size_t end = piece.find('\n');
  m_rest.append(piece.substr(0, end));
  if (end == std::string_view::npos) return {};
  takeLine(m_rest);
  m_rest.clear();
  return piece.substr(end + 1);
}

// Of forty thousand lines all but some dozen are below vendors that nobody asked for: those are
// left at their first character.
void IdNames::take(std::string_view piece) {
  if (!m_rest.empty()) piece = takeRest(piece);
  const char* at = piece.data();
  const char* const end = at + piece.size();
  while (at != end) {
    const auto* const stop =
        static_cast<const char*>(std::memchr(at, '\n', static_cast<size_t>(end - at)));
    if (stop == nullptr) {
      m_rest.assign(at, end);
      return;
    }
    if (*at != '\t' || m_above != nullptr) takeLine({at, static_cast<size_t>(stop - at)});
    at = stop + 1;
  }
}

void IdNames::endList() {
  takeLine(m_rest);
  m_rest.clear();
  m_above = nullptr;
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
    const FileStatus status =
        readPieces(path, kIdListLimit, [&names](std::string_view piece) { names.take(piece); });
    names.endList();
    if (status == FileStatus::kRead) return true;
    if (status == FileStatus::kAbsent) continue;
    outcome.note(OutcomeStatus::kPartial, std::string(what) + ": list not readable");
  }
  return false;
}

}  // namespace quenlor
