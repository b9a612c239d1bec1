// Power Supply: the machine's power supplies as the firmware lists them.
#include "groups/firmware/FirmwareFacts.h"
#include "groups/modern/Collectors.h"
#include "readers/dmi/DmiNames.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kLocation = 2;
constexpr uint32_t kName = 3;
constexpr uint32_t kManufacturer = 4;
constexpr uint32_t kPartNumber = 5;
constexpr uint32_t kSerialNumber = 6;
constexpr uint32_t kMaxWatts = 7;
constexpr uint32_t kStatus = 8;

// A bay without supply and a supply without cord have no status of their own.
std::optional<std::string> statusOf(const DmiPowerSupply& supply) {
  if (supply.isPresent == false) return "absent";
  if (supply.isUnplugged == true) return "unplugged";
  return word(dmiPowerStatus(supply.status.value_or(0)));
}

}  // namespace

void collectPowerSupply(ModernScan& scan, ModernTable& table) {
  const DmiTable* dmi = firmwareStructures(scan, table);
  if (dmi == nullptr) return;
  for (const DmiPowerSupply& supply : dmi->powerSupplies) {
    table.addNumberedRow()
        .textAlways(kLocation, known(supply.location))
        .text(kName, known(supply.name))
        .text(kManufacturer, known(supply.manufacturer))
        .text(kPartNumber, known(supply.partNumber))
        .text(kSerialNumber, known(supply.serial))
        .ulong(kMaxWatts, supply.maxWatts)
        .text(kStatus, statusOf(supply));
  }
}

}  // namespace quenlor
