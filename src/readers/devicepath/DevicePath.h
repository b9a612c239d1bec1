// Where a device hangs, from the path of its directory in /sys/devices.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quenlor {

// Address of a PCI function. Host bridges behind others have domains beyond 16 bits.
struct PciAddress {
  uint32_t domain = 0;
  uint8_t bus = 0;
  uint8_t device = 0;    // 0 to 31
  uint8_t function = 0;  // 0 to 7

  std::string text() const;  // "0000:00:1f.2"
  friend auto operator<=>(const PciAddress&, const PciAddress&) = default;
};

// Of a directory's name: domain of 4 to 8 hexadecimal digits, bus, device, function; nothing else.
std::optional<PciAddress> parsePciAddress(std::string_view name);

// The last part of the path that is a PCI address: of the function that the device belongs to.
std::optional<PciAddress> pciAddressOf(std::string_view path);

// The last part that is a USB device, "1-2.4": bus, then the ports on the way; empty when none is.
// Parts before the last PCI address do not count.
std::string usbDeviceOf(std::string_view path);

// "1-2.4": a USB device, neither a root hub nor an interface of a device.
bool isUsbDeviceName(std::string_view name);

// Last part of a path, or of a link's text.
std::string_view lastPart(std::string_view path);

}  // namespace quenlor
