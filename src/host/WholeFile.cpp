#include "host/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "host/Handles.h"

namespace quenlor {
namespace {

constexpr size_t kPage = 4096;
constexpr char kBlanks[] = " \t\r\n\v\f";

// Reads on until the file ends or more than `limit` bytes are there. 0 or an errno.
int readToEnd(int fd, size_t limit, std::string& bytes) {
  std::array<char, 4 * kPage> piece{};
  while (bytes.size() <= limit) {
    const ssize_t count = host().read(fd, piece.data(), piece.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (count == 0) return 0;
    bytes.append(piece.data(), static_cast<size_t>(count));
  }
  return 0;
}

// The file, open and known to be a regular one, and the size that it claims; else no descriptor,
// and why.
Descriptor openRegular(const std::string& path, FileStatus& status, size_t* size = nullptr) {
  Descriptor file(host().open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY, 0));
  status = file ? FileStatus::kRead : fileStatusOf(errno);
  struct stat facts {};
  if (file && (host().fstat(file.get(), &facts) != 0 || !S_ISREG(facts.st_mode))) {
    status = FileStatus::kNotRegular;
    return {};
  }
  if (size != nullptr) *size = static_cast<size_t>(std::max<off_t>(facts.st_size, 0));
  return file;
}

}  // namespace

FileStatus fileStatusOf(int error) {
  switch (error) {
    case 0:
      return FileStatus::kRead;
    case ENOENT:
    case ENOTDIR:
    case ENODEV:
    case ENXIO:
      return FileStatus::kAbsent;
    case EACCES:
    case EPERM:
      return FileStatus::kRefused;
    default:
      return FileStatus::kFailed;
  }
}

WholeFile readWholeFile(const std::string& path, size_t limit) {
  WholeFile file;
  size_t size = 0;
  const Descriptor descriptor = openRegular(path, file.status, &size);
  if (!descriptor) return file;
  // Lists of a million bytes would be copied again and again while they grow. Files of the kernel
  // tell no size, or a wrong one.
  file.bytes.reserve(std::min(size, limit));
  file.status = fileStatusOf(readToEnd(descriptor.get(), limit, file.bytes));
  if (file.status == FileStatus::kRead && file.bytes.size() > limit) {
    file.status = FileStatus::kTooLarge;
  }
  if (file.status != FileStatus::kRead) file.bytes.clear();
  return file;
}

std::optional<std::string> readAttribute(const std::string& path) {
  FileStatus status = FileStatus::kAbsent;
  const Descriptor descriptor = openRegular(path, status);
  if (!descriptor) return {};
  std::array<char, kPage> page{};
  const ssize_t count = host().read(descriptor.get(), page.data(), page.size());
  if (count < 0) return {};
  std::string value(page.data(), static_cast<size_t>(count));
  value.erase(value.find_last_not_of(kBlanks) + 1);
  return value;
}

}  // namespace quenlor
