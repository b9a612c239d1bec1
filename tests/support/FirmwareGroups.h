// The groups that come from the firmware's table alone, for those who measure what they cost.
// (Machine reads processors too, and those of a recording cost more than the scan.)
#pragma once

#include <cstddef>

#include "groups/modern/Collectors.h"

namespace quenlor::test {

struct FirmwareGroup {
  uint32_t id;
  ModernCollector collect;
};

inline constexpr FirmwareGroup FIRMWARE_GROUPS[] = {
    {group::kComponentId, collectComponentId},
    {group::kSmbios, collectSmbios},
    {group::kMemory, collectMemory},
    {group::kMemoryModules, collectMemoryModules},
    {group::kSlot, collectSlot},
    {group::kPowerSupply, collectPowerSupply},
};

// Rows of all of them in one scan; none where the machine has no firmware table.
inline size_t collectFirmwareGroups() {
  ModernScan scan{ScanSettings{}};
  size_t rows = 0;
  for (const FirmwareGroup& group : FIRMWARE_GROUPS) {
    ModernTable table(*findGroup(MODERN_GROUPS_DEF, group.id));
    group.collect(scan, table);
    rows += table.build()->getNumRows();
  }
  return rows;
}

}  // namespace quenlor::test
