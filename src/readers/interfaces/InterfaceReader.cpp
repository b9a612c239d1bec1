#include "readers/interfaces/InterfaceReader.h"

#include <linux/netlink.h>
#include <net/if_arp.h>

#include <algorithm>
#include <utility>

#include "base/NaturalOrder.h"
#include "readers/interfaces/EthtoolCalls.h"
#include "readers/interfaces/EthtoolMessages.h"
#include "readers/interfaces/InterfaceFiles.h"
#include "readers/interfaces/NetlinkDump.h"

namespace quenlor {
namespace {

constexpr size_t kInfinibandAddress = 20;
constexpr size_t kPortIdentifier = 8;  // the last bytes of it

std::vector<NetworkInterface> readLinks(Outcome& outcome) {
  const NetlinkDump dump(NETLINK_ROUTE, linkDumpRequest());
  dump.report("interfaces", outcome);
  std::vector<NetworkInterface> interfaces;
  for (const NetlinkMessage& message : dump.messages()) {
    auto link = parseLink(message);
    if (!link) continue;
    interfaces.emplace_back();
    interfaces.back().link = std::move(*link);
  }
  return interfaces;
}

// A list that changed while it was made may name an interface twice; the later entry holds.
void keepLatest(std::vector<NetworkInterface>& interfaces) {
  std::reverse(interfaces.begin(), interfaces.end());
  const auto index = [](const NetworkInterface& item) { return item.link.index; };
  std::stable_sort(interfaces.begin(), interfaces.end(),
                   [&](const auto& left, const auto& right) { return index(left) < index(right); });
  const auto last =
      std::unique(interfaces.begin(), interfaces.end(),
                  [&](const auto& left, const auto& right) { return index(left) == index(right); });
  interfaces.erase(last, interfaces.end());
}

// Each is moved once, to its place: they are large, and a container host has thousands.
void sortByName(std::vector<NetworkInterface>& interfaces) {
  std::vector<NetworkInterface*> order;
  order.reserve(interfaces.size());
  for (NetworkInterface& interface : interfaces) order.push_back(&interface);
  std::sort(order.begin(), order.end(), [](const auto* left, const auto* right) {
    return naturalLess(left->link.name, right->link.name);
  });
  std::vector<NetworkInterface> sorted;
  sorted.reserve(order.size());
  for (NetworkInterface* interface : order) sorted.push_back(std::move(*interface));
  interfaces = std::move(sorted);
}

void takeFiles(InterfaceFiles&& files, NetworkInterface& interface) {
  interface.isPhysical = true;
  interface.isWireless = files.isWireless;
  interface.driver = std::move(files.driver);
  interface.pciAddress = files.pciAddress;
  interface.usbDevice = std::move(files.usbDevice);
  interface.port = files.port;
}

void readDevices(std::vector<NetworkInterface>& interfaces, Outcome& outcome) {
  const auto virtualNames = virtualInterfaces();
  if (!virtualNames) {
    outcome.note(OutcomeStatus::kPartial, "devices of interfaces: not shown");
    return;
  }
  for (NetworkInterface& interface : interfaces) {
    const Link& link = interface.link;
    if (virtualNames->count(link.name) != 0) continue;
    if (auto files = readInterfaceFiles(link.name, link.index)) {
      takeFiles(std::move(*files), interface);
    } else {
      outcome.note(OutcomeStatus::kPartial, "devices of interfaces: renamed, gone or not shown");
    }
  }
}

std::optional<uint16_t> ethtoolFamily() {
  const NetlinkDump families(NETLINK_GENERIC, familyDumpRequest());
  for (const NetlinkMessage& message : families.messages()) {
    if (const auto family = parseEthtoolFamily(message)) return family;
  }
  return {};
}

using InterfacesByIndex = std::unordered_map<uint32_t, NetworkInterface*>;

InterfacesByIndex byIndex(std::vector<NetworkInterface>& interfaces) {
  InterfacesByIndex map;
  map.reserve(interfaces.size());
  for (NetworkInterface& interface : interfaces) map.emplace(interface.link.index, &interface);
  return map;
}

// The dump as it came, message by message, to `take` with the interface that it is about.
template <class Take>
void dumpSettings(const std::string& request, const InterfacesByIndex& interfaces, Take take) {
  const NetlinkDump dump(NETLINK_GENERIC, request);
  for (const NetlinkMessage& message : dump.messages()) {
    const auto settings = parseLinkSettings(message);
    if (!settings) continue;
    const auto found = interfaces.find(settings->interface);
    if (found != interfaces.end()) take(*settings, *found->second);
  }
}

void askSettings(uint16_t family, std::vector<NetworkInterface>& interfaces) {
  const InterfacesByIndex index = byIndex(interfaces);
  dumpSettings(speedDumpRequest(family), index,
               [](const LinkSettings& settings, NetworkInterface& interface) {
                 interface.speed = settings.speed;
                 interface.duplex = settings.duplex;
               });
  dumpSettings(connectorDumpRequest(family), index,
               [](const LinkSettings& settings, NetworkInterface& interface) {
                 if (interface.isPhysical) interface.connector = settings.connector;
               });
}

// Kernels before 5.6.
void readSettings(const EthtoolCalls& calls, std::vector<NetworkInterface>& interfaces) {
  for (NetworkInterface& interface : interfaces) {
    interface.speed = readSpeed(interface.link.name);
    interface.duplex = readDuplex(interface.link.name);
    if (interface.isPhysical) interface.connector = calls.connector(interface.link.name);
  }
}

void askDriver(const EthtoolCalls& calls, NetworkInterface& interface) {
  interface.firmware = calls.firmware(interface.link.name);
  std::string& address = interface.link.permanentAddress;
  if (address.empty()) address = calls.permanentAddress(interface.link.name);
  if (address.empty()) address = readPermanentAddress(interface.link.name);
}

void askDrivers(std::vector<NetworkInterface>& interfaces) {
  const EthtoolCalls calls;
  for (NetworkInterface& interface : interfaces) {
    if (interface.isPhysical) askDriver(calls, interface);
  }
  if (const auto family = ethtoolFamily()) {
    askSettings(*family, interfaces);
  } else {
    readSettings(calls, interfaces);
  }
}

}  // namespace

std::string NetworkInterface::burntInAddress() const {
  const std::string& address = link.permanentAddress;
  const bool isInfiniband =
      link.hardwareType == ARPHRD_INFINIBAND && address.size() == kInfinibandAddress;
  return isInfiniband ? address.substr(address.size() - kPortIdentifier) : address;
}

InterfaceIndex::InterfaceIndex(const std::vector<NetworkInterface>& interfaces) {
  m_interfaces.reserve(interfaces.size());
  for (const NetworkInterface& item : interfaces) m_interfaces.emplace(item.link.index, &item);
}

const NetworkInterface* InterfaceIndex::find(uint32_t index) const {
  const auto found = m_interfaces.find(index);
  return found == m_interfaces.end() ? nullptr : found->second;
}

const NetworkInterface* InterfaceIndex::find(const std::optional<uint32_t>& index) const {
  return index ? find(*index) : nullptr;
}

std::string hardwareAddressText(const std::string& bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<uint8_t>(c);
    if (!text.empty()) text += ':';
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

NetworkInterfaces readNetworkInterfaces() {
  NetworkInterfaces result;
  result.interfaces = readLinks(result.outcome);
  keepLatest(result.interfaces);
  sortByName(result.interfaces);
  if (result.interfaces.empty()) return result;
  readDevices(result.interfaces, result.outcome);
  askDrivers(result.interfaces);
  return result;
}

}  // namespace quenlor
