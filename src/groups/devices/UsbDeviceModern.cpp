// USB Device: every device on USB but the root hubs.
#include <cstdio>
#include <string>
#include <vector>

#include "base/Utf8.h"
#include "groups/modern/Collectors.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kLocation = 2;
constexpr uint32_t kName = 3;
constexpr uint32_t kManufacturer = 4;
constexpr uint32_t kSerialNumber = 5;
constexpr uint32_t kVendorId = 6;
constexpr uint32_t kProductId = 7;
constexpr uint32_t kClass = 8;
constexpr uint32_t kSpeed = 9;
constexpr uint32_t kDriver = 10;
constexpr uint32_t kVersion = 11;
constexpr uint32_t kRemovable = 12;

constexpr size_t kLongestClass = 32;
constexpr size_t kLongestDriver = 255;

std::string idText(uint16_t id) {
  char digits[8];
  std::snprintf(digits, sizeof digits, "%04x", id);
  return digits;
}

// As many whole parts as fit: a device of many functions has more words than its attribute holds.
std::string joinWithin(std::vector<std::string> parts, size_t longest) {
  while (!parts.empty() && joinParts(parts).size() > longest) parts.pop_back();
  return joinParts(parts);
}

void addDevice(const UsbDevice& device, ModernTable& table) {
  table.addNumberedRow()
      .textAlways(kLocation, device.location)
      .text(kName, device.name)
      .text(kManufacturer, device.manufacturer)
      .text(kSerialNumber, device.serialNumber)
      .text(kVendorId, idText(device.vendor))
      .text(kProductId, idText(device.product))
      .text(kClass, joinWithin(device.classes, kLongestClass))
      .ulong(kSpeed, device.speed)
      .text(kDriver, joinWithin(device.drivers, kLongestDriver))
      .text(kVersion, device.version)
      .text(kRemovable, device.removable);
}

}  // namespace

void collectUsbDevices(ModernScan& scan, ModernTable& table) {
  const UsbDevices* found = scan.usbDevices(table.outcome());
  if (found == nullptr) return;
  table.outcome().merge(found->outcome);
  for (const UsbDevice& device : found->devices) addDevice(device, table);
}

}  // namespace quenlor
