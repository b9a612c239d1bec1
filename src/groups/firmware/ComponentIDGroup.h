// Inventory group "ComponentID": who made the machine, its model, serial number and type.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

class ComponentIDGroup : public VelGroup {
 public:
  ComponentIDGroup();
  VelTable* getTable() override;  // always one row; owned by the caller

  // Total memory in units of 1024 times the kernel's memory unit, which is a byte on 64-bit
  // machines.
  static unsigned long totalPhysMemKB();
};

}  // namespace quenlor
