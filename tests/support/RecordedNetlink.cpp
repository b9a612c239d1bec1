#include "tests/support/RecordedNetlink.h"

#include <arpa/inet.h>
#include <linux/ethtool.h>
#include <linux/ethtool_netlink.h>
#include <linux/fib_rules.h>
#include <linux/genetlink.h>
#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <net/if_arp.h>

#include <functional>
#include <sstream>
#include <stdexcept>

#include "tests/support/NetlinkBytes.h"
#include "tests/support/RecordedTree.h"

namespace quenlor::test {
namespace {

constexpr uint16_t kEthtoolFamily = 21;  // as the kernel numbers it on most machines
constexpr uint32_t kForEver = 0xFFFFFFFF;

using Numbers = std::map<std::string, uint32_t>;

const Numbers HARDWARE_TYPES{{"loopback", ARPHRD_LOOPBACK},
                             {"ether", ARPHRD_ETHER},
                             {"infiniband", ARPHRD_INFINIBAND},
                             {"ppp", ARPHRD_PPP},
                             {"none", 65534},
                             {"ipip", ARPHRD_TUNNEL},
                             {"sit", ARPHRD_SIT},
                             {"ieee80211", ARPHRD_IEEE80211}};
const Numbers STATES{{"unknown", 0}, {"notpresent", 1}, {"down", 2}, {"lowerlayerdown", 3},
                     {"testing", 4}, {"dormant", 5},    {"up", 6}};
const Numbers SCOPES{{"global", RT_SCOPE_UNIVERSE},
                     {"site", RT_SCOPE_SITE},
                     {"link", RT_SCOPE_LINK},
                     {"host", RT_SCOPE_HOST}};
const Numbers ORIGINS{
    {"lo", IFAPROT_KERNEL_LO}, {"ra", IFAPROT_KERNEL_RA}, {"ll", IFAPROT_KERNEL_LL}};
const Numbers DUPLEXES{{"half", DUPLEX_HALF}, {"full", DUPLEX_FULL}, {"unknown", DUPLEX_UNKNOWN}};
const Numbers FAMILIES{{"ipv4", AF_INET}, {"ipv6", AF_INET6}};

uint32_t valueIn(const Numbers& numbers, const std::string& word) {
  const auto found = numbers.find(word);
  if (found == numbers.end()) throw std::runtime_error("network.txt, unknown word: " + word);
  return found->second;
}

// "00:1b:21:aa:bb:cc" as bytes; colons may be left out.
std::string hardwareAddress(const std::string& text) {
  std::string digits;
  std::string bytes;
  for (const char character : text) {
    if (character != ':') digits += character;
    if (digits.size() < 2) continue;
    bytes += static_cast<char>(std::stoi(digits, nullptr, 16));
    digits.clear();
  }
  return bytes;
}

struct Prefix {
  uint8_t family = AF_INET;
  uint8_t length = 0;
  std::string bytes;
};

Prefix prefixOf(const std::string& text) {
  const size_t slash = text.find('/');
  const std::string address = text.substr(0, slash);
  Prefix prefix;
  prefix.family = address.find(':') == std::string::npos ? AF_INET : AF_INET6;
  prefix.bytes.resize(prefix.family == AF_INET ? 4 : 16);
  if (::inet_pton(prefix.family, address.c_str(), prefix.bytes.data()) != 1) {
    throw std::runtime_error("network.txt, no address: " + text);
  }
  const auto whole = static_cast<uint8_t>(prefix.bytes.size() * 8);
  prefix.length =
      slash == std::string::npos ? whole : static_cast<uint8_t>(std::stoul(text.substr(slash + 1)));
  return prefix;
}

std::string nested(uint16_t type, const std::string& attributes) {
  return attribute(type | NLA_F_NESTED, attributes);
}

std::string hexOf(const std::string& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes) {
    text += kDigits[static_cast<uint8_t>(byte) >> 4];
    text += kDigits[static_cast<uint8_t>(byte) & 0xF];
  }
  return text;
}

template <class Words>
std::string nextHop(Words& words) {
  const std::string gateway = words.word();
  const uint32_t interface = words.number();
  const std::string attributes =
      gateway == "-" ? std::string() : attribute(RTA_GATEWAY, prefixOf(gateway).bytes);
  rtnexthop hop{};
  hop.rtnh_len = static_cast<uint16_t>(sizeof hop + attributes.size());
  hop.rtnh_ifindex = static_cast<int>(interface);
  return bytesOf(hop) + attributes;
}

}  // namespace

// The words of one line, taken one after the other.
class RecordedNetlink::Words {
 public:
  explicit Words(const std::string& line) : m_line(line), m_stream(line) {}

  std::string word() {
    std::string word;
    if (!(m_stream >> word)) throw std::runtime_error("network.txt, a word is missing: " + m_line);
    return word;
  }
  uint32_t number() { return static_cast<uint32_t>(std::stoul(word(), nullptr, 0)); }
  std::string rest() {
    std::string rest;
    std::getline(m_stream >> std::ws, rest);
    return rest;
  }

  // The other words as a name and its value each.
  void pairs(const std::function<bool(const std::string& name)>& take) {
    for (std::string name; m_stream >> name;) {
      if (!take(name)) throw std::runtime_error("network.txt, unknown \"" + name + "\": " + m_line);
    }
  }

 private:
  std::string m_line;
  std::istringstream m_stream;
};

RecordedNetlink::RecordedNetlink(const std::string& text) : m_isTold(!text.empty()) {
  eachRecordedLine(text, [this](const std::string& line) { takeLine(line); });
}

void RecordedNetlink::takeLine(const std::string& line) {
  Words words(line);
  const std::string kind = words.word();
  if (kind == "link") return takeLink(words);
  if (kind == "address") return takeAddress(words);
  if (kind == "route") return takeRoute(words);
  if (kind == "rule") return takeRule(words);
  if (kind == "settings") return takeSettings(words);
  if (kind == "firmware") return takeFirmware(words);
  throw std::runtime_error("network.txt, unknown line: " + line);
}

void RecordedNetlink::takeLink(Words& words) {
  ifinfomsg header{};
  header.ifi_index = static_cast<int>(words.number());
  header.ifi_type = ARPHRD_ETHER;
  std::string attributes = textAttribute(IFLA_IFNAME, words.word());
  std::string kind;
  std::string data;
  words.pairs([&](const std::string& name) {
    if (name == "type")
      header.ifi_type = static_cast<uint16_t>(valueIn(HARDWARE_TYPES, words.word()));
    else if (name == "address")
      attributes += attribute(IFLA_ADDRESS, hardwareAddress(words.word()));
    else if (name == "permanent")
      attributes += attribute(IFLA_PERM_ADDRESS, hardwareAddress(words.word()));
    else if (name == "mtu")
      attributes += numberAttribute(IFLA_MTU, words.number());
    else if (name == "state")
      attributes +=
          numberAttribute(IFLA_OPERSTATE, static_cast<uint8_t>(valueIn(STATES, words.word())));
    else if (name == "master")
      attributes += numberAttribute(IFLA_MASTER, words.number());
    else if (name == "parent")
      attributes += numberAttribute(IFLA_LINK, words.number());
    else if (name == "netns")
      attributes += numberAttribute(IFLA_LINK_NETNSID, words.number());
    else if (name == "kind")
      kind = words.word();
    else if (name == "table")
      data = numberAttribute(IFLA_VRF_TABLE, words.number());
    else
      return false;
    return true;
  });
  if (header.ifi_type == ARPHRD_LOOPBACK) header.ifi_flags = IFF_LOOPBACK;
  if (!kind.empty()) {
    std::string info = textAttribute(IFLA_INFO_KIND, kind);
    if (!data.empty()) info += nested(IFLA_INFO_DATA, data);
    attributes += nested(IFLA_LINKINFO, info);
  }
  m_links += dumpMessage(RTM_NEWLINK, header, attributes);
}

void RecordedNetlink::takeAddress(Words& words) {
  ifaddrmsg header{};
  header.ifa_index = words.number();
  const Prefix prefix = prefixOf(words.word());
  header.ifa_family = prefix.family;
  header.ifa_prefixlen = prefix.length;
  ifa_cacheinfo lifetime{kForEver, kForEver, 0, 0};
  uint32_t flags = IFA_F_PERMANENT;
  std::string peer = prefix.bytes;
  std::string more;
  words.pairs([&](const std::string& name) {
    if (name == "scope")
      header.ifa_scope = static_cast<uint8_t>(valueIn(SCOPES, words.word()));
    else if (name == "lifetime")
      lifetime.ifa_valid = lifetime.ifa_prefered = words.number();
    else if (name == "flags")
      flags = words.number();
    else if (name == "peer")
      peer = prefixOf(words.word()).bytes;
    else if (name == "origin")
      more += numberAttribute(IFA_PROTO, static_cast<uint8_t>(valueIn(ORIGINS, words.word())));
    else
      return false;
    return true;
  });
  header.ifa_flags = static_cast<uint8_t>(flags);
  std::string attributes = attribute(IFA_ADDRESS, peer);
  // In IPv6 the local address stands apart only where there is a peer.
  if (prefix.family == AF_INET || peer != prefix.bytes)
    attributes += attribute(IFA_LOCAL, prefix.bytes);
  attributes +=
      numberAttribute(IFA_FLAGS, flags) + attribute(IFA_CACHEINFO, bytesOf(lifetime)) + more;
  m_addresses += dumpMessage(RTM_NEWADDR, header, attributes);
}

void RecordedNetlink::takeRoute(Words& words) {
  rtmsg header{};
  header.rtm_family = static_cast<uint8_t>(valueIn(FAMILIES, words.word()));
  header.rtm_type = RTN_UNICAST;
  uint32_t table = RT_TABLE_MAIN;
  std::string attributes;
  std::string hops;
  words.pairs([&](const std::string& name) {
    if (name == "to") {
      const Prefix destination = prefixOf(words.word());
      header.rtm_dst_len = destination.length;
      attributes += attribute(RTA_DST, destination.bytes);
    } else if (name == "via")
      attributes += attribute(RTA_GATEWAY, prefixOf(words.word()).bytes);
    else if (name == "dev")
      attributes += numberAttribute(RTA_OIF, words.number());
    else if (name == "hop")
      hops += nextHop(words);
    else if (name == "metric")
      attributes += numberAttribute(RTA_PRIORITY, words.number());
    else if (name == "table")
      table = words.number();
    else if (name == "protocol")
      header.rtm_protocol = static_cast<uint8_t>(words.number());
    else
      return false;
    return true;
  });
  header.rtm_table = static_cast<uint8_t>(table < 256 ? table : uint32_t{RT_TABLE_COMPAT});
  attributes += numberAttribute(RTA_TABLE, table);
  if (!hops.empty()) attributes += attribute(RTA_MULTIPATH, hops);
  (header.rtm_family == AF_INET ? m_routes4 : m_routes6) +=
      dumpMessage(RTM_NEWROUTE, header, attributes);
}

void RecordedNetlink::takeRule(Words& words) {
  fib_rule_hdr header{};
  header.family = static_cast<uint8_t>(valueIn(FAMILIES, words.word()));
  header.action = FR_ACT_TO_TBL;
  uint32_t table = RT_TABLE_MAIN;
  std::string attributes;
  words.pairs([&](const std::string& name) {
    if (name == "table")
      table = words.number();
    else if (name == "priority")
      attributes += numberAttribute(FRA_PRIORITY, words.number());
    else if (name == "mark")
      attributes += numberAttribute(FRA_FWMARK, words.number());
    else if (name == "from") {
      const Prefix source = prefixOf(words.word());
      header.src_len = source.length;
      attributes += attribute(FRA_SRC, source.bytes);
    } else if (name == "l3mdev")
      attributes += numberAttribute(FRA_L3MDEV, static_cast<uint8_t>(words.number()));
    else if (name == "suppress")
      attributes += numberAttribute(FRA_SUPPRESS_PREFIXLEN, words.number());
    else
      return false;
    return true;
  });
  header.table = static_cast<uint8_t>(table < 256 ? table : uint32_t{RT_TABLE_COMPAT});
  m_rules += dumpMessage(RTM_NEWRULE, header, attributes + numberAttribute(FRA_TABLE, table));
}

void RecordedNetlink::takeSettings(Words& words) {
  const uint32_t index = words.number();
  static_assert(int{ETHTOOL_A_LINKINFO_HEADER} == int{ETHTOOL_A_LINKMODES_HEADER});
  const std::string interface =
      nested(ETHTOOL_A_LINKINFO_HEADER, numberAttribute(ETHTOOL_A_HEADER_DEV_INDEX, index));
  std::string modes = interface;
  std::string info = interface;
  words.pairs([&](const std::string& name) {
    if (name == "speed")
      modes += numberAttribute(ETHTOOL_A_LINKMODES_SPEED, words.number());
    else if (name == "duplex")
      modes += numberAttribute(ETHTOOL_A_LINKMODES_DUPLEX,
                               static_cast<uint8_t>(valueIn(DUPLEXES, words.word())));
    else if (name == "port")
      info += numberAttribute(ETHTOOL_A_LINKINFO_PORT, static_cast<uint8_t>(words.number()));
    else
      return false;
    return true;
  });
  m_speeds += dumpMessage(kEthtoolFamily, genlmsghdr{ETHTOOL_MSG_LINKMODES_GET_REPLY, 1, 0}, modes);
  m_connectors +=
      dumpMessage(kEthtoolFamily, genlmsghdr{ETHTOOL_MSG_LINKINFO_GET_REPLY, 1, 0}, info);
}

void RecordedNetlink::takeFirmware(Words& words) {
  const std::string interface = words.word();
  ethtool_drvinfo info{};
  info.cmd = ETHTOOL_GDRVINFO;
  const std::string version = words.rest();
  version.copy(info.fw_version, sizeof info.fw_version - 1);
  m_driverInfos[interface] = hexOf(bytesOf(info));
}

std::optional<std::string> RecordedNetlink::answer(int protocol, uint16_t type,
                                                   uint8_t first) const {
  if (!m_isTold) return {};
  const auto is = [&](int otherProtocol, uint16_t otherType, int otherFirst) {
    return protocol == otherProtocol && type == otherType && first == otherFirst;
  };
  if (is(NETLINK_ROUTE, RTM_GETLINK, AF_UNSPEC)) return m_links + dumpEnd();
  if (is(NETLINK_ROUTE, RTM_GETADDR, AF_UNSPEC)) return m_addresses + dumpEnd();
  if (is(NETLINK_ROUTE, RTM_GETROUTE, AF_INET)) return m_routes4 + dumpEnd();
  if (is(NETLINK_ROUTE, RTM_GETROUTE, AF_INET6)) return m_routes6 + dumpEnd();
  if (is(NETLINK_ROUTE, RTM_GETRULE, AF_UNSPEC)) return m_rules + dumpEnd();
  if (m_speeds.empty()) return {};
  if (is(NETLINK_GENERIC, GENL_ID_CTRL, CTRL_CMD_GETFAMILY)) {
    return dumpMessage(GENL_ID_CTRL, genlmsghdr{CTRL_CMD_NEWFAMILY, 2, 0},
                       textAttribute(CTRL_ATTR_FAMILY_NAME, ETHTOOL_GENL_NAME) +
                           numberAttribute(CTRL_ATTR_FAMILY_ID, kEthtoolFamily)) +
           dumpEnd();
  }
  if (is(NETLINK_GENERIC, kEthtoolFamily, ETHTOOL_MSG_LINKMODES_GET)) return m_speeds + dumpEnd();
  if (is(NETLINK_GENERIC, kEthtoolFamily, ETHTOOL_MSG_LINKINFO_GET)) {
    return m_connectors + dumpEnd();
  }
  return {};
}

}  // namespace quenlor::test
