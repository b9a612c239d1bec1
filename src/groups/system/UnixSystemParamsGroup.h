// UNIX System Params: boot time and run level, from utmp and /sbin/runlevel, and the host name.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

class UnixSystemParamsGroup : public VelGroup {
 public:
  UnixSystemParamsGroup() : VelGroup(group::kUnixSystemParams, 1) {}
  VelTable* getTable() override;  // one row; owned by the caller, never null
};

}  // namespace quenlor
