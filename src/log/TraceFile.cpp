#include "log/TraceFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <exception>
#include <string>

// spdlog lives in this file alone, as header-only code: no shared library, no registry, no start-up
// cost.
#define FMT_HEADER_ONLY
#define SPDLOG_HEADER_ONLY
#define SPDLOG_FMT_EXTERNAL
#define SPDLOG_PREVENT_CHILD_FD  // the commands that collectors start do not inherit the file
#define SPDLOG_NO_THREAD_ID
#define SPDLOG_LEVEL_NAMES \
  { "MAX", "MID entry", "MID exit", "MIN", "", "", "" }
#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>

namespace quenlor {
namespace {

constexpr char kPattern[] = "%Y-%m-%d %H:%M:%S.%e %l %g:%# %! %v";

spdlog::level::level_enum levelOf(RecordKind kind) {
  switch (kind) {
    case RecordKind::kMax:
      return spdlog::level::trace;
    case RecordKind::kEntry:
      return spdlog::level::debug;
    case RecordKind::kExit:
      return spdlog::level::info;
    case RecordKind::kMin:
      break;
  }
  return spdlog::level::warn;
}

// Makes a missing file with mode 0600, and says whether the file may be written to.
// O_NONBLOCK: opening a pipe without a reader would wait for ever.
bool prepareFile(const std::string& path) {
  const int flags = O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const int fd = ::open(path.c_str(), flags, S_IRUSR | S_IWUSR);
  if (fd < 0) return false;
  struct stat status {};
  const bool regular = fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
  close(fd);
  return regular;
}

}  // namespace

struct TraceFile::Sink {
  spdlog::logger logger;
};

TraceFile::TraceFile(const TraceSettings& settings) {
  spdlog::file_event_handlers handlers;
  handlers.before_open = [](const spdlog::filename_t& path) {
    if (!prepareFile(path)) throw spdlog::spdlog_ex("not a file to be written to: " + path);
  };
  auto file = std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
      settings.file, settings.maxSize, settings.rotatedFiles, false, handlers);
  m_sink = std::make_unique<Sink>(Sink{spdlog::logger("quenlor", std::move(file))});

  spdlog::logger& logger = m_sink->logger;
  logger.set_pattern(kPattern);
  logger.set_level(spdlog::level::trace);
  // What was traced before a hang or a crash is what a trace is read for.
  logger.flush_on(spdlog::level::trace);
  // A full disk or a failed rotation. spdlog would report it on standard error, and go on with a
  // file that a failed rotation has closed.
  logger.set_error_handler([&logger](const std::string&) {
    logger.set_level(spdlog::level::off);
    logger.flush_on(spdlog::level::off);
  });
}

TraceFile::~TraceFile() = default;

std::unique_ptr<TraceFile> TraceFile::open(const TraceSettings& settings) {
  // Tested here as well because spdlog would make missing directories.
  if (!prepareFile(settings.file)) return nullptr;
  try {
    return std::unique_ptr<TraceFile>(new TraceFile(settings));
  } catch (const std::exception&) {
    return nullptr;
  }
}

void TraceFile::write(RecordKind kind, const TracePoint& at, const char* text) {
  const spdlog::source_loc where(at.sourcePath, static_cast<int>(at.line), at.function);
  m_sink->logger.log(where, levelOf(kind), spdlog::string_view_t(text));
}

void TraceFile::flush() {
  if (m_sink->logger.level() != spdlog::level::off) m_sink->logger.flush();
}

}  // namespace quenlor
