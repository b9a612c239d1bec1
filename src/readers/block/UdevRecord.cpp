#include "readers/block/UdevRecord.h"

#include <algorithm>
#include <charconv>

#include "base/Text.h"

namespace quenlor {
namespace {

constexpr size_t kEscapeLength = 4;  // backslash, x, two digits

// The byte that the escape at the beginning of the text means; -1 where there is none.
int escapedByte(std::string_view text) {
  if (text.size() < kEscapeLength || !text.starts_with("\\x")) return -1;
  int byte = -1;
  const char* end = text.data() + kEscapeLength;
  const auto result = std::from_chars(text.data() + 2, end, byte, 16);
  return result.ptr == end ? byte : -1;
}

void addLine(UdevRecord& record, std::string_view line) {
  if (line.starts_with("S:")) record.links.emplace_back(line.substr(2));
  if (!line.starts_with("E:")) return;
  line.remove_prefix(2);
  const size_t equals = line.find('=');
  if (equals == 0 || equals == std::string_view::npos) return;
  record.properties[std::string(line.substr(0, equals))] = line.substr(equals + 1);
}

}  // namespace

std::string_view UdevRecord::property(std::string_view key) const {
  const auto found = properties.find(key);
  return found == properties.end() ? std::string_view() : found->second;
}

std::string UdevRecord::text(std::string_view key) const {
  return std::string(trimmed(decodeUdevEscapes(property(key))));
}

UdevRecord parseUdevRecord(std::string_view text) {
  UdevRecord record;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    addLine(record, text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return record;
}

std::string decodeUdevEscapes(std::string_view text) {
  std::string decoded;
  while (!text.empty()) {
    const int byte = escapedByte(text);
    decoded += byte < 0 ? text.front() : static_cast<char>(byte);
    text.remove_prefix(byte < 0 ? 1 : kEscapeLength);
  }
  return decoded;
}

}  // namespace quenlor
