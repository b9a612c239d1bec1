// The SMBIOS 2.x entry point in the F0000 segment and the walk from it to the System Information
// structure (DMTF SMBIOS, type 1).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quenlor {

inline constexpr uint64_t PHYS_START = 0xF0000;
inline constexpr uint64_t PHYS_END = 0xFFFFE;  // two bytes short of the segment's end: meant so
inline constexpr unsigned char sys_info_type = 1;

// A copy of the Entry Point Structure, little-endian as in memory.
struct smbios_table_entry_point {
  static constexpr size_t kSize = 32;
  unsigned char bytes[kSize] = {};

  unsigned majorVersion() const { return bytes[6]; }
  uint32_t tableLength() const;     // bytes
  uint32_t tableAddress() const;    // physical
  uint32_t structureCount() const;  // as announced
};

// Head of a System Information structure and its strings up to the largest string number used.
struct smbios_sysinfo_table_entry {
  static constexpr size_t kHeadSize = 8;
  unsigned char head[kHeadSize] = {};
  std::vector<std::string> strings;

  unsigned manufacturer() const { return head[4]; }  // string numbers; 0: there is none
  unsigned product() const { return head[5]; }
  unsigned version() const { return head[6]; }
  unsigned serialNumber() const { return head[7]; }
};

// First "_SM_" on a 16-byte boundary of the buffer, at least 16 bytes before its end; else null.
const unsigned char* find_signature(const unsigned char* buf, size_t len);

// Fills ep from the first anchor between PHYS_START and PHYS_END. 0, or -1 when there is none or
// that one has a bad checksum or major version 0 or 1; later anchors are not tried.
int find_table_ep(smbios_table_entry_point* ep_out);

// Walks the structure table, in a mapping of the addresses that ep announces, to the first type 1
// structure and copies its head and strings. The mapping's last page may be read to its end. The
// number of strings copied; 0 when there is no such structure.
int find_entry(const unsigned char* table, const smbios_table_entry_point* ep,
               smbios_sysinfo_table_entry* sysinfo_out);

}  // namespace quenlor
