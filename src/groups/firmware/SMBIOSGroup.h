// Inventory group "SMBIOS": firmware, system, board and enclosure, from the shared SMBIOS table.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

class SMBIOSGroup : public VelGroup {
 public:
  SMBIOSGroup();
  VelTable* getTable() override;  // one row, owned by the caller; null without an SMBIOS table

 private:
  VelTable* getTableLeg();
};

}  // namespace quenlor
