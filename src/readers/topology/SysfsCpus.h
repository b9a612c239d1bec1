// The kernel's own account of processors: /sys/devices/system/cpu and /sys/devices/system/node.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "readers/topology/CpuInventory.h"

namespace quenlor {

// The processors of a list, split into those that share something.
struct CpuPartition {
  std::vector<CpuList> groups;  // in the order of their first processors
  CpuList unknown;              // those that nothing is told about
};

// Asks for the list of the first processor that is in no group yet, until each is in one: a file is
// read per group, not per processor. What a list names beyond `cpus` is left out.
CpuPartition partitionCpus(const CpuList& cpus,
                           const std::function<std::optional<CpuList>(uint32_t cpu)>& listOf);

// Kinds of cores where the kernel names them; empty maps nothing.
struct CoreKinds {
  CpuList performance, efficiency;
  CoreKind of(uint32_t cpu) const;
};
CoreKinds readCoreKinds();

// Packages with dies, clusters, cores and nodes. Nothing where the kernel has no topology files:
// then the other sources have to tell.
struct SysfsCpus {
  std::vector<CpuPackage> packages;
  CpuList present;
  CpuList offline;
};
std::optional<SysfsCpus> readSysfsCpus();

// The caches of a package, by the cache directories of its cores' first threads, and its speeds,
// both by kind of core: the kinds have to be known already.
std::vector<CpuCache> readSysfsCaches(const CpuPackage& package);
void readSysfsSpeeds(CpuPackage& package);

// First value among attributes of a processor's directory, such as "topology/core_id"; nothing when
// it has none of them.
std::optional<std::string> cpuAttribute(uint32_t cpu, const std::string& name);
std::optional<uint32_t> cpuNumberAttribute(uint32_t cpu, const std::string& name);
std::optional<CpuList> cpuListAttribute(uint32_t cpu, const std::string& name);

}  // namespace quenlor
