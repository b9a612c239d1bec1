// The groups that come from the firmware's table alone, collected on a recorded machine so many
// times. (Machine reads processors too, and those of a recording cost more than the scan.)
// instructions.py counts what one of them costs.
#include <cstdio>
#include <cstdlib>

#include "groups/modern/Collectors.h"
#include "tests/support/RecordedHost.h"

namespace {

using namespace quenlor;

struct Group {
  uint32_t id;
  ModernCollector collect;
};

constexpr Group GROUPS[] = {
    {group::kComponentId, collectComponentId},
    {group::kSmbios, collectSmbios},
    {group::kMemory, collectMemory},
    {group::kMemoryModules, collectMemoryModules},
    {group::kSlot, collectSlot},
    {group::kPowerSupply, collectPowerSupply},
};

// Rows of all groups; none where the machine has no firmware table.
size_t scan() {
  ModernScan scan{ScanSettings{}};
  size_t rows = 0;
  for (const Group& group : GROUPS) {
    ModernTable table(*findGroup(MODERN_GROUPS_DEF, group.id));
    group.collect(scan, table);
    rows += table.build()->getNumRows();
  }
  return rows;
}

}  // namespace

// Arguments: the recorded machine's directory, the number of scans.
int main(int count, char** arguments) {
  if (count != 3) return 2;
  const quenlor::test::RecordedHost machine(arguments[1]);
  const long scans = std::strtol(arguments[2], nullptr, 10);
  size_t rows = 0;
  for (long i = 0; i < scans; ++i) rows = scan();
  std::printf("%zu rows\n", rows);
  return rows > 0 ? 0 : 1;
}
