// How much of its host a VMware guest may use: what the tools agent and the guest library tell.
#pragma once

#include <string>

#include "readers/topology/CpuInventory.h"
#include "readers/virtualization/ToolsAgent.h"

namespace quenlor {

// -1 and empty where it is not known.
struct HostCapacity {
  int packages = -1;  // of the host
  int coresPerPackage = 1;
  float cores = -1;          // of the host
  float guestPackages = -1;  // that this guest may use
  float guestCores = -1;
  std::string guestId, hostId;
};

// `own` are the guest's processors: a guest sees the cores of its host's packages as its own.
HostCapacity readHostCapacity(ToolsAgent& agent, const CpuInventory& own);

}  // namespace quenlor
