#include "writers/OutputTarget.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "base/ExitStatus.h"
#include "base/StandardOutput.h"
#include "host/Handles.h"
#include "host/ScanState.h"

namespace quenlor {
namespace {

constexpr mode_t kPermissions = 07777;

// Gives a new file owner and mode of the one whose place it will take.
bool inherit(int fd, const struct stat& old) {
  if (::fchown(fd, old.st_uid, old.st_gid) != 0) return false;
  return ::fchmod(fd, old.st_mode & kPermissions) == 0;
}

// The name of a new empty file beside `file`; empty when the document is to be written in place.
std::string makeFileBeside(const std::string& file) {
  struct stat old {};
  const bool exists = ::lstat(file.c_str(), &old) == 0;
  if (!exists && errno != ENOENT) return {};
  if (exists && (!S_ISREG(old.st_mode) || old.st_nlink != 1)) return {};
  if (exists && ::access(file.c_str(), W_OK) != 0) return {};  // to fail as it always did
  std::string name = file + ".XXXXXX";
  const int fd = ::mkostemp(name.data(), O_CLOEXEC);
  if (fd < 0) return {};
  const bool isReady = !exists || inherit(fd, old);
  ::close(fd);
  if (isReady) return name;
  ::unlink(name.c_str());
  return {};
}

}  // namespace

OutputTarget::OutputTarget(std::string file, bool byRename)
    : m_file(std::move(file)), m_written(m_file) {
  if (!byRename || m_file == kStandardOutput) return;
  std::string beside = makeFileBeside(m_file);
  if (beside.empty()) return;
  m_written = std::move(beside);
  scanState().incompleteDocument.set(m_written);
}

OutputTarget::~OutputTarget() {
  if (m_written == m_file) return;
  ::unlink(m_written.c_str());
  scanState().incompleteDocument.clear();
}

int OutputTarget::commit() {
  if (m_written == m_file) return kExitSuccess;
  if (::rename(m_written.c_str(), m_file.c_str()) != 0) return kExitOutputClose;
  m_written = m_file;
  scanState().incompleteDocument.clear();
  return kExitSuccess;
}

int finishStandardOutput() {
  const bool failed = std::fflush(stdout) != 0;
  return failed || std::ferror(stdout) != 0 ? kExitOutputClose : kExitSuccess;
}

}  // namespace quenlor
