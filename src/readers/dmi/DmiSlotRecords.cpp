// Expansion slots (type 9).
#include "readers/dmi/DmiDecode.h"

namespace quenlor {
namespace {

// All ones in all three fields: the slot is not on a PCI bus.
std::optional<DmiPciAddress> addressOf(const DmiStructure& structure) {
  const auto segment = structure.word(0x0D);
  const auto bus = structure.byte(0x0F);
  const auto deviceAndFunction = structure.byte(0x10);
  if (!segment || !bus || !deviceAndFunction) return {};
  if (*segment == 0xFFFF && *bus == 0xFF && *deviceAndFunction == 0xFF) return {};
  return DmiPciAddress{.segment = *segment,
                       .bus = *bus,
                       .device = static_cast<uint8_t>(*deviceAndFunction >> 3),
                       .function = static_cast<uint8_t>(*deviceAndFunction & 0x7)};
}

}  // namespace

DmiSlot dmiSlotOf(const DmiStructure& structure) {
  return {.designation = structure.text(0x04),
          .kind = structure.byte(0x05),
          .width = structure.byte(0x06),
          .usage = structure.byte(0x07),
          .length = structure.byte(0x08),
          .id = structure.word(0x09),
          .address = addressOf(structure)};
}

}  // namespace quenlor
