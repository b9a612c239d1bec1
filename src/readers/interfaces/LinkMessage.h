// Network interfaces as rtnetlink lists them. Source: linux/if_link.h, linux/rtnetlink.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "readers/interfaces/NetlinkMessages.h"

namespace quenlor {

// One interface. Hardware addresses are raw bytes, of any length up to 32; empty: not told.
struct Link {
  uint32_t index = 0;
  std::string name;           // any byte but NUL, '/' and blanks
  uint16_t hardwareType = 0;  // ARPHRD_*
  uint32_t flags = 0;         // IFF_*
  std::string address;
  std::string permanentAddress;
  std::optional<uint32_t> mtu;       // bytes
  std::string state;                 // the word of RFC 2863 as sysfs has it: "up", "lowerlayerdown"
  std::string kind;                  // the driver's word for a synthetic one: "bond", "veth"
  std::optional<uint32_t> master;    // index of the bond, bridge or routing domain
  std::optional<uint32_t> parent;    // index of the interface below, in this name space
  std::optional<uint32_t> vrfTable;  // routing table of a routing domain

  bool isLoopback() const;
};

// Nothing when the message tells of no interface, or lacks its name.
std::optional<Link> parseLink(const NetlinkMessage& message);

}  // namespace quenlor
