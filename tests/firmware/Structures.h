// SMBIOS structures as C++ values, and their bytes (DMTF SMBIOS, 2.0 to 3.0 layouts).
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quenlor::test {

struct Version {
  uint8_t major;
  uint8_t minor;
  bool atLeast(uint8_t otherMajor, uint8_t otherMinor) const {
    return major != otherMajor ? major > otherMajor : minor >= otherMinor;
  }
};

// One structure under construction: fields go in order behind the header, texts into the string
// set.
class Structure {
 public:
  explicit Structure(uint8_t type) : m_type(type) {}

  Structure& byte(unsigned value);
  Structure& word(unsigned value);
  Structure& dword(uint32_t value);
  Structure& qword(uint64_t value);
  Structure& raw(std::string_view bytes);
  // A string number; 0 for an empty text, which a string set cannot hold.
  Structure& text(const std::string& text);
  // Strings that no field names.
  Structure& strings(const std::vector<std::string>& texts);
  // A length byte that is not that of the fields.
  Structure& claimLength(uint8_t length);

  std::string encode(uint16_t handle) const;

 private:
  uint8_t m_type;
  std::string m_fields;
  std::vector<std::string> m_strings;
  int m_claimedLength = -1;
};

using Uuid = std::array<uint8_t, 16>;

// The structures below default to a plain machine; empty texts are "no string".

struct Bios {
  std::string vendor{}, version{}, date{};
  uint8_t romSize = 7;                  // (n + 1) * 64 KB
  uint32_t characteristics = 0x7FDA90;  // PCI, PnP, flash, shadowing, CD boot and so on
  uint8_t extension1 = 0x03;            // ACPI, USB legacy
};

struct System {
  std::string manufacturer{}, product{}, version{}, serial{};
  Uuid uuid{};
  std::string sku{}, family{};
};

struct Baseboard {
  std::string manufacturer{}, product{}, version{}, serial{};
};

struct Enclosure {
  std::string manufacturer{};
  uint8_t type = 3;
  std::string version{}, serial{}, assetTag{};
};

struct Processor {
  std::string socket{};
  uint8_t type = 3;  // central processor
  uint8_t family = 0;
  std::string manufacturer{};
  uint32_t eax = 0, edx = 0;
  std::string version{};
  uint8_t voltage = 0;
  uint16_t externalClock = 0, maxSpeed = 0, currentSpeed = 0;  // MHz
  uint8_t status = 0x41;                                       // populated, enabled
  uint8_t upgrade = 0;
  std::string serial{}, assetTag{}, partNumber{};
};

struct MemoryController {
  uint8_t maximumModuleSize = 0;  // exponent of MB
  uint8_t slots = 0;
};

struct MemoryModule {
  std::string socket{};
  uint16_t type = 0;
  uint8_t installedSize = 0x7F;  // exponent of MB; not installed
};

struct Connector {
  std::string internalName{};
  uint8_t internalType = 0;
  std::string externalName{};
  uint8_t externalType = 0, portType = 0;
};

struct Slot {
  std::string name{};
  uint8_t type = 6, width = 5, usage = 3, length = 3;
  uint16_t id = 1;
};

struct OnBoardDevice {
  uint8_t type = 0x83;  // video, enabled
  std::string description{};
};

struct OemStrings {
  std::vector<std::string> texts{};
};

struct MemoryArray {
  uint32_t maximumKB = 0;
  uint16_t devices = 0;
};

struct MemoryDevice {
  uint16_t size = 0;       // MB, or KB with bit 15
  uint8_t formFactor = 9;  // DIMM
  std::string locator{}, bank{};
  uint8_t type = 15;       // SDRAM
  uint16_t detail = 0x80;  // synchronous
  uint16_t speed = 0;      // MHz
  std::string manufacturer{}, serial{}, assetTag{}, partNumber{};
};

struct Battery {
  std::string location{}, manufacturer{}, date{}, serial{}, name{};
};

struct HardwareSecurity {
  uint8_t settings = 0;
};

struct EndOfTable {};

Structure structureOf(const Bios& bios, Version version);
Structure structureOf(const System& system, Version version);
Structure structureOf(const Baseboard& board, Version version);
Structure structureOf(const Enclosure& enclosure, Version version);
Structure structureOf(const Processor& processor, Version version);
Structure structureOf(const MemoryController& controller, Version version);
Structure structureOf(const MemoryModule& module, Version version);
Structure structureOf(const Connector& connector, Version version);
Structure structureOf(const Slot& slot, Version version);
Structure structureOf(const OnBoardDevice& device, Version version);
Structure structureOf(const OemStrings& oem, Version version);
Structure structureOf(const MemoryArray& array, Version version);
Structure structureOf(const MemoryDevice& device, Version version);
Structure structureOf(const Battery& battery, Version version);
Structure structureOf(const HardwareSecurity& security, Version version);
Structure structureOf(const EndOfTable& end, Version version);
inline const Structure& structureOf(const Structure& structure, Version) { return structure; }

}  // namespace quenlor::test
