// Network Adapter of the modern sources: every interface that the kernel lists, with the device
// behind it.
#include <net/if_arp.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "groups/modern/Collectors.h"
#include "groups/network/AdapterFacts.h"
#include "identity/Identity.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kId = 2;
constexpr uint32_t kPermanentAddress = 3;
constexpr uint32_t kCurrentAddress = 4;
constexpr uint32_t kType = 5;
constexpr uint32_t kModel = 6;
constexpr uint32_t kManufacturer = 7;
constexpr uint32_t kConnectorType = 9;
constexpr uint32_t kInterface = 101;
constexpr uint32_t kKind = 102;
constexpr uint32_t kDriver = 103;
constexpr uint32_t kFirmware = 104;
constexpr uint32_t kSpeed = 105;
constexpr uint32_t kDuplex = 106;
constexpr uint32_t kMtu = 107;
constexpr uint32_t kState = 108;
constexpr uint32_t kLocation = 109;
constexpr uint32_t kMaster = 110;
constexpr uint32_t kVendorId = 111;
constexpr uint32_t kDeviceId = 112;

// Codes of the adapter types.
constexpr uint32_t kOther = 2;
constexpr uint32_t kEthernet = 3;
constexpr uint32_t kTokenRing = 4;
constexpr uint32_t kSerialLine = 6;
constexpr uint32_t kPointToPoint = 10;
constexpr uint32_t kFddi = 17;

struct AdapterType {
  uint16_t hardwareType;  // ARPHRD_*
  uint32_t code;
};

// Wireless interfaces say that they are Ethernet, but for those that listen to raw frames.
constexpr AdapterType ADAPTER_TYPES[] = {
    {ARPHRD_ETHER, kEthernet},
    {ARPHRD_EETHER, kEthernet},
    {ARPHRD_IEEE80211, kEthernet},
    {ARPHRD_IEEE80211_PRISM, kEthernet},
    {ARPHRD_IEEE80211_RADIOTAP, kEthernet},
    {ARPHRD_IEEE802, kTokenRing},
    {ARPHRD_IEEE802_TR, kTokenRing},
    {ARPHRD_SLIP, kSerialLine},
    {ARPHRD_CSLIP, kSerialLine},
    {ARPHRD_SLIP6, kSerialLine},
    {ARPHRD_CSLIP6, kSerialLine},
    {ARPHRD_PPP, kPointToPoint},
    {ARPHRD_FDDI, kFddi},
};

struct KindWord {
  uint16_t hardwareType;
  const char* word;
};

// Synthetic interfaces that do not tell the kernel's word for their kind.
constexpr KindWord KIND_WORDS[] = {{ARPHRD_LOOPBACK, "loopback"}, {ARPHRD_PPP, "ppp"}};

// Parents of an interface that may be looked through for its ID; a list that changed while it was
// made may have a ring of them.
constexpr int kMostParents = 8;

template <class Row, size_t size>
const Row* rowOf(const Row (&rows)[size], uint16_t hardwareType) {
  const Row* found = std::find_if(rows, rows + size,
                                  [=](const Row& row) { return row.hardwareType == hardwareType; });
  return found == rows + size ? nullptr : found;
}

uint32_t typeOf(const NetworkInterface& interface) {
  const AdapterType* row = rowOf(ADAPTER_TYPES, interface.link.hardwareType);
  return row == nullptr ? kOther : row->code;
}

std::string kindOf(const NetworkInterface& interface) {
  if (interface.isPhysical) return interface.isWireless ? "wireless" : "physical";
  if (!interface.link.kind.empty()) return interface.link.kind;
  const KindWord* row = rowOf(KIND_WORDS, interface.link.hardwareType);
  return row == nullptr ? std::string() : row->word;
}

std::string locationOf(const NetworkInterface& interface) {
  if (!interface.pciAddress) return {};
  std::string location = interface.pciAddress->text();
  const std::string& usb = interface.usbDevice;
  // The ports on the way; the bus before them is counted anew at every start.
  if (!usb.empty()) location += "/" + usb.substr(usb.find('-') + 1);
  if (interface.port != 0) location += "/" + std::to_string(interface.port);
  return location;
}

std::string idOf(const NetworkInterface* interface, const InterfaceIndex& interfaces, int depth) {
  if (interface == nullptr || depth > kMostParents) return {};
  const std::string address = hardwareAddressText(interface->burntInAddress());
  if (!address.empty()) return md5Text(address + locationOf(*interface));
  const NetworkInterface* parent = interfaces.find(interface->link.parent);
  return md5Text(kindOf(*interface) + interface->link.name + idOf(parent, interfaces, depth + 1));
}

// What the lists of ids or the device itself say of the device behind an interface.
struct DeviceNames {
  std::string model;
  std::string manufacturer;
  std::string vendorId;
  std::string deviceId;
};

std::string fourDigits(uint16_t id) {
  char digits[8];
  std::snprintf(digits, sizeof digits, "%04x", id);
  return digits;
}

DeviceNames namesOf(const PciFunction& function) {
  return {function.deviceName, function.vendorName, fourDigits(function.vendor),
          fourDigits(function.device)};
}

DeviceNames namesOf(const UsbDevice& device) {
  return {device.name, device.manufacturer, fourDigits(device.vendor), fourDigits(device.product)};
}

DeviceNames findNames(const NetworkInterface& interface, const PciFunctions* pci,
                      const UsbDevices* usb) {
  if (!interface.usbDevice.empty()) {
    const UsbDevice* device = usb == nullptr ? nullptr : usb->find(interface.usbDevice);
    return device == nullptr ? DeviceNames() : namesOf(*device);
  }
  if (!interface.pciAddress || pci == nullptr) return {};
  const PciFunction* function = pci->find(*interface.pciAddress);
  return function == nullptr ? DeviceNames() : namesOf(*function);
}

// Names of devices that could not be had leave the rest of the rows as it is.
template <class Facts>
const Facts* orPartial(const Facts* facts, const Outcome& outcome, ModernTable& table) {
  if (facts == nullptr) table.outcome().note(OutcomeStatus::kPartial, outcome.reason());
  return facts;
}

const PciFunctions* pciOf(const NetworkInterfaces& found, ModernScan& scan, ModernTable& table) {
  const auto isOnPci = [](const NetworkInterface& item) {
    return item.pciAddress && item.usbDevice.empty();
  };
  if (std::none_of(found.interfaces.begin(), found.interfaces.end(), isOnPci)) return nullptr;
  Outcome outcome;
  return orPartial(scan.pciFunctions(outcome), outcome, table);
}

const UsbDevices* usbOf(const NetworkInterfaces& found, ModernScan& scan, ModernTable& table) {
  const auto isOnUsb = [](const NetworkInterface& item) { return !item.usbDevice.empty(); };
  if (std::none_of(found.interfaces.begin(), found.interfaces.end(), isOnUsb)) return nullptr;
  Outcome outcome;
  return orPartial(scan.usbDevices(outcome), outcome, table);
}

// Cards that one can hold in a hand first.
std::vector<const NetworkInterface*> inOrder(const NetworkInterfaces& found) {
  std::vector<const NetworkInterface*> ordered;
  for (const NetworkInterface& item : found.interfaces) ordered.push_back(&item);
  const auto rank = [](const NetworkInterface* item) {
    if (!item->isPhysical) return 2;
    return item->isWireless ? 1 : 0;
  };
  std::stable_sort(ordered.begin(), ordered.end(),
                   [&](const auto* left, const auto* right) { return rank(left) < rank(right); });
  return ordered;
}

void addAdapter(const NetworkInterface& interface, const InterfaceIndex& interfaces,
                const DeviceNames& names, ModernTable& table) {
  const Link& link = interface.link;
  const NetworkInterface* master = interfaces.find(link.master);
  table.addNumberedRow()
      .textAlways(kId, idOf(&interface, interfaces, 0))
      .textAlways(kPermanentAddress, hardwareAddressText(interface.burntInAddress()))
      .textAlways(kCurrentAddress, currentAddressText(interface))
      .ulong(kType, typeOf(interface))
      .textAlways(kModel, names.model)
      .text(kManufacturer, names.manufacturer)
      .text(kConnectorType, interface.connector)
      .textAlways(kInterface, link.name)
      .text(kKind, kindOf(interface))
      .text(kDriver, interface.driver)
      .text(kFirmware, interface.firmware)
      .ulong(kSpeed, interface.speed)
      .text(kDuplex, interface.duplex)
      .ulong(kMtu, link.mtu)
      .text(kState, link.state)
      .text(kLocation, locationOf(interface))
      .text(kMaster, master == nullptr ? std::string() : master->link.name)
      .text(kVendorId, names.vendorId)
      .text(kDeviceId, names.deviceId);
}

}  // namespace

void collectNetworkAdapters(ModernScan& scan, ModernTable& table) {
  const NetworkInterfaces* found = scan.networkInterfaces(table.outcome());
  if (found == nullptr) return;
  table.outcome().merge(found->outcome);
  const PciFunctions* pci = pciOf(*found, scan, table);
  const UsbDevices* usb = usbOf(*found, scan, table);
  const InterfaceIndex interfaces(found->interfaces);
  for (const NetworkInterface* interface : inOrder(*found)) {
    addAdapter(*interface, interfaces, findNames(*interface, pci, usb), table);
  }
  table.makeDigestsUnique(kId);
}

}  // namespace quenlor
