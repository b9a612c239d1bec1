// PhysicalProcessor of the modern sources: a row per package with that package's own values.
#include <algorithm>
#include <cstdio>

#include "groups/modern/Collectors.h"
#include "groups/processor/PackageFirmware.h"
#include "identity/FirmwareText.h"
#include "readers/dmi/DmiNames.h"
#include "readers/topology/InstructionSet.h"
#include "readers/topology/RatedSpeed.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kId = 1;
constexpr uint32_t kCoresPerPackage = 2;
constexpr uint32_t kThreadsPerCore = 3;
constexpr uint32_t kManufacturer = 4;
constexpr uint32_t kFamily = 5;
constexpr uint32_t kType = 6;
constexpr uint32_t kClock = 7;
constexpr uint32_t kL2CacheSize = 8;
constexpr uint32_t kL3CacheSize = 9;
constexpr uint32_t kBrandName = 10;
constexpr uint32_t kSignature = 11;
constexpr uint32_t kIs64BitSupported = 12;
constexpr uint32_t kCores = 101;
constexpr uint32_t kThreads = 102;
constexpr uint32_t kPerformanceCores = 103;
constexpr uint32_t kEfficiencyCores = 104;
constexpr uint32_t kBaseMhz = 105;
constexpr uint32_t kMaxMhz = 106;
constexpr uint32_t kMicrocode = 107;
constexpr uint32_t kL1DataCache = 108;
constexpr uint32_t kL1InstructionCache = 109;
constexpr uint32_t kSocket = 110;
constexpr uint32_t kNumaNodes = 111;
constexpr uint32_t kSerialNumber = 112;
constexpr uint32_t kOnlineThreads = 113;
constexpr uint32_t kInstructionSet = 114;
constexpr uint32_t kSocketType = 115;
constexpr uint32_t kVirtualizationExtension = 116;

constexpr const char* kUnknown = "Unknown";

std::optional<std::string> knownText(const DmiText& text) {
  return text ? std::optional<std::string>(knownFirmwareText(*text)) : std::nullopt;
}

// Cores that are switched off as a whole have no place in the kernel; the firmware counts them.
uint32_t coresOf(const CpuInventory& cpus, const CpuPackage& package, const DmiProcessor* socket) {
  const auto online = static_cast<uint32_t>(package.cores.size());
  if (cpus.offline == 0 || socket == nullptr) return online;
  return std::max<uint32_t>(online, socket->enabledCores.value_or(0));
}

std::optional<uint32_t> threadsOf(const CpuInventory& cpus, const CpuPackage& package,
                                  const PackageFirmware& firmware, const DmiProcessor* socket) {
  const bool mayBeOfAnother = cpus.offline != 0 && firmware.hasHiddenPackages();
  const auto threads = cpus.threadsOf(package);
  if (threads && !mayBeOfAnother) return threads;
  if (socket == nullptr) return std::nullopt;
  return socket->enabledThreads ? socket->enabledThreads : socket->threads;
}

std::optional<uint32_t> maxMhz(const CpuPackage& package) {
  if (package.maxKhz && *package.maxKhz != 0) return (*package.maxKhz + 500) / 1000;
  const auto found = package.leaves.find({0x16, 0});
  const uint32_t mhz = found == package.leaves.end() ? 0 : found->second.ebx & 0xFFFF;
  return mhz == 0 ? std::nullopt : std::optional<uint32_t>(mhz);
}

std::string signatureText(const CpuPackage& package) {
  if (signatureOf(package.leaves) == 0) return "";
  char hex[9];
  std::snprintf(hex, sizeof hex, "%08X", signatureOf(package.leaves));
  return hex;
}

// Bit 29 of leaf 80000001 EDX, else the kernel's flag.
const char* is64Bit(const CpuPackage& package) {
  const auto found = package.leaves.find({0x80000001, 0});
  if (found != package.leaves.end()) return (found->second.edx >> 29 & 1) != 0 ? "Y" : "N";
  if (!package.cpuinfo || package.cpuinfo->flags.empty()) return "";
  return (" " + package.cpuinfo->flags + " ").find(" lm ") != std::string::npos ? "Y" : "N";
}

std::string familyText(const CpuPackage& package) {
  const std::string brand = brandText(package);
  if (brand.empty() && package.leaves.empty()) return kUnknown;
  return familyNameOf(brand, signatureOf(package.leaves));
}

std::optional<std::string> serialNumber(const CpuPackage& package, const DmiProcessor* socket) {
  auto text = socket == nullptr ? std::nullopt : knownText(socket->serial);
  if (text && !text->empty()) return text;
  const bool isZero =
      package.serialNumber && package.serialNumber->find_first_not_of("0x") == std::string::npos;
  return isZero ? std::nullopt : package.serialNumber;
}

void addIdentity(ModernRow& row, const CpuPackage& package) {
  const std::string maker = makerOf(vendorText(package));
  row.textAlways(kManufacturer, maker.empty() ? kUnknown : maker)
      .textAlways(kFamily, familyText(package))
      .textAlways(kType, package.leaves.empty() ? "" : processorTypeOf(signatureOf(package.leaves)))
      .textAlways(kBrandName, brandText(package))
      .textAlways(kSignature, signatureText(package))
      .textAlways(kIs64BitSupported, is64Bit(package))
      .text(kMicrocode, package.microcode);
}

void addCounts(ModernRow& row, const CpuInventory& cpus, size_t number,
               const PackageFirmware& firmware) {
  const CpuPackage& package = cpus.packages[number];
  const DmiProcessor* socket = firmware.socketOf(number);
  const uint32_t cores = coresOf(cpus, package, socket);
  row.ulong(kCoresPerPackage, cores)
      .ulong(kThreadsPerCore, mostThreadsOfACore(package))
      .ulong(kCores, cores)
      .ulong(kThreads, threadsOf(cpus, package, firmware, socket))
      .ulong(kOnlineThreads, package.cpus.size())
      .ulong(kPerformanceCores, coresOfKind(package, CoreKind::kPerformance))
      .ulong(kEfficiencyCores, coresOfKind(package, CoreKind::kEfficiency))
      .ulong(kNumaNodes, package.nodes);
}

void addCaches(ModernRow& row, const CpuPackage& package) {
  row.ulongAlways(kL2CacheSize, largestCache(package, 2), 0)
      .ulongAlways(kL3CacheSize, largestCache(package, 3), 0)
      .ulong(kL1DataCache, sumOfCaches(package, 1, CacheType::kData))
      .ulong(kL1InstructionCache, sumOfCaches(package, 1, CacheType::kInstruction));
}

void addSocket(ModernRow& row, const CpuPackage& package, const DmiProcessor* socket,
               const DmiProcessor* kind) {
  row.text(kSerialNumber, serialNumber(package, socket));
  if (socket != nullptr) row.text(kSocket, knownText(socket->socket));
  if (kind == nullptr) return;
  const std::string_view type = dmiProcessorUpgrade(kind->upgrade.value_or(0));
  row.text(kSocketType, type.empty() ? knownText(kind->socketType) : std::string(type));
}

void addFlags(ModernRow& row, const CpuPackage& package) {
  if (!package.cpuinfo) return;
  row.text(kInstructionSet, instructionSetOf(package.cpuinfo->flags))
      .text(kVirtualizationExtension, virtualizationExtensionOf(package.cpuinfo->flags));
}

void addPackage(ModernTable& table, const CpuInventory& cpus, size_t number,
                const PackageFirmware& firmware) {
  const CpuPackage& package = cpus.packages[number];
  const DmiProcessor* socket = firmware.socketOf(number);
  const SpeedSources speeds = speedSourcesOf(package, firmware.speedOf(number));
  ModernRow& row = table.addRow();
  row.textAlways(kId, std::to_string(number + 1))
      .ulong(kClock, ratedMhz(speeds))
      .ulong(kBaseMhz, baseMhz(speeds))
      .ulong(kMaxMhz, maxMhz(package));
  addIdentity(row, package);
  addCounts(row, cpus, number, firmware);
  addCaches(row, package);
  addSocket(row, package, socket, firmware.kindOf(number));
  addFlags(row, package);
}

}  // namespace

void collectPhysicalProcessor(ModernScan& scan, ModernTable& table) {
  const CpuInventory* cpus = scan.cpus(table.outcome());
  if (cpus == nullptr) return;
  table.outcome().merge(cpus->outcome);
  const PackageFirmware firmware(scan.dmi(table.outcome()), *cpus, table.outcome());
  for (size_t number = 0; number < cpus->packages.size(); ++number) {
    addPackage(table, *cpus, number, firmware);
  }
}

}  // namespace quenlor
