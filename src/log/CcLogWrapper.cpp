#include "log/CcLogWrapper.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

#include "base/File.h"
#include "base/Tracer.h"
#include "log/TraceFile.h"
#include "log/TraceSettings.h"

namespace quenlor {
namespace {

constinit std::atomic<TraceFile*> currentFile{nullptr};

// Every file ever opened: an abandoned worker may hold any of them when the process ends.
std::vector<std::unique_ptr<TraceFile>>& openedFiles() {
  static auto& files = *new std::vector<std::unique_ptr<TraceFile>>;
  return files;
}

std::string render(const char* format, va_list arguments) {
  std::string text(256, '\0');
  va_list again;
  va_copy(again, arguments);
  int length = std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  if (length > static_cast<int>(text.size())) {
    text.resize(static_cast<size_t>(length));
    length = std::vsnprintf(text.data(), text.size() + 1, format, again);
  }
  va_end(again);
  // A wide argument that the locale has no characters for.
  if (length < 0) return format;
  text.resize(static_cast<size_t>(length));
  return text;
}

void writeRecord(RecordKind kind, const TracePoint& at, const char* format, va_list arguments) {
  const int callersErrno = errno;
  TraceFile* file = currentFile.load(std::memory_order_acquire);
  if (file != nullptr) file->write(kind, at, render(format, arguments).c_str());
  errno = callersErrno;
}

// Records of the base library's Trace objects are details, and have no component word of their own.
class LogTracer final : public Tracer {
 public:
  void write(const char* sourcePath, const char* function, unsigned line,
             const char* text) override {
    getCcLogHw()->traceMAX({sourcePath, function, line}, "hardware %s", text);
  }
};

std::string directoryOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::unique_ptr<TraceFile> openTraceFile(const char* propertiesPath, TraceLevel& level) {
  std::string text;
  if (propertiesPath == nullptr || File::readText(propertiesPath, text) != 0) return nullptr;
  auto settings = parseTraceSettings(text);
  if (!settings || settings->level == TraceLevel::kNone) return nullptr;
  if (!settings->file.starts_with('/')) {
    settings->file.insert(0, directoryOf(propertiesPath));
  }
  level = settings->level;
  return TraceFile::open(*settings);
}

}  // namespace

void CcLogWrapper::initialize(const char* propertiesPath) {
  static constinit LogTracer tracer;
  CcLogWrapper& logger = *getCcLogHw();
  logger.m_level = TraceLevel::kNone;
  Tracer::install(nullptr);

  TraceLevel level = TraceLevel::kNone;
  std::unique_ptr<TraceFile> file = openTraceFile(propertiesPath, level);
  if (file == nullptr) return;
  currentFile.store(file.get(), std::memory_order_release);
  openedFiles().push_back(std::move(file));
  logger.m_level = level;
  if (level >= TraceLevel::kMax) Tracer::install(&tracer);
}

void CcLogWrapper::cleanupInstances() {
  for (const auto& file : openedFiles()) file->flush();
}

void CcLogWrapper::traceMIN(const TracePoint& at, const char* format, ...) {
  if (!isEnabled(TraceLevel::kMin)) return;
  va_list arguments;
  va_start(arguments, format);
  writeRecord(RecordKind::kMin, at, format, arguments);
  va_end(arguments);
}

void CcLogWrapper::traceMAX(const TracePoint& at, const char* format, ...) {
  if (!isEnabled(TraceLevel::kMax)) return;
  va_list arguments;
  va_start(arguments, format);
  writeRecord(RecordKind::kMax, at, format, arguments);
  va_end(arguments);
}

void CcLogWrapper::traceMidEntry(const TracePoint& at, const char* format, ...) {
  if (!isEnabled(TraceLevel::kMid)) return;
  va_list arguments;
  va_start(arguments, format);
  writeRecord(RecordKind::kEntry, at, format, arguments);
  va_end(arguments);
}

void CcLogWrapper::traceMidExit(const TracePoint& at, const char* format, ...) {
  if (!isEnabled(TraceLevel::kMid)) return;
  va_list arguments;
  va_start(arguments, format);
  writeRecord(RecordKind::kExit, at, format, arguments);
  va_end(arguments);
}

CcLogWrapper* getCcLogHw() {
  // Constant-initialised and trivially destroyed: usable before main() and while the process ends.
  static constinit CcLogWrapper logger;
  return &logger;
}

}  // namespace quenlor
