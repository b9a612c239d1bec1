// Battery: the machine's own batteries.
#include "groups/modern/Collectors.h"
#include "readers/battery/Batteries.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kName = 2;
constexpr uint32_t kManufacturer = 3;
constexpr uint32_t kModel = 4;
constexpr uint32_t kSerialNumber = 5;
constexpr uint32_t kTechnology = 6;
constexpr uint32_t kDesignCapacity = 7;
constexpr uint32_t kFullCapacity = 8;
constexpr uint32_t kCycles = 9;
constexpr uint32_t kState = 10;
constexpr uint32_t kHealth = 11;

void addBattery(const Battery& battery, ModernTable& table) {
  table.addNumberedRow()
      .textAlways(kName, battery.name)
      .text(kManufacturer, battery.manufacturer)
      .text(kModel, battery.model)
      .text(kSerialNumber, battery.serialNumber)
      .text(kTechnology, battery.technology)
      .ulong(kDesignCapacity, battery.designCapacity)
      .ulong(kFullCapacity, battery.fullCapacity)
      .ulong(kCycles, battery.cycles)
      .text(kState, battery.state)
      .ulong(kHealth, battery.health);
}

}  // namespace

void collectBatteries(ModernScan&, ModernTable& table) {
  const Batteries found = readBatteries();
  table.outcome().merge(found.outcome);
  for (const Battery& battery : found.batteries) addBattery(battery, table);
}

}  // namespace quenlor
