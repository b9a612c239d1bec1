#include "readers/interfaces/AddressReader.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <tuple>
#include <utility>

#include "readers/interfaces/NetlinkDump.h"

namespace quenlor {
namespace {

// What `parse` makes of each message of a dump.
template <class Item, class Parse>
void readDump(const std::string& request, const char* what, Parse parse, std::vector<Item>& items,
              Outcome& outcome) {
  const NetlinkDump dump(NETLINK_ROUTE, request);
  dump.report(what, outcome);
  for (const NetlinkMessage& message : dump.messages()) {
    if (auto item = parse(message)) items.push_back(std::move(*item));
  }
}

// A list that changed while it was made may hold an address twice; it is one address.
void dropRepeated(std::vector<InterfaceAddress>& addresses) {
  std::set<std::tuple<uint32_t, std::string, uint8_t>> seen;
  std::erase_if(addresses, [&](const InterfaceAddress& item) {
    return !seen.emplace(item.interface, item.bytes, item.prefixLength).second;
  });
}

bool isOfLinkOnly(const InterfaceAddress& address) {
  return address.family == AF_INET6 && address.scope == RT_SCOPE_LINK;
}

}  // namespace

NetworkAddresses readNetworkAddresses() {
  NetworkAddresses result;
  readDump(addressDumpRequest(), "addresses", parseAddress, result.addresses, result.outcome);
  dropRepeated(result.addresses);
  // By family: a router's kernel keeps more families, of multicast and labels, than are asked for.
  readDump(routeDumpRequest(AF_INET), "routes", parseDefaultRoute, result.routes.routes,
           result.outcome);
  readDump(routeDumpRequest(AF_INET6), "routes", parseDefaultRoute, result.routes.routes,
           result.outcome);
  // A kernel without policy routing has no rules, and that is all there is to tell.
  Outcome ofRules;
  readDump(ruleDumpRequest(), "routing rules", parseTableRule, result.routes.rules, ofRules);
  if (ofRules.status() != OutcomeStatus::kNoSource) result.outcome.merge(ofRules);
  result.leases = readLeases();
  return result;
}

std::vector<const InterfaceAddress*> reportedAddresses(
    const std::vector<const InterfaceAddress*>& ofInterface) {
  std::vector<const InterfaceAddress*> reported;
  std::copy_if(ofInterface.begin(), ofInterface.end(), std::back_inserter(reported),
               [](const InterfaceAddress* address) { return address->isSettled(); });
  const bool hasWider =
      std::any_of(reported.begin(), reported.end(), [](const InterfaceAddress* address) {
        return address->family == AF_INET6 && !isOfLinkOnly(*address);
      });
  if (hasWider) std::erase_if(reported, [](const auto* address) { return isOfLinkOnly(*address); });
  return reported;
}

}  // namespace quenlor
