// Identity of the physical host of a VMware guest, as the host's agent publishes it.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

class HostComponentIDGroup : public VelGroup {
 public:
  HostComponentIDGroup() : VelGroup(group::kHostComponentId, 1) {}
  VelTable* getTable() override;  // one row; null on a real machine; owned by the caller
};

}  // namespace quenlor
