#include "readers/topology/WithoutSysfs.h"

#include <algorithm>
#include <map>

namespace quenlor {
namespace {

uint32_t numberOf(const CpuinfoBlock& block, size_t position) {
  return block.processor.value_or(static_cast<uint32_t>(position));
}

CpuCore& coreWith(std::vector<CpuCore>& cores, std::map<uint32_t, size_t>& places, uint32_t id,
                  uint32_t cpu) {
  const auto [place, isNew] = places.try_emplace(id, cores.size());
  if (isNew) cores.push_back({cpu, 0, CoreKind::kUniform});
  return cores[place->second];
}

// A kernel that names no cores tells their number only; threads are spread evenly over them.
void spreadCores(CpuPackage& package, uint32_t cores) {
  const auto cpus = static_cast<uint32_t>(package.cpus.size());
  const uint32_t count = std::clamp(cores, 1u, cpus);
  package.cores.clear();
  package.cores.reserve(count);
  for (uint32_t core = 0; core < count; ++core) {
    const uint32_t threads = cpus / count + (core < cpus % count ? 1 : 0);
    package.cores.push_back({package.cpus[core], threads, CoreKind::kUniform});
  }
}

struct NumberedPackage {
  CpuPackage package;
  std::map<uint32_t, size_t> places;  // core id to its place in the package's list
  uint32_t announcedCores = 0;
};

void addBlock(NumberedPackage& numbered, const CpuinfoBlock& block, uint32_t cpu) {
  numbered.package.id = block.physicalId;
  numbered.package.cpus.push_back(cpu);
  numbered.announcedCores = std::max(numbered.announcedCores, block.cores.value_or(0));
  if (!block.coreId) return;
  ++coreWith(numbered.package.cores, numbered.places, *block.coreId, cpu).threads;
}

CpuPackage finished(NumberedPackage& numbered) {
  CpuPackage& package = numbered.package;
  const auto cpus = static_cast<uint32_t>(package.cpus.size());
  // Core ids repeat within packages of several nodes; the announced number counts those right.
  const auto counted = static_cast<uint32_t>(package.cores.size());
  if (counted < std::min(numbered.announcedCores, cpus)) {
    spreadCores(package, numbered.announcedCores);
  } else if (counted == 0) {
    spreadCores(package, cpus);
  }
  std::sort(package.cpus.begin(), package.cpus.end());
  return std::move(package);
}

}  // namespace

std::vector<CpuPackage> packagesOfCpuinfo(const std::vector<CpuinfoBlock>& blocks,
                                          const std::optional<PackageLayout>& layout) {
  std::map<uint32_t, NumberedPackage> numbered;
  CpuList unplaced;
  for (size_t position = 0; position < blocks.size(); ++position) {
    const uint32_t cpu = numberOf(blocks[position], position);
    const std::optional<uint32_t> id = blocks[position].physicalId;
    if (id) {
      addBlock(numbered[*id], blocks[position], cpu);
    } else {
      unplaced.push_back(cpu);
    }
  }
  if (!unplaced.empty()) return packagesOfLayout(unplaced, layout);
  std::vector<CpuPackage> packages;
  packages.reserve(numbered.size());
  for (auto& [id, package] : numbered) packages.push_back(finished(package));
  return packages;
}

std::vector<CpuPackage> packagesOfLayout(const CpuList& cpus,
                                         const std::optional<PackageLayout>& layout) {
  std::vector<CpuPackage> packages;
  const size_t size = layout ? std::max(layout->logicalPerPackage, 1u) : cpus.size();
  const uint32_t threads = layout ? std::max(layout->threadsPerCore, 1u) : 1;
  for (size_t begin = 0; begin < cpus.size(); begin += size) {
    CpuPackage package;
    const size_t end = std::min(begin + size, cpus.size());
    package.cpus.assign(cpus.begin() + static_cast<ptrdiff_t>(begin),
                        cpus.begin() + static_cast<ptrdiff_t>(end));
    const auto count = static_cast<uint32_t>(package.cpus.size());
    spreadCores(package, (count + threads - 1) / threads);
    packages.push_back(std::move(package));
  }
  return packages;
}

}  // namespace quenlor
