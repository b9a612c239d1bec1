// Operating System: the running kernel, from uname, and the distribution's name, from its release
// file.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

class OperatingSystemGroup : public VelGroup {
 public:
  OperatingSystemGroup() : VelGroup(group::kOperatingSystem, 1) {}
  VelTable* getTable() override;  // one row; owned by the caller, never null
};

}  // namespace quenlor
