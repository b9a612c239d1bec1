// The first megabyte or so of a machine's physical memory, with an SMBIOS table in it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "tests/firmware/Structures.h"

namespace quenlor::test {

// A structure table: structures in the order added, handles counted from 0.
class FirmwareTable {
 public:
  explicit FirmwareTable(Version version) : m_version(version) {}

  template <class Described>
  FirmwareTable& add(const Described& described) {
    m_bytes += structureOf(described, m_version).encode(m_count++);
    return *this;
  }

  Version version() const { return m_version; }
  const std::string& bytes() const { return m_bytes; }
  uint16_t count() const { return m_count; }

 private:
  Version m_version;
  std::string m_bytes;
  uint16_t m_count = 0;
};

enum class Checksum { kRight, kWrong };

// Where a table lies and how it is announced. What is left alone is as it should be.
struct Firmware {
  explicit Firmware(FirmwareTable structures) : table(std::move(structures)) {}

  FirmwareTable table;
  uint32_t entryPointAddress = 0xFA000;
  uint32_t tableAddress = 0xF5000;
  bool hasBcdRevision = true;
  Checksum entryPointChecksum = Checksum::kRight;
  Checksum intermediateChecksum = Checksum::kRight;
  std::optional<uint8_t> entryPointLength;      // a wrong length byte
  std::optional<uint16_t> announcedLength;      // of the table, in bytes
  std::optional<uint16_t> announcedCount;       // of structures
  std::map<uint32_t, std::string> otherMemory;  // address to bytes

  // The 32 bytes that announce the table at an address.
  std::string entryPoint(uint32_t announcedTableAddress) const;
  // Physical memory from address 0 to the end of the table, at least the first megabyte.
  std::string memory() const;
  // What `dmidecode --from-dump` reads: the entry point, then the table at 0x20.
  std::string dump() const;
};

inline constexpr size_t kFirstMegabyte = 0x100000;

}  // namespace quenlor::test
