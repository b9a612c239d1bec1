// What drivers tell of a link by the "ethtool" family of generic netlink (Linux 5.6). Source:
// linux/genetlink.h, linux/ethtool_netlink.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "readers/interfaces/NetlinkMessages.h"

namespace quenlor {

// Facts of one interface; one message has some of them.
struct LinkSettings {
  uint32_t interface = 0;         // index
  std::optional<uint32_t> speed;  // Mbit/s
  std::string duplex;             // "half", "full" or empty
  std::string connector;          // "Twisted Pair", "Fibre"; empty: none, or not known
};

// Asks for all families: the kernel tries to load a module for a name that it does not know.
std::string familyDumpRequest();
// The number of the family when the message is about it.
std::optional<uint16_t> parseEthtoolFamily(const NetlinkMessage& message);

// Dumps over all interfaces that have such facts: the connector, and speed with duplex.
std::string connectorDumpRequest(uint16_t family);
std::string speedDumpRequest(uint16_t family);
// Either answer; nothing when the message names no interface.
std::optional<LinkSettings> parseLinkSettings(const NetlinkMessage& message);

// The speed unless it stands for "unknown": 0, and what 31 bits do not hold.
std::optional<uint32_t> plausibleSpeed(uint32_t speed);
// Words of the numbers that ethtool uses; empty for unknown ones.
std::string duplexWord(uint8_t duplex);
std::string connectorWord(uint8_t port);

}  // namespace quenlor
