// Processor of the modern sources: a row per package. Its identity is a digest of what the
// processor is, never of a speed of the moment.
#include <cstdio>

#include "factory/ProcessorDescriptions.h"
#include "groups/modern/Collectors.h"
#include "groups/processor/BrandName.h"
#include "groups/processor/PackageFirmware.h"
#include "groups/processor/ProcessorFamily.h"
#include "groups/processor/ProcessorFlagAttributes.h"
#include "identity/Identity.h"
#include "readers/processor/ProcessorFlags.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kId = 2;
constexpr uint32_t kFamily = 3;
constexpr uint32_t kMaxClockSpeed = 4;
constexpr uint32_t kCurrentClockSpeed = 5;
constexpr uint32_t kExternalClockSpeed = 6;
constexpr uint32_t kManufacturer = 7;
constexpr uint32_t kInterface = 9;
constexpr uint32_t kChipFamily = 10;
constexpr uint32_t kChipModel = 11;
constexpr uint32_t kChipStepping = 12;
constexpr uint32_t kChipFeatures = 13;
constexpr uint32_t k3DNow = 35;
constexpr uint32_t kCpuEnabled = 42;
constexpr uint32_t kPhysicalPackageCount = 43;
constexpr uint32_t kCorePerPackageCount = 44;
constexpr uint32_t kLogicalProcPerCoreCount = 45;

constexpr uint32_t kReportedFeatures = 0x7FFFFFFF;
constexpr uint16_t kFastestExternalClock = 2000;  // MHz; above it firmware writes rubbish
constexpr uint8_t kLastInterface = 17;            // of the attribute's list

// What one row tells.
struct ProcessorFacts {
  std::string vendor, brand, flags;
  uint32_t rated = 0;          // MHz
  uint32_t current = 0;        // MHz by the firmware
  uint32_t externalClock = 0;  // MHz by the firmware
  uint32_t upgrade = 0;        // the firmware's code of the socket
  uint32_t smbiosFamily = 0;
  uint32_t family = 0, model = 0, stepping = 0;
  uint32_t features = 0;
  uint32_t siblings = 0;
};

void takeFirmware(ProcessorFacts& facts, const DmiProcessor& socket) {
  facts.current = socket.currentMhz.value_or(0);
  facts.smbiosFamily = socket.family.value_or(0);
  const uint16_t clock = socket.externalClockMhz.value_or(0);
  facts.externalClock = clock > kFastestExternalClock ? 0 : clock;
  const uint8_t upgrade = socket.upgrade.value_or(0);
  facts.upgrade = upgrade > kLastInterface ? 0 : upgrade;
  facts.features = socket.idEdx.value_or(0);
}

// Intel's and AMD's rule: the extension counts from family 15 on, and in family 6 of the model.
void takeSignature(ProcessorFacts& facts, uint32_t signature) {
  facts.family = familyNumberOf(signature);
  const uint32_t base = signature >> 8 & 0xF;
  const uint32_t extension = base == 6 || base == 15 ? signature >> 12 & 0xF0 : 0;
  facts.model = extension | (signature >> 4 & 0xF);
  facts.stepping = signature & 0xF;
}

void takeCpuinfo(ProcessorFacts& facts, const CpuinfoBlock& block) {
  facts.family = block.family.value_or(facts.family);
  facts.model = block.model.value_or(facts.model);
  facts.stepping = block.stepping.value_or(facts.stepping);
  facts.siblings = block.siblings.value_or(facts.siblings);
  facts.flags = block.flags;
}

void takeFeatures(ProcessorFacts& facts, const CpuidLeaves& leaves) {
  const auto basic = leaves.find({1, 0});
  if (basic != leaves.end()) facts.features = basic->second.edx;
  if (!facts.flags.empty()) facts.features = makeCPUflagsFromString(facts.flags.c_str());
}

ProcessorFacts factsOf(const CpuInventory& cpus, size_t number, const PackageFirmware& firmware) {
  const CpuPackage& package = cpus.packages[number];
  ProcessorFacts facts;
  facts.vendor = vendorText(package);
  facts.brand = brandText(package);
  facts.rated = ratedSpeed(cpus, number, firmware);
  facts.siblings = static_cast<uint32_t>(package.cpus.size());
  if (const DmiProcessor* socket = firmware.kindOf(number)) takeFirmware(facts, *socket);
  takeSignature(facts, signatureOf(package.leaves));
  if (package.cpuinfo) takeCpuinfo(facts, *package.cpuinfo);
  takeFeatures(facts, package.leaves);
  return facts;
}

// Everything run together, as the classic source does, with the rated speed for both of its speeds.
std::string identityOf(const ProcessorFacts& facts) {
  char text[512];
  std::snprintf(text, sizeof text, "%s%u%u%u%u%u%x%u%u%u", facts.vendor.c_str(), facts.rated,
                facts.rated, facts.family, facts.model, facts.stepping, facts.features,
                facts.externalClock, facts.upgrade, facts.smbiosFamily);
  return md5Text(text);
}

std::string familyText(const ProcessorFacts& facts, ProcessorDescriptions& known) {
  const int model = static_cast<int>(facts.model);
  const String name = familyNameIn(known.ofModel(model), facts.vendor.c_str(),
                                   static_cast<int>(facts.family), model, facts.brand.c_str());
  if (name != "Unknown") return name.c_str();
  const std::string brand = plainBrandName(facts.brand);
  return brand.empty() ? "Unknown" : brand;
}

void addChip(ModernRow& row, const ProcessorFacts& facts, ProcessorDescriptions& known) {
  row.textAlways(kId, identityOf(facts))
      .textAlways(kFamily, familyText(facts, known))
      .ulong(kMaxClockSpeed, facts.rated)
      .ulong(kCurrentClockSpeed, facts.current != 0 ? facts.current : facts.rated)
      .textAlways(kManufacturer, facts.vendor)
      .ulong(kChipFamily, facts.family)
      .ulong(kChipModel, facts.model)
      .ulong(kChipStepping, facts.stepping)
      .ulong(kChipFeatures, facts.features & kReportedFeatures);
  if (facts.externalClock != 0) row.ulong(kExternalClockSpeed, facts.externalClock);
  // A number although the catalogue lists a text: writers print the enumeration's text for it.
  if (facts.upgrade != 0) row.ulong(kInterface, facts.upgrade);
}

void addFlags(ModernRow& row, const ProcessorFacts& facts) {
  for (const FlagAttribute& flag : FLAG_ATTRIBUTES) {
    row.yesNo(flag.id, (facts.features & flag.mask) != 0);
  }
  if (!facts.flags.empty()) {
    row.yesNo(k3DNow, facts.flags.find("3dnow") != std::string::npos);
  }
  if ((facts.features & kHyperThreadingFlag) != 0 && facts.siblings > 1) row.text(kCpuEnabled, "H");
}

void addPackage(ModernTable& table, const CpuInventory& cpus, size_t number,
                const PackageFirmware& firmware, ProcessorDescriptions& known) {
  const CpuPackage& package = cpus.packages[number];
  const ProcessorFacts facts = factsOf(cpus, number, firmware);
  ModernRow& row = table.addNumberedRow();
  addChip(row, facts, known);
  addFlags(row, facts);
  row.ulong(kPhysicalPackageCount, cpus.packages.size())
      .ulong(kCorePerPackageCount, package.cores.size())
      .ulong(kLogicalProcPerCoreCount, mostThreadsOfACore(package));
}

}  // namespace

void collectProcessor(ModernScan& scan, ModernTable& table) {
  const CpuInventory* cpus = scan.cpus(table.outcome());
  if (cpus == nullptr) return;
  table.outcome().merge(cpus->outcome);
  const PackageFirmware firmware(scan.dmi(table.outcome()), *cpus, table.outcome());
  ProcessorDescriptions known(GroupFactory::getInstance().hwConfigFile().c_str());
  for (size_t number = 0; number < cpus->packages.size(); ++number) {
    addPackage(table, *cpus, number, firmware, known);
  }
  table.makeDigestsUnique(kId);
}

}  // namespace quenlor
