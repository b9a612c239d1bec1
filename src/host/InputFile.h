// A file that the user names: opened without waiting for anybody.
#pragma once

#include <chrono>
#include <cstddef>

#include "host/Handles.h"

namespace quenlor {

// What another program may take to write all of it into a pipe, and how much that may be.
struct PipeLimits {
  std::chrono::milliseconds time{10000};
  size_t bytes = size_t{16} << 20;
};

// A stream over a regular file, or over all that a pipe (standard input, say) holds. Null, with
// errno, for anything else, for a pipe that nobody has written to or that exceeds the limits, and
// for what cannot be opened.
FileStream openInputFile(const char* path, const PipeLimits& limits = {});

}  // namespace quenlor
