// The rotating file behind the loggers.
#pragma once

#include <cstdint>
#include <memory>

#include "log/CcLogWrapper.h"
#include "log/TraceSettings.h"

namespace quenlor {

enum class RecordKind : uint8_t { kMax, kEntry, kExit, kMin };

// One line per record: local time with milliseconds, kind ("MAX", "MID entry", "MID exit", "MIN"),
// source path and line, function, text. May be used by several threads. The first write that fails
// ends it: later records are dropped.
class TraceFile {
 public:
  // Opens or creates (mode 0600) the settings' file. Null when that is not possible, or when the
  // file is a symbolic link, a directory, a device or a pipe.
  static std::unique_ptr<TraceFile> open(const TraceSettings& settings);
  ~TraceFile();
  TraceFile(const TraceFile&) = delete;
  TraceFile& operator=(const TraceFile&) = delete;

  // The text is written as it is, whatever control characters it holds.
  void write(RecordKind kind, const TracePoint& at, const char* text);
  void flush();

 private:
  struct Sink;
  explicit TraceFile(const TraceSettings& settings);

  std::unique_ptr<Sink> m_sink;
};

}  // namespace quenlor
