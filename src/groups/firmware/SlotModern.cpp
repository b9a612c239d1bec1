// Slot: the machine's expansion slots as the firmware lists them.
#include <cstdio>

#include "groups/firmware/FirmwareFacts.h"
#include "groups/modern/Collectors.h"
#include "readers/dmi/DmiNames.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kDesignation = 2;
constexpr uint32_t kType = 3;
constexpr uint32_t kWidth = 4;
constexpr uint32_t kUsage = 5;
constexpr uint32_t kLength = 6;
constexpr uint32_t kAddress = 7;

// As the kernel writes PCI addresses: 0000:3b:00.0.
std::optional<std::string> addressText(const std::optional<DmiPciAddress>& address) {
  if (!address) return {};
  char text[32];
  std::snprintf(text, sizeof text, "%04x:%02x:%02x.%x", address->segment, address->bus,
                address->device, address->function);
  return text;
}

}  // namespace

void collectSlot(ModernScan& scan, ModernTable& table) {
  const DmiTable* dmi = firmwareStructures(scan, table);
  if (dmi == nullptr) return;
  for (const DmiSlot& slot : dmi->slots) {
    table.addNumberedRow()
        .textAlways(kDesignation, known(slot.designation))
        .text(kType, word(dmiSlotType(slot.kind.value_or(0))))
        .text(kWidth, word(dmiSlotWidth(slot.width.value_or(0))))
        .text(kUsage, word(dmiSlotUsage(slot.usage.value_or(0))))
        .text(kLength, word(dmiSlotLength(slot.length.value_or(0))))
        .text(kAddress, addressText(slot.address));
  }
}

}  // namespace quenlor
