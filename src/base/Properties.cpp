#include "base/Properties.h"

#include "base/Text.h"

namespace quenlor {
namespace {

bool parseLine(std::string_view line, StringMap& values) {
  if (line.find('\0') != std::string_view::npos) return false;
  line = trimmed(line);
  if (line.empty() || line.front() == '#') return true;
  const size_t equals = line.find('=');
  if (equals == std::string_view::npos) return false;
  const std::string_view key = trimmed(line.substr(0, equals));
  if (key.empty()) return false;
  values.set(std::string(key), std::string(trimmed(line.substr(equals + 1))));
  return true;
}

}  // namespace

int parseProperties(std::string_view text, StringMap& values) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  for (int number = 1; !text.empty(); ++number) {
    const size_t end = text.find('\n');
    if (!parseLine(text.substr(0, end), values)) return number;
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return 0;
}

}  // namespace quenlor
