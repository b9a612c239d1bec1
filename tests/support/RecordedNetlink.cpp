#include "tests/support/RecordedNetlink.h"

#include <linux/ethtool.h>
#include <linux/ethtool_netlink.h>
#include <linux/fib_rules.h>
#include <linux/genetlink.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <net/if_arp.h>

#include <functional>
#include <sstream>
#include <stdexcept>

#include "tests/support/NetlinkBytes.h"
#include "tests/support/RecordedNetlinkWords.h"
#include "tests/support/RecordedTree.h"

namespace quenlor::test {
namespace {

constexpr uint16_t kEthtoolFamily = 21;  // as the kernel numbers it on most machines
constexpr uint32_t kForEver = 0xFFFFFFFF;

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

// Tables above 255 stand in an attribute only.
uint8_t shortTable(uint32_t table) {
  return static_cast<uint8_t>(table < 256 ? table : uint32_t{RT_TABLE_COMPAT});
}

}  // namespace

// The words of one line, taken one after the other.
class RecordedNetlink::Words {
 public:
  // Takes the value behind a name.
  using Take = std::function<void(Words&)>;

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

  // The other words: names of these, each with its value.
  void pairs(const std::map<std::string, Take>& names) {
    for (std::string name; m_stream >> name;) {
      const auto found = names.find(name);
      if (found == names.end()) {
        throw std::runtime_error("network.txt, unknown \"" + name + "\": " + m_line);
      }
      found->second(*this);
    }
  }

  // What appends a value to a message's attributes: as a number of 32 bits, as the number of a word
  // in one byte, as a hardware address.
  static Take numberTo(std::string& attributes, uint16_t type) {
    return
        [&attributes, type](Words& words) { attributes += numberAttribute(type, words.number()); };
  }
  static Take byteTo(std::string& attributes, uint16_t type, const Numbers& numbers) {
    return [&attributes, type, &numbers](Words& words) {
      attributes += numberAttribute(type, static_cast<uint8_t>(valueIn(numbers, words.word())));
    };
  }
  static Take hardwareTo(std::string& attributes, uint16_t type) {
    return [&attributes, type](Words& words) {
      attributes += attribute(type, hardwareAddress(words.word()));
    };
  }
  static Take addressTo(std::string& attributes, uint16_t type, uint8_t& length) {
    return [&attributes, type, &length](Words& words) {
      const Prefix prefix = prefixOf(words.word());
      length = prefix.length;
      attributes += attribute(type, prefix.bytes);
    };
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
  std::string info;
  std::string data;
  words.pairs({{"type",
                [&](Words& w) {
                  header.ifi_type = static_cast<uint16_t>(valueIn(HARDWARE_TYPES, w.word()));
                }},
               {"address", Words::hardwareTo(attributes, IFLA_ADDRESS)},
               {"permanent", Words::hardwareTo(attributes, IFLA_PERM_ADDRESS)},
               {"mtu", Words::numberTo(attributes, IFLA_MTU)},
               {"state", Words::byteTo(attributes, IFLA_OPERSTATE, STATES)},
               {"master", Words::numberTo(attributes, IFLA_MASTER)},
               {"parent", Words::numberTo(attributes, IFLA_LINK)},
               {"netns", Words::numberTo(attributes, IFLA_LINK_NETNSID)},
               {"kind", [&](Words& w) { info = textAttribute(IFLA_INFO_KIND, w.word()); }},
               {"table", Words::numberTo(data, IFLA_VRF_TABLE)}});
  if (header.ifi_type == ARPHRD_LOOPBACK) header.ifi_flags = IFF_LOOPBACK;
  if (!data.empty()) info += nested(IFLA_INFO_DATA, data);
  if (!info.empty()) attributes += nested(IFLA_LINKINFO, info);
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
  std::string attributes;
  words.pairs(
      {{"scope",
        [&](Words& w) { header.ifa_scope = static_cast<uint8_t>(valueIn(SCOPES, w.word())); }},
       {"lifetime", [&](Words& w) { lifetime.ifa_valid = lifetime.ifa_prefered = w.number(); }},
       {"flags", [&](Words& w) { flags = w.number(); }},
       {"peer", [&](Words& w) { peer = prefixOf(w.word()).bytes; }},
       {"origin", Words::byteTo(attributes, IFA_PROTO, ORIGINS)}});
  header.ifa_flags = static_cast<uint8_t>(flags);
  attributes += attribute(IFA_ADDRESS, peer);
  // In IPv6 the local address stands apart only where there is a peer.
  const bool hasLocal = prefix.family == AF_INET || peer != prefix.bytes;
  if (hasLocal) attributes += attribute(IFA_LOCAL, prefix.bytes);
  attributes += numberAttribute(IFA_FLAGS, flags) + attribute(IFA_CACHEINFO, bytesOf(lifetime));
  m_addresses += dumpMessage(RTM_NEWADDR, header, attributes);
}

// One of several ways of a route.
std::string RecordedNetlink::nextHop(Words& words) {
  const std::string gateway = words.word();
  const uint32_t interface = words.number();
  const std::string attributes =
      gateway == "-" ? std::string() : attribute(RTA_GATEWAY, prefixOf(gateway).bytes);
  rtnexthop hop{};
  hop.rtnh_len = static_cast<uint16_t>(sizeof hop + attributes.size());
  hop.rtnh_ifindex = static_cast<int>(interface);
  return bytesOf(hop) + attributes;
}

void RecordedNetlink::takeRoute(Words& words) {
  rtmsg header{};
  header.rtm_family = static_cast<uint8_t>(valueIn(FAMILIES, words.word()));
  header.rtm_type = RTN_UNICAST;
  uint32_t table = RT_TABLE_MAIN;
  uint8_t ignored = 0;
  std::string attributes;
  std::string hops;
  words.pairs(
      {{"to", Words::addressTo(attributes, RTA_DST, header.rtm_dst_len)},
       {"via", Words::addressTo(attributes, RTA_GATEWAY, ignored)},
       {"dev", Words::numberTo(attributes, RTA_OIF)},
       {"hop", [&](Words& w) { hops += nextHop(w); }},
       {"metric", Words::numberTo(attributes, RTA_PRIORITY)},
       {"table", [&](Words& w) { table = w.number(); }},
       {"protocol", [&](Words& w) { header.rtm_protocol = static_cast<uint8_t>(w.number()); }}});
  header.rtm_table = shortTable(table);
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
  words.pairs({{"table", [&](Words& w) { table = w.number(); }},
               {"priority", Words::numberTo(attributes, FRA_PRIORITY)},
               {"mark", Words::numberTo(attributes, FRA_FWMARK)},
               {"from", Words::addressTo(attributes, FRA_SRC, header.src_len)},
               {"l3mdev",
                [&](Words& w) {
                  attributes += numberAttribute(FRA_L3MDEV, static_cast<uint8_t>(w.number()));
                }},
               {"suppress", Words::numberTo(attributes, FRA_SUPPRESS_PREFIXLEN)}});
  header.table = shortTable(table);
  m_rules += dumpMessage(RTM_NEWRULE, header, attributes + numberAttribute(FRA_TABLE, table));
}

void RecordedNetlink::takeSettings(Words& words) {
  static_assert(int{ETHTOOL_A_LINKINFO_HEADER} == int{ETHTOOL_A_LINKMODES_HEADER});
  const std::string interface = nested(ETHTOOL_A_LINKINFO_HEADER,
                                       numberAttribute(ETHTOOL_A_HEADER_DEV_INDEX, words.number()));
  std::string modes = interface;
  std::string info = interface;
  words.pairs({{"speed", Words::numberTo(modes, ETHTOOL_A_LINKMODES_SPEED)},
               {"duplex", Words::byteTo(modes, ETHTOOL_A_LINKMODES_DUPLEX, DUPLEXES)},
               {"port", [&](Words& w) {
                  info +=
                      numberAttribute(ETHTOOL_A_LINKINFO_PORT, static_cast<uint8_t>(w.number()));
                }}});
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

std::string RecordedNetlink::families() {
  return dumpMessage(GENL_ID_CTRL, genlmsghdr{CTRL_CMD_NEWFAMILY, 2, 0},
                     textAttribute(CTRL_ATTR_FAMILY_NAME, ETHTOOL_GENL_NAME) +
                         numberAttribute(CTRL_ATTR_FAMILY_ID, kEthtoolFamily));
}

std::optional<std::string> RecordedNetlink::answer(int protocol, uint16_t type,
                                                   uint8_t first) const {
  const std::map<std::tuple<int, uint16_t, int>, std::string> dumps{
      {{NETLINK_ROUTE, RTM_GETLINK, AF_UNSPEC}, m_links},
      {{NETLINK_ROUTE, RTM_GETADDR, AF_UNSPEC}, m_addresses},
      {{NETLINK_ROUTE, RTM_GETROUTE, AF_INET}, m_routes4},
      {{NETLINK_ROUTE, RTM_GETROUTE, AF_INET6}, m_routes6},
      {{NETLINK_ROUTE, RTM_GETRULE, AF_UNSPEC}, m_rules},
      {{NETLINK_GENERIC, GENL_ID_CTRL, CTRL_CMD_GETFAMILY}, families()},
      {{NETLINK_GENERIC, kEthtoolFamily, ETHTOOL_MSG_LINKMODES_GET}, m_speeds},
      {{NETLINK_GENERIC, kEthtoolFamily, ETHTOOL_MSG_LINKINFO_GET}, m_connectors}};
  const auto found = dumps.find({protocol, type, first});
  const bool isKnown = protocol == NETLINK_ROUTE ? m_isTold : !m_speeds.empty();
  return isKnown && found != dumps.end() ? std::optional(found->second + dumpEnd()) : std::nullopt;
}

}  // namespace quenlor::test
