// Plays a router: router_advertisement INTERFACE. Sends one advertisement of 2001:db8:5::/64, with
// a default route, from the interface's link-local address to all nodes.
#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/icmp6.h>
#include <sys/socket.h>

#include <cstdint>
#include <cstdio>

namespace {

constexpr int kHopLimit = 255;  // others are taken for routed from elsewhere
constexpr uint16_t kRouterSeconds = 1800;
constexpr uint32_t kValidSeconds = 86400;
constexpr uint32_t kPreferredSeconds = 14400;

struct Advertisement {
  nd_router_advert header{};
  nd_opt_prefix_info prefix{};
};

Advertisement advertisement() {
  Advertisement message;
  message.header.nd_ra_hdr.icmp6_type = ND_ROUTER_ADVERT;
  message.header.nd_ra_router_lifetime = htons(kRouterSeconds);
  nd_opt_prefix_info& prefix = message.prefix;
  prefix.nd_opt_pi_type = ND_OPT_PREFIX_INFORMATION;
  prefix.nd_opt_pi_len = sizeof prefix / 8;
  prefix.nd_opt_pi_prefix_len = 64;
  prefix.nd_opt_pi_flags_reserved = ND_OPT_PI_FLAG_ONLINK | ND_OPT_PI_FLAG_AUTO;
  prefix.nd_opt_pi_valid_time = htonl(kValidSeconds);
  prefix.nd_opt_pi_preferred_time = htonl(kPreferredSeconds);
  inet_pton(AF_INET6, "2001:db8:5::", &prefix.nd_opt_pi_prefix);
  return message;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) return 2;
  const int socket_ = socket(AF_INET6, SOCK_RAW, IPPROTO_ICMPV6);
  const unsigned interface = if_nametoindex(arguments[1]);
  if (socket_ < 0 || interface == 0) return perror(arguments[1]), 1;
  setsockopt(socket_, IPPROTO_IPV6, IPV6_MULTICAST_HOPS, &kHopLimit, sizeof kHopLimit);
  sockaddr_in6 nodes{};
  nodes.sin6_family = AF_INET6;
  nodes.sin6_scope_id = interface;
  inet_pton(AF_INET6, "ff02::1", &nodes.sin6_addr);
  const Advertisement message = advertisement();
  const auto* address = reinterpret_cast<const sockaddr*>(&nodes);
  if (sendto(socket_, &message, sizeof message, 0, address, sizeof nodes) < 0)
    return perror("sendto"), 1;
  return 0;
}
