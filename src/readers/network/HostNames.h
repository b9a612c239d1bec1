// Host names of addresses, by reverse look-up.
#pragma once

#include <netinet/in.h>

#include <optional>
#include <string>
#include <vector>

namespace quenlor {

// The official name of each address, in the same order; nothing where there is none. All are asked
// at once. When the name servers are dead it ends after one round of the resolver for all of them
// together and a second more, says so in one line on standard error, and leaves its workers behind
// (reportAbandonedWorker()).
std::vector<std::optional<std::string>> hostNamesOf(const std::vector<in_addr>& addresses);

}  // namespace quenlor
