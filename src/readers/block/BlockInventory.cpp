#include "readers/block/BlockInventory.h"

#include "host/Host.h"

namespace quenlor {
namespace {

// CPUID leaf 1, ECX bit 31: zero in every processor, set by hypervisors (Intel SDM volume 2,
// "CPUID"; AMD APM volume 3, appendix E).
constexpr uint32_t kFeatures = 1;
constexpr uint32_t kHypervisor = 1u << 31;

bool isGuest() {
  CpuidRegisters registers;
  return host().cpuid(kFeatures, 0, &registers) && (registers.ecx & kHypervisor) != 0;
}

}  // namespace

BlockInventory readBlockInventory() {
  BlockInventory inventory;
  inventory.tree = readBlockTree();
  inventory.drives = readDrives(inventory.tree, isGuest());
  inventory.volumes = readVolumes(inventory.tree);
  return inventory;
}

}  // namespace quenlor
