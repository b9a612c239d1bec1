#include "readers/topology/CpuInventory.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "host/Handles.h"
#include "host/Host.h"
#include "host/WholeFile.h"
#include "readers/topology/PackageCpuid.h"
#include "readers/topology/SysfsCpus.h"
#include "readers/topology/WithoutSysfs.h"

namespace quenlor {
namespace {

constexpr uint32_t kCoreKindLeaf = 0x1A;

// Reads /proc/cpuinfo until `isEnough`: producing it for a thousand processors takes the kernel
// long, and one block per package is all that is wanted.
template <class Predicate>
CpuinfoParser readCpuinfo(Predicate isEnough) {
  CpuinfoParser parser;
  const Descriptor file(host().open("/proc/cpuinfo", O_RDONLY | O_NONBLOCK, 0));
  std::array<char, 16384> piece{};
  for (size_t size = 0; file && size < kTextFileLimit && !isEnough(parser);) {
    const ssize_t count = host().read(file.get(), piece.data(), piece.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    parser.take({piece.data(), static_cast<size_t>(count)});
    size += static_cast<size_t>(count);
  }
  parser.finish();
  return parser;
}

// A processor of the package on which the calling thread may run, a fast one if there is one.
std::optional<uint32_t> askableCpu(const CpuPackage& package, const CpuList& allowed) {
  std::optional<uint32_t> slow;
  const auto isAllowed = [&](uint32_t cpu) {
    return std::binary_search(allowed.begin(), allowed.end(), cpu);
  };
  for (const CpuCore& core : package.cores) {
    if (!isAllowed(core.firstCpu)) continue;
    if (core.kind != CoreKind::kEfficiency) return core.firstCpu;
    slow = slow.value_or(core.firstCpu);
  }
  if (slow) return slow;
  const auto any = std::find_if(package.cpus.begin(), package.cpus.end(), isAllowed);
  return any == package.cpus.end() ? std::nullopt : std::optional<uint32_t>(*any);
}

// Moving to another processor takes a while, and is not needed where all of them are alike.
void readPackageLeaves(std::vector<CpuPackage>& packages, const CpuidLeaves& own,
                       Outcome& outcome) {
  const bool isOneKind = packages.size() == 1 && !isHybrid(own);
  const CpuList allowed = isOneKind ? CpuList{} : host().allowedCpus();
  bool isRefused = false;
  for (CpuPackage& package : packages) {
    const std::optional<uint32_t> cpu = askableCpu(package, allowed);
    if (isOneKind) {
      package.leaves = own;
    } else if (!cpu || !host().runOnCpu(*cpu, [&] { package.leaves = readLeaves(); })) {
      isRefused = true;
    }
  }
  if (isRefused && !own.empty()) {
    outcome.note(OutcomeStatus::kPartial, "CPUID of some packages: may not run on them");
  }
}

// Where the kernel does not name the kinds: every core has to be asked itself.
void askCoreKinds(CpuPackage& package, Outcome& outcome) {
  const CpuList allowed = host().allowedCpus();
  for (CpuCore& core : package.cores) {
    std::optional<bool> isEfficient;
    if (std::binary_search(allowed.begin(), allowed.end(), core.firstCpu)) {
      host().runOnCpu(core.firstCpu, [&] {
        CpuidRegisters registers;
        if (host().cpuid(kCoreKindLeaf, 0, &registers)) isEfficient = isEfficiencyCore(registers);
      });
    }
    if (!isEfficient) {
      for (CpuCore& other : package.cores) other.kind = CoreKind::kUniform;
      outcome.note(OutcomeStatus::kPartial, "kinds of cores: may not run on all");
      return;
    }
    core.kind = *isEfficient ? CoreKind::kEfficiency : CoreKind::kPerformance;
  }
}

bool hasKinds(const CpuPackage& package) {
  return !package.cores.empty() && package.cores.front().kind != CoreKind::kUniform;
}

std::optional<std::string> microcodeOf(const CpuPackage& package) {
  if (package.cpuinfo && !package.cpuinfo->microcode.empty()) return package.cpuinfo->microcode;
  return cpuAttribute(package.cpus.front(), "microcode/version");
}

CpuInventory inventoryOfSysfs(SysfsCpus cpus, const CpuidLeaves& own) {
  CpuInventory inventory;
  inventory.packages = std::move(cpus.packages);
  inventory.offline = static_cast<uint32_t>(cpus.offline.size());
  const size_t packages = inventory.packages.size();
  const CpuinfoParser cpuinfo = readCpuinfo(
      [packages](const CpuinfoParser& parser) { return parser.knownPackages() >= packages; });
  for (CpuPackage& package : inventory.packages) {
    if (isHybrid(own) && !hasKinds(package)) askCoreKinds(package, inventory.outcome);
    package.caches = readSysfsCaches(package);
    readSysfsSpeeds(package);
    const CpuinfoBlock* block = blockOfPackage(cpuinfo.blocks(), package.id, package.cpus);
    if (block != nullptr) package.cpuinfo = *block;
  }
  return inventory;
}

CpuInventory inventoryWithoutSysfs(const CpuidLeaves& own) {
  CpuInventory inventory;
  const CpuinfoParser cpuinfo = readCpuinfo([](const CpuinfoParser&) { return false; });
  const std::optional<PackageLayout> layout = own.empty() ? std::nullopt : packageLayoutOf(own);
  inventory.packages = packagesOfCpuinfo(cpuinfo.blocks(), layout);
  if (inventory.packages.empty() && !own.empty()) {
    CpuList cpus(static_cast<size_t>(std::max(host().getNprocs(), 1)));
    for (uint32_t cpu = 0; cpu < cpus.size(); ++cpu) cpus[cpu] = cpu;
    inventory.packages = packagesOfLayout(cpus, layout);
  }
  for (CpuPackage& package : inventory.packages) {
    const CpuinfoBlock* block = blockOfPackage(cpuinfo.blocks(), package.id, package.cpus);
    if (block != nullptr) package.cpuinfo = *block;
  }
  inventory.outcome.note(OutcomeStatus::kPartial, "caches and dies: no topology files");
  return inventory;
}

}  // namespace

CpuInventory readCpus() {
  const CpuidLeaves own = readLeaves();
  std::optional<SysfsCpus> sysfs = readSysfsCpus();
  CpuInventory inventory =
      sysfs ? inventoryOfSysfs(std::move(*sysfs), own) : inventoryWithoutSysfs(own);
  readPackageLeaves(inventory.packages, own, inventory.outcome);
  for (CpuPackage& package : inventory.packages) {
    package.microcode = microcodeOf(package);
    inventory.online += static_cast<uint32_t>(package.cpus.size());
  }
  if (inventory.packages.empty()) {
    inventory.outcome = {};
    inventory.outcome.note(OutcomeStatus::kNoSource, "processors: nothing tells of them");
  }
  return inventory;
}

std::optional<uint32_t> CpuInventory::threadsOf(const CpuPackage& package) const {
  const auto cpus = static_cast<uint32_t>(package.cpus.size());
  if (offline == 0) return cpus;
  if (packages.size() > 1) return std::nullopt;
  return cpus + offline;
}

uint32_t mostThreadsOfACore(const CpuPackage& package) {
  uint32_t most = 0;
  for (const CpuCore& core : package.cores) most = std::max(most, core.threads);
  return most;
}

std::optional<uint32_t> coresOfKind(const CpuPackage& package, CoreKind kind) {
  if (!hasKinds(package)) return std::nullopt;
  return static_cast<uint32_t>(
      std::count_if(package.cores.begin(), package.cores.end(),
                    [kind](const CpuCore& core) { return core.kind == kind; }));
}

}  // namespace quenlor
