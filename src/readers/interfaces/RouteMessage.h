// Default routes and routing rules as rtnetlink lists them. Source: linux/rtnetlink.h,
// linux/fib_rules.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "readers/interfaces/NetlinkMessages.h"

namespace quenlor {

// One way of a route: out of an interface, to a router or straight onto the link.
struct NextHop {
  uint32_t interface = 0;  // index
  std::string gateway;     // 4 or 16 bytes, of either family; empty: onto the link
};

// A route to everywhere of one family.
struct DefaultRoute {
  uint8_t family = 0;    // AF_INET, AF_INET6
  uint8_t protocol = 0;  // RTPROT_*
  uint32_t table = 0;
  uint32_t metric = 0;
  std::vector<NextHop> hops;  // alive ones only
};

// Nothing when the message tells of no unicast route to everywhere, or of one without a live way.
std::optional<DefaultRoute> parseDefaultRoute(const NetlinkMessage& message);

// A rule by which a table is looked up for every packet, whatever it is.
struct TableRule {
  uint8_t family = 0;
  uint32_t table = 0;
};

// Nothing when the rule asks for anything of the packet, does something else than look up a table,
// or looks there for no route to everywhere.
std::optional<TableRule> parseTableRule(const NetlinkMessage& message);

}  // namespace quenlor
