// Scan Info: the scanner's version and build, the time of the scan and the machine's up-time.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

class ScanInfoGroup : public VelGroup {
 public:
  ScanInfoGroup() : VelGroup(group::kScanInfo, 1) {}
  VelTable* getTable() override;  // one row; owned by the caller, never null
};

}  // namespace quenlor
