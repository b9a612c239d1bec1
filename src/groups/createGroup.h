// The collectors of this platform by catalogue id.
#pragma once

#include "config/ScanSettings.h"
#include "factory/GroupFactory.h"
#include "tables/VelTable.h"

namespace quenlor {

// A new collector of the classic sources for a group id, owned by the caller; null for an id
// without one.
VelGroup* createGroup(unsigned long groupId);

// The same for the modern sources: all collectors that it makes belong to one scan.
GroupFactory::Creator modernGroups(const ScanSettings& settings);

}  // namespace quenlor
