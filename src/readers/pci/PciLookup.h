// Readable names of PCI devices from their ids, out of two built-in tables (data/pci.md).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace quenlor {

struct PciVendor {
  uint16_t vendor;
  const char* shortName;  // may be empty
  const char* longName;
};

struct PciDevice {
  uint16_t vendor;
  uint16_t device;
  const char* chip;         // may be empty
  const char* description;  // may be empty
};

inline constexpr size_t kPciVendorStorage = 1592;
inline constexpr size_t kPciDeviceStorage = 3712;
// Searched from the first row on; the first match wins. The rows behind are empty.
inline constexpr size_t kPciVendorsSearched = 1591;
inline constexpr size_t kPciDevicesSearched = 3710;

extern const PciVendor PciVenTable[kPciVendorStorage];
extern const PciDevice PciDevTable[kPciDeviceStorage];

// Room for a name and its terminator.
inline constexpr size_t kPciNameSize = 180;

// Name of a device: "vendor chip (description)" as far as the tables know it, with the class text
// (may be empty or null) in place of what is not known. Empty: nothing is known. A new buffer of
// kPciNameSize bytes that the caller frees with free(); null only without memory.
char* lookupPCI(int vendor, int device, const char* classText);
// The same name as a string.
std::string pciName(int vendor, int device, const std::string& classText);

// What the tables alone say: "Intel", and "82557/8/9/0/1 (Ethernet Pro 100)". Empty: nothing.
std::string builtInVendorName(uint16_t vendor);
std::string builtInDeviceName(uint16_t vendor, uint16_t device);

// The hexadecimal id at the front of the text, blanks skipped, and in *end (may be null) where it
// ends; nothing when there is no digit. What is beyond 16 bits becomes an id that no table has.
std::optional<int> readPciId(const char* text, const char** end = nullptr);

// Name of the ids in "... PCI device 8086:7190 ..." into the buffer, at most size - 1 characters;
// the empty text when the line holds none.
void processSuSEline(const char* line, char* buffer, size_t size);

}  // namespace quenlor
