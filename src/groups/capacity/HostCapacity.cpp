#include "groups/capacity/HostCapacity.h"

#include <algorithm>
#include <cfloat>

#include "base/Text.h"
#include "readers/processor/PhysicalProcDescription.h"
#include "readers/virtualization/AgentAnswer.h"
#include "readers/vmware/VMwareGuestInfo.h"

namespace quenlor {
namespace {

constexpr int kCoresField = 4;  // colons before the cores per package in the agent's text

size_t coresOf(const CpuInventory& cpus) {
  size_t cores = 0;
  for (const CpuPackage& package : cpus.packages) cores += package.cores.size();
  return cores;
}

int coresPerPackageOf(const CpuInventory& cpus) {
  return cpus.packages.empty() ? 0 : static_cast<int>(cpus.packages[0].cores.size());
}

void takeDescription(const std::string& text, HostCapacity& capacity) {
  const int packages = physicalProcNumber(text, 0).value_or(0);
  if (packages > 0) capacity.packages = packages;
  const int cores = physicalProcNumber(text, kCoresField).value_or(0);
  capacity.coresPerPackage = cores > 0 ? cores : -1;
}

// The agent counts packages only.
void takePackages(int packages, const CpuInventory& own, HostCapacity& capacity) {
  if (capacity.packages > 0 || packages <= 0) return;
  capacity.packages = packages;
  if (coresPerPackageOf(own) > 0) capacity.coresPerPackage = coresPerPackageOf(own);
}

float guestPackagesOf(const std::string& text) {
  return static_cast<float>(std::clamp<double>(finiteNumber(text), -FLT_MAX, FLT_MAX));
}

void applyOwnCores(const CpuInventory& own, HostCapacity& capacity) {
  if (coresPerPackageOf(own) == 0) return;
  capacity.guestCores = static_cast<float>(coresOf(own));
  capacity.guestPackages = capacity.guestCores / static_cast<float>(coresPerPackageOf(own));
}

void applyGuestLibrary(const CpuInventory& own, HostCapacity& capacity) {
  VMwareGuestInfoProvider provider(installedGuestLibraries());
  VMwareGuestInfo guest{kUnlimitedMhz, kUnlimitedMhz, kUnlimitedMhz, kUnlimitedMhz};
  if (provider.retrieveGuestInfo(guest)) {
    capacity.guestPackages =
        packagesByLimit(guest, capacity.packages).value_or(capacity.guestPackages);
  } else {
    applyOwnCores(own, capacity);
  }
}

void countCores(HostCapacity& capacity) {
  const auto cores = static_cast<float>(capacity.coresPerPackage);
  if (cores <= 0) return;
  if (capacity.packages > 0) capacity.cores = static_cast<float>(capacity.packages) * cores;
  if (capacity.guestCores < 0 && capacity.guestPackages > 0) {
    capacity.guestCores = std::min(cores * capacity.guestPackages, FLT_MAX);
  }
}

}  // namespace

HostCapacity readHostCapacity(ToolsAgent& agent, const CpuInventory& own) {
  HostCapacity capacity;
  const auto description = agent.ask(agent_key::kPhysicalProcessor);
  const auto packages = agent.ask(agent_key::kNodeCapacity);
  const auto guestPackages = agent.ask(agent_key::kVmCapacity);
  capacity.hostId = agent.ask(agent_key::kNodeId).value_or("");
  capacity.guestId = agent.ask(agent_key::kVmId).value_or("");
  if (description) takeDescription(*description, capacity);
  if (packages) takePackages(decimalValue(packages->c_str()), own, capacity);
  if (guestPackages) capacity.guestPackages = guestPackagesOf(*guestPackages);
  if (packages) applyGuestLibrary(own, capacity);
  countCores(capacity);
  return capacity;
}

}  // namespace quenlor
