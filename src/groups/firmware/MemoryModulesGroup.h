// Inventory group "Memory Modules": memory devices (DMTF SMBIOS, type 17) or, on machines with
// older firmware, memory modules (type 6), from the shared SMBIOS table.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

class MemoryModulesGroup : public VelGroup {
 public:
  MemoryModulesGroup();
  VelTable* getTable() override;  // one row per module, owned by the caller; null without modules

 private:
  VelTable* getTableLeg();
};

}  // namespace quenlor
