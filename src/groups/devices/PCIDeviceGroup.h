// Devices on the PCI buses with name and revision.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

// Reads /proc/pci, which kernels up to 2.6 have; without it the output of "/sbin/lspci -m".
class PCIDeviceGroup : public VelGroup {
 public:
  PCIDeviceGroup() : VelGroup(group::kPciDevice, 1) {}
  VelTable* getTable() override;  // the caller's; null when neither source can be opened
};

}  // namespace quenlor
