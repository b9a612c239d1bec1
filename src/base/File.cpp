#include "base/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace quenlor {
namespace {

int checkRegular(int fd) {
  struct stat status {};
  if (fstat(fd, &status) != 0) return errno;
  if (S_ISDIR(status.st_mode)) return EISDIR;
  return S_ISREG(status.st_mode) ? 0 : EINVAL;
}

int readAll(int fd, std::string& text) {
  char block[4096];
  for (;;) {
    const ssize_t count = read(fd, block, sizeof block);
    if (count == 0) return 0;
    if (count < 0) {
      if (errno == EINTR) continue;
      return errno;
    }
    text.append(block, static_cast<size_t>(count));
    if (text.size() > File::kMaxTextSize) return EFBIG;
  }
}

}  // namespace

int File::readText(const char* path, std::string& text) {
  text.clear();
  // O_NONBLOCK: opening a pipe without a writer would wait for ever.
  const int fd = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) return errno;
  int error = checkRegular(fd);
  if (error == 0) error = readAll(fd, text);
  close(fd);
  if (error != 0) text.clear();
  return error;
}

}  // namespace quenlor
