// The collectors of this platform by catalogue id.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

// A new collector for a group id, owned by the caller; null for an id without one.
VelGroup* createGroup(unsigned long groupId);

}  // namespace quenlor
