// ComponentID: who made the machine, from the firmware's system structure.
#include "groups/firmware/FirmwareFacts.h"
#include "groups/modern/Collectors.h"
#include "identity/Identity.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kManufacturer = 1;
constexpr uint32_t kProduct = 2;
constexpr uint32_t kVersion = 3;
constexpr uint32_t kSerialNumber = 4;
constexpr uint32_t kType = 7;

constexpr char kDefaultName[] = "Linux";  // of a machine that names neither maker nor product
constexpr char kMakerWithMachineTypes[] = "ZUM";

// One maker writes the machine's type into the product; elsewhere the version serves as one.
std::optional<std::string> machineType(const DmiSystem& system) {
  if (known(system.manufacturer) != kMakerWithMachineTypes) return known(system.version);
  char type[5] = "";
  getTypeFromProd(known(system.product).value_or("").c_str(), type);
  return std::string(type);
}

}  // namespace

void collectComponentId(ModernScan& scan, ModernTable& table) {
  const DmiTable* dmi = firmwareTexts(scan, table);
  const DmiSystem system = dmi == nullptr ? DmiSystem{} : dmi->system.value_or(DmiSystem{});
  const std::string manufacturer = known(system.manufacturer).value_or(kDefaultName);
  table.addRow()
      .textAlways(kManufacturer, manufacturer)
      .textAlways(kProduct, known(system.product).value_or(manufacturer))
      .textAlways(kVersion, known(system.version))
      .textAlways(kSerialNumber, known(system.serial))
      .textAlways(kType, machineType(system));
}

}  // namespace quenlor
