// The devices on USB without the root hubs: /sys/bus/usb/devices, which tells strings that the
// kernel has read when the device came, and the system's list of USB ids.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/Outcome.h"
#include "readers/devicepath/DevicePath.h"

namespace quenlor {

// One device. Texts are the device's or the list's bytes; empty: not known.
struct UsbDevice {
  std::string entry;     // the kernel's name, "1-2.4": bus, then the ports on the way
  std::string location;  // controller and ports, "0000:00:14.0-2.4": buses are counted anew
  uint16_t vendor = 0;
  uint16_t product = 0;
  std::string name;
  std::string manufacturer;
  std::string serialNumber;
  std::vector<std::string> classes;  // words; the device's own, else its interfaces'
  std::vector<std::string> drivers;  // of its interfaces
  std::optional<uint32_t> speed;     // kbit/s
  std::string version;               // "2.00"
  std::string removable;             // "removable", "fixed" or empty
};

struct UsbDevices {
  std::vector<UsbDevice> devices;  // in natural order of their locations
  Outcome outcome;

  // By the kernel's name; null when there is none. Valid until the list changes.
  const UsbDevice* find(const std::string& entry) const;
};

// Reads everything anew. Never fails: what could not be read is in the outcome.
UsbDevices readUsbDevices();

}  // namespace quenlor
