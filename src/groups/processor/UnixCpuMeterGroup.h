// UnixCpuMeter: the 1-, 5- and 15-minute load averages, from /proc/loadavg.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

class UnixCpuMeterGroup : public VelGroup {
 public:
  UnixCpuMeterGroup() : VelGroup(group::kUnixCpuMeter, 1) {}
  VelTable* getTable() override;  // one row; owned by the caller, never null
};

}  // namespace quenlor
