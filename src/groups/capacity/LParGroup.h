// Partition capacity: how much of the physical node this system may use, in packages and in cores.
// From the processor query "cpuid"; in a VMware guest from the host's agent and the guest SDK.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

class LParGroup : public VelGroup {
 public:
  LParGroup() : VelGroup(group::kLpar, 1) {}
  VelTable* getTable() override;  // one row; owned by the caller, never null
};

}  // namespace quenlor
