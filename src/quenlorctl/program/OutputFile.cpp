#include "quenlorctl/program/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace quenlor::ctl {
namespace {

constexpr size_t kBufferSize = 65536;
constexpr mode_t kModeBits = 07777;

// The file behind symbolic links, where there is one.
std::string resolved(const std::string& name) {
  const std::unique_ptr<char, decltype(&std::free)> path(realpath(name.c_str(), nullptr),
                                                         &std::free);
  return path ? std::string(path.get()) : name;
}

bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) bytes.remove_prefix(static_cast<size_t>(count));
  }
  return true;
}

}  // namespace

ReplacedFile::ReplacedFile(const std::string& name)
    : m_name(resolved(name)), m_temporary(m_name + ".XXXXXX") {
  m_descriptor = mkostemp(m_temporary.data(), O_CLOEXEC);
  if (m_descriptor < 0) fail();
  struct stat old {};
  if (stat(m_name.c_str(), &old) == 0) fchmod(m_descriptor, old.st_mode & kModeBits);
}

ReplacedFile::~ReplacedFile() {
  if (m_descriptor < 0) return;
  ::close(m_descriptor);
  ::unlink(m_temporary.c_str());
}

void ReplacedFile::write(std::string_view bytes) {
  m_buffer += bytes;
  if (m_buffer.size() < kBufferSize) return;
  if (!writeAll(m_descriptor, m_buffer)) fail();
  m_buffer.clear();
}

void ReplacedFile::finish() {
  if (!writeAll(m_descriptor, m_buffer) || fsync(m_descriptor) != 0) fail();
  if (std::rename(m_temporary.c_str(), m_name.c_str()) != 0) fail();
  const int descriptor = m_descriptor;
  m_descriptor = -1;
  if (::close(descriptor) != 0) fail();
}

void ReplacedFile::fail() const { throw OutputError(m_name + ": " + std::strerror(errno)); }

void writeOutput(std::string_view bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size()) {
    throw OutputError(std::string("standard output: ") + std::strerror(errno));
  }
}

void flushOutput() {
  if (std::fflush(stdout) != 0) {
    throw OutputError(std::string("standard output: ") + std::strerror(errno));
  }
}

}  // namespace quenlor::ctl
