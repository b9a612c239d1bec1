#include "readers/interfaces/EthtoolMessages.h"

#include <linux/ethtool.h>
#include <linux/ethtool_netlink.h>
#include <linux/genetlink.h>
#include <linux/netlink.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace quenlor {
namespace {

constexpr uint32_t kLargestSpeed = 0x7FFFFFFF;

struct PortWord {
  uint8_t port;
  const char* word;
};

// What the words of ethtool(8) name; "none" and "other" tell nothing.
constexpr PortWord PORT_WORDS[] = {
    {PORT_TP, "Twisted Pair"}, {PORT_AUI, "AUI"}, {PORT_MII, "MII"},
    {PORT_FIBRE, "Fibre"},     {PORT_BNC, "BNC"}, {PORT_DA, "Direct Attach Copper"},
};

NetlinkRequest genericDump(uint16_t family, uint8_t command) {
  genlmsghdr header{};
  header.cmd = command;
  header.version = 1;
  return {family, NLM_F_DUMP, &header, sizeof header};
}

// Names no interface, so that all are meant, and asks for the short form of bit sets.
std::string settingsRequest(uint16_t family, uint8_t command) {
  const std::string flags =
      netlinkAttributeBytes(ETHTOOL_A_HEADER_FLAGS, uint32_t{ETHTOOL_FLAG_COMPACT_BITSETS});
  NetlinkRequest request = genericDump(family, command);
  request.add(netlinkAttributeBytes(ETHTOOL_A_LINKINFO_HEADER | NLA_F_NESTED, flags));
  return request.bytes();
}

std::optional<uint32_t> interfaceOf(std::string_view attributes) {
  const auto header = netlinkAttribute(attributes, ETHTOOL_A_LINKINFO_HEADER);
  if (!header) return {};
  const auto index = netlinkAttribute(*header, ETHTOOL_A_HEADER_DEV_INDEX);
  return index ? netlinkNumber<uint32_t>(*index) : std::nullopt;
}

template <class Number>
std::optional<Number> numberIn(std::string_view attributes, uint16_t type) {
  const auto value = netlinkAttribute(attributes, type);
  return value ? netlinkNumber<Number>(*value) : std::nullopt;
}

void takeSpeed(std::string_view attributes, LinkSettings& settings) {
  const auto speed = numberIn<uint32_t>(attributes, ETHTOOL_A_LINKMODES_SPEED);
  if (speed) settings.speed = plausibleSpeed(*speed);
  const auto duplex = numberIn<uint8_t>(attributes, ETHTOOL_A_LINKMODES_DUPLEX);
  if (duplex) settings.duplex = duplexWord(*duplex);
}

void takeConnector(std::string_view attributes, LinkSettings& settings) {
  const auto port = numberIn<uint8_t>(attributes, ETHTOOL_A_LINKINFO_PORT);
  if (port) settings.connector = connectorWord(*port);
}

}  // namespace

std::string familyDumpRequest() { return genericDump(GENL_ID_CTRL, CTRL_CMD_GETFAMILY).bytes(); }

std::optional<uint16_t> parseEthtoolFamily(const NetlinkMessage& message) {
  std::string_view payload = message.payload;
  const auto header = takeNetlinkHeader<genlmsghdr>(payload);
  if (message.type != GENL_ID_CTRL || !header || header->cmd != CTRL_CMD_NEWFAMILY) return {};
  const auto name = netlinkAttribute(payload, CTRL_ATTR_FAMILY_NAME);
  if (!name || netlinkText(*name) != ETHTOOL_GENL_NAME) return {};
  return numberIn<uint16_t>(payload, CTRL_ATTR_FAMILY_ID);
}

std::string connectorDumpRequest(uint16_t family) {
  return settingsRequest(family, ETHTOOL_MSG_LINKINFO_GET);
}

std::string speedDumpRequest(uint16_t family) {
  return settingsRequest(family, ETHTOOL_MSG_LINKMODES_GET);
}

std::optional<LinkSettings> parseLinkSettings(const NetlinkMessage& message) {
  std::string_view payload = message.payload;
  const auto header = takeNetlinkHeader<genlmsghdr>(payload);
  if (!header) return {};
  // Either message has the interface in an attribute of the same number.
  static_assert(int{ETHTOOL_A_LINKINFO_HEADER} == int{ETHTOOL_A_LINKMODES_HEADER});
  const auto interface = interfaceOf(payload);
  if (!interface) return {};
  LinkSettings settings;
  settings.interface = *interface;
  if (header->cmd == ETHTOOL_MSG_LINKINFO_GET_REPLY) takeConnector(payload, settings);
  if (header->cmd == ETHTOOL_MSG_LINKMODES_GET_REPLY) takeSpeed(payload, settings);
  return settings;
}

std::optional<uint32_t> plausibleSpeed(uint32_t speed) {
  return speed == 0 || speed > kLargestSpeed ? std::nullopt : std::optional(speed);
}

std::string duplexWord(uint8_t duplex) {
  if (duplex == DUPLEX_HALF) return "half";
  return duplex == DUPLEX_FULL ? "full" : "";
}

std::string connectorWord(uint8_t port) {
  const auto* found = std::find_if(std::begin(PORT_WORDS), std::end(PORT_WORDS),
                                   [=](const PortWord& row) { return row.port == port; });
  return found == std::end(PORT_WORDS) ? "" : found->word;
}

}  // namespace quenlor
