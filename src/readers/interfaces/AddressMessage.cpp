#include "readers/interfaces/AddressMessage.h"

#include <arpa/inet.h>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <netinet/in.h>

#include <utility>

namespace quenlor {
namespace {

constexpr uint32_t kInfinite = 0xFFFFFFFF;

constexpr uint32_t kUnsettled = IFA_F_TENTATIVE | IFA_F_DADFAILED | IFA_F_DEPRECATED;

AddressOrigin originOf(std::string_view value) {
  switch (netlinkNumber<uint8_t>(value).value_or(0)) {
    case IFAPROT_KERNEL_LO:
      return AddressOrigin::kKernelLoopback;
    case IFAPROT_KERNEL_RA:
      return AddressOrigin::kRouterAdvertised;
    case IFAPROT_KERNEL_LL:
      return AddressOrigin::kKernelLinkLocal;
    default:
      return AddressOrigin::kUnknown;
  }
}

bool isForEver(std::string_view value) {
  const auto lifetime = takeNetlinkHeader<ifa_cacheinfo>(value);
  return !lifetime || lifetime->ifa_valid == kInfinite;
}

void takeAttribute(const NetlinkAttribute& attribute, InterfaceAddress& address,
                   std::string_view& peer) {
  switch (attribute.type) {
    case IFA_LOCAL:
      address.bytes = attribute.value;
      break;
    case IFA_ADDRESS:
      peer = attribute.value;
      break;
    case IFA_FLAGS:
      address.flags = netlinkNumber<uint32_t>(attribute.value).value_or(address.flags);
      break;
    case IFA_CACHEINFO:
      address.isForEver = isForEver(attribute.value);
      break;
    case IFA_PROTO:
      address.origin = originOf(attribute.value);
      break;
    default:
      break;
  }
}

}  // namespace

bool InterfaceAddress::isSettled() const {
  if ((flags & kUnsettled) != 0) return false;
  // In IPv4 the bit of temporary addresses means a further address of the same network.
  return family == AF_INET || (flags & IFA_F_TEMPORARY) == 0;
}

std::optional<InterfaceAddress> parseAddress(const NetlinkMessage& message) {
  std::string_view payload = message.payload;
  const auto header = takeNetlinkHeader<ifaddrmsg>(payload);
  if (message.type != RTM_NEWADDR || !header) return {};
  const size_t size = addressSize(header->ifa_family);
  if (size == 0 || header->ifa_prefixlen > size * 8) return {};

  InterfaceAddress address;
  address.interface = header->ifa_index;
  address.family = header->ifa_family;
  address.prefixLength = header->ifa_prefixlen;
  address.scope = header->ifa_scope;
  address.flags = header->ifa_flags;
  std::string_view peer;
  NetlinkAttributes attributes(payload);
  while (const auto attribute = attributes.next()) takeAttribute(*attribute, address, peer);
  // IPv6 has a local address apart only where there is a peer.
  if (address.bytes.empty()) address.bytes = peer;
  return address.bytes.size() == size ? std::optional(std::move(address)) : std::nullopt;
}

std::string addressText(const std::string& bytes) {
  char text[INET6_ADDRSTRLEN] = "";
  const int family = bytes.size() == sizeof(in_addr) ? AF_INET : AF_INET6;
  if (bytes.size() != addressSize(static_cast<uint8_t>(family))) return {};
  inet_ntop(family, bytes.data(), text, sizeof text);
  return text;
}

std::string maskText(uint8_t family, uint8_t prefixLength) {
  std::string mask(addressSize(family), '\0');
  for (size_t bit = 0; bit < prefixLength && bit < mask.size() * 8; ++bit) {
    mask[bit / 8] = static_cast<char>(mask[bit / 8] | 0x80 >> bit % 8);
  }
  return addressText(mask);
}

size_t addressSize(uint8_t family) {
  if (family == AF_INET) return sizeof(in_addr);
  return family == AF_INET6 ? sizeof(in6_addr) : 0;
}

}  // namespace quenlor
