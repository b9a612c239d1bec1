// What this scanner says of itself; the version numbers are those of the document format.
#pragma once

#include <cstdint>

namespace quenlor {

inline constexpr const char* kScannerManufacturer = "Marrow Systems Inc.";
inline constexpr uint32_t kScannerMajor = 2;
inline constexpr uint32_t kScannerMinor = 3;
inline constexpr uint32_t kScannerMaintenance = 1036;

}  // namespace quenlor
