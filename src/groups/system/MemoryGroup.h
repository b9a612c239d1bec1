// Memory: physical and virtual totals, from /proc/meminfo, and the slots that the firmware reports.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

class MemoryGroup : public VelGroup {
 public:
  MemoryGroup() : VelGroup(group::kMemory, 1) {}
  VelTable* getTable() override;  // one row; owned by the caller, never null
};

}  // namespace quenlor
