#include "readers/interfaces/RouteMessage.h"

#include <linux/fib_rules.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <utility>

#include "readers/interfaces/AddressMessage.h"

namespace quenlor {
namespace {

constexpr uint32_t kNoLength = 0xFFFFFFFF;

// Attributes of a rule that tell how it works, and nothing of the packets that it is for. Whatever
// else stands in a rule, also of kernels to come, narrows it.
constexpr uint16_t RULE_WORKINGS[] = {FRA_UNSPEC,
                                      FRA_PRIORITY,
                                      FRA_FLOW,
                                      FRA_TABLE,
                                      FRA_PROTOCOL,
                                      FRA_PAD,
                                      FRA_SUPPRESS_PREFIXLEN,
                                      FRA_SUPPRESS_IFGROUP};

bool isAddress(std::string_view bytes) { return bytes.size() == 4 || bytes.size() == 16; }

// RTA_VIA: two bytes for the router's family, then its address without padding between.
std::string viaAddress(std::string_view value) {
  constexpr size_t kFamily = sizeof(uint16_t);
  if (value.size() < kFamily || !isAddress(value.substr(kFamily))) return {};
  return std::string(value.substr(kFamily));
}

void takeGateway(const NetlinkAttribute& attribute, NextHop& hop) {
  if (attribute.type == RTA_GATEWAY && isAddress(attribute.value)) hop.gateway = attribute.value;
  if (attribute.type == RTA_VIA) hop.gateway = viaAddress(attribute.value);
}

bool isDead(unsigned flags) { return (flags & RTNH_F_DEAD) != 0; }

// RTA_MULTIPATH: ways, each with attributes of its own.
void takeWays(std::string_view value, std::vector<NextHop>& hops) {
  rtnexthop header{};
  while (value.size() >= sizeof header) {
    std::memcpy(&header, value.data(), sizeof header);
    if (header.rtnh_len < sizeof header || header.rtnh_len > value.size()) return;
    NextHop hop{static_cast<uint32_t>(header.rtnh_ifindex), {}};
    NetlinkAttributes attributes(value.substr(sizeof header, header.rtnh_len - sizeof header));
    while (const auto attribute = attributes.next()) takeGateway(*attribute, hop);
    if (!isDead(header.rtnh_flags)) hops.push_back(std::move(hop));
    value.remove_prefix(std::min<size_t>(RTNH_ALIGN(header.rtnh_len), value.size()));
  }
}

// The kernel keeps its cache of learned ways among the routes; they are none.
bool isDefaultRoute(const rtmsg& header) {
  return header.rtm_dst_len == 0 && header.rtm_src_len == 0 && header.rtm_type == RTN_UNICAST &&
         addressSize(header.rtm_family) != 0 && (header.rtm_flags & RTM_F_CLONED) == 0;
}

void takeRouteAttribute(const NetlinkAttribute& attribute, DefaultRoute& route, NextHop& hop) {
  switch (attribute.type) {
    case RTA_TABLE:
      route.table = netlinkNumber<uint32_t>(attribute.value).value_or(route.table);
      break;
    case RTA_PRIORITY:
      route.metric = netlinkNumber<uint32_t>(attribute.value).value_or(0);
      break;
    case RTA_OIF:
      hop.interface = netlinkNumber<uint32_t>(attribute.value).value_or(0);
      break;
    case RTA_MULTIPATH:
      takeWays(attribute.value, route.hops);
      break;
    default:
      takeGateway(attribute, hop);
      break;
  }
}

bool isSelector(const NetlinkAttribute& attribute) {
  return std::find(std::begin(RULE_WORKINGS), std::end(RULE_WORKINGS), attribute.type) ==
         std::end(RULE_WORKINGS);
}

// True for a rule that passes over routes to everywhere: each of its routes must be longer than
// the given length.
bool suppressesDefault(const NetlinkAttribute& attribute) {
  return attribute.type == FRA_SUPPRESS_PREFIXLEN &&
         netlinkNumber<uint32_t>(attribute.value).value_or(kNoLength) != kNoLength;
}

bool isForEveryPacket(const fib_rule_hdr& header) {
  return header.src_len == 0 && header.dst_len == 0 && header.tos == 0 &&
         (header.flags & FIB_RULE_INVERT) == 0;
}

}  // namespace

std::optional<DefaultRoute> parseDefaultRoute(const NetlinkMessage& message) {
  std::string_view payload = message.payload;
  const auto header = takeNetlinkHeader<rtmsg>(payload);
  if (message.type != RTM_NEWROUTE || !header || !isDefaultRoute(*header)) return {};

  DefaultRoute route{header->rtm_family, header->rtm_protocol, header->rtm_table, 0, {}};
  NextHop only;
  NetlinkAttributes attributes(payload);
  while (const auto attribute = attributes.next()) takeRouteAttribute(*attribute, route, only);
  if (only.interface != 0 && !isDead(header->rtm_flags)) route.hops.push_back(std::move(only));
  return route.hops.empty() ? std::nullopt : std::optional(std::move(route));
}

std::optional<TableRule> parseTableRule(const NetlinkMessage& message) {
  std::string_view payload = message.payload;
  const auto header = takeNetlinkHeader<fib_rule_hdr>(payload);
  if (message.type != RTM_NEWRULE || !header || header->action != FR_ACT_TO_TBL) return {};
  if (addressSize(header->family) == 0 || !isForEveryPacket(*header)) return {};

  TableRule rule{header->family, header->table};
  NetlinkAttributes attributes(payload);
  while (const auto attribute = attributes.next()) {
    if (isSelector(*attribute) || suppressesDefault(*attribute)) return {};
    if (attribute->type == FRA_TABLE) {
      rule.table = netlinkNumber<uint32_t>(attribute->value).value_or(rule.table);
    }
  }
  return rule;
}

}  // namespace quenlor
