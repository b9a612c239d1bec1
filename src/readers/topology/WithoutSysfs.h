// Packages of a machine whose kernel, or sandbox, has no topology files: counted from
// /proc/cpuinfo, else from CPUID and the number of processors.
#pragma once

#include <optional>
#include <vector>

#include "readers/topology/CpuInventory.h"

namespace quenlor {

// One package per physical id. Blocks without one share out to packages of the layout's size; with
// no layout all are cores of one package. Empty without blocks.
std::vector<CpuPackage> packagesOfCpuinfo(const std::vector<CpuinfoBlock>& blocks,
                                          const std::optional<PackageLayout>& layout);

// The same for processors of which nothing but their number is known.
std::vector<CpuPackage> packagesOfLayout(const CpuList& cpus,
                                         const std::optional<PackageLayout>& layout);

}  // namespace quenlor
