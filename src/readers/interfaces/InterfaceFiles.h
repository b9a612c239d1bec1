// What /sys/class/net tells of the device behind an interface.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "readers/devicepath/DevicePath.h"

namespace quenlor {

struct InterfaceFiles {
  bool isWireless = false;
  std::string driver;                    // empty: none bound
  std::optional<PciAddress> pciAddress;  // of the function that it hangs on
  std::string usbDevice;                 // "1-2.4"; empty: none
  uint32_t port = 0;                     // of several ports that one function has, from 0
};

// IFINDEX and DEVTYPE of an interface's uevent file.
struct InterfaceEvent {
  std::optional<uint32_t> index;
  std::string deviceType;  // "wlan", "bond"; empty: none
};

InterfaceEvent parseInterfaceEvent(const std::string& text);

// "aa:bb:cc:00:11:22" as raw bytes; empty when it is anything else or all zero.
std::string parseHardwareAddress(const std::string& text);

// Names of interfaces without a device behind them; nothing when the kernel does not list them.
std::optional<std::set<std::string>> virtualInterfaces();

// The device of an interface that is not virtual; nothing when there is none, or when the name
// stands for another interface meanwhile (sysfs may also show another name space's).
std::optional<InterfaceFiles> readInterfaceFiles(const std::string& name, uint32_t index);

// The burnt-in address that a bond keeps of its member, else the address when it is told to be the
// burnt-in one. Raw bytes; empty when neither is.
std::string readPermanentAddress(const std::string& name);

// Speed in Mbit/s and duplex word of drivers that netlink does not tell of.
std::optional<uint32_t> readSpeed(const std::string& name);
std::string readDuplex(const std::string& name);

}  // namespace quenlor
