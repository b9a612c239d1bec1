// IPv4 addresses of the machine, each with its host name, network and hardware address.
#pragma once

#include "tables/VelTable.h"

namespace quenlor {

// One row per configured address but 127.0.0.1. Asks the kernel by socket ioctls, the name service
// for host names, ifconfig for IPv6 addresses; reads /etc/resolv.conf and the distributions'
// gateway files.
class IpAddressGroup : public VelGroup {
 public:
  IpAddressGroup() : VelGroup(group::kIpAddress, 1) {}
  VelTable* getTable() override;  // the caller's, never null
};

}  // namespace quenlor
