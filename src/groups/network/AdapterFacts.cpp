#include "groups/network/AdapterFacts.h"

#include <net/if_arp.h>

#include <algorithm>
#include <iterator>

namespace quenlor {
namespace {

constexpr uint16_t kTunnelOverIpv6 = 823;  // ARPHRD_IP6GRE

constexpr uint16_t TUNNELS[] = {ARPHRD_TUNNEL, ARPHRD_TUNNEL6, ARPHRD_SIT, ARPHRD_IPGRE,
                                kTunnelOverIpv6};

}  // namespace

std::string currentAddressText(const NetworkInterface& interface) {
  const bool isTunnel = std::find(std::begin(TUNNELS), std::end(TUNNELS),
                                  interface.link.hardwareType) != std::end(TUNNELS);
  return isTunnel ? std::string() : hardwareAddressText(interface.link.address);
}

std::string permanentOrCurrentText(const NetworkInterface& interface) {
  std::string text = hardwareAddressText(interface.burntInAddress());
  return text.empty() ? currentAddressText(interface) : text;
}

}  // namespace quenlor
