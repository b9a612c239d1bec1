// Groups of a modern scan: collected within a limit, with a result of their own whatever happens.
#pragma once

#include <memory>

#include "groups/modern/ModernScan.h"
#include "groups/modern/ModernTable.h"
#include "tables/VelTable.h"

namespace quenlor {

// Fills the table of one group. Called in a worker that may be given up: it keeps to what it is
// given and to its own.
using ModernCollector = void (*)(ModernScan& scan, ModernTable& table);

// A group that a collector fills.
class ModernGroup : public VelGroup {
 public:
  ModernGroup(const velGroupDef& group, std::shared_ptr<ModernScan> scan, ModernCollector collect);

  // Null when collecting did not end in time or failed; the scan has the group's result then too.
  VelTable* getTable() override;

 private:
  VelTable* collectResults();

  const velGroupDef& m_group;
  std::shared_ptr<ModernScan> m_scan;
  ModernCollector m_collect;
};

}  // namespace quenlor
