// The addresses of all interfaces, their default routes and who leased them: rtnetlink and /run.
#pragma once

#include <vector>

#include "base/Outcome.h"
#include "readers/interfaces/AddressMessage.h"
#include "readers/interfaces/Gateway.h"
#include "readers/interfaces/Leases.h"

namespace quenlor {

struct NetworkAddresses {
  std::vector<InterfaceAddress> addresses;  // in the kernel's order, which is the order of use
  DefaultRoutes routes;
  Leases leases;
  Outcome outcome;
};

// Reads everything anew. Never fails: what could not be read is in the outcome.
NetworkAddresses readNetworkAddresses();

// Those of one interface that are reported, in the kernel's order: settled ones, and of IPv6 the
// ones of the link only when there is no other.
std::vector<const InterfaceAddress*> reportedAddresses(
    const std::vector<const InterfaceAddress*>& ofInterface);

}  // namespace quenlor
