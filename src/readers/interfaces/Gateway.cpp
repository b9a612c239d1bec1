#include "readers/interfaces/Gateway.h"

#include <linux/rtnetlink.h>

#include <algorithm>
#include <set>
#include <tuple>

namespace quenlor {
namespace {

// A member of a bridge or bond may be in a routing domain through it. Masters form no ring in a
// kernel; in a list that changed while it was made they may.
constexpr int kMostMasters = 8;

std::optional<uint32_t> routingDomainOf(const NetworkInterface& interface,
                                        const InterfaceIndex& interfaces) {
  const NetworkInterface* item = &interface;
  for (int step = 0; item != nullptr && step < kMostMasters; ++step) {
    if (item->link.vrfTable) return item->link.vrfTable;
    item = interfaces.find(item->link.master);
  }
  return {};
}

std::set<uint32_t> tablesOf(const NetworkInterface& interface, uint8_t family,
                            const DefaultRoutes& routes, const InterfaceIndex& interfaces) {
  if (const auto domain = routingDomainOf(interface, interfaces)) return {*domain};
  std::set<uint32_t> tables{RT_TABLE_MAIN};
  for (const TableRule& rule : routes.rules) {
    if (rule.family == family) tables.insert(rule.table);
  }
  return tables;
}

bool isBetter(const DefaultGateway& left, const std::optional<DefaultGateway>& right) {
  return !right || std::tie(left.metric, left.address) < std::tie(right->metric, right->address);
}

}  // namespace

std::optional<DefaultGateway> defaultGatewayOf(const NetworkInterface& interface, uint8_t family,
                                               const DefaultRoutes& routes,
                                               const InterfaceIndex& interfaces) {
  std::optional<DefaultGateway> best;
  const std::set<uint32_t> tables = tablesOf(interface, family, routes, interfaces);
  for (const DefaultRoute& route : routes.routes) {
    if (route.family != family || tables.count(route.table) == 0) continue;
    for (const NextHop& hop : route.hops) {
      DefaultGateway gateway{hop.gateway, route.metric, route.protocol};
      const bool isOurs = hop.interface == interface.link.index;
      if (isOurs && isBetter(gateway, best)) best = std::move(gateway);
    }
  }
  return best;
}

}  // namespace quenlor
