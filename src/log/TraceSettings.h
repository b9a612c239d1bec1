// The settings of "DovTrace.properties".
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "log/CcLogWrapper.h"

namespace quenlor {

// Key and default of each setting; where a key is missing, its default holds.
struct TraceSettings {
  // trace.file: path of the trace file; a relative one counts from the properties file's directory.
  std::string file = "/var/log/quenlor.trace";
  // trace.level: NONE, MIN, MID or MAX, in either case.
  TraceLevel level = TraceLevel::kNone;
  // trace.size: bytes from 1 to 2147483647 after which the file is rotated.
  size_t maxSize = size_t{1024} * 1024;
  // trace.count: rotated files kept beside the current one, 0 to 100.
  size_t rotatedFiles = 3;
};

// Nothing when the text is malformed: a line that is not "key = value", a value out of its range.
// Unknown keys are ignored.
std::optional<TraceSettings> parseTraceSettings(std::string_view text);

}  // namespace quenlor
