// What the firmware's table tells of the processor packages that the kernel has.
#pragma once

#include <optional>
#include <vector>

#include "base/Outcome.h"
#include "readers/dmi/DmiTable.h"
#include "readers/topology/CpuInventory.h"

namespace quenlor {

// The populated sockets of central processors, set against the packages in order.
class PackageFirmware {
 public:
  // `dmi` may be null; it has to outlive this. What it could not read is noted as a part that is
  // missing.
  PackageFirmware(const DmiTable* dmi, const CpuInventory& cpus, Outcome& outcome);

  // The socket of a package by its number, from 0: known where the table has as many as the kernel.
  // A package that is switched off would shift all behind it.
  const DmiProcessor* socketOf(size_t package) const;
  // True if the table has populated sockets whose processors are all offline: the kernel then knows
  // nothing of their packages.
  bool hasHiddenPackages() const { return m_sockets.size() > m_packages; }
  // A socket that tells of the kind of processor: the package's own, else the first one.
  const DmiProcessor* kindOf(size_t package) const;
  // MHz by the table, for the rated speed.
  std::optional<uint32_t> speedOf(size_t package) const;

 private:
  std::vector<const DmiProcessor*> m_sockets;
  size_t m_packages;
};

// MHz that the processor was sold with; 0 where nothing tells.
uint32_t ratedSpeed(const CpuInventory& cpus, size_t package, const PackageFirmware& firmware);

// The brand string as the processor says it, else as the kernel does; empty where neither does.
std::string brandText(const CpuPackage& package);
// CPUID's vendor text, else the kernel's.
std::string vendorText(const CpuPackage& package);

}  // namespace quenlor
