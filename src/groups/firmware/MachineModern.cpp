// Machine: which machine this is, what guards it and what it runs in, from the firmware's table,
// /sys, and what hypervisors and containers leave to be seen.
#include "groups/firmware/FirmwareFacts.h"
#include "groups/modern/Collectors.h"
#include "groups/modern/GuestOfScan.h"
#include "readers/dmi/DmiNames.h"
#include "readers/platform/Platform.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kUuid = 1;
constexpr uint32_t kSerialNumber = 2;
constexpr uint32_t kChassis = 3;
constexpr uint32_t kBootMode = 4;
constexpr uint32_t kSecureBoot = 5;
constexpr uint32_t kTpmVersion = 6;
constexpr uint32_t kTpmMaker = 7;
constexpr uint32_t kIommu = 14;
constexpr uint32_t kBmc = 16;
constexpr uint32_t kBmcFirmware = 17;

std::optional<std::string> serialNumber(const DmiTable& dmi) {
  auto serial = dmi.system ? known(dmi.system->serial) : std::nullopt;
  if (serial || !dmi.enclosure) return serial;
  return known(dmi.enclosure->serial);
}

std::optional<std::string> chassis(const DmiTable& dmi) {
  return dmi.enclosure ? word(dmiChassis(dmi.enclosure->kind.value_or(0))) : std::nullopt;
}

std::optional<std::string> bootMode(const Platform& platform) {
  if (!platform.bootMode) return {};
  return *platform.bootMode == BootMode::kUefi ? "uefi" : "bios";
}

// The firmware knows a TPM that the kernel has no driver for.
std::optional<std::string> tpmVersion(const Platform& platform, const DmiTable* dmi) {
  if (platform.tpmVersion || dmi == nullptr || !dmi->tpm) return platform.tpmVersion;
  if (dmi->tpm->isSupported == false) return {};
  const DmiTpm& tpm = *dmi->tpm;
  if (tpm.specMajor == 2) return "2.0";
  return tpm.specMajor == 1 && tpm.specMinor == 2 ? std::optional<std::string>("1.2")
                                                  : std::nullopt;
}

void addFirmware(ModernRow& row, const DmiTable& dmi) {
  if (dmi.system) row.text(kUuid, dmi.system->uuidText);
  row.text(kSerialNumber, serialNumber(dmi)).text(kChassis, chassis(dmi));
  if (dmi.tpm) row.text(kTpmMaker, dmi.tpm->vendor);
  if (dmi.management && dmi.management->interface) {
    row.text(kBmc, word(dmiBmcInterface(static_cast<uint8_t>(*dmi.management->interface))));
  }
}

}  // namespace

void collectMachine(ModernScan& scan, ModernTable& table) {
  const DmiTable* dmi = scan.dmi(table.outcome());
  if (dmi != nullptr) table.outcome().mergePart(dmi->outcome);
  const Platform platform = readPlatform();
  table.outcome().merge(platform.outcome);
  ModernRow& row = table.addRow();
  row.text(kUuid, platform.hypervisorUuid)
      .text(kBootMode, bootMode(platform))
      .yesNo(kSecureBoot, platform.secureBoot)
      .text(kTpmVersion, tpmVersion(platform, dmi))
      .text(kTpmMaker, platform.tpmMaker)
      .yesNo(kIommu, platform.hasIommu)
      .text(kBmcFirmware, platform.bmcFirmware);
  if (dmi != nullptr) addFirmware(row, *dmi);
  if (const std::optional<Guest> guest = guestOfScan(scan, table.outcome())) {
    addGuest(row, *guest);
    if (guest->isVirtualMachine) row.text(kChassis, "vm");
    if (guest->isContainer) row.text(kChassis, "container");
  }
}

}  // namespace quenlor
