#include "host/SecureTemporary.h"

#include <fcntl.h>

#include <cerrno>
#include <string>

#include "host/Handles.h"
#include "host/Host.h"

namespace quenlor {
namespace {

std::string directoryOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == 0 ? "/" : path.substr(0, slash);
}

bool isSafeDirectory(const std::string& path) {
  struct stat status {};
  if (host().stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return false;
  return (status.st_mode & S_ISVTX) != 0 || (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

}  // namespace

bool secureTemporaryFile(const char* path) {
  if (path == nullptr || path[0] != '/') return false;
  if (!isSafeDirectory(directoryOf(path))) return false;
  if (host().unlink(path) != 0 && errno != ENOENT) return false;
  const Descriptor file(host().open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600));
  return static_cast<bool>(file);
}

}  // namespace quenlor
