// Memory Modules: a row per slot, from the firmware's memory devices, in old tables its modules.
#include "groups/firmware/FirmwareFacts.h"
#include "groups/firmware/MemoryWords.h"
#include "groups/modern/Collectors.h"
#include "readers/dmi/DmiFacts.h"
#include "readers/dmi/DmiNames.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kModuleSizeMB = 2;
constexpr uint32_t kMaxModuleSizeMB = 3;
constexpr uint32_t kSocketName = 4;
constexpr uint32_t kPackaging = 5;
constexpr uint32_t kMemoryType = 6;
constexpr uint32_t kManufacturer = 101;
constexpr uint32_t kSerialNumber = 102;
constexpr uint32_t kPartNumber = 103;
constexpr uint32_t kAssetTag = 104;
constexpr uint32_t kGeneration = 105;
constexpr uint32_t kTechnology = 106;
constexpr uint32_t kSpeed = 107;
constexpr uint32_t kConfiguredSpeed = 108;
constexpr uint32_t kDataWidth = 109;
constexpr uint32_t kTotalWidth = 110;
constexpr uint32_t kRank = 111;
constexpr uint32_t kConfiguredVoltage = 112;
constexpr uint32_t kLocator = 113;
constexpr uint32_t kBankLocator = 114;
constexpr uint32_t kArray = 115;

constexpr uint64_t kKiBPerMiB = 1024;

std::string socketOf(const DmiMemoryDevice& device) {
  const std::string locator = known(device.locator).value_or("");
  const std::string bank = known(device.bankLocator).value_or("");
  return locator + (locator.empty() || bank.empty() ? "" : "/") + bank;
}

std::string typeOf(const DmiMemoryDevice& device) {
  return withoutTrailingBlank(deviceDetailWords(device.details.value_or(0)) +
                              std::string(dmiMemoryType(device.kind.value_or(0))));
}

void addModule(ModernRow& row, const DmiMemoryDevice& device) {
  row.text(kManufacturer, known(device.manufacturer))
      .text(kSerialNumber, known(device.serial))
      .text(kPartNumber, known(device.partNumber))
      .text(kAssetTag, known(device.assetTag))
      .text(kGeneration, word(dmiMemoryType(device.kind.value_or(0))))
      .text(kTechnology,
            word(dmiMemoryTechnology(device.technology.value_or(0), device.kind.value_or(0))))
      .ulong(kSpeed, device.speedMts)
      .ulong(kConfiguredSpeed, device.configuredMts)
      .ulong(kDataWidth, device.dataBits)
      .ulong(kTotalWidth, device.totalBits)
      .ulong(kRank, device.rank)
      .ulong(kConfiguredVoltage, device.configuredMillivolts);
}

// Firmware fills some fields of empty slots with what a module there would have.
void addDevice(ModernRow& row, const DmiMemoryDevice& device) {
  row.ulongAlways(kModuleSizeMB, device.sizeKiB.value_or(0) / kKiBPerMiB, 0)
      .textAlways(kSocketName, socketOf(device))
      .textAlways(kPackaging, word(dmiMemoryFormFactor(device.formFactor.value_or(0))))
      .textAlways(kMemoryType, typeOf(device))
      .text(kLocator, known(device.locator))
      .text(kBankLocator, known(device.bankLocator));
  if (device.array) row.ulong(kArray, *device.array + 1);
  if (!device.isEmpty) addModule(row, device);
}

void addOldModule(ModernRow& row, const DmiMemoryModule& module) {
  const unsigned kinds = module.kinds.value_or(0);
  row.ulongAlways(kModuleSizeMB, module.installedMiB, 0)
      .textAlways(kSocketName, known(module.socket))
      .textAlways(kPackaging, modulePackaging(kinds))
      .textAlways(kMemoryType, withoutTrailingBlank(moduleTypeWords(kinds)));
}

}  // namespace

void collectMemoryModules(ModernScan& scan, ModernTable& table) {
  const DmiTable* dmi = firmwareStructures(scan, table);
  if (dmi == nullptr) return;
  const uint64_t limit = dmiMemoryFacts(*dmi).maxModuleMiB;
  for (const DmiMemoryDevice& device : dmi->memoryDevices) {
    addDevice(table.addNumberedRow().ulong(kMaxModuleSizeMB, limit), device);
  }
  if (!dmi->memoryDevices.empty()) return;
  for (const DmiMemoryModule& module : dmi->memoryModules) {
    addOldModule(table.addNumberedRow().ulong(kMaxModuleSizeMB, limit), module);
  }
}

}  // namespace quenlor
