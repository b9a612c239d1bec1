// Regional: character locale and time zone of the scanner's environment.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

class RegionalGroup : public VelGroup {
 public:
  RegionalGroup() : VelGroup(group::kRegional, 1) {}
  VelTable* getTable() override;  // one row; owned by the caller, never null
};

}  // namespace quenlor
