#include "readers/topology/RatedSpeed.h"

#include "readers/cpuid/CpuidLeaves.h"
#include "readers/topology/PackageCpuid.h"

namespace quenlor {
namespace {

constexpr uint32_t kKhz = 1000;     // per MHz
constexpr uint32_t kTscStep = 100;  // MHz

std::optional<uint32_t> told(std::optional<uint32_t> value) {
  return value == 0u ? std::nullopt : value;
}

std::optional<uint32_t> toldInKhz(std::optional<uint32_t> khz) {
  if (!khz) return std::nullopt;
  return told(*khz / kKhz + (*khz % kKhz >= kKhz / 2 ? 1 : 0));
}

std::optional<uint32_t> roundedTsc(std::optional<uint32_t> khz) {
  const std::optional<uint32_t> mhz = toldInKhz(khz);
  if (!mhz) return std::nullopt;
  return told((*mhz + kTscStep / 2) / kTscStep * kTscStep);
}

std::optional<uint32_t> firstTold(std::initializer_list<std::optional<uint32_t>> values) {
  for (const std::optional<uint32_t>& value : values) {
    if (value) return value;
  }
  return std::nullopt;
}

}  // namespace

std::optional<uint32_t> baseMhz(const SpeedSources& sources) {
  return firstTold({told(sources.cpuidBaseMhz), toldInKhz(sources.baseFrequencyKhz),
                    told(sources.nominalMhz), told(sources.brandMhz), told(sources.smbiosMhz)});
}

uint32_t ratedMhz(const SpeedSources& sources) {
  return firstTold({baseMhz(sources), toldInKhz(sources.maxFrequencyKhz),
                    roundedTsc(sources.hypervisorTscKhz)})
      .value_or(0);
}

SpeedSources speedSourcesOf(const CpuPackage& package, std::optional<uint32_t> smbiosMhz) {
  std::string brand = brandOf(package.leaves);
  if (brand.empty() && package.cpuinfo) brand = package.cpuinfo->modelName;
  return {.cpuidBaseMhz = baseClockMhz(package.leaves),
          .baseFrequencyKhz = package.baseKhz,
          .nominalMhz = package.nominalMhz,
          .brandMhz = brandClockMhz(brand),
          .smbiosMhz = smbiosMhz,
          .maxFrequencyKhz = package.maxKhz,
          .hypervisorTscKhz = hypervisorTscKhz(package.leaves)};
}

}  // namespace quenlor
