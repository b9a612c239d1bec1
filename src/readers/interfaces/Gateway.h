// Which router an interface's packets to everywhere go to.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "readers/interfaces/InterfaceReader.h"
#include "readers/interfaces/RouteMessage.h"

namespace quenlor {

// The default route of one interface and family.
struct DefaultGateway {
  std::string address;  // 4 or 16 bytes, of either family; empty: straight onto the link
  uint32_t metric = 0;
  uint8_t protocol = 0;  // RTPROT_*: who made the route
};

// Default routes of all tables, and the rules that look up tables for every packet.
struct DefaultRoutes {
  std::vector<DefaultRoute> routes;
  std::vector<TableRule> rules;
};

// The default route with the lowest metric out of the interface, in the main table and in those
// that a rule looks up for every packet; for a member of a routing domain (VRF) in the domain's
// table alone. Of equal ones the lowest router address, so that the order of the kernel's list
// does not matter.
std::optional<DefaultGateway> defaultGatewayOf(const NetworkInterface& interface, uint8_t family,
                                               const DefaultRoutes& routes,
                                               const InterfaceIndex& interfaces);

}  // namespace quenlor
