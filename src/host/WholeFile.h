// Whole files of /proc, /sys, /etc and /run, read once and within a limit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quenlor {

// Why a file has no content.
enum class FileStatus : uint8_t {
  kRead,
  kAbsent,      // no such file, or its device has vanished
  kRefused,     // the kernel does not let this user read it
  kNotRegular,  // a FIFO, a device or a directory stands in its place
  kTooLarge,    // longer than the limit
  kFailed,      // any other error of open or read; sysfs says "no value" so
};

// Content of a file; empty unless the status is kRead.
struct WholeFile {
  FileStatus status = FileStatus::kAbsent;
  std::string bytes;
};

inline constexpr size_t kTextFileLimit = 1u << 20;  // bytes

// Opens without blocking and without following a FIFO into a wait; never reads what is no regular
// file.
WholeFile readWholeFile(const std::string& path, size_t limit = kTextFileLimit);

// The same for a list of which little is kept: hands out the bytes piece by piece, from front to
// back. What was handed out before a failure holds.
using PieceTaker = std::function<void(std::string_view piece)>;
FileStatus readPieces(const std::string& path, size_t limit, const PieceTaker& take);

// One value of sysfs: a page at most in one read, without blanks and line ends at its end. Nothing
// when it cannot be read; an empty file is an empty value.
std::optional<std::string> readAttribute(const std::string& path);
// The same; the status tells why there is nothing.
std::optional<std::string> readAttribute(const std::string& path, FileStatus& status);

// The status that an errno of open or read means.
FileStatus fileStatusOf(int error);

}  // namespace quenlor
