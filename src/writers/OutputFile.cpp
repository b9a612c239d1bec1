#include "writers/OutputFile.h"

#include <cerrno>
#include <cstring>

#include "base/ExitStatus.h"
#include "base/StandardOutput.h"
#include "host/Host.h"

namespace quenlor {
namespace {

constexpr uint32_t kRetryDelayMicroseconds = 1000000;

}  // namespace

OutputFile::OutputFile(const char* fileName)
    : m_fileName(fileName), m_toStandardOutput(std::strcmp(fileName, kStandardOutput) == 0) {}

int OutputFile::create() {
  if (m_toStandardOutput || open("we")) return kExitSuccess;
  const bool readable = FileStream(std::fopen(m_fileName, "re")) != nullptr;
  return readable ? kExitOutputOpen : kExitOutputClose;
}

int OutputFile::append() {
  return m_toStandardOutput || open("a+e") ? kExitSuccess : kExitOutputOpen;
}

int OutputFile::appendPatiently(const TraceFunction& at, const char* writer, const char* document) {
  if (append() == kExitSuccess) return kExitSuccess;
  const int reason = errno;
  getCcLogHw()->traceMidEntry(at(), "hardware %s:failure in opening %s errno = %d", writer,
                              document, reason);
  host().sleepMicroseconds(kRetryDelayMicroseconds);
  if (append() == kExitSuccess) return kExitSuccess;
  getCcLogHw()->traceMIN(at(), "hardware failure in opening %s again", document);
  return kExitOutputOpen;
}

// A full disk shows at the latest in the flush; the close that follows it may well succeed.
int OutputFile::finish() {
  const bool written = std::fflush(stream()) == 0 && std::ferror(stream()) == 0;
  if (m_toStandardOutput) return kExitSuccess;
  const bool closed = std::fclose(m_file.release()) == 0;
  return written && closed ? kExitSuccess : kExitOutputClose;
}

bool OutputFile::open(const char* mode) {
  m_file.reset(std::fopen(m_fileName, mode));
  return m_file != nullptr;
}

}  // namespace quenlor
