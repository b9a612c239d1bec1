// The entry point of the SMBIOS structure table (DMTF SMBIOS 3.6, 5.2): where the table lies, how
// long it is, which version it follows.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quenlor {

struct DmiVersion {
  uint8_t major = 0;
  uint8_t minor = 0;
  auto operator<=>(const DmiVersion&) const = default;
};

struct DmiEntryPoint {
  DmiVersion version;
  uint64_t tableAddress = 0;               // physical
  uint32_t tableLength = 0;                // bytes; an upper limit where there is no count
  std::optional<uint32_t> structureCount;  // 32-bit entry points only, and a hint
  // Behind a 64-bit entry point the end-of-table structure ends the table; behind the older ones
  // makers put structures of their own after it.
  bool endsAtEndStructure = false;
};

// The entry point ("_SM3_", "_SM_" or a bare "_DMI_") that the bytes begin with. Nothing when
// anchor, length or checksum is wrong.
std::optional<DmiEntryPoint> parseDmiEntryPoint(std::string_view bytes);

// The one that counts in a stretch of memory, on a 16-byte boundary: a 64-bit one anywhere, else
// the first of the others.
std::optional<DmiEntryPoint> findDmiEntryPoint(std::string_view memory);

}  // namespace quenlor
