// What the configuration says of how a scan is made. Read once, at the start; it reaches the
// collectors as a value.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace quenlor {

enum class Sources : uint8_t { kClassic, kModern };

struct ScanSettings {
  Sources sources = Sources::kClassic;
  // Limits of scans with modern sources, in milliseconds.
  uint32_t groupLimit = 10000;  // one group, or one reader that groups share
  uint32_t mountLimit = 2000;   // all file systems together
  uint32_t scanLimit = 30000;   // the whole scan

  bool isModern() const { return sources == Sources::kModern; }
};

// The settings of the keys "hwscanner.sources", "hwscanner.group_limit_ms",
// "hwscanner.mount_limit_ms" and "hwscanner.scan_limit_ms"; `value` gives a key's text, empty when
// it is not set. Nothing, and a message for a person, when a value is none of those allowed.
std::optional<ScanSettings> parseScanSettings(
    const std::function<std::string(const char* key)>& value, std::string& message);

// The settings of quenlor.conf. Nothing, after one line on standard error, when they are malformed.
std::optional<ScanSettings> configuredScanSettings();

}  // namespace quenlor
