// Addresses of interfaces as rtnetlink lists them. Source: linux/if_addr.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "readers/interfaces/NetlinkMessages.h"

namespace quenlor {

// Who made an address (IFA_PROTO, Linux 5.18).
enum class AddressOrigin : uint8_t {
  kUnknown,  // an older kernel, or some program
  kKernelLoopback,
  kRouterAdvertised,  // made by the kernel from a router's prefix
  kKernelLinkLocal,
};

struct InterfaceAddress {
  uint32_t interface = 0;    // index
  uint8_t family = 0;        // AF_INET, AF_INET6
  uint8_t prefixLength = 0;  // bits, within the family's
  uint8_t scope = 0;         // RT_SCOPE_*
  uint32_t flags = 0;        // IFA_F_*
  std::string bytes;         // 4 or 16, network byte order; the local one on point-to-point links
  bool isForEver = true;     // its lifetime is infinite
  AddressOrigin origin = AddressOrigin::kUnknown;

  // Neither being tested for duplicates, nor failed, nor temporary, nor to be left.
  bool isSettled() const;
};

// Nothing when the message tells of no IPv4 or IPv6 address, or its bytes do not fit the family.
std::optional<InterfaceAddress> parseAddress(const NetlinkMessage& message);

// "192.0.2.1", "2001:db8::1"; empty unless there are 4 or 16 bytes.
std::string addressText(const std::string& bytes);
// The mask of the prefix in the form of an address of the family.
std::string maskText(uint8_t family, uint8_t prefixLength);
// Bytes of an address of the family; 0 for any other family.
size_t addressSize(uint8_t family);

}  // namespace quenlor
