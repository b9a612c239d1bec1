// The speed that a processor was sold with, which never changes: the speed of the moment does, from
// scan to scan, and with it whatever is derived from it.
#pragma once

#include <cstdint>
#include <optional>

#include "readers/topology/CpuInventory.h"

namespace quenlor {

// All that may tell it; an absent value and 0 tell nothing.
struct SpeedSources {
  std::optional<uint32_t> cpuidBaseMhz{};      // leaf 16
  std::optional<uint32_t> baseFrequencyKhz{};  // the kernel's base_frequency
  std::optional<uint32_t> nominalMhz{};        // the firmware's performance table
  std::optional<uint32_t> brandMhz{};          // "@ 2.40GHz"
  std::optional<uint32_t> smbiosMhz{};         // type 4 current speed
  std::optional<uint32_t> maxFrequencyKhz{};   // the kernel's cpuinfo_max_freq
  std::optional<uint32_t> hypervisorTscKhz{};  // leaf 40000010
};

// In the order of trust, which is that of the fields; 0 when none tells. The speed of the time
// stamp counter is measured, and rounded to a tenth of a gigahertz: it differs a little from start
// to start of a guest.
uint32_t ratedMhz(const SpeedSources& sources);

// The same without the last two: the base speed of a package, where something tells it.
std::optional<uint32_t> baseMhz(const SpeedSources& sources);

// What a package's own sources tell, with its speed in the firmware's table.
SpeedSources speedSourcesOf(const CpuPackage& package, std::optional<uint32_t> smbiosMhz);

}  // namespace quenlor
