// Exit statuses of the program; an error of its own configuration ends it with DovCfg's code.
#pragma once

namespace quenlor {

inline constexpr int kExitSuccess = 0;
inline constexpr int kExitUsage = 1;
inline constexpr int kExitScanConfigMalformed = 2;
inline constexpr int kExitOutputClose = 4;
inline constexpr int kExitScanConfigUnreadable = 5;
inline constexpr int kExitListBuild = 8;
inline constexpr int kExitOutputOpen = 11;
inline constexpr int kExitListPrint = 18;
inline constexpr int kExitCrashed = 70;  // the process that scans ended by a fault
inline constexpr int kExitGivenUp = 71;  // the scan did not end

}  // namespace quenlor
