// One group of a modern scan, collected on the machine of the test.
#pragma once

#include <memory>
#include <vector>

#include "catalogue/Catalogue.h"
#include "groups/modern/ModernGroup.h"
#include "tests/support/Rows.h"

namespace quenlor::test {

struct ModernRows {
  std::vector<RowValues> rows;
  Outcome outcome;
};

inline ModernRows collectModern(uint32_t groupId, ModernCollector collect) {
  ModernScan scan{ScanSettings{}};
  ModernTable table(*findGroup(MODERN_GROUPS_DEF, groupId));
  collect(scan, table);
  const std::unique_ptr<VelTable> built = table.build();
  return {rowsOf(built.get()), table.outcome()};
}

}  // namespace quenlor::test
