// How the program ends. Of several inputs the worst status counts.
#pragma once

namespace quenlor::ctl {

inline constexpr int kDone = 0;       // same, valid
inline constexpr int kDifferent = 1;  // at least one differs, or is invalid
inline constexpr int kTrouble = 2;    // usage, cannot be read, is not XML, cannot be written

}  // namespace quenlor::ctl
