// The output name that means standard output instead of a file.
#pragma once

namespace quenlor {

inline constexpr const char* kStandardOutput = "stdout";

}  // namespace quenlor
