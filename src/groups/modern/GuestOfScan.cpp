#include "groups/modern/GuestOfScan.h"

namespace quenlor {
namespace {

// Attribute ids of Machine.
constexpr uint32_t kVirtualization = 8;
constexpr uint32_t kHypervisor = 9;
constexpr uint32_t kContainer = 10;
constexpr uint32_t kEvidence = 11;
constexpr uint32_t kCloud = 12;
constexpr uint32_t kInstanceId = 13;
constexpr uint32_t kConfidential = 15;

std::string textOf(const DmiText& text) { return text.value_or(""); }

void takeSystem(const DmiSystem& system, MachineTexts& texts) {
  texts.sysVendor = textOf(system.manufacturer);
  texts.productName = textOf(system.product);
  texts.productVersion = textOf(system.version);
  texts.productSerial = textOf(system.serial);
  texts.productUuid = textOf(system.uuidText);
}

// Parts of one text are joined by commas; those in a part, and the sign that marks them, are
// marked.
std::string joined(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) {
    if (!text.empty()) text += ',';
    for (const char character : part) {
      if (character == ',' || character == '\\') text += '\\';
      text += character;
    }
  }
  return text;
}

std::string vendorOfFirst(const CpuInventory* cpus) {
  if (cpus == nullptr || cpus->packages.empty() || !cpus->packages[0].cpuinfo) return "";
  return cpus->packages[0].cpuinfo->vendor;
}

}  // namespace

MachineTexts machineTexts(const DmiTable& dmi) {
  MachineTexts texts;
  if (dmi.system) takeSystem(*dmi.system, texts);
  if (dmi.enclosure) {
    texts.chassisVendor = textOf(dmi.enclosure->manufacturer);
    texts.chassisAssetTag = textOf(dmi.enclosure->assetTag);
  }
  if (const DmiBoard* board = dmi.mainBoard()) texts.boardAssetTag = textOf(board->assetTag);
  if (dmi.bios) {
    texts.biosVendor = textOf(dmi.bios->vendor);
    texts.biosVersion = textOf(dmi.bios->version);
    texts.isVirtualByBios = dmi.bios->isVirtualMachine.value_or(false);
  }
  return texts;
}

std::optional<Guest> guestOfScan(ModernScan& scan, Outcome& outcome) {
  Outcome ignored;  // without the firmware or the processors the verdict still holds
  const GuestFacts* facts = scan.guestFacts(outcome);
  if (facts == nullptr) return std::nullopt;
  outcome.merge(facts->outcome);
  const DmiTable* dmi = scan.dmi(ignored);
  const CpuInventory* cpus = scan.cpus(ignored);
  return judgeGuest(*facts, dmi == nullptr ? MachineTexts{} : machineTexts(*dmi),
                    vendorOfFirst(cpus));
}

void addGuest(ModernRow& row, const Guest& guest) {
  row.text(kVirtualization, guest.virtualization())
      .text(kHypervisor, guest.hypervisor)
      .text(kContainer, guest.container)
      .text(kEvidence, joined(guest.evidence))
      .text(kCloud, guest.cloud)
      .text(kInstanceId, guest.instanceId)
      .text(kConfidential, guest.confidential);
}

}  // namespace quenlor
