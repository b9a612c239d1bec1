// Network interfaces that have a hardware address.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

// One row per interface with an IPv4 address and a hardware address other than zeros, by socket
// ioctls.
class NetworkAdapterGroup : public VelGroup {
 public:
  NetworkAdapterGroup() : VelGroup(group::kNetworkAdapter, 1) {}
  VelTable* getTable() override;  // the caller's, never null
};

}  // namespace quenlor
