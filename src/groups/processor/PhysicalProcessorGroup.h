// Physical processor packages: one row per package, from the processor query "cpuid"; in a VMware
// guest the host's packages, as its agent publishes them.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

class PhysicalProcessorGroup : public VelGroup {
 public:
  PhysicalProcessorGroup() : VelGroup(group::kPhysicalProcessor, 1) {}
  VelTable* getTable() override;  // at least one row; owned by the caller, never null
};

}  // namespace quenlor
