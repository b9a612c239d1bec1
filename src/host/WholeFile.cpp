#include "host/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>

#include "host/Handles.h"

namespace quenlor {
namespace {

constexpr size_t kPage = 4096;
constexpr size_t kPiece = 4 * kPage;
constexpr char kBlanks[] = " \t\r\n\v\f";

// Reads on until the file ends or more than `limit` bytes are there. 0 or an errno.
int readToEnd(int fd, size_t limit, const PieceTaker& take) {
  std::array<char, kPiece> piece;  // not cleared: most files are a line
  for (size_t taken = 0;;) {
    const ssize_t count = host().read(fd, piece.data(), piece.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (count == 0) return 0;
    taken += static_cast<size_t>(count);
    take({piece.data(), static_cast<size_t>(count)});
    if (taken > limit) return EFBIG;
  }
}

// The file, open and known to be a regular one; else no descriptor, and why.
Descriptor openRegular(const std::string& path, FileStatus& status) {
  Descriptor file(host().open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY, 0));
  status = file ? FileStatus::kRead : fileStatusOf(errno);
  struct stat facts {};
  if (file && (host().fstat(file.get(), &facts) != 0 || !S_ISREG(facts.st_mode))) {
    status = FileStatus::kNotRegular;
    return {};
  }
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
    case EFBIG:
      return FileStatus::kTooLarge;
    case EACCES:
    case EPERM:
      return FileStatus::kRefused;
    default:
      return FileStatus::kFailed;
  }
}

FileStatus readPieces(const std::string& path, size_t limit, const PieceTaker& take) {
  FileStatus status = FileStatus::kAbsent;
  const Descriptor descriptor = openRegular(path, status);
  return descriptor ? fileStatusOf(readToEnd(descriptor.get(), limit, take)) : status;
}

WholeFile readWholeFile(const std::string& path, size_t limit) {
  WholeFile file;
  file.status =
      readPieces(path, limit, [&file](std::string_view piece) { file.bytes.append(piece); });
  if (file.status != FileStatus::kRead) file.bytes.clear();
  return file;
}

std::optional<std::string> readAttribute(const std::string& path) {
  FileStatus ignored = FileStatus::kAbsent;
  return readAttribute(path, ignored);
}

std::optional<std::string> readAttribute(const std::string& path, FileStatus& status) {
  const Descriptor descriptor = openRegular(path, status);
  if (!descriptor) return {};
  std::array<char, kPage> page;
  const ssize_t count = host().read(descriptor.get(), page.data(), page.size());
  status = count < 0 ? fileStatusOf(errno) : FileStatus::kRead;
  if (count < 0) return {};
  std::string value(page.data(), static_cast<size_t>(count));
  value.erase(value.find_last_not_of(kBlanks) + 1);
  return value;
}

}  // namespace quenlor
