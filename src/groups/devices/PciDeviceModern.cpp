// PCI Device of the modern sources: every function in /sys/bus/pci.
#include <cstdio>
#include <string>

#include "groups/modern/Collectors.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kName = 2;
constexpr uint32_t kRevision = 3;
constexpr uint32_t kAddress = 101;
constexpr uint32_t kClass = 102;
constexpr uint32_t kClassName = 103;
constexpr uint32_t kVendorId = 104;
constexpr uint32_t kDeviceId = 105;
constexpr uint32_t kSubsystemVendorId = 106;
constexpr uint32_t kSubsystemId = 107;
constexpr uint32_t kDriver = 108;
constexpr uint32_t kSlot = 109;
constexpr uint32_t kNumaNode = 110;
constexpr uint32_t kIommuGroup = 111;

std::string digits(const char* format, uint32_t number) {
  char text[16];
  std::snprintf(text, sizeof text, format, number);
  return text;
}

std::string idText(uint16_t id) { return digits("%04x", id); }

// Bridges have no subsystem and say 0000.
std::string subsystemText(uint16_t id) { return id == 0 ? std::string() : idText(id); }

void addFunction(const PciFunction& function, ModernTable& table) {
  table.addNumberedRow()
      .textAlways(kName, function.name())
      .textAlways(kRevision, function.revision ? digits("0x%02x", *function.revision) : "")
      .textAlways(kAddress, function.address.text())
      .text(kClass, digits("%06x", function.classCode))
      .text(kClassName, function.className)
      .text(kVendorId, idText(function.vendor))
      .text(kDeviceId, idText(function.device))
      .text(kSubsystemVendorId, subsystemText(function.subsystemVendor))
      .text(kSubsystemId, subsystemText(function.subsystemDevice))
      .text(kDriver, function.driver)
      .text(kSlot, function.slot)
      .ulong(kNumaNode, function.numaNode)
      .ulong(kIommuGroup, function.iommuGroup);
}

}  // namespace

void collectPciDevices(ModernScan& scan, ModernTable& table) {
  const PciFunctions* found = scan.pciFunctions(table.outcome());
  if (found == nullptr) return;
  table.outcome().merge(found->outcome);
  for (const PciFunction& function : found->functions) addFunction(function, table);
}

}  // namespace quenlor
