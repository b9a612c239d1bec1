// IP Address of the modern sources: the addresses of every interface but the loopback's, of both
// families, with the router that the interface's packets take.
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "groups/modern/Collectors.h"
#include "groups/network/AdapterFacts.h"
#include "readers/interfaces/AddressReader.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kAddress = 2;
constexpr uint32_t kHostname = 3;
constexpr uint32_t kDomain = 4;
constexpr uint32_t kSubnet = 5;
constexpr uint32_t kGateway = 6;
constexpr uint32_t kPrimaryDns = 7;
constexpr uint32_t kSecondaryDns = 8;
constexpr uint32_t kDhcpEnabled = 9;
constexpr uint32_t kPermanentMacAddress = 10;
constexpr uint32_t kIpv6Address = 11;
constexpr uint32_t kInterface = 101;
constexpr uint32_t kPrefixLength = 102;
constexpr uint32_t kScope = 103;
constexpr uint32_t kFamily = 104;
constexpr uint32_t kGatewayMetric = 105;
constexpr uint32_t kOrigin = 106;

constexpr uint8_t kProtocolDhcp = 16;  // RTPROT_DHCP

struct ScopeWord {
  uint8_t scope;
  const char* word;
};

constexpr ScopeWord SCOPE_WORDS[] = {{RT_SCOPE_UNIVERSE, "global"},
                                     {RT_SCOPE_SITE, "site"},
                                     {RT_SCOPE_LINK, "link"},
                                     {RT_SCOPE_HOST, "host"}};

std::string scopeWord(uint8_t scope) {
  const auto* found = std::find_if(std::begin(SCOPE_WORDS), std::end(SCOPE_WORDS),
                                   [=](const ScopeWord& row) { return row.scope == scope; });
  return found == std::end(SCOPE_WORDS) ? "" : found->word;
}

// How an address came about, as far as anybody tells.
struct Origin {
  std::optional<bool> isDhcp;
  std::string word;
};

Origin originOfIpv6(const InterfaceAddress& address) {
  switch (address.origin) {
    case AddressOrigin::kRouterAdvertised:
      return {false, "ra"};
    case AddressOrigin::kKernelLoopback:
    case AddressOrigin::kKernelLinkLocal:
      return {false, "kernel"};
    case AddressOrigin::kUnknown:
      break;
  }
  // Some program's: a DHCP client's as well as an administrator's.
  return {};
}

// An interface with all that its addresses have in common.
struct AddressedInterface {
  const NetworkInterface* interface = nullptr;
  std::vector<const InterfaceAddress*> addresses;  // those that are reported
  std::optional<DefaultGateway> gateway;           // of IPv4
  std::optional<DefaultGateway> gateway6;
  bool hasLease = false;

  const std::optional<DefaultGateway>& gatewayOf(uint8_t family) const {
    return family == AF_INET6 ? gateway6 : gateway;
  }
};

Origin originOf(const InterfaceAddress& address, const AddressedInterface& on) {
  if (address.family == AF_INET6) return originOfIpv6(address);
  const bool isRouteLeased = on.gateway && on.gateway->protocol == kProtocolDhcp;
  const bool isDhcp = !address.isForEver || isRouteLeased || on.hasLease;
  return {isDhcp, isDhcp ? "dhcp" : "static"};
}

std::string firstGlobalIpv6(const AddressedInterface& on) {
  const auto found =
      std::find_if(on.addresses.begin(), on.addresses.end(), [](const InterfaceAddress* address) {
        return address->family == AF_INET6 && address->scope == RT_SCOPE_UNIVERSE;
      });
  return found == on.addresses.end() ? std::string() : addressText((*found)->bytes);
}

using AddressesByIndex = std::unordered_map<uint32_t, std::vector<const InterfaceAddress*>>;

AddressesByIndex byInterface(const NetworkAddresses& found) {
  AddressesByIndex map;
  for (const InterfaceAddress& address : found.addresses) {
    map[address.interface].push_back(&address);
  }
  return map;
}

std::string serverAt(const Resolver* resolver, size_t position) {
  const bool isThere = resolver != nullptr && position < resolver->nameServers.size();
  return isThere ? resolver->nameServers[position] : std::string();
}

void addGateway(const std::optional<DefaultGateway>& gateway, ModernRow& row) {
  if (!gateway || gateway->address.empty()) return;
  row.text(kGateway, addressText(gateway->address)).ulong(kGatewayMetric, gateway->metric);
}

void addAddress(const InterfaceAddress& address, const AddressedInterface& on,
                const Resolver* resolver, ModernTable& table) {
  const bool isIpv6 = address.family == AF_INET6;
  const Origin origin = originOf(address, on);
  ModernRow& row = table.addNumberedRow();
  row.textAlways(kAddress, addressText(address.bytes))
      .textAlways(kHostname, resolver == nullptr ? std::string() : resolver->hostName)
      .textAlways(kDomain, resolver == nullptr ? std::string() : resolver->domain)
      .textAlways(kSubnet, maskText(address.family, address.prefixLength))
      .text(kPrimaryDns, serverAt(resolver, 0))
      .text(kSecondaryDns, serverAt(resolver, 1))
      .yesNo(kDhcpEnabled, origin.isDhcp)
      .textAlways(kPermanentMacAddress, permanentOrCurrentText(*on.interface))
      .textAlways(kInterface, on.interface->link.name)
      .ulong(kPrefixLength, address.prefixLength)
      .text(kScope, scopeWord(address.scope))
      .text(kFamily, isIpv6 ? "ipv6" : "ipv4")
      .text(kOrigin, origin.word);
  if (!isIpv6) row.textAlways(kIpv6Address, firstGlobalIpv6(on));
  addGateway(on.gatewayOf(address.family), row);
}

AddressedInterface gather(const NetworkInterface& interface, const InterfaceIndex& interfaces,
                          const std::vector<const InterfaceAddress*>& addresses,
                          const NetworkAddresses& found) {
  return {&interface, reportedAddresses(addresses),
          defaultGatewayOf(interface, AF_INET, found.routes, interfaces),
          defaultGatewayOf(interface, AF_INET6, found.routes, interfaces),
          found.leases.hold(interface.link.index, interface.link.name)};
}

}  // namespace

void collectIpAddresses(ModernScan& scan, ModernTable& table) {
  const NetworkInterfaces* links = scan.networkInterfaces(table.outcome());
  if (links == nullptr) return;
  const NetworkAddresses found = readNetworkAddresses();
  const Resolver* resolver = scan.resolver(table.outcome());
  table.outcome().merge(links->outcome);
  table.outcome().merge(found.outcome);
  if (resolver != nullptr) table.outcome().merge(resolver->outcome);

  const InterfaceIndex interfaces(links->interfaces);
  AddressesByIndex addresses = byInterface(found);
  for (const NetworkInterface& interface : links->interfaces) {
    if (interface.link.isLoopback() || addresses.count(interface.link.index) == 0) continue;
    const AddressedInterface on =
        gather(interface, interfaces, addresses[interface.link.index], found);
    for (const InterfaceAddress* address : on.addresses) {
      addAddress(*address, on, resolver, table);
    }
  }
}

}  // namespace quenlor
