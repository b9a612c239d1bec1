// The logging facade: printf-style trace records with source path, line and function.
//
// Nothing is formatted or written below the level set in "DovTrace.properties", and nothing at all
// without that file; a trace call then costs one comparison. All trace calls may come from any
// thread.
#pragma once

#include <atomic>
#include <cstdint>

namespace quenlor {

// Amount of tracing, and the weight of one record: MIN is for failures, MID for entry and exit of
// functions, MAX for details. A record is written when its level does not exceed the level set.
enum class TraceLevel : uint8_t { kNone = 0, kMin = 1, kMid = 2, kMax = 3 };

// Where a record comes from.
struct TracePoint {
  const char* sourcePath;
  const char* function;
  uint32_t line;
};

// Names a traced function once; calling the object gives the point with the caller's line:
//   const TraceFunction at{kSourcePath, "getTable()"};
//   log->traceMAX(at(), "hardware %s %d", "pcount=", count);
struct TraceFunction {
  const char* sourcePath;
  const char* function;

  // The built-in is what gcc and clang 14 have in common; clang's std::source_location is missing.
  TracePoint operator()(uint32_t line = __builtin_LINE()) const {
    return {sourcePath, function, line};
  }
};

class CcLogWrapper {
 public:
  // Reads the properties file and opens the trace file. A missing or unusable file means no
  // tracing.
  static void initialize(const char* propertiesPath);
  // Flushes all trace files. Loggers stay valid, since an abandoned worker may still trace.
  static void cleanupInstances();

  bool isEnabled(TraceLevel level) const {
    return level <= m_level.load(std::memory_order_relaxed);
  }

  void traceMIN(const TracePoint& at, const char* format, ...)
      __attribute__((format(printf, 3, 4)));
  void traceMAX(const TracePoint& at, const char* format, ...)
      __attribute__((format(printf, 3, 4)));
  void traceMidEntry(const TracePoint& at, const char* format, ...)
      __attribute__((format(printf, 3, 4)));
  void traceMidExit(const TracePoint& at, const char* format, ...)
      __attribute__((format(printf, 3, 4)));

 private:
  friend CcLogWrapper* getCcLogHw();
  CcLogWrapper() = default;

  std::atomic<TraceLevel> m_level{TraceLevel::kNone};
};

// The scanner's logger; never null, lives until the process ends.
CcLogWrapper* getCcLogHw();

}  // namespace quenlor
