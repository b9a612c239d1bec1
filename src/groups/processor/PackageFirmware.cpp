#include "groups/processor/PackageFirmware.h"

#include "readers/topology/RatedSpeed.h"

namespace quenlor {
namespace {

constexpr uint8_t kCentralProcessor = 3;

}  // namespace

PackageFirmware::PackageFirmware(const DmiTable* dmi, const CpuInventory& cpus, Outcome& outcome)
    : m_packages(cpus.packages.size()) {
  if (dmi == nullptr) return;
  outcome.mergePart(dmi->structureOutcome);
  for (const DmiProcessor& socket : dmi->processors) {
    if (socket.isPopulated && socket.kind == kCentralProcessor) m_sockets.push_back(&socket);
  }
}

const DmiProcessor* PackageFirmware::socketOf(size_t package) const {
  return m_sockets.size() == m_packages ? m_sockets[package] : nullptr;
}

const DmiProcessor* PackageFirmware::kindOf(size_t package) const {
  if (m_sockets.empty()) return nullptr;
  const DmiProcessor* own = socketOf(package);
  return own == nullptr ? m_sockets.front() : own;
}

std::optional<uint32_t> PackageFirmware::speedOf(size_t package) const {
  const DmiProcessor* socket = kindOf(package);
  return socket == nullptr ? std::nullopt : std::optional<uint32_t>(socket->currentMhz);
}

uint32_t ratedSpeed(const CpuInventory& cpus, size_t package, const PackageFirmware& firmware) {
  return ratedMhz(speedSourcesOf(cpus.packages[package], firmware.speedOf(package)));
}

std::string brandText(const CpuPackage& package) {
  const std::string brand = brandOf(package.leaves);
  return brand.empty() && package.cpuinfo ? package.cpuinfo->modelName : brand;
}

std::string vendorText(const CpuPackage& package) {
  const std::string vendor = vendorOf(package.leaves);
  return vendor.empty() && package.cpuinfo ? package.cpuinfo->vendor : vendor;
}

}  // namespace quenlor
