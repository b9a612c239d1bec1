// Processors: one row per physical processor, from /proc/cpuinfo, the C library's counts, the
// firmware's processor records and the processor descriptions of the hardware configuration file.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

class ProcessorGroup : public VelGroup {
 public:
  ProcessorGroup() : VelGroup(group::kProcessor, 1) {}
  VelTable* getTable() override;  // owned by the caller, never null
};

}  // namespace quenlor
