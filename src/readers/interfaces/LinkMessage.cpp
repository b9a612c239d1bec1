#include "readers/interfaces/LinkMessage.h"

#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <net/if.h>

#include <iterator>

namespace quenlor {
namespace {

// By IF_OPER_* of linux/if.h.
constexpr const char* OPERATIONAL_STATES[] = {"unknown", "notpresent", "down", "lowerlayerdown",
                                              "testing", "dormant",    "up"};

constexpr const char* kRoutingDomain = "vrf";

constexpr size_t kLongestAddress = 32;  // MAX_ADDR_LEN of the kernel

std::string stateWord(std::string_view value) {
  const auto state = netlinkNumber<uint8_t>(value);
  if (!state || *state >= std::size(OPERATIONAL_STATES)) return {};
  return OPERATIONAL_STATES[*state];
}

// Zero stands for "none" wherever an interface is named by its index.
std::optional<uint32_t> indexOf(std::string_view value) {
  const auto index = netlinkNumber<uint32_t>(value);
  return index == 0u ? std::nullopt : index;
}

bool isAllZero(std::string_view bytes) {
  return bytes.find_first_not_of('\0') == std::string_view::npos;
}

std::string hardwareAddress(std::string_view bytes) {
  // A driver that does not know its card's address leaves zeros.
  const bool isKnown = !isAllZero(bytes) && bytes.size() <= kLongestAddress;
  return isKnown ? std::string(bytes) : std::string();
}

void takeLinkInfo(std::string_view attributes, Link& link) {
  link.kind = netlinkText(netlinkAttribute(attributes, IFLA_INFO_KIND).value_or(""));
  if (link.kind != kRoutingDomain) return;
  const auto data = netlinkAttribute(attributes, IFLA_INFO_DATA).value_or("");
  link.vrfTable = netlinkNumber<uint32_t>(netlinkAttribute(data, IFLA_VRF_TABLE).value_or(""));
}

void takeAttribute(const NetlinkAttribute& attribute, Link& link) {
  switch (attribute.type) {
    case IFLA_IFNAME:
      link.name = netlinkText(attribute.value);
      break;
    case IFLA_ADDRESS:
      link.address = hardwareAddress(attribute.value);
      break;
    case IFLA_PERM_ADDRESS:
      link.permanentAddress = hardwareAddress(attribute.value);
      break;
    case IFLA_MTU:
      link.mtu = netlinkNumber<uint32_t>(attribute.value);
      break;
    case IFLA_OPERSTATE:
      link.state = stateWord(attribute.value);
      break;
    case IFLA_MASTER:
      link.master = indexOf(attribute.value);
      break;
    case IFLA_LINK:
      link.parent = indexOf(attribute.value);
      break;
    case IFLA_LINKINFO:
      takeLinkInfo(attribute.value, link);
      break;
    default:
      break;
  }
}

// A name that is no file name would lead elsewhere in sysfs; no kernel takes one.
bool isInterfaceName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == name.npos;
}

}  // namespace

bool Link::isLoopback() const { return (flags & IFF_LOOPBACK) != 0; }

std::optional<Link> parseLink(const NetlinkMessage& message) {
  std::string_view payload = message.payload;
  const auto header = takeNetlinkHeader<ifinfomsg>(payload);
  if (message.type != RTM_NEWLINK || !header || header->ifi_index <= 0) return {};

  Link link;
  link.index = static_cast<uint32_t>(header->ifi_index);
  link.hardwareType = header->ifi_type;
  link.flags = header->ifi_flags;
  bool isElsewhere = false;
  NetlinkAttributes attributes(payload);
  while (const auto attribute = attributes.next()) {
    takeAttribute(*attribute, link);
    // The parent's index is then one of another name space, and here it may be anybody's.
    isElsewhere |= attribute->type == IFLA_LINK_NETNSID;
  }
  // Physical interfaces may name themselves.
  if (isElsewhere || link.parent == link.index) link.parent.reset();
  return isInterfaceName(link.name) ? std::optional(std::move(link)) : std::nullopt;
}

}  // namespace quenlor
