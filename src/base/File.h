// File names, and small files of the program's own.
#pragma once

#include <cstddef>
#include <string>

namespace quenlor {

class File {
 public:
  // Stands between a directory and a name.
  static constexpr const char* pathSeparator = "/";

  // Largest file that readText() takes.
  static constexpr size_t kMaxTextSize = size_t{1024} * 1024;

  // Reads a whole regular file. 0, or an errno value with the text left empty: also for a
  // directory, device or pipe, which is never waited for, and (EFBIG) for a file above
  // kMaxTextSize.
  static int readText(const char* path, std::string& text);
};

}  // namespace quenlor
