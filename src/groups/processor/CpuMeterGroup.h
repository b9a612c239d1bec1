// CpuMeter: processor times averaged per processor, from /proc/stat, and the up-time, from
// /proc/uptime.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

class CpuMeterGroup : public VelGroup {
 public:
  CpuMeterGroup() : VelGroup(group::kCpuMeter, 1) {}
  VelTable* getTable() override;  // one row; owned by the caller, never null
};

}  // namespace quenlor
