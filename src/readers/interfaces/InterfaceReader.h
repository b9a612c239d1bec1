// The network interfaces of this name space: rtnetlink, /sys/class/net and what drivers tell.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/Outcome.h"
#include "readers/devicepath/DevicePath.h"
#include "readers/interfaces/LinkMessage.h"

namespace quenlor {

// One interface with all that is known of it. Texts are the kernel's and the driver's bytes.
struct NetworkInterface {
  Link link;
  bool isPhysical = false;  // a device is behind it, wireless or not
  bool isWireless = false;
  std::string driver;                    // of the device; empty: none
  std::string firmware;                  // of the device; empty: not told
  std::optional<PciAddress> pciAddress;  // of the function that the device hangs on
  std::string usbDevice;                 // "1-2.4"; empty: the device is on no USB
  uint32_t port = 0;                     // of several ports that one function has, from 0
  std::optional<uint32_t> speed;         // Mbit/s
  std::string duplex;                    // "half", "full" or empty
  std::string connector;                 // "Twisted Pair"; empty: not told, or no device

  // The burnt-in address; of InfiniBand only the port's own 8 bytes, as the rest changes at every
  // start. Raw bytes; empty: not known.
  std::string burntInAddress() const;
};

struct NetworkInterfaces {
  std::vector<NetworkInterface> interfaces;  // in natural order of their names
  Outcome outcome;
};

// Finds interfaces by the kernel's index. The list must outlive it unchanged.
class InterfaceIndex {
 public:
  explicit InterfaceIndex(const std::vector<NetworkInterface>& interfaces);
  // Null when there is none.
  const NetworkInterface* find(uint32_t index) const;
  const NetworkInterface* find(const std::optional<uint32_t>& index) const;

 private:
  std::unordered_map<uint32_t, const NetworkInterface*> m_interfaces;
};

// "AA:BB:CC:00:11:22"; empty for no bytes.
std::string hardwareAddressText(const std::string& bytes);

// Reads everything anew. Never fails: what could not be read is in the outcome.
NetworkInterfaces readNetworkInterfaces();

}  // namespace quenlor
