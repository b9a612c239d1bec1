// Answers of the kernel by netlink of any content, taken apart by every parser.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "readers/interfaces/AddressMessage.h"
#include "readers/interfaces/EthtoolMessages.h"
#include "readers/interfaces/InterfaceFiles.h"
#include "readers/interfaces/Leases.h"
#include "readers/interfaces/LinkMessage.h"
#include "readers/interfaces/NetlinkMessages.h"
#include "readers/interfaces/RouteMessage.h"

namespace {

using namespace quenlor;

void require(bool condition) {
  if (!condition) std::abort();
}

void checkLink(const NetlinkMessage& message) {
  const auto link = parseLink(message);
  if (!link) return;
  require(link->index != 0 && !link->name.empty());
  require(link->name.find('/') == std::string::npos && link->name.find('\0') == std::string::npos);
  require(link->address.size() <= 32 && link->permanentAddress.size() <= 32);
  require(link->parent != link->index);
}

void checkAddress(const NetlinkMessage& message) {
  const auto address = parseAddress(message);
  if (!address) return;
  require(address->bytes.size() == addressSize(address->family));
  require(address->prefixLength <= address->bytes.size() * 8);
  require(!addressText(address->bytes).empty());
  require(!maskText(address->family, address->prefixLength).empty());
}

void checkRoute(const NetlinkMessage& message) {
  const auto route = parseDefaultRoute(message);
  if (route) {
    require(!route->hops.empty() && addressSize(route->family) != 0);
    for (const NextHop& hop : route->hops) {
      require(hop.gateway.empty() || !addressText(hop.gateway).empty());
    }
  }
  const auto rule = parseTableRule(message);
  require(!rule || addressSize(rule->family) != 0);
}

void checkSettings(const NetlinkMessage& message) {
  parseEthtoolFamily(message);
  const auto settings = parseLinkSettings(message);
  if (!settings) return;
  require(!settings->speed || (*settings->speed > 0 && *settings->speed < 1u << 31));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const NetlinkAnswer answer = parseNetlinkAnswer(bytes);
  require(answer.messages.size() <= size / 16);
  require(!answer.isWhole || answer.error == 0);
  for (const NetlinkMessage& message : answer.messages) {
    checkLink(message);
    checkAddress(message);
    checkRoute(message);
    checkSettings(message);
  }
  parseInterfaceEvent(bytes);
  parseHardwareAddress(bytes);
  tellsOfLease(bytes);
  isLeasedAtBoot(bytes);
  return 0;
}
