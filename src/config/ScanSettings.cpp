#include "config/ScanSettings.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "base/Text.h"
#include "config/DovCfg.h"

namespace quenlor {
namespace {

constexpr char kSourcesKey[] = "hwscanner.sources";
constexpr uint32_t kLongestLimit = 3600000;

struct Limit {
  const char* key;
  uint32_t ScanSettings::*value;
};

constexpr Limit kLimits[] = {
    {"hwscanner.group_limit_ms", &ScanSettings::groupLimit},
    {"hwscanner.mount_limit_ms", &ScanSettings::mountLimit},
    {"hwscanner.scan_limit_ms", &ScanSettings::scanLimit},
};

std::optional<Sources> parseSources(std::string_view text) {
  if (text.empty() || text == "classic") return Sources::kClassic;
  if (text == "modern") return Sources::kModern;
  return {};
}

std::optional<uint32_t> parseLimit(std::string_view text) {
  uint32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end || number == 0 || number > kLongestLimit) return {};
  return number;
}

}  // namespace

std::optional<ScanSettings> parseScanSettings(
    const std::function<std::string(const char* key)>& value, std::string& message) {
  ScanSettings settings;
  const std::string sources = value(kSourcesKey);
  const auto chosen = parseSources(trimmed(sources));
  if (!chosen) {
    message = std::string(kSourcesKey) + ": neither \"classic\" nor \"modern\"";
    return {};
  }
  settings.sources = *chosen;
  for (const Limit& limit : kLimits) {
    const std::string text = value(limit.key);
    if (trimmed(text).empty()) continue;
    const auto number = parseLimit(trimmed(text));
    if (!number) {
      message = std::string(limit.key) + ": not a number of milliseconds from 1 to 3600000";
      return {};
    }
    settings.*limit.value = *number;
  }
  return settings;
}

std::optional<ScanSettings> configuredScanSettings() {
  std::string message;
  const auto settings = parseScanSettings(
      [](const char* key) { return std::string(DovCfg::getKey(key).c_str()); }, message);
  if (!settings) std::fprintf(stderr, "quenlor: quenlor.conf: %s\n", message.c_str());
  return settings;
}

}  // namespace quenlor
