#include "log/TraceSettings.h"

#include <strings.h>

#include <charconv>

#include "base/Properties.h"

namespace quenlor {
namespace {

constexpr size_t kLargestSize = 2147483647;
constexpr size_t kLargestCount = 100;

bool readFile(const String& value, std::string& file) {
  file = value.str();
  return !file.empty();
}

bool readLevel(const String& value, TraceLevel& level) {
  static constexpr struct {
    const char* name;
    TraceLevel level;
  } kLevels[] = {{"NONE", TraceLevel::kNone},
                 {"MIN", TraceLevel::kMin},
                 {"MID", TraceLevel::kMid},
                 {"MAX", TraceLevel::kMax}};
  for (const auto& known : kLevels) {
    if (strcasecmp(known.name, value.c_str()) != 0) continue;
    level = known.level;
    return true;
  }
  return false;
}

bool readNumber(const String& value, size_t smallest, size_t largest, size_t& number) {
  const char* end = value.c_str() + value.length();
  const auto [stop, error] = std::from_chars(value.c_str(), end, number);
  return error == std::errc() && stop == end && number >= smallest && number <= largest;
}

bool readSetting(const String& key, const String& value, TraceSettings& settings) {
  if (key == "trace.file") return readFile(value, settings.file);
  if (key == "trace.level") return readLevel(value, settings.level);
  if (key == "trace.size") return readNumber(value, 1, kLargestSize, settings.maxSize);
  if (key == "trace.count") return readNumber(value, 0, kLargestCount, settings.rotatedFiles);
  return true;
}

}  // namespace

std::optional<TraceSettings> parseTraceSettings(std::string_view text) {
  StringMap values;
  if (parseProperties(text, values) != 0) return std::nullopt;
  TraceSettings settings;
  for (const auto& [key, value] : values) {
    if (!readSetting(key, value, settings)) return std::nullopt;
  }
  return settings;
}

}  // namespace quenlor
